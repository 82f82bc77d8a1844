// The event log's message lines: which messages the Logging flags let through, the line and its
// label, the verbose second lines, and the observers on the two buses.

#include <gtest/gtest.h>

#include "app/EventLog.h"
#include "app/IniFile.h"
#include "app/SystemCoordinator.h"
#include "core/ByteOrder.h"
#include "core/MessageTypes.h"
#include "storage/HsfTestWriter.h"
#include "storage/LoggingControl.h"
#include "storage/MessageLogObserver.h"
#include "storage/StorageTestSupport.h"

namespace halvo {
namespace {

using L = LoggingSettings;

SonarMessage Make(std::uint16_t type, std::uint8_t dir, std::vector<std::uint8_t> payload) {
    return HsfTestWriter::MakeMessage(type, dir, 101, 3, payload);
}

TEST(EventLines, FlagsChooseWhatIsLogged) {
    struct Case {
        std::uint16_t type;
        std::uint8_t dir;
        LogStream stream;
        std::int32_t flags;
        bool logged;
    };
    const auto D = LogStream::Data;
    const auto C = LogStream::Command;
    const std::vector<Case> cases = {
        {124, DirReply, D, L::kDataSock, true},  // an unlisted type needs only the switch
        {124, DirReply, D, L::kCmdSock, false},
        {124, DirReply, C, L::kCmdSock, true},
        {124, DirQuery, C, L::kCmdSock | 0x1FF, false},  // queries never on the command stream
        {124, DirQuery, D, L::kDataSock, true},
        {80, DirReply, D, L::kDataSock, false},
        {80, DirReply, D, L::kDataSock | L::kSonarMsg, true},
        {82, DirReply, D, L::kSonarMsg, false},  // the bit alone is not enough
        {2060, DirReply, D, L::kDataSock | L::kPressure, true},
        {2060, DirReply, D, L::kDataSock | L::kPitchRoll, false},
        {2020, DirReply, D, L::kDataSock | L::kPitchRoll, true},
        {2040, DirReply, D, L::kDataSock | L::kLowADC, true},
        {2002, DirReply, D, L::kDataSock | L::kSerial, false},
        {2002, DirReply, D, L::kDataSock | L::kNmea, true},
        {2000, DirReply, C, L::kCmdSock | L::kSerial, true},
        {2000, DirReply, C, L::kCmdSock, false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(MessageLogLines::Wanted(c.type, c.dir, c.stream, c.flags), c.logged)
            << c.type << " dir " << int(c.dir) << " flags " << c.flags;
    }
}

TEST(EventLines, HeaderLineAndLabels) {
    std::vector<std::uint8_t> trace(240 + 8);
    PutLE<std::int32_t>(trace, 8, 4711);
    std::vector<std::uint8_t> ss(80);
    PutLE<std::int32_t>(ss, 4, -3);
    std::vector<std::uint8_t> on(4);
    PutLE<std::int32_t>(on, 0, 1);
    std::vector<std::uint8_t> pulse = {'C', 'H', 'I', 'R', 'P', 0, 'x'};
    std::vector<std::uint8_t> sit(276);
    PutLE<double>(sit, 60, 1.25);
    PutLE<double>(sit, 68, -2.5);
    PutLE<double>(sit, 52, 359.94);
    struct Case {
        SonarMessage m;
        LogStream stream;
        std::string line;
    };
    std::vector<Case> cases;
    cases.push_back({Make(80, 2, trace), LogStream::Data,
                     "SONRDAT : Cmd 80 Dir 2 Sub 101 Chan 3 Bytes = 248 [Segy Data Ping 4711]"});
    cases.push_back({Make(82, 2, ss), LogStream::Data,
                     "SONRDAT : Cmd 82 Dir 2 Sub 101 Chan 3 Bytes = 80 [SS Data Ping -3]"});
    cases.push_back({Make(80, 2, {1, 2}), LogStream::Data,
                     "SONRDAT : Cmd 80 Dir 2 Sub 101 Chan 3 Bytes = 2"});  // no ping to show
    cases.push_back({Make(120, 0, on), LogStream::Command,
                     "SONRCMD : Cmd 120 Dir 0 Sub 101 Chan 3 Bytes = 4 [SonarOn 1]"});
    cases.push_back(
        {Make(120, 2, on), LogStream::Command, "SONRCMD : Cmd 120 Dir 2 Sub 101 Chan 3 Bytes = 4"});
    cases.push_back({Make(123, 0, pulse), LogStream::Command,
                     "SONRCMD : Cmd 123 Dir 0 Sub 101 Chan 3 Bytes = 7 [Pulse CHIRP]"});
    cases.push_back({Make(2090, 2, sit), LogStream::Data,
                     "SONRDAT : Cmd 2090 Dir 2 Sub 101 Chan 3 Bytes = 276 [SIT  1.2 -2.5 359.9]"});
    cases.push_back({Make(41, 1, {}), LogStream::Data,
                     "SONRDAT : Cmd 41 Dir 1 Sub 101 Chan 3 Bytes = 0 [Alive]"});
    cases.push_back(
        {Make(9999, 2, {}), LogStream::Data, "SONRDAT : Cmd 9999 Dir 2 Sub 101 Chan 3 Bytes = 0"});
    for (const Case& c : cases) EXPECT_EQ(MessageLogLines::HeaderLine(c.m, c.stream), c.line);
}

TEST(EventLines, VerboseLines) {
    std::vector<std::uint8_t> serial(12);
    for (int b : {36, 65, 10, 13, 127, 122}) serial.push_back(static_cast<std::uint8_t>(b));
    std::vector<std::uint8_t> longSerial(12 + 100, 'q');
    std::vector<std::uint8_t> nmea(12);
    for (char ch : std::string("$GPGGA,1")) nmea.push_back(static_cast<std::uint8_t>(ch));
    nmea.push_back(0);
    std::vector<std::uint8_t> analog(36);
    for (int i = 0; i < 12; ++i)
        PutLE<std::int16_t>(analog, 12 + 2 * i, static_cast<std::int16_t>(i - 2));
    std::vector<std::uint8_t> pressure(40);
    PutLE<std::int32_t>(pressure, 12, 14696);
    PutLE<std::int32_t>(pressure, 36, -2500);
    std::vector<std::uint8_t> time(12);
    PutLE<std::int32_t>(time, 0, 1700000000);
    PutLE<std::int32_t>(time, 4, 250);
    std::vector<std::uint8_t> dvl(56);
    PutLE<std::int32_t>(dvl, 16, 100);
    PutLE<std::int16_t>(dvl, 32, -7);
    PutLE<std::int16_t>(dvl, 54, 21);
    struct Case {
        std::uint16_t type;
        std::vector<std::uint8_t> payload;
        std::optional<std::string> line;
    };
    const std::vector<Case> cases = {
        {2000, serial, std::string("$A\x7f\x7f\x7fz")},
        {2000, longSerial, std::string(60, 'q')},
        {2002, nmea, "$GPGGA,1"},
        {2040, analog, "AIO -2 -1 0 1 2 3 4 5"},
        {2040, std::vector<std::uint8_t>(35), std::nullopt},  // too short to log
        {2060, pressure, "PSI 14.696 Temp 0.000 SAL 0.000 CON 0.000 SV 0.000 Depth -2.500 Flags 0"},
        {2111, time, "Time 1700000000 250"},
        {2080, dvl, " DVL V=(-7 0 0) T=21 P=0 R=0 C=0 A=(100 0 0 0)"},
        {2080, std::vector<std::uint8_t>(55), std::nullopt},
        {80, std::vector<std::uint8_t>(240), std::nullopt},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(MessageLogLines::VerboseLine(Make(c.type, 2, c.payload)), c.line) << c.type;
    }
}

TEST(EventLines, ObserversWriteTheEventLog) {
    test::TempDir dir;
    SystemCoordinator coordinator;
    coordinator.SetActiveProfile(dir.File("Defaults.Hni"));
    LoggingControl logging(coordinator);
    EventLog events([] { return TimeValue{3600 * 5 + 61, 0}; });
    MessageLogObserver data(LogStream::Data, logging, events);
    MessageLogObserver command(LogStream::Command, logging, events);
    std::vector<std::uint8_t> time(12);
    SonarMessage m = Make(2111, 2, time);

    data.PreviewMessage(&m, SourceSonarData, 0);
    EXPECT_TRUE(events.Lines().empty());  // flags 0: nothing
    LoggingSettings s = logging.getSettings();
    s.flags = L::kDataSock | L::kVerbose;
    logging.setSettings(s);
    data.PreviewMessage(&m, SourceSonarData, 0);
    command.PreviewMessage(&m, SourceLocal, 0);
    data.PreviewMessage(nullptr, SourceIdle, 0);
    const std::vector<std::string> lines = events.Lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0],
              "05:01:01  SONRDAT : Cmd 2111 Dir 2 Sub 101 Chan 3 Bytes = 12 [CONTAINERTIME]");
    EXPECT_EQ(lines[1], "05:01:01  Time 0 0");
}

TEST(EventLines, LoggingKeysLoadAndSave) {
    test::TempDir dir;
    SystemCoordinator coordinator;
    coordinator.SetActiveProfile(dir.File("Defaults.Hni"));
    {
        IniFile ini(coordinator);
        ini.Open("Logging");
        ini.WriteString("CommentLine1", std::string(80, 'c'));
        ini.WriteInt("Flags", 0x125);
    }
    LoggingControl logging(coordinator);
    LoggingSettings s = logging.getSettings();
    EXPECT_EQ(s.commentLine1, std::string(69, 'c'));  // cut to its field
    EXPECT_EQ(s.commentLine2, "");
    EXPECT_EQ(s.flags, 0x125);
    EXPECT_EQ(logging.Flags(), 0x125);
    EXPECT_EQ(s.enablePerFileLog, 0);
    s.commentLine2 = "Line 7, north end";
    s.enablePerFileLog = 1;
    logging.setSettings(s);
    logging.Save();
    LoggingControl again(coordinator);
    EXPECT_EQ(again.getSettings(), logging.getSettings());
}

}  // namespace
}  // namespace halvo

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
#include "storage/MessageLog.h"
#include "storage/StorageTestSupport.h"

namespace halvo {
namespace {

using L = LoggingSettings;

SonarMessage Make(std::uint16_t type, std::uint8_t dir, std::vector<std::uint8_t> payload) {
    return HsfTestWriter::MakeMessage(type, dir, 101, 3, payload);
}

// A zeroed payload with little-endian values put at their offsets.
struct Bytes {
    explicit Bytes(std::size_t n) : b(n) {}
    template <class T>
    Bytes& Put(std::size_t at, T value) {
        PutLE<T>(b, at, value);
        return *this;
    }
    operator std::vector<std::uint8_t>() const { return b; }
    std::vector<std::uint8_t> b;
};

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
    const auto D = LogStream::Data, C = LogStream::Command;
    const std::vector<std::uint8_t> on = Bytes(4).Put<std::int32_t>(0, 1);
    const std::vector<std::uint8_t> pulse = {'C', 'H', 'I', 'R', 'P', 0, 'x'};
    struct Case {
        std::uint16_t type;
        std::uint8_t dir;
        std::vector<std::uint8_t> payload;
        LogStream stream;
        std::string line;
    };
    const std::vector<Case> cases = {
        {80, 2, Bytes(248).Put<std::int32_t>(8, 4711), D,
         "SONRDAT : Cmd 80 Dir 2 Sub 101 Chan 3 Bytes = 248 [Segy Data Ping 4711]"},
        {82, 2, Bytes(80).Put<std::int32_t>(4, -3), D,
         "SONRDAT : Cmd 82 Dir 2 Sub 101 Chan 3 Bytes = 80 [SS Data Ping -3]"},
        {80, 2, {1, 2}, D, "SONRDAT : Cmd 80 Dir 2 Sub 101 Chan 3 Bytes = 2"},  // no ping to show
        {120, 0, on, C, "SONRCMD : Cmd 120 Dir 0 Sub 101 Chan 3 Bytes = 4 [SonarOn 1]"},
        {120, 2, on, C, "SONRCMD : Cmd 120 Dir 2 Sub 101 Chan 3 Bytes = 4"},
        {123, 0, pulse, C, "SONRCMD : Cmd 123 Dir 0 Sub 101 Chan 3 Bytes = 7 [Pulse CHIRP]"},
        {2090, 2, Bytes(276).Put(60, 1.25).Put(68, -2.5).Put(52, 359.94), D,
         "SONRDAT : Cmd 2090 Dir 2 Sub 101 Chan 3 Bytes = 276 [SIT  1.2 -2.5 359.9]"},
        {41, 1, {}, D, "SONRDAT : Cmd 41 Dir 1 Sub 101 Chan 3 Bytes = 0 [Alive]"},
        {9999, 2, {}, D, "SONRDAT : Cmd 9999 Dir 2 Sub 101 Chan 3 Bytes = 0"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(MessageLogLines::HeaderLine(Make(c.type, c.dir, c.payload), c.stream), c.line);
}

TEST(EventLines, VerboseLines) {
    std::vector<std::uint8_t> serial(12);
    for (int b : {36, 65, 10, 13, 127, 122}) serial.push_back(static_cast<std::uint8_t>(b));
    std::vector<std::uint8_t> nmea(12);
    for (char ch : std::string("$GPGGA,1")) nmea.push_back(static_cast<std::uint8_t>(ch));
    nmea.push_back(0);
    Bytes analog(36);
    for (int i = 0; i < 12; ++i) analog.Put(12 + 2 * i, static_cast<std::int16_t>(i - 2));
    struct Case {
        std::uint16_t type;
        std::vector<std::uint8_t> payload;
        std::optional<std::string> line;
    };
    const std::vector<Case> cases = {
        {2000, serial, std::string("$A\x7f\x7f\x7fz")},
        {2000, std::vector<std::uint8_t>(12 + 100, 'q'), std::string(60, 'q')},
        {2002, nmea, "$GPGGA,1"},
        {2040, analog.b, "AIO -2 -1 0 1 2 3 4 5"},
        {2040, std::vector<std::uint8_t>(35), std::nullopt},  // too short to log
        {2060, Bytes(40).Put<std::int32_t>(12, 14696).Put<std::int32_t>(36, -2500),
         "PSI 14.696 Temp 0.000 SAL 0.000 CON 0.000 SV 0.000 Depth -2.500 Flags 0"},
        {2111, Bytes(12).Put<std::int32_t>(0, 1700000000).Put<std::int32_t>(4, 250),
         "Time 1700000000 250"},
        {2080,
         Bytes(56).Put<std::int32_t>(16, 100).Put<std::int16_t>(32, -7).Put<std::int16_t>(54, 21),
         " DVL V=(-7 0 0) T=21 P=0 R=0 C=0 A=(100 0 0 0)"},
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
    MessageLog data(LogStream::Data, logging, events);
    MessageLog command(LogStream::Command, logging, events);
    std::vector<std::uint8_t> time(12);
    SonarMessage m = Make(2111, 2, time);

    data.Log(m);
    EXPECT_TRUE(events.Lines().empty());  // flags 0: nothing
    LoggingSettings s = logging.getSettings();
    s.flags = L::kDataSock | L::kVerbose;
    logging.setSettings(s);
    data.Log(m);
    command.Log(m);
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
    EXPECT_EQ(s.flags, 0x125);
    EXPECT_EQ(logging.Flags(), 0x125);
    s.commentLine2 = "Line 7, north end";
    s.enablePerFileLog = 1;
    logging.setSettings(s);
    logging.Save();
    LoggingControl again(coordinator);
    EXPECT_EQ(again.getSettings(), logging.getSettings());
}

}  // namespace
}  // namespace halvo

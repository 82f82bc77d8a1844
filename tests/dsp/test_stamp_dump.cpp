// End to end: a generated data file with sentences, sensor messages and traces played through
// `halvo-hsf dump --stamp` with a settings file, and the stamped headers read back as JSON.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "app/TempWorkDir.h"
#include "core/ByteOrder.h"
#include "core/MessageTypes.h"
#include "storage/HsfTestWriter.h"

namespace halvo {
namespace {

using Json = nlohmann::json;

constexpr std::int32_t kT0 = 1709208000;  // 2024-02-29 12:00:00 UTC

struct ToolRun {
    int status = -1;
    std::vector<Json> lines;
};

ToolRun Dump(const std::string& args) {
    ToolRun r;
    const std::string cmd = std::string(HALVO_HSF_BIN) + " dump --json " + args + " 2>/dev/null";
    FILE* p = ::popen(cmd.c_str(), "r");
    if (!p) return r;
    std::string out;
    char buf[65536];
    std::size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
    const int raw = ::pclose(p);
    r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    std::istringstream in(out);
    for (std::string line; std::getline(in, line);)
        r.lines.push_back(Json::parse(line, nullptr, false));
    return r;
}

SonarMessage Stamped(std::uint16_t type, std::int32_t seconds, std::size_t size) {
    std::vector<std::uint8_t> payload(size, 0);
    PutLE<std::int32_t>(payload, 0, seconds);
    return HsfTestWriter::MakeMessage(type, DirReply, 101, 0, payload);
}

SonarMessage Sentence(const std::string& text, std::int32_t seconds) {
    std::vector<std::uint8_t> payload(12 + text.size() + 1, 0);
    PutLE<std::int32_t>(payload, 0, seconds);
    std::memcpy(payload.data() + 12, text.data(), text.size());
    return HsfTestWriter::MakeMessage(MsgNmea, DirReply, 100, 0, payload);
}

SonarMessage Attitude(std::int32_t seconds, std::int16_t pitch, std::uint16_t heading) {
    SonarMessage m = Stamped(MsgPitchRoll, seconds, 44);
    PutLE<std::int16_t>(m.Payload(), 24, pitch);
    PutLE<std::uint16_t>(m.Payload(), 34, heading);
    PutLE<std::uint32_t>(m.Payload(), 36, 0x40 | 0x200);
    return m;
}

SonarMessage Pressure(std::int32_t seconds, std::int32_t psiTimes1000) {
    SonarMessage m = Stamped(MsgPressure, seconds, 76);
    PutLE<std::int32_t>(m.Payload(), 12, psiTimes1000);
    PutLE<std::uint32_t>(m.Payload(), 24, 0x01);
    return m;
}

SonarMessage Trace(std::int32_t seconds, std::int32_t ping, std::uint8_t subsystem = 0,
                   std::uint8_t channel = 0) {
    TraceSpec s;
    s.ping = ping;
    s.subsystem = subsystem;
    s.channel = channel;
    s.timeSince1970 = seconds;
    s.samples = 8;
    return HsfTestWriter::MakeTrace(s);
}

class StampDump : public test::TempWorkDir {
  protected:
    std::string WriteFile() {
        HsfTestWriter w;
        w.Add(Sentence("$GPGLL,5030.5000,N,00415.2500,W,120000.00,A", kT0))
            .Add(Sentence("$GPZDA,120000.00,29,02,2024,00,00", kT0))
            .Add(Sentence("$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K", kT0))
            .Add(Attitude(kT0, 1000, 4500))
            .Add(Pressure(kT0, 29400))
            .Add(Trace(kT0 + 1, 1))
            .Add(Trace(kT0 + 1, 2, 20, 1))
            .Add(Trace(kT0 + 6, 3));  // six seconds on: every source has gone stale
        const std::string path = std::filesystem::current_path() / "line.hsf";
        EXPECT_TRUE(w.Save(path));
        return path;
    }
    std::string WriteSettings(const std::string& text) {
        const std::string path = std::filesystem::current_path() / "survey.Hni";
        std::ofstream(path) << text;
        return path;
    }
    static std::vector<Json> Traces(const ToolRun& r) {
        std::vector<Json> out;
        for (const Json& j : r.lines) {
            if (j.contains("trace")) out.push_back(j["trace"]);
        }
        return out;
    }
};

TEST_F(StampDump, StampsNavigationAndSensorsAsPlaybackWould) {
    const std::string file = WriteFile();
    const std::string settings = WriteSettings(
        "[General]\nPitchBias=10.0\nGPSFlags=16\n"
        "[Nav]\nLatLonSource=1\nTimeSource=0\n"
        "[SBSonar1]\nSubsystemChannelOffset=8\n");
    const ToolRun r = Dump("--stamp --settings " + settings + " " + file);
    ASSERT_EQ(r.status, 0);
    const std::vector<Json> t = Traces(r);
    ASSERT_EQ(t.size(), 3u);

    // 50 deg 30.5 min N, 4 deg 15.25 min W from GLL.
    EXPECT_EQ(t[0]["Group CoordY"], 30305000);
    EXPECT_EQ(t[0]["Group CoordX"], -2552500);
    EXPECT_EQ(t[0]["Coord Units"], 2);
    // "Save Corrected in Segy" without layback: the source fields take the group values.
    EXPECT_EQ(t[0]["Source CoordX"], -2552500);
    EXPECT_EQ(t[0]["Source CoordY"], 30305000);
    // ZDA of 29 February 2024: day 60.
    EXPECT_EQ(t[0]["NMEA Hour"], 12);
    EXPECT_EQ(t[0]["NMEA Day"], 60);
    EXPECT_EQ(t[0]["NMEA Year"], 2024);
    // VTG: true course into heading, magnetic into course, knots * 10.
    EXPECT_EQ(t[0]["NMEA Course"], 34);
    EXPECT_EQ(t[0]["NMEA Speed"], 55);
    EXPECT_EQ(t[0]["Heading 100 * Degrees"], 54);
    // Pitch 1000 is 5.493 deg; less the bias of 10: -4.507 deg, 820 units.
    EXPECT_EQ(t[0]["Pitch 180 Degrees / 32768"], -820);
    EXPECT_EQ(t[0]["Validity Flags"].get<int>() & 0x20, 0x20);
    // 29.4 PSI is one atmosphere of water: about 9.9 m.
    EXPECT_EQ(t[0]["Pressure PSI * 1000"], 29400);
    EXPECT_GT(t[0]["Depth mM"].get<int>(), 9800);
    EXPECT_LT(t[0]["Depth mM"].get<int>(), 10000);
    // Subsystem 20 channel 1 with the second sonar's first channel at 8.
    EXPECT_EQ(t[1]["Channel Number"], 9);

    // Six seconds after the sensors: nothing stamped but the corrected source fields.
    EXPECT_EQ(t[2]["Coord Units"], 0);
    EXPECT_EQ(t[2]["Pitch 180 Degrees / 32768"], 0);
    EXPECT_EQ(t[2]["Validity Flags"].get<int>() & 0x20, 0);
    EXPECT_EQ(t[2]["Depth mM"], 0);
    EXPECT_EQ(t[2]["NMEA Year"], 0);
}

TEST_F(StampDump, WithoutReparseDataTheSensorsAreHiddenAndNothingIsStamped) {
    const std::string file = WriteFile();
    const std::string settings = WriteSettings("[Storage]\nFlags=0\n");
    const ToolRun r = Dump("--stamp --settings " + settings + " " + file);
    ASSERT_EQ(r.status, 0);
    ASSERT_GE(r.lines.size(), 5u);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(r.lines[i]["type"], MsgAlive) << i;
    const std::vector<Json> t = Traces(r);
    ASSERT_EQ(t.size(), 3u);
    EXPECT_EQ(t[0]["Coord Units"], 0);
    EXPECT_EQ(t[0]["Depth mM"], 0);
    EXPECT_EQ(t[1]["Channel Number"], 3);  // the default first channel of subsystem 20
}

TEST_F(StampDump, SettingsNeedStampAndAnExistingFile) {
    const std::string file = WriteFile();
    const std::string settings = WriteSettings("[General]\n");
    EXPECT_EQ(Dump("--settings " + settings + " " + file).status, 2);
    EXPECT_EQ(Dump("--stamp --settings missing.Hni " + file).status, 2);
    // Without a settings file the built-in defaults apply: GLL position, ZDA time.
    const std::vector<Json> t = Traces(Dump("--stamp " + file));
    ASSERT_EQ(t.size(), 3u);
    EXPECT_EQ(t[0]["Group CoordY"], 30305000);
    EXPECT_EQ(t[0]["Pitch 180 Degrees / 32768"], 1000);
}

}  // namespace
}  // namespace halvo

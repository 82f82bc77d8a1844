// End to end: a generated data file with sentences, sensor messages and traces played through
// `halvo-hsf dump --stamp` with a settings file, and the stamped headers read back as JSON.

#include <gtest/gtest.h>

#include <fstream>

#include "app/TempWorkDir.h"
#include "dsp/HsfTool.h"
#include "stamping/StampingRig.h"
#include "storage/HsfTestWriter.h"

namespace halvo {
namespace {

using Json = nlohmann::json;
using test::kNoon;

struct DumpRun : test::ToolRun {
    std::vector<Json> traces;
};

class StampDump : public test::TempWorkDir {
  protected:
    void SetUp() override {
        TempWorkDir::SetUp();
        TraceSpec s;
        s.timeSince1970 = kNoon + 1;
        HsfTestWriter w;
        w.Add(test::Nmea("$GPGLL,5030.5000,N,00415.2500,W,120000.00,A"))
            .Add(test::Nmea("$GPZDA,120000.00,29,02,2024,00,00"))
            .Add(test::Nmea("$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K"))
            .Add(test::Msg(MsgPitchRoll, 44, {{0, kNoon, 4}, {24, 1000}, {36, 0x40, 4}}))
            .Add(test::Msg(MsgPressure, 76, {{0, kNoon, 4}, {12, 29400, 4}, {24, 1, 4}}))
            .Add(HsfTestWriter::MakeTrace(s));
        s.subsystem = 20, s.channel = 1;
        w.Add(HsfTestWriter::MakeTrace(s));
        s.timeSince1970 = kNoon + 6;  // six seconds on: every source has gone stale
        w.Add(HsfTestWriter::MakeTrace(s));
        ASSERT_TRUE(w.Save("line.hsf"));
    }
    static DumpRun Dump(const std::string& args) {
        DumpRun r{test::RunHsf("dump --json " + args), {}};
        for (const Json& l : r.lines) {
            if (l.contains("trace")) r.traces.push_back(l["trace"]);
        }
        return r;
    }
};

TEST_F(StampDump, StampsNavigationAndSensorsAsPlaybackWould) {
    std::ofstream("survey.Hni") << "[General]\nPitchBias=10.0\nGPSFlags=16\n"
                                   "[Nav]\nLatLonSource=1\nTimeSource=0\n"
                                   "[SBSonar1]\nSubsystemChannelOffset=8\n";
    const DumpRun r = Dump("--stamp --settings survey.Hni line.hsf");
    ASSERT_EQ(r.status, 0);
    ASSERT_EQ(r.traces.size(), 3u);
    const Json& t = r.traces[0];
    EXPECT_EQ(t["Group CoordY"], 30305000);  // 50 deg 30.5 min N
    EXPECT_EQ(t["Group CoordX"], -2552500);  // 4 deg 15.25 min W
    EXPECT_EQ(t["Coord Units"], 2);
    // "Save Corrected in Segy" without layback: the source fields take the group values.
    EXPECT_EQ(t["Source CoordX"], -2552500);
    EXPECT_EQ(t["Source CoordY"], 30305000);
    EXPECT_EQ(t["NMEA Day"], 60);  // 29 February 2024
    EXPECT_EQ(t["NMEA Year"], 2024);
    EXPECT_EQ(t["NMEA Course"], 34);  // VTG magnetic
    EXPECT_EQ(t["NMEA Speed"], 55);
    EXPECT_EQ(t["Heading 100 * Degrees"], 54);  // VTG true
    // Pitch 1000 is 5.493 deg; less the bias of 10: -4.507 deg, -820 units.
    EXPECT_EQ(t["Pitch 180 Degrees / 32768"], -820);
    EXPECT_EQ(t["Pressure PSI * 1000"], 29400);
    EXPECT_NEAR(t["Depth mM"].get<int>(), 9900, 100);  // one atmosphere of water
    EXPECT_EQ(r.traces[1]["Channel Number"], 9);       // subsystem 20 starts at 8 here
    // Six seconds after the sensors nothing is stamped.
    for (const char* k : {"Coord Units", "Pitch 180 Degrees / 32768", "Depth mM", "NMEA Year"}) {
        EXPECT_EQ(r.traces[2][k], 0) << k;
    }
}

TEST_F(StampDump, WithoutReparseDataTheSensorsAreHidden) {
    std::ofstream("survey.Hni") << "[Storage]\nFlags=0\n";
    const DumpRun r = Dump("--stamp --settings survey.Hni line.hsf");
    ASSERT_EQ(r.status, 0);
    ASSERT_EQ(r.traces.size(), 3u);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(r.lines[i]["type"], MsgAlive) << i;
    EXPECT_EQ(r.traces[0]["Coord Units"], 0);
    EXPECT_EQ(r.traces[1]["Channel Number"], 3);  // the default first channel of subsystem 20
}

TEST_F(StampDump, SettingsNeedStampAndAnExistingFile) {
    std::ofstream("survey.Hni") << "[General]\n";
    EXPECT_EQ(Dump("--settings survey.Hni line.hsf").status, 2);
    EXPECT_EQ(Dump("--stamp --settings missing.Hni line.hsf").status, 2);
    const DumpRun r = Dump("--stamp line.hsf");  // built-in defaults: GLL position, no bias
    ASSERT_EQ(r.traces.size(), 3u);
    EXPECT_EQ(r.traces[0]["Group CoordY"], 30305000);
    EXPECT_EQ(r.traces[0]["Pitch 180 Degrees / 32768"], 1000);
}

}  // namespace
}  // namespace halvo

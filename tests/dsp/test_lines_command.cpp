// halvo-hsf lines end to end: a generated file and settings file through the tool, compared with
// the same traces through the chain in this process.

#include <gtest/gtest.h>

#include "ChainRig.h"
#include "HsfTool.h"
#include "app/TempWorkDir.h"
#include "storage/HsfTestWriter.h"

namespace halvo::test {
namespace {

ToolRun Tool(const std::string& args) {
    return RunHsf("lines " + args);
}

class LinesCommand : public TempWorkDir {
  protected:
    // Three pings on subsystem 20, channel byte 0: the default sonar list makes that channel 2.
    static std::vector<SonarMessage> Traces() {
        std::vector<SonarMessage> out;
        for (int ping = 1; ping <= 3; ++ping) {
            std::vector<std::int16_t> v(100, 1000);
            std::fill(v.begin() + 40 + ping, v.end(), 30000);
            out.push_back(MakeTrace({.ping = ping, .subsystem = 20}, v));
        }
        return out;
    }
    void WriteFiles(bool cut) {
        HsfTestWriter w;
        for (const SonarMessage& m : Traces()) w.Add(m);
        if (cut) w.Header(kMessageMarker, MsgTrace, 4000);  // a record cut short
        w.Save("survey.hsf");
        WriteFile("survey.Hni",
                  "[General]\nUserUnits=2\n"
                  "[DisplayProcessing2]\nGain=3\nTVG=500\nTVGStart=40\nTrackRange=10\n"
                  "TrackThreshold=50\nDCFilter=5\n");
    }
};

TEST_F(LinesCommand, PrintsEveryLineAsTheChainMakesIt) {
    WriteFiles(false);
    const ToolRun r = Tool("survey.hsf --settings survey.Hni");
    ASSERT_EQ(r.status, 0);
    // Each trace is processed twice, as the chain does for a trace of a known sonar.
    ASSERT_EQ(r.lines.size(), 6u);

    ChainRig rig({{20, 2}});
    rig.Configure(2, 2, [](DisplayProcessingConfig& c) {
        c.Gain = 3, c.TVG = 500, c.TVGStart = 40, c.TrackRange = 10, c.TrackThreshold = 50,
        c.DCFilter = 5;
    });
    Lines want;
    for (SonarMessage& m : Traces()) {
        rig.Deliver(m);
        for (auto& e : rig.TakeLines()) want.push_back(std::move(e));
    }
    ASSERT_EQ(want.size(), r.lines.size());
    for (std::size_t i = 0; i < want.size(); ++i) {
        SCOPED_TRACE(i);
        const auto& j = r.lines[i];
        EXPECT_EQ(j["display"], 2);
        EXPECT_EQ(j["ping"], static_cast<int>(i / 2 + 1));
        EXPECT_EQ(j["size"], 100);
        EXPECT_EQ(j["dualChannel"], 0);
        EXPECT_EQ(j["bottomSample"], want[i]->bottomSample);
        EXPECT_EQ(j["startDepth"], 0);
        EXPECT_FLOAT_EQ(j["gain"].get<float>(), want[i]->gain);
        EXPECT_FLOAT_EQ(j["reflection"].get<float>(), want[i]->reflection);
        EXPECT_EQ(FromBase64(j["pixels"]), want[i]->pixels);
        EXPECT_EQ(FromBase64(j["rawPixels"]), want[i]->rawPixels);
    }
    // A display that makes no lines prints none. That a chosen display keeps its lines is seen by
    // the render command's test, which reads display 0 this way.
    EXPECT_EQ(Tool("survey.hsf --settings survey.Hni --display 3").lines.size(), 0u);
}

TEST_F(LinesCommand, ReportsReadErrorsAndUsage) {
    WriteFiles(true);
    const ToolRun r = Tool("survey.hsf --settings survey.Hni");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.lines.size(), 6u);  // every line before the damage
    EXPECT_EQ(Tool("survey.hsf").status, 2);
    EXPECT_EQ(Tool("survey.hsf --settings missing.Hni").status, 2);
    EXPECT_EQ(Tool("survey.hsf --settings survey.Hni --display 10").status, 2);
}

}  // namespace
}  // namespace halvo::test

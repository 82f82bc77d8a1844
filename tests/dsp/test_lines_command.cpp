// halvo-hsf lines end to end: a generated file and settings file through the tool, compared with
// the same traces through the chain in this process.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "ChainRig.h"
#include "app/TempWorkDir.h"
#include "storage/HsfTestWriter.h"

namespace halvo::test {
namespace {

using Json = nlohmann::json;

struct ToolRun {
    int status = -1;
    std::vector<Json> lines;
};

ToolRun Tool(const std::string& args) {
    ToolRun r;
    const std::string cmd = std::string(HALVO_HSF_BIN) + " lines " + args + " 2>/dev/null";
    FILE* p = ::popen(cmd.c_str(), "r");
    if (!p) return r;
    std::string out;
    char buf[65536];
    for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, p)) > 0;) out.append(buf, n);
    const int raw = ::pclose(p);
    r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    std::istringstream in(out);
    for (std::string line; std::getline(in, line);) r.lines.push_back(Json::parse(line));
    return r;
}

std::vector<std::uint8_t> FromBase64(const std::string& s) {
    auto value = [](char c) -> int {
        if (c >= 'A' && c <= 'Z') return c - 'A';
        if (c >= 'a' && c <= 'z') return c - 'a' + 26;
        if (c >= '0' && c <= '9') return c - '0' + 52;
        return c == '+' ? 62 : c == '/' ? 63 : -1;
    };
    std::vector<std::uint8_t> out;
    std::uint32_t acc = 0;
    int bits = 0;
    for (char c : s) {
        const int v = value(c);
        if (v < 0) break;
        acc = (acc << 6) | static_cast<std::uint32_t>(v);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            out.push_back(static_cast<std::uint8_t>(acc >> bits));
        }
    }
    return out;
}

class LinesCommand : public TempWorkDir {
  protected:
    // Three pings on subsystem 20, channel byte 0: the default sonar list makes that channel 2.
    std::vector<SonarMessage> Traces() {
        std::vector<SonarMessage> out;
        for (int ping = 1; ping <= 3; ++ping) {
            TraceBuild b;
            b.ping = ping;
            b.subsystem = 20;
            b.channel = 0;
            std::vector<std::int16_t> v(100, 1000);
            for (int i = 40 + ping; i < 100; ++i) v[static_cast<std::size_t>(i)] = 30000;
            out.push_back(MakeTrace(b, v));
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
        c.Gain = 3;
        c.TVG = 500;
        c.TVGStart = 40;
        c.TrackRange = 10;
        c.TrackThreshold = 50;
        c.DCFilter = 5;
    });
    std::vector<std::unique_ptr<SonarDataCacheElement>> want;
    for (SonarMessage& m : Traces()) {
        rig.Deliver(m);
        for (auto& e : rig.Lines()) want.push_back(std::move(e));
    }
    ASSERT_EQ(want.size(), r.lines.size());
    for (std::size_t i = 0; i < want.size(); ++i) {
        const Json& j = r.lines[i];
        EXPECT_EQ(j["display"], 2);
        EXPECT_EQ(j["ping"], static_cast<int>(i / 2 + 1));
        EXPECT_EQ(j["size"], 100);
        EXPECT_EQ(j["dualChannel"], 0);
        EXPECT_EQ(j["bottomSample"], want[i]->bottomSample) << i;
        EXPECT_EQ(j["startDepth"], 0);
        EXPECT_FLOAT_EQ(j["gain"].get<float>(), want[i]->gain);
        EXPECT_FLOAT_EQ(j["reflection"].get<float>(), want[i]->reflection);
        EXPECT_EQ(FromBase64(j["pixels"]), want[i]->pixels) << i;
        EXPECT_EQ(FromBase64(j["rawPixels"]), want[i]->rawPixels) << i;
    }
    // The tracker followed the echo from ping to ping.
    EXPECT_EQ(r.lines[0]["bottomSample"], 41);
    EXPECT_EQ(r.lines[5]["bottomSample"], 43);

    EXPECT_EQ(Tool("survey.hsf --settings survey.Hni --display 3").lines.size(), 0u);
    EXPECT_EQ(Tool("survey.hsf --settings survey.Hni --display 2").lines.size(), 6u);
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

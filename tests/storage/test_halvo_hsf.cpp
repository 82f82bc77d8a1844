#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "core/MessageTypes.h"
#include "core/TraceHeader.h"
#include "storage/HsfTestWriter.h"
#include "storage/StorageTestSupport.h"

namespace halvo {
namespace {

using Json = nlohmann::json;

struct Result {
    int status = -1;
    std::string out;
    std::vector<Json> lines;
};

Result Tool(const std::string& args) {
    Result r;
    r.out = test::Run(std::string(HALVO_HSF_BIN) + " " + args, &r.status);
    std::istringstream in(r.out);
    for (std::string line; std::getline(in, line);)
        r.lines.push_back(Json::parse(line, nullptr, false));
    return r;
}

SonarMessage Trace(int ping, std::int16_t format = 2) {
    TraceSpec s;
    s.ping = ping;
    s.format = format;
    s.samples = 6;
    s.channel = 1;
    s.subsystem = 20;
    return HsfTestWriter::MakeTrace(s);
}

class HsfTool : public testing::Test {
  protected:
    std::string Save(const HsfTestWriter& w, const char* name = "f.hsf") {
        w.Save(dir.File(name));
        return dir.File(name);
    }
    test::TempDir dir;
};

TEST_F(HsfTool, DumpJsonOneObjectPerRecordThenTheEnd) {
    const SonarMessage t1 = Trace(11), t2 = Trace(12, 1);
    const std::uint8_t text[] = {'$', 'G', 'P'};
    const SonarMessage nmea = HsfTestWriter::MakeMessage(MsgNmea, 2, 100, 3, text);
    const std::string f = Save(HsfTestWriter().Add(t1).Add(nmea).Add(t2));
    const Result r = Tool("dump --json --samples " + f);
    ASSERT_EQ(r.status, 0) << r.out;
    ASSERT_EQ(r.lines.size(), 4u);
    const std::vector<std::string> keys = {"index",   "offset",   "marker",    "version",
                                           "session", "type",     "direction", "subsystem",
                                           "channel", "sequence", "reserved",  "size"};
    for (const std::string& k : keys) EXPECT_TRUE(r.lines[1].contains(k)) << k;
    EXPECT_EQ(r.lines[1]["offset"], t1.Wire().size());
    EXPECT_EQ(r.lines[1]["type"], MsgNmea);
    EXPECT_EQ(r.lines[1]["channel"], 3);
    EXPECT_FALSE(r.lines[1].contains("trace"));
    EXPECT_EQ(r.lines[0]["marker"], kMessageMarker);
    EXPECT_EQ(r.lines[0]["version"], kMessageVersion);

    // Every field of the table, the second "Reserved3A" under its own key.
    const Json& trace = r.lines[2]["trace"];
    EXPECT_EQ(trace.size(), kTraceFieldCount);
    for (const TraceFieldInfo& info : AllTraceFields()) {
        EXPECT_TRUE(trace.contains(std::string(info.name))) << info.name;
    }
    EXPECT_TRUE(trace.contains("Reserved3A@124"));
    EXPECT_EQ(trace["Ping Number"], 12);
    EXPECT_EQ(trace["Data Format"], 1);
    EXPECT_EQ(trace["Sample Interval in NS"], 40000);

    // Complex samples stay interleaved: twelve values for six samples.
    const Json& samples = r.lines[2]["samples"];
    ASSERT_EQ(samples.size(), 12u);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        EXPECT_EQ(samples[i], GetLE<std::int16_t>(t2.Payload(), 240 + 2 * i)) << i;
    }
    EXPECT_EQ(r.lines[3]["state"], "END OF FILE");
    EXPECT_EQ(r.lines[3]["offset"], t1.Wire().size() + nmea.Wire().size() + t2.Wire().size());
    EXPECT_TRUE(r.lines[3].contains("error"));
}

// A file cut in a payload ends in ERROR, at the record that was cut, with exit status 1.
TEST_F(HsfTool, DumpEndsWithTheReadOutcome) {
    const SonarMessage t = Trace(1);
    const std::size_t one = t.Wire().size();
    std::vector<std::uint8_t> bytes = HsfTestWriter().Add(t).Add(t).Bytes();
    bytes.resize(one + 20);
    const Result r = Tool("dump --json " + Save(HsfTestWriter().Raw(bytes)));
    EXPECT_EQ(r.status, 1);
    ASSERT_EQ(r.lines.size(), 2u);
    EXPECT_EQ(r.lines[1]["state"], "ERROR");
    EXPECT_EQ(r.lines[1]["offset"], one);
}

TEST_F(HsfTool, NormaliseTurnsOlderTracesIntoTheOneForm) {
    // An 82 message: 80-byte header, ping at 4, count at 12, 4 plain values.
    std::vector<std::uint8_t> p(80 + 8, 0);
    StoreLE<std::int32_t>(p.data() + 4, 77);
    StoreLE<std::int32_t>(p.data() + 12, 4);
    StoreLE<std::uint16_t>(p.data() + 36, 2);
    const SonarMessage side = HsfTestWriter::MakeMessage(MsgSideScanTrace, 2, 20, 0, p);
    const std::string f = Save(HsfTestWriter().Add(side));
    const Result plain = Tool("dump --json " + f);
    const Result norm = Tool("dump --json --normalise " + f);
    ASSERT_EQ(plain.lines.size(), 2u);
    ASSERT_EQ(norm.lines.size(), 2u);
    EXPECT_EQ(plain.lines[0]["type"], MsgSideScanTrace);
    EXPECT_EQ(plain.lines[0]["size"], 88);
    EXPECT_EQ(norm.lines[0]["type"], MsgTrace);
    EXPECT_EQ(norm.lines[0]["size"], 248);
    EXPECT_EQ(plain.lines[0]["trace"]["Ping Number"], 77);
    EXPECT_EQ(norm.lines[0]["trace"]["Ping Number"], 77);
}

TEST_F(HsfTool, InfoSummarisesEachFile) {
    HsfTestWriter w;
    for (int i = 0; i < 5; ++i) w.Add(Trace(100 + i));
    w.Add(HsfTestWriter::MakeMessage(MsgAltitude, 2, 101, 0, {}));
    const std::string good = Save(w, "good.hsf");
    std::vector<std::uint8_t> bytes = w.Bytes();
    bytes.resize(bytes.size() - 30);
    const std::string cut = Save(HsfTestWriter().Raw(bytes), "cut.hsf");

    const Result r = Tool("info --json " + good);
    ASSERT_EQ(r.status, 0);
    ASSERT_EQ(r.lines.size(), 1u);
    const Json& j = r.lines[0];
    EXPECT_EQ(j["records"], 6);
    EXPECT_EQ(j["layout"], "hsf");
    EXPECT_EQ(j["pings"], Json::array({100, 104}));
    EXPECT_EQ(j["end"]["state"], "END OF FILE");
    EXPECT_EQ(j["formats"][0]["format"], 2);
    EXPECT_EQ(j["formats"][0]["traces"], 5);

    const Result both = Tool("info --json " + good + " " + cut + " " + dir.File("none.hsf"));
    EXPECT_EQ(both.status, 1);
    ASSERT_EQ(both.lines.size(), 3u);
    EXPECT_EQ(both.lines[1]["end"]["state"], "ERROR");
    EXPECT_EQ(both.lines[1]["records"], 4);
    EXPECT_TRUE(both.lines[2].contains("error"));

    const Result text = Tool("info " + good);
    EXPECT_EQ(text.status, 0);
    EXPECT_NE(text.out.find("END OF FILE"), std::string::npos);
}

TEST_F(HsfTool, UsageErrorsAndHelp) {
    EXPECT_EQ(Tool("").status, 2);
    EXPECT_EQ(Tool("dump").status, 2);
    EXPECT_EQ(Tool("frobnicate x").status, 2);
    EXPECT_EQ(Tool("dump " + dir.File("none.hsf")).status, 2);
    for (const char* sub : {"info", "dump"}) {
        const Result h = Tool(std::string(sub) + " --help");
        EXPECT_EQ(h.status, 0) << sub;
        EXPECT_NE(h.out.find("--json"), std::string::npos) << sub;
    }
}

}  // namespace
}  // namespace halvo

// The per-file log: its name, the creation line and snapshots, the hold-back rule, the closing
// snapshot and the blank-comment notice, driven through a real recording.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "app/Notifier.h"
#include "storage/LoggingControl.h"
#include "storage/PerFileLog.h"
#include "storage/StorageRig.h"

namespace halvo {
namespace {

struct Boxes : Notifier {
    void Notify(std::string_view title, std::string_view text) override {
        shown.emplace_back(std::string(title) + "|" + std::string(text));
    }
    std::vector<std::string> shown;
};

std::string Slurp(const std::string& path) {
    std::ifstream in(path);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

int Count(const std::string& text, const std::string& what) {
    int n = 0;
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

TEST(PerFileLog, NameFromTheDataFile) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"/d/SonarData000.hsf", "/d/SonarData000.txt"},
        {".hsf", ".txt"},
        {"hsf", "hsf"},
        {"a.hsf", "a.txt"},
        {"x.HSF", "x.HSF"},
        {"line.hsf.bak", "line.hsf.bak"},
    };
    for (const auto& [data, log] : cases) EXPECT_EQ(PerFileLog::LogName(data), log) << data;
}

TEST(PerFileLog, SonarLines) {
    SonarSnapshot s{.index = 1,
                    .firstChannel = 0,
                    .on = 1,
                    .pingNumber = 42,
                    .adcRate = 25000,
                    .dataType = 1,
                    .rateOrRange = 12.5,
                    .trigger = 2,
                    .delay = 3,
                    .depth = 40,
                    .decimationPre = 4,
                    .decimationPost = 2,
                    .mux = 0x1f,
                    .gains = {{true, 0, 7}, {false, 12, 9}},
                    .dacGain = 1.5,
                    .dac = {2, 3},
                    .pulse = "2-16kHz"};
    EXPECT_EQ(PerFileLog::SonarText(s),
              "Sonar1 : On 1 PingNum 42 ADCRate 25000.000000 DataType Complex Rate   12.50 pps "
              "Trigger 2 \n   ADC : Delay  3 Depth 40 Decimation 4 2 Mux 1f Gain AGC=>7 12=>9 "
              "\n   DAC : DACGain     1.5 of    2.0     3.0 Pulse 2-16kHz \n");
    s.rangeMode = true;
    s.dataType = 7;
    s.gains.assign(20, {true, 0, 1});
    const std::string text = PerFileLog::SonarText(s);
    EXPECT_NE(text.find("DataType 7 Range   12.50 MTrigger"), std::string::npos);
    EXPECT_EQ(Count(text, "AGC=>"), 16);  // at most 16 channels
    s.firstChannel = 63;
    EXPECT_EQ(PerFileLog::SonarText(s), "Sonar1 : \n");
}

class PerFileLogRun : public testing::Test {
  protected:
    PerFileLogRun() : logging(coordinator), rig(Hooks(logging, boxes, mark, parameters)) {
        coordinator.SetActiveProfile(rig.dir.File("Defaults.Hni"));
        LoggingSettings s;
        s.enablePerFileLog = 1;
        logging.setSettings(s);
    }
    static StorageDataProcessor::Hooks Hooks(LoggingControl& l, Boxes& b, int& mark, int& params) {
        StorageDataProcessor::Hooks h;
        h.logging = &l;
        h.notifier = &b;
        h.snapshot.markNumber = [&mark] { return mark; };
        h.snapshot.parameterChanges = [&params] { return params; };
        h.snapshot.gps = [&mark] {
            return GpsSnapshot{"12:00:01", "59 54.1N 010 44.2E", "4.2kn", mark};
        };
        h.snapshot.now = [] { return TimeValue{1'700'000'000, 0}; };
        return h;
    }
    void Write(std::uint32_t afterMs) {
        rig.ticks.AdvanceTick(afterMs);
        rig.Send(test::StorageRig::Trace(1, 10));
    }
    std::string Log() { return Slurp(PerFileLog::LogName(rig.File(0))); }

    SystemCoordinator coordinator;
    LoggingControl logging;
    Boxes boxes;
    int mark = 0;
    int parameters = 0;
    test::StorageRig rig;
};

TEST_F(PerFileLogRun, CreationSnapshotsAndClose) {
    LoggingSettings s = logging.getSettings();
    s.commentLine1 = "Line 7 north";
    logging.setSettings(s);
    rig.Record();
    Write(0);
    EXPECT_EQ(Log().rfind("Log File " + PerFileLog::LogName(rig.File(0)) +
                              " Created On 2023/11/14 22:13:20\n=======: Line 7 north\n"
                              "GPS    : 12:00:01 59 54.1N 010 44.2E 4.2kn Mark 0\n"
                              "Sensors:  Depth    0.00 Pressure    0.00\n\n",
                          0),
              0u);
    mark = 1;
    Write(1000);  // held: the last snapshot is 1 s old
    parameters = 5;
    Write(1000);
    EXPECT_EQ(Count(Log(), "GPS    :"), 1);
    EXPECT_EQ(rig.processor->FileLog().HeldBack(), 2);
    Write(1999);
    EXPECT_EQ(Count(Log(), "GPS    :"), 1);
    Write(1);  // 4000 ms since the first
    EXPECT_EQ(Count(Log(), "GPS    :"), 2);
    EXPECT_NE(Log().find("Mark 1\n"), std::string::npos);
    Write(10000);  // nothing changed: no snapshot
    EXPECT_EQ(Count(Log(), "GPS    :"), 2);
    mark = 2;
    rig.ticks.SetTick(10);  // backward: one at once
    Write(0);
    EXPECT_EQ(Count(Log(), "GPS    :"), 3);
    rig.Stop();
    EXPECT_EQ(Count(Log(), "GPS    :"), 4);  // the closing snapshot
    EXPECT_TRUE(boxes.shown.empty());        // a comment was there
}

TEST_F(PerFileLogRun, BlankCommentsNoticedOncePerRun) {
    rig.Record([](StorageSettings& s) { s.maxRecordSize = 1; });
    for (int i = 0; i < 250; ++i) rig.Send(test::StorageRig::Trace(i, 5000));  // rolls once
    rig.Stop();
    ASSERT_EQ(boxes.shown.size(), 1u);
    EXPECT_EQ(
        boxes.shown[0],
        "Log File Comment / Notes Is Blank|Please Enter A Comment or Notes in the LOG Options");
    EXPECT_NE(Slurp(PerFileLog::LogName(rig.File(1))).find("Created On"), std::string::npos);
}

TEST_F(PerFileLogRun, NoLogWhenOffOrPlaying) {
    LoggingSettings s = logging.getSettings();
    s.enablePerFileLog = 0;
    logging.setSettings(s);
    rig.Record();
    Write(5000);
    rig.Stop();
    EXPECT_FALSE(std::filesystem::exists(PerFileLog::LogName(rig.File(0))));
    // A played file writes none either.
    s.enablePerFileLog = 1;
    logging.setSettings(s);
    rig.Play("SonarData000.hsf", 50);
    for (int i = 0; i < 10; ++i) rig.Idle(100);
    EXPECT_EQ(rig.State(), StateEndOfFile);
    EXPECT_FALSE(std::filesystem::exists(PerFileLog::LogName(rig.File(0))));
}

}  // namespace
}  // namespace halvo

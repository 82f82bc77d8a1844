// The sonar pages and the QC page over a real System: what a page shows follows its owner, what
// the operator enters reaches the owner held to range, and each page's own rules hold. One test
// takes a ping rate typed into the page all the way to the simulator.

#include <QCheckBox>
#include <chrono>
#include <nlohmann/json.hpp>
#include <thread>

#include "GuiTestApp.h"
#include "app/TempWorkDir.h"
#include "core/MessageHub.h"
#include "gui/pages/CfgSonar.h"
#include "gui/pages/SetupQC.h"
#include "gui/pages/SonarPages.h"
#include "gui/sheets/CfgSheet.h"
#include "gui/sheets/EnterKeyFilter.h"
#include "halvo-sim/SimServer.h"
#include "net/NetworkHub.h"
#include "platform/FakeSystemClock.h"
#include "platform/FakeTickSource.h"
#include "platform/MonotonicTickSource.h"
#include "sim/SimTestServer.h"
#include "sonar/DataFormatWarning.h"
#include "sonar/SonarIF.h"
#include "system/System.h"

namespace halvo {
namespace {

using test::Shown;

class SonarPagesTest : public test::TempWorkDir {
  protected:
    // A system of the given configuration with its sonar pages in a shown sheet. The network
    // stays off unless the defaults say otherwise, and points at this machine in any case.
    void Start(const std::string& config, const std::string& defaults = "", int commandPort = 9,
               int dataPort = 9) {
        WriteFile("HalvoConfig.ini", "[HalvoConfig]\nConfig=" + config + "\n");
        WriteFile("HalvoDefaults.Hni",
                  "[MessageSonarCommand]\nHostName=127.0.0.1\nPort=" + std::to_string(commandPort) +
                      "\n[MessageSonarData]\nHostName=127.0.0.1\nPort=" + std::to_string(dataPort) +
                      "\n" + (defaults.empty() ? "[Message]\nEnableNetworkIO=0\n" : defaults));
        system_ = std::make_unique<System>(System::Platform{*ticks_, clock_});
        system_->Startup();
        keys_ = std::make_unique<EnterKeyFilter>(system_->Coordinator());
        app_.installEventFilter(keys_.get());
        context_ = std::make_unique<SheetContext>(
            SheetContext{system_->Coordinator(), operator_, enables_});
        sheet_ = std::make_unique<CfgSheet>(*context_);
        AddSonarPages(*sheet_, *system_, *context_);
        sheet_->resize(1300, 640);
        sheet_->show();
        sheet_->TimerPass();
    }
    void TearDown() override {
        sheet_.reset();
        if (keys_) app_.removeEventFilter(keys_.get());
        if (system_) system_->Ending(false);
        system_.reset();
        TempWorkDir::TearDown();
    }
    // A fresh folder and system for the next configuration of a table.
    void Restart() {
        TearDown();
        SetUp();
    }

    SonarIF& Sonar() { return system_->Sonar(); }
    SheetPage* Page(const char* caption) {
        SheetPage* p = sheet_->FindPage(caption);
        if (p != nullptr) sheet_->ShowPage(p);
        return p;
    }
    static void Type(QWidget* page, const char* name, const QString& text) {
        test::TypeAndEnter(test::Child<QLineEdit>(page, name), text);
    }
    static void Choose(QWidget* page, const char* name, const QString& text) {
        test::Choose(test::Child<QComboBox>(page, name), text);
    }
    static void Click(QWidget* page, const char* name) { test::Button(page, name)->click(); }
    static bool Checked(QWidget* page, const char* name) {
        return test::Child<QCheckBox>(page, name)->isChecked();
    }

    QApplication& app_ = test::GuiApp();
    FakeTickSource fakeTicks_;
    TickSource* ticks_ = &fakeTicks_;
    FakeSystemClock clock_;
    test::ScriptedOperator operator_;
    EnableTable enables_;
    std::unique_ptr<System> system_;
    std::unique_ptr<EnterKeyFilter> keys_;
    std::unique_ptr<SheetContext> context_;
    std::unique_ptr<CfgSheet> sheet_;
};

TEST_F(SonarPagesTest, EachConfigurationGetsItsPagesCaptionedBySonarNameAndFitsTheScreen) {
    const struct {
        const char* config;
        const char* defaults;
        const char* tabs;
    } cases[] = {
        {"SBSS", "", "SB,SSL,SSH,QC"},
        {"R90", "", "SSL,QC"},
        {"SBRC900", "", "SB,RC900,QC"},
        {"SBSS", "[OverallConfig]\nSonarName1=Port Side\n", "SB,Port Side,SSH,QC"},
        {"Unknown", "[Sonar]\nNumSonars=0\n", "QC"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.config);
        Start(c.config, std::string("[Message]\nEnableNetworkIO=0\n") + c.defaults);
        QStringList tabs;
        for (int i = 0; i < sheet_->PageCount(); ++i) tabs << sheet_->PageAt(i)->Caption();
        EXPECT_EQ(tabs.join(",").toStdString(), c.tabs);
        auto* qc = dynamic_cast<SetupQC*>(sheet_->FindPage("QC"));
        ASSERT_NE(qc, nullptr);
        EXPECT_EQ(qc->Rows(), std::clamp(Sonar().GetNumSonars(), 0, 4));
        for (int i = 0; *c.defaults == 0 && i < sheet_->PageCount(); ++i) {
            SheetPage* p = sheet_->PageAt(i);
            sheet_->ShowPage(p);
            sheet_->TimerPass();
            // Readable on a 1366 x 768 screen, with room for the title bar and the tabs.
            EXPECT_LE(p->minimumSizeHint().width(), 1340) << p->Caption().toStdString();
            EXPECT_LE(p->minimumSizeHint().height(), 660) << p->Caption().toStdString();
            QApplication::processEvents();
            const std::string shot =
                "pages-sonar-" + std::string(c.config) + "-" + p->Caption().toStdString() + ".png";
            EXPECT_TRUE(test::Screenshot(*sheet_, shot.c_str()));
        }
        Restart();
    }
}

TEST_F(SonarPagesTest, SonarPageShowsWhatTheModelHoldsAfterAChangeElsewhere) {
    Start("SBSS");
    SheetPage* page = Page("SSL");
    SonarConfig c = Sonar().GetSonar(1);
    c.pingRate = 7.25f;
    c.windowUnits = SonarConfig::UnitsMilliseconds;
    c.depth = 80.5f;
    c.trigger = SonarConfig::TriggerLinked;
    c.inputChannels = 3;
    c.transducers = 1;
    c.gain[2] = 4.5f;
    Sonar().SetSonar(c, 1);
    sheet_->TimerPass();
    for (const auto& [field, shown] : {std::pair{"PingRate", "7.25"},
                                       {"WindowUnits", "milliseconds"},
                                       {"ADCDepth", "80.50"},
                                       {"Trigger", "Linked"},
                                       {"ADCGain2", "4.500"}}) {
        EXPECT_EQ(Shown(page, field), shown) << field;
    }
    // The rows follow the counts: three channels, one transducer.
    for (const auto& [field, visible] : {std::pair{"ADCGain2", true},
                                         {"ADCGain3", false},
                                         {"PulsePower0", true},
                                         {"PulsePower1", false}}) {
        EXPECT_EQ(test::Child<QLineEdit>(page, field)->isVisible(), visible) << field;
    }
    // The other sonars' pages were not disturbed.
    EXPECT_EQ(Shown(Page("SB"), "PingRate"), "4.00");
}

TEST_F(SonarPagesTest, OperatorEntriesReachTheModelHeldToRange) {
    Start("SBSS");
    SheetPage* page = Page("SB");
    SonarConfig want = Sonar().GetSonar(0);
    Type(page, "PingRate", "5000");
    EXPECT_EQ(Sonar().GetSonar(0).pingRate, 100.0f);
    Choose(page, "RangeOrRate", "Meters");
    Type(page, "PingRate", "5000");  // a range has room for it
    Type(page, "Transducers", "40");
    Type(page, "OverallPulsePower", "-3");
    Type(page, "ADCGain0", "2.5");
    Click(page, "AGC0");
    Click(page, "SonarOn");
    Choose(page, "ADCFrameDecimator", "8X");
    Choose(page, "ADCPixelDecimator", "2048X");
    Choose(page, "SubSystem", "SSX");
    Choose(page, "SpecialOptions", "Mux:4 (Unused)");  // one nibble per input, all eight alike
    Type(page, "Pulse", "Chirp 2-16 kHz");
    EXPECT_EQ(Shown(page, "Pulse"), "Chirp 2-16 kHz");
    // Clearing "in use" touches only its bit.
    Click(page, "Flags");
    want.rangeOrRate = SonarConfig::RangeMeters;
    want.pingRate = 5000.0f;
    want.transducers = 16;
    want.overallPower = 0.0f;
    want.gain[0] = 2.5f;
    want.agc[0] = 1;
    want.sonarOn = 1;
    want.frameDecimator = 8;
    want.pixelDecimator = 2048;
    want.subsystem = 22;
    want.specialOptions = static_cast<std::int32_t>(0x88888888u);
    want.pulse = "Chirp 2-16 kHz";
    want.flags = 0;
    EXPECT_EQ(Sonar().GetSonar(0), want) << "nothing else moved";
}

TEST_F(SonarPagesTest, DataFormatWarningOnlyOnTheAnalyticConfigurationAndOnlyOnce) {
    for (const char* config : {"SBSS", "SBRC900"}) {
        SCOPED_TRACE(config);
        Start(config);
        SheetPage* page = Page("SB");
        EXPECT_EQ(Shown(page, "DataType"), "Analytic");
        Choose(page, "DataType", "Raw");
        Choose(page, "DataType", "Envelope");
        EXPECT_EQ(Sonar().GetSonar(0).dataType, SonarConfig::DataEnvelope);  // nothing refused
        if (std::string(config) == "SBRC900") {
            ASSERT_EQ(operator_.boxes.size(), 1u);
            EXPECT_EQ(operator_.boxes[0].title, DataFormatWarning::kTitle);
            EXPECT_EQ(operator_.boxes[0].text, DataFormatWarning::kText);
        } else {
            EXPECT_TRUE(operator_.boxes.empty());
        }
        operator_.boxes.clear();
        Restart();
    }
}

TEST_F(SonarPagesTest, WizardSetsUpRawDataThroughThePage) {
    Start("SBSS");
    auto* page = dynamic_cast<CfgSonar*>(Page("SSH"));
    ASSERT_NE(page, nullptr);
    page->SetupRawDataCollection();
    const SonarConfig c = Sonar().GetSonar(2);
    EXPECT_EQ(c.dataType, SonarConfig::DataRaw);
    EXPECT_EQ(c.sonarOn, 1);
    EXPECT_EQ(c.pingRate, 1.0f);
    EXPECT_EQ(c.windowUnits, SonarConfig::UnitsMilliseconds);
    EXPECT_EQ(c.depth, 100.0f);
    EXPECT_EQ(Shown(page, "DataType"), "Raw");
    EXPECT_EQ(page->FirstDisplayChannel(), c.channelOffset);
}

TEST_F(SonarPagesTest, R90PageSwitchesEachStreamBitAlone) {
    Start("R90");
    SheetPage* page = Page("SSL");
    Click(page, "StreamFlagHigh");
    EXPECT_EQ(Sonar().GetSonar(0).flags, SonarConfig::kFlagInUse | SonarConfig::kFlagStreamHigh);
    Click(page, "StreamFlagLow");
    Click(page, "StreamFlagHigh");
    EXPECT_EQ(Sonar().GetSonar(0).flags, SonarConfig::kFlagInUse | SonarConfig::kFlagStreamLow);
    SonarConfig c = Sonar().GetSonar(0);
    c.flags = SonarConfig::kFlagStreamHigh;
    Sonar().SetSonar(c, 0);
    sheet_->TimerPass();
    EXPECT_FALSE(Checked(page, "StreamFlagLow"));
    EXPECT_TRUE(Checked(page, "StreamFlagHigh"));
    EXPECT_FALSE(Checked(page, "Flags"));
}

TEST_F(SonarPagesTest, RC900PageWritesRecorderAndSensorsAndSelectsPitchRoll) {
    Start("SBRC900");
    SheetPage* page = Page("RC900");
    RecorderConfig r = Sonar().GetRecorder();
    r.recordFile = "Line7";
    r.flags = RecorderConfig::kFlagRecorderOn;
    Sonar().SetRecorder(r);
    sheet_->TimerPass();
    EXPECT_EQ(Shown(page, "RecordFile"), "Line7");
    EXPECT_TRUE(Checked(page, "RecorderFlag"));
    EXPECT_TRUE(test::Child<QLineEdit>(page, "RecordFile")->isEnabled());

    Click(page, "MasterEnable");
    EXPECT_EQ(Sonar().GetRecorder().masterEnable, 1);
    const int select = Sonar().GetSensor().pitchRollSelect;
    Type(page, "PitchRollChannel", "42");
    EXPECT_EQ(Sonar().GetSensor().pitchRollChannel, 9);
    EXPECT_EQ(Sonar().GetSensor().pitchRollSelect, select + 1);  // a new channel is selected
    Click(page, "SelectPitchRoll");
    EXPECT_EQ(Sonar().GetSensor().pitchRollSelect, select + 2);
    Click(page, "SensorFlags");
    EXPECT_EQ(Sonar().GetSensor().flags, SensorConfig::kFlagSensorInputs);
}

TEST_F(SonarPagesTest, QCPageSetsTheFilterAndEachSonarsCopyHeldToRange) {
    Start("SBSS");
    SheetPage* page = Page("QC");
    for (const auto& [text, value] :
         {std::pair{"QC Only", 4u}, {"Store and Forward Only", 2u}, {"Acquire Only", 1u}}) {
        Choose(page, "Filter", text);
        EXPECT_EQ(system_->Hub().Filter().Value(), value);
    }
    Choose(page, "QCSource1", "Disk Q");
    Type(page, "QCLongTrackSubSampling1", "5000");
    Type(page, "QCCrossTrackSubSampling1", "0");
    Choose(page, "QCBlendingMask1", "SAS Blended");
    QCConfig q;
    q.changeCount = -1;
    Sonar().GetQC(q, 1);
    EXPECT_EQ(q.source, QCConfig::SourceDisk);
    EXPECT_EQ(q.longTrackSubsampling, 1000);
    EXPECT_EQ(q.crossTrackSubsampling, 1);
    EXPECT_EQ(q.blendingMask, 63);

    // A change made elsewhere shows; the subsample texts keep their blanks.
    q.subsampleMethod = QCConfig::SubsampleNone;
    Sonar().SetQC(q, 2);
    system_->Hub().SetFilter(FilterQCOnly);
    sheet_->TimerPass();
    EXPECT_EQ(Shown(page, "QCSubsampleMethod2"), "None     ");
    EXPECT_EQ(Shown(page, "Filter"), "QC Only");
}

// What the acceptance rests on: a ping rate typed into the page reaches the sonar as message
// 124 with the rate in thousandths.
TEST_F(SonarPagesTest, PingRateTypedInThePageReachesTheSimulator) {
    FixedWallClock simClock(1700000000123LL);
    SimOptions o = test::TestOptions();
    o.quiet = true;
    o.sensors = false;
    o.logFile = (dir_ / "received.jsonl").string();
    SimServer sim(o, simClock);
    std::string error;
    ASSERT_TRUE(sim.Start(error)) << error;
    MonotonicTickSource realTicks;
    ticks_ = &realTicks;
    Start("SBSS", "[Message]\nEnableNetworkIO=1\n[Network]\nReconnectInterval=500\n",
          sim.commandPort(), sim.dataPort());
    ASSERT_TRUE(
        test::PumpUntil([&] { return system_->Network().GetStatus()[0].IsConnected(); }, 5000));

    // Ticks the controller, as the main window's update does, until the simulator logged a 124
    // to the sub-bottom whose first word is `word`.
    auto sent124 = [&](std::int64_t word) {
        return test::PumpUntil(
            [&] {
                system_->Sonar().Tick();
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
                for (const auto& j :
                     test::ReadSimLog((dir_ / "received.jsonl").string(), "command")) {
                    if (j.value("type", 0) != 124 || j.value("subsystem", -1) != 0) continue;
                    const auto words = j.value("words", std::vector<std::int64_t>{});
                    if (!words.empty() && words[0] == word) return true;
                }
                return false;
            },
            5000);
    };
    ASSERT_TRUE(sent124(4000));  // the full send at connection
    Type(Page("SB"), "PingRate", "6.5");
    EXPECT_EQ(Sonar().GetSonar(0).pingRate, 6.5f);
    EXPECT_TRUE(sent124(6500));

    sheet_.reset();
    system_->Ending(false);
    system_.reset();
    sim.Stop();
}

}  // namespace
}  // namespace halvo

#include "NavPagesFixture.h"
#include "app/GeneralSettings.h"
#include "core/MessageHub.h"
#include "core/MessageTypes.h"
#include "core/TraceHeader.h"
#include "gui/pages/CfgDevices.h"
#include "gui/pages/SetupDevices.h"

namespace halvo {
namespace {

class DevicesPagesTest : public test::NavPagesTest {
  protected:
    void SetUp() override {
        NavPagesTest::SetUp();
        cfgPage_ = Show<CfgDevices>(*cfg_, "Devices");
        ASSERT_NE(cfgPage_, nullptr);
    }
    // A sonar trace as the data link posts it, with its readings in the header.
    void FeedTrace() {
        SonarMessage m = SonarMessage::Build(MsgTrace, DirReply, 0, 0, kTraceHeaderSize + 16);
        TraceHeaderView th(m.Payload());
        th.SetInt(TraceField::SampleIntervalNS, 1000);
        for (int n = 0; n < 8; ++n) {
            th.SetInt(static_cast<TraceField>(static_cast<int>(TraceField::AnnotationWord0) + n),
                      100 + n);
        }
        th.SetInt(TraceField::PressurePSI, 14696);
        th.SetInt(TraceField::DepthMM, 12345);
        th.SetInt(TraceField::Temperature, 215);
        ASSERT_EQ(system_->Hub().DataBus().Post(m, SourceSonarData), 0);
    }
    static QLineEdit* Edit(QWidget* page, const char* name) {
        return test::Child<QLineEdit>(page, name);
    }

    CfgDevices* cfgPage_ = nullptr;
};

TEST_F(DevicesPagesTest, ControlPageFollowsTheSettingsAndHoldsEntriesToRange) {
    system_->General().Modify([](GeneralValues& g) { g.PressureGain = 2.5f; });
    cfg_->TimerPass();
    EXPECT_EQ(Edit(cfgPage_, "PressureGain")->text(), "2.50000");

    const struct {
        const char* field;
        const char* typed;
        const char* shown;
    } cases[] = {
        {"TemperatureChannel", "9", "7"},
        {"BottleTemperatureChannel", "-4", "-1"},
        {"PressureOffset", "99999", "10000.000"},
        {"PressureMountingOffsetMeters", "-1.25", "-1.250"},
        {"TemperatureGain", "0.0125", "0.0125000"},
    };
    GeneralValues want = system_->General().Snapshot();
    for (const auto& c : cases) {
        test::TypeAndLeave(Edit(cfgPage_, c.field), c.typed);
        EXPECT_EQ(Edit(cfgPage_, c.field)->text(), c.shown) << c.field;
    }
    want.TemperatureChannel = CfgDevices::kMaxChannel;
    want.BottleTemperatureChannel = CfgDevices::kMinChannel;
    want.PressureOffset = CfgDevices::kPressureOffsetLimit;
    want.PressureMountingOffsetMeters = -1.25f;
    want.TemperatureGain = 0.0125f;
    EXPECT_EQ(system_->General().Snapshot(), want) << "nothing else in General moved";
}

TEST_F(DevicesPagesTest, ReadingsFollowTheDigestAndTheBottleScaling) {
    // Bottle temperature: channel 5 of the analog words, scaled by this page's keys.
    test::TypeAndLeave(Edit(cfgPage_, "BottleTemperatureChannel"), "5");
    test::TypeAndLeave(Edit(cfgPage_, "BottleTemperatureGain"), "0.1");
    test::TypeAndLeave(Edit(cfgPage_, "BottleTemperatureOffset"), "2");
    cfg_->TimerPass();  // reads the digest once, so the next trace rebuilds it
    FeedTrace();
    ASSERT_TRUE(TickUntil(*cfg_, [&] { return cfgPage_->AnalogText().startsWith("   100"); }))
        << cfgPage_->AnalogText().toStdString();
    EXPECT_EQ(cfgPage_->AnalogText(), "   100    101    102    103    104    105    106    107");
    EXPECT_EQ(cfgPage_->SensorText(), "    21.50C,  14.696PSI,   12.345M d,    0.000M a");
    // 105 counts * 0.1 + 2 = 12.5 C
    EXPECT_EQ(cfgPage_->BottleText(), "12.5 BC");
    EXPECT_TRUE(test::Screenshot(*cfg_, "page_cfg_devices.png"));

    // The advanced page reads the same digest.
    auto* setupPage = Show<SetupDevices>(*setup_, "Devices");
    ASSERT_NE(setupPage, nullptr);
    ASSERT_TRUE(TickUntil(*setup_, [&] { return setupPage->ReadingsText().contains("14.696PSI"); }))
        << setupPage->ReadingsText().toStdString();
    EXPECT_TRUE(setupPage->ReadingsText().contains("12.5 BC"));
    EXPECT_TRUE(test::Screenshot(*setup_, "page_setup_devices.png"));
}

TEST_F(DevicesPagesTest, SetupPageEditsOnlyItsOwnKeys) {
    auto* page = Show<SetupDevices>(*setup_, "Devices");
    ASSERT_NE(page, nullptr);
    system_->General().Modify([](GeneralValues& g) { g.HeaveSensorSource = 1; });
    setup_->TimerPass();
    EXPECT_EQ(test::Shown(page, "HeaveSensorSource"), "Pressure Depth");

    GeneralValues want = system_->General().Snapshot();
    test::TypeAndLeave(Edit(page, "PitchBias"), "200");
    test::TypeAndLeave(Edit(page, "WaterSoundSpeed"), "1000");
    test::Choose(test::Child<QComboBox>(page, "SoundSpeedSource"), "Sound Velocity Sensor");
    EXPECT_EQ(Edit(page, "PitchBias")->text(), "180.00");
    want.PitchBias = SetupDevices::kBiasLimit;
    want.WaterSoundSpeed = SetupDevices::kMinSoundSpeed;
    want.SoundSpeedSource = 1;
    EXPECT_EQ(system_->General().Snapshot(), want) << "nothing else in General moved";
}

}  // namespace
}  // namespace halvo

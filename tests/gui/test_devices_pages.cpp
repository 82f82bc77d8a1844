#include <QLabel>

#include "NavPagesFixture.h"
#include "app/GeneralSettings.h"
#include "app/ProgramClock.h"
#include "core/MessageHub.h"
#include "core/MessageTypes.h"
#include "core/TraceHeader.h"
#include "gui/pages/CfgDevices.h"
#include "gui/pages/SetupDevices.h"
#include "gui/pages/SetupNav.h"
#include "gui/pages/SetupTelemetry.h"
#include "nav/NavigationInput.h"
#include "status/StatusDataProcessor.h"

namespace halvo {
namespace {

class DevicesPagesTest : public test::NavPagesTest {
  protected:
    void SetUp() override {
        NavPagesTest::SetUp();
        cfgPage_ = dynamic_cast<CfgDevices*>(Show(*cfg_, "Devices"));
        ASSERT_NE(cfgPage_, nullptr);
    }
    // A sonar trace as the data link posts it, with its readings in the header.
    void FeedTrace(std::int16_t analogBase, std::int32_t pressure, std::int32_t depth,
                   std::int16_t temperature) {
        SonarMessage m = SonarMessage::Build(MsgTrace, DirReply, 0, 0, kTraceHeaderSize + 16);
        TraceHeaderView th(m.Payload());
        th.SetInt(TraceField::SampleIntervalNS, 1000);
        for (int n = 0; n < 8; ++n) {
            th.SetInt(static_cast<TraceField>(static_cast<int>(TraceField::AnnotationWord0) + n),
                      analogBase + n);
        }
        th.SetInt(TraceField::PressurePSI, pressure);
        th.SetInt(TraceField::DepthMM, depth);
        th.SetInt(TraceField::Temperature, temperature);
        ASSERT_EQ(system_->Hub().DataBus().Post(m, SourceSonarData), 0);
    }
    // Ticks the sheet until the page shows what the digest holds.
    bool TickUntil(PageSheet& sheet, const std::function<bool()>& done) {
        return test::PumpUntil(
            [&] {
                sheet.TimerPass();
                return done();
            },
            3000);
    }
    QLineEdit* Edit(QWidget* page, const char* name) { return Find<QLineEdit>(page, name); }

    CfgDevices* cfgPage_ = nullptr;
};

TEST_F(DevicesPagesTest, ControlPageFollowsTheSettingsAndHoldsEntriesToRange) {
    system_->General().Modify([](GeneralValues& g) {
        g.TemperatureChannel = 3;
        g.PressureGain = 2.5f;
    });
    cfg_->TimerPass();
    EXPECT_EQ(Edit(cfgPage_, "TemperatureChannel")->text(), "3");
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
    for (const auto& c : cases) {
        Enter(Edit(cfgPage_, c.field), c.typed);
        EXPECT_EQ(Edit(cfgPage_, c.field)->text(), c.shown) << c.field;
    }
    const GeneralValues g = system_->General().Snapshot();
    EXPECT_EQ(g.TemperatureChannel, CfgDevices::kMaxChannel);
    EXPECT_EQ(g.BottleTemperatureChannel, CfgDevices::kMinChannel);
    EXPECT_FLOAT_EQ(g.PressureOffset, CfgDevices::kPressureOffsetLimit);
    EXPECT_FLOAT_EQ(g.PressureMountingOffsetMeters, -1.25f);
    EXPECT_FLOAT_EQ(g.TemperatureGain, 0.0125f);
}

TEST_F(DevicesPagesTest, ReadingsFollowTheDigestAndTheBottleScaling) {
    // Bottle temperature: channel 5 of the analog words, scaled by this page's keys.
    Enter(Edit(cfgPage_, "BottleTemperatureChannel"), "5");
    Enter(Edit(cfgPage_, "BottleTemperatureGain"), "0.1");
    Enter(Edit(cfgPage_, "BottleTemperatureOffset"), "2");
    cfg_->TimerPass();  // reads the digest once, so the next trace rebuilds it
    FeedTrace(100, 14696, 12345, 215);
    ASSERT_TRUE(TickUntil(*cfg_, [&] { return cfgPage_->AnalogText().startsWith("   100"); }))
        << cfgPage_->AnalogText().toStdString();
    EXPECT_EQ(cfgPage_->AnalogText(), "   100    101    102    103    104    105    106    107");
    EXPECT_EQ(cfgPage_->SensorText(), "    21.50C,  14.696PSI,   12.345M d,    0.000M a");
    // 105 counts * 0.1 + 2 = 12.5 C
    EXPECT_EQ(cfgPage_->BottleText(), "12.5 BC");

    // The advanced page reads the same digest.
    auto* setupPage = dynamic_cast<SetupDevices*>(Show(*setup_, "Devices"));
    ASSERT_NE(setupPage, nullptr);
    ASSERT_TRUE(TickUntil(*setup_, [&] { return setupPage->ReadingsText().contains("14.696PSI"); }))
        << setupPage->ReadingsText().toStdString();
    EXPECT_TRUE(setupPage->ReadingsText().contains("12.5 BC"));
}

TEST_F(DevicesPagesTest, SetupPageEditsOnlyItsOwnKeys) {
    auto* page = dynamic_cast<SetupDevices*>(Show(*setup_, "Devices"));
    ASSERT_NE(page, nullptr);
    system_->General().Modify([](GeneralValues& g) { g.HeaveSensorSource = 1; });
    setup_->TimerPass();
    EXPECT_EQ(Find<QComboBox>(page, "HeaveSensorSource")->currentText(), "Pressure Depth");

    const GeneralValues before = system_->General().Snapshot();
    Enter(Edit(page, "PitchBias"), "200");
    Enter(Edit(page, "WaterSoundSpeed"), "1000");
    Choose(Find<QComboBox>(page, "SoundSpeedSource"), "Sound Velocity Sensor");
    EXPECT_EQ(Edit(page, "PitchBias")->text(), "180.00");
    EXPECT_EQ(Edit(page, "WaterSoundSpeed")->text(), "1300");

    GeneralValues expected = before;
    expected.PitchBias = SetupDevices::kBiasLimit;
    expected.WaterSoundSpeed = SetupDevices::kMinSoundSpeed;
    expected.SoundSpeedSource = 1;
    EXPECT_EQ(system_->General().Snapshot(), expected) << "nothing else in General moved";
}

TEST_F(DevicesPagesTest, Screenshots) {
    // Some life in the pages first: a sentence and a trace.
    SonarMessage gll = NavigationInput::BuildMessage(
        "$GPGLL,5130.1234,N,00005.6789,W,120000.00,A*00\r\n", 0, system_->Clock().Now());
    ASSERT_EQ(system_->Hub().DataBus().Post(gll, SourceSerial), 0);
    cfg_->TimerPass();
    FeedTrace(100, 14696, 12345, 215);
    ASSERT_TRUE(TickUntil(*cfg_, [&] { return cfgPage_->AnalogText().startsWith("   100"); }));
    Screenshot(*cfg_, "page_cfg_devices.png");

    for (const char* caption : {"Network", "Navigation"}) {
        SheetPage* page = Show(*cfg_, caption);
        ASSERT_NE(page, nullptr);
        if (auto* net = dynamic_cast<SetupTelemetry*>(page)) {
            Find<QCheckBox>(net, "ShowLatency")->setChecked(true);
        }
        cfg_->TimerPass();
        Screenshot(*cfg_, caption == std::string("Network") ? "page_setup_telemetry.png"
                                                            : "page_setup_nav.png");
    }
    ASSERT_NE(Show(*setup_, "Devices"), nullptr);
    setup_->TimerPass();
    Screenshot(*setup_, "page_setup_devices.png");
}

}  // namespace
}  // namespace halvo

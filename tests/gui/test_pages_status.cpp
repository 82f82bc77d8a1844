// The alerts and status pages over the real status control and processor.

#include <QCheckBox>
#include <QLabel>
#include <QToolButton>

#include "GuiTestApp.h"
#include "display/WaterfallPlot.h"
#include "gui/pages/SetupAlert.h"
#include "gui/pages/SetupStatus.h"
#include "status/StatusTestSupport.h"

namespace halvo::test {
namespace {

class AlertPage : public StatusRig {
  protected:
    AlertPage() {
        page_.show();
        page_.Tick();
    }
    const SetupAlert::Widgets& ui() { return page_.Ui(); }
    QCheckBox* Box(const char* label) { return qobject_cast<QCheckBox*>(Button(&page_, label)); }

    PageContext ctx_;
    SetupAlert page_{ctx_.context, control_, [this] { return processor_.alertText(); }};
};

TEST_F(AlertPage, ShowsTheLimitsStatusHolds) {
    AlertSettings a = control_.getAlertSettings();
    a.alertFlags = AlertRoll | AlertBeep | AlertNoSvs;
    a.rollMin = -12.5f;
    control_.setAlertSettings(a);
    page_.Tick();
    for (const char* on : {"Enable Roll", "PC Speaker Beeps on Alerts", "SVS Received"}) {
        EXPECT_TRUE(Box(on)->isChecked()) << on;
    }
    EXPECT_FALSE(Box("Enable GPS")->isChecked());
    EXPECT_EQ(ui().rollMin->text(), "-12.5");
}

TEST_F(AlertPage, EntriesAreHeldToTheirRanges) {
    struct Case {
        QLineEdit* field;
        const char* typed;
        const char* shown;
        std::function<double(const AlertSettings&)> stored;
    };
    const std::vector<Case> cases{
        {ui().altitudeDisplay, "12", "9", [](auto& a) { return a.altitudeDisplay; }},
        {ui().altitudeDisplay, "-4", "-1", [](auto& a) { return a.altitudeDisplay; }},
        {ui().minDiskFree, "2000000", "1000000", [](auto& a) { return a.minDiskFree; }},
        {ui().miscMin, "-40000", "-32768", [](auto& a) { return a.miscMin; }},
        {ui().miscMax, "32768", "32768", [](auto& a) { return a.miscMax; }},
        {ui().miscChan, "8", "7", [](auto& a) { return a.miscChan; }},
        {ui().beepInterval, "250000", "100000", [](auto& a) { return a.beepInterval; }},
        {ui().beepTone, "-3", "0", [](auto& a) { return a.beepTone; }},
        {ui().beepDuration, "20000", "10000", [](auto& a) { return a.beepDuration; }},
        {ui().rollMax, "400", "180.0", [](auto& a) { return a.rollMax; }},
        {ui().altitudeWarning, "2.25", "2.2", [](auto& a) { return a.altitudeWarning; }},
    };
    for (const Case& c : cases) {
        TypeAndLeave(c.field, c.typed);
        EXPECT_EQ(c.field->text(), c.shown) << c.typed;
        EXPECT_DOUBLE_EQ(c.stored(control_.getAlertSettings()),
                         c.field == ui().altitudeWarning ? 2.25 : QString(c.shown).toDouble())
            << c.typed;
    }
    // Enables set their own bit only; the beep bit is one of them.
    Box("Enable Altitude")->click();
    Box("PC Speaker Beeps on Alerts")->click();
    EXPECT_EQ(control_.getAlertSettings().alertFlags, static_cast<int>(AlertAltitude | AlertBeep));
}

TEST_F(AlertPage, AlertTextFollowsTheProcessor) {
    page_.Tick();
    EXPECT_EQ(ui().alertText->text(), " No Alerts");
    Box("ADC Not Clipping")->click();
    Feed(MakeTrace({{TraceField::ADCMax, 32767}}));
    page_.Tick();
    EXPECT_EQ(ui().alertText->text(), "ALERTS:  ADCCLIP");
    EXPECT_TRUE(PageScreenshot(page_, "page_alerts.png"));
    Feed(MakeTrace({{TraceField::ADCMax, 100}}));
    page_.Tick();
    EXPECT_EQ(ui().alertText->text(), " No Alerts");
}

class StatusPage : public StatusRig {
  protected:
    StatusPage() {
        page_.show();
        page_.Tick();
    }
    const SetupStatus::Widgets& ui() { return page_.Ui(); }

    PageContext ctx_;
    SetupStatus page_{ctx_.context, control_, "./StatusCustom.ini"};
};

TEST_F(StatusPage, ItemsAndFieldsFollowStatusSettings) {
    StatusSettings s = control_.getSettings();
    s.flags = ItemLatLong | ItemCTD | WaterfallPlot::kCursorDepthBit;
    s.custom[3].label = "0.5,1,6,2|%f deg";
    control_.setSettings(s);
    page_.Tick();
    for (const auto& item : ui().items) {
        EXPECT_EQ(item.box->isChecked(), (s.flags & item.bit) != 0)
            << item.box->text().toStdString();
    }
    EXPECT_EQ(page_.ItemBox(ItemCTD)->text(), "CTD Readings");
    EXPECT_EQ(page_.ItemBox(WaterfallPlot::kCursorSampleBit)->text(), "Sample #");
    EXPECT_EQ(ui().custom[3].label->text(), "0.5,1,6,2|%f deg");
    EXPECT_TRUE(PageScreenshot(page_, "page_status.png"));
}

TEST_F(StatusPage, EntriesReachStatusHeldToRange) {
    page_.ItemBox(ItemMark)->click();
    page_.ItemBox(WaterfallPlot::kCursorSampleBit)->click();
    EXPECT_EQ(control_.getSettings().flags,
              static_cast<int>(ItemMark | WaterfallPlot::kCursorSampleBit));
    TypeAndLeave(ui().fontSize, "500");
    TypeAndLeave(ui().statusLines, "-2");
    TypeAndLeave(ui().custom[5].field, "300");
    TypeAndLeave(ui().custom[5].channel, "-9");
    TypeAndLeave(ui().custom[5].label, "2,0,3,1|Temp % C and far too long for the field");
    ui().custom[5].enable->click();
    const StatusSettings s = control_.getSettings();
    EXPECT_EQ(s.fontSize, 100);
    EXPECT_EQ(s.statusLines, 0);
    EXPECT_EQ(s.custom[5].field, SetupStatus::kMaxFieldOffset);
    EXPECT_EQ(s.custom[5].channel, -1);
    EXPECT_EQ(s.custom[5].label.size(), CustomField::kLabelBytes - 1);
    EXPECT_EQ(s.custom[5].enable, 1);
    EXPECT_EQ(s.custom[4], StatusSettings::DefaultCustom(4)) << "other fields untouched";
}

TEST_F(StatusPage, ReadyMadeFieldIsStoredAtOnce) {
    EXPECT_FALSE(page_.ChoosePreset(0, 0)) << "no file, no list";
    WriteFile("StatusCustom.ini",
              "[Heading]\nChannel=2\nDescription=HDG\nFormat=0.01,0,5,1|HDG %\nField=57\n"
              "[Roll]\nField=61\n");
    EXPECT_EQ(page_.PresetNames(), (std::vector<std::string>{"Heading", "Roll"}));
    ASSERT_TRUE(page_.ChoosePreset(6, 0));
    const CustomField c = control_.getSettings().custom[6];
    EXPECT_EQ(c.field, 57);
    EXPECT_EQ(c.channel, 2);
    EXPECT_EQ(c.label, "0.01,0,5,1|HDG %");
    EXPECT_EQ(ui().custom[6].description->text(), "HDG");
    EXPECT_FALSE(page_.ChoosePreset(6, 2));
    EXPECT_FALSE(page_.ChoosePreset(8, 0));
}

}  // namespace
}  // namespace halvo::test

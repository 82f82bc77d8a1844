#include "NavPagesFixture.h"
#include "app/GeneralSettings.h"
#include "app/ProgramClock.h"
#include "core/MessageHub.h"
#include "gui/pages/SetupNav.h"
#include "nav/NavigationConfig.h"
#include "nav/NavigationInput.h"
#include "stamping/SegyDataProcessor.h"

namespace halvo {
namespace {

class SetupNavTest : public test::NavPagesTest {
  protected:
    void SetUp() override {
        NavPagesTest::SetUp();
        page_ = Show<SetupNav>(*cfg_, "Navigation");
        ASSERT_NE(page_, nullptr);
    }
    QLineEdit* Edit(const char* name) { return test::Child<QLineEdit>(page_, name); }
    QComboBox* Combo(const char* name) { return test::Child<QComboBox>(page_, name); }
    QCheckBox* Box(const QString& name) { return test::Child<QCheckBox>(page_, name); }
    // A sentence as serial port `port` posts it to the data bus.
    void Feed(const char* line, int port) {
        SonarMessage m = NavigationInput::BuildMessage(line, port, system_->Clock().Now());
        ASSERT_EQ(system_->Hub().DataBus().Post(m, SourceSerial), 0);
    }

    SetupNav* page_ = nullptr;
};

TEST_F(SetupNavTest, ShowsBothOwnersChangesMadeElsewhere) {
    // Each field is bound by one call for both directions, so the fields typed in the tests
    // below are shown the same way; here a change in either owner reaches the page.
    NavigationConfig c = system_->Navigation().Get();
    c.latLonSource = NavigationConfig::LatLonGga;
    system_->Navigation().Set(c);
    system_->General().Modify([](GeneralValues& g) { g.NMEAantennaeO = -321; });
    cfg_->TimerPass();
    EXPECT_EQ(test::Shown(page_, "LatLonSource"), "GGA");
    EXPECT_EQ(test::Shown(page_, "NMEAantennaeO"), "-321");
    // An empty device names the path the port number gives.
    EXPECT_EQ(Edit("Nav0.Device")->placeholderText().toStdString(),
              system_->Navigation().Get().ports[0].DevicePath());
}

TEST_F(SetupNavTest, EntriesReachTheOwnersHeldToRange) {
    test::TypeAndLeave(Edit("Nav0.Port"), "300");
    test::TypeAndLeave(Edit("Nav2.Port"), "0");
    test::TypeAndLeave(Edit("Nav1.Device"), "/dev/pts/7");
    test::TypeAndLeave(Edit("TSBias"), "99999");
    test::Choose(Combo("Nav1.Baud"), "19200");
    test::Choose(Combo("TimeSource"), "GGA");
    Box("Nav1.Enable")->click();
    Box("TSEnable")->click();
    const NavigationConfig c = system_->Navigation().Get();
    EXPECT_EQ(c.ports[0].port, 255);
    EXPECT_EQ(c.ports[2].port, 1);
    EXPECT_EQ(c.ports[1].device, "/dev/pts/7");
    EXPECT_EQ(c.ports[1].baud, 19200);
    EXPECT_EQ(c.ports[1].enable, 1);
    EXPECT_EQ(c.timeSource, NavigationConfig::TimeGga);
    EXPECT_EQ(c.tsEnable, 1);
    EXPECT_EQ(c.tsBias, SetupNav::kBiasLimit);

    // Each GPSFlags box moves its own bit only.
    system_->General().Modify([](GeneralValues& g) { g.GPSFlags = 0x60; });
    cfg_->TimerPass();
    Box("GPSFlags.4")->click();
    Box("GPSFlags.1")->click();
    EXPECT_EQ(system_->General().Snapshot().GPSFlags, 0x60 | 0x10 | 0x02);
    Box("GPSFlags.1")->click();
    EXPECT_EQ(system_->General().Snapshot().GPSFlags, 0x60 | 0x10);
}

TEST_F(SetupNavTest, AntennaOffsetsAreTypedWideAndStoredInSixteenBits) {
    const struct {
        const char* typed;
        std::int32_t held;  // after the page's range
    } cases[] = {{"1234", 1234},
                 {"40000", 40000},
                 {"-70000", -70000},
                 {"5000000", SetupNav::kAntennaLimit},
                 {"-5000000", -SetupNav::kAntennaLimit}};
    for (const auto& c : cases) {
        test::TypeAndLeave(Edit("NMEAantennaeO"), c.typed);
        test::TypeAndLeave(Edit("NMEAantennaeR"), c.typed);
        const auto stored = static_cast<std::int16_t>(c.held);
        const GeneralValues g = system_->General().Snapshot();
        EXPECT_EQ(g.NMEAantennaeO, stored) << c.typed;
        EXPECT_EQ(g.NMEAantennaeR, stored) << c.typed;
        EXPECT_EQ(Edit("NMEAantennaeO")->text(), QString::number(stored)) << c.typed;
    }
}

TEST_F(SetupNavTest, LivePanelShowsSentencesFilteredByPort) {
    Feed("$GPGLL,5130.1234,N,00005.6789,W,120000.00,A*00\r\n", 0);
    Feed("$GPZDA,120001.00,14,03,2024,00,00*00\r\n", 1);
    Feed("$GPXXX,not a sentence\r\n", 2);
    ASSERT_TRUE(
        test::PumpUntil([&] { return system_->Stamping().CopyHistory().WriteIndex() >= 3; }, 3000));
    cfg_->TimerPass();

    const QStringList all = page_->HistoryText().split('\n');
    ASSERT_EQ(all.size(), 3);
    EXPECT_TRUE(all[0].startsWith("OK:$GPGLL,5130.1234")) << all[0].toStdString();
    EXPECT_TRUE(all[1].startsWith("OK:$GPZDA")) << all[1].toStdString();
    EXPECT_TRUE(all[2].startsWith("??:$GPXXX")) << all[2].toStdString();
    for (const int port : {1, 2}) {
        page_->SetHistoryPort(port);
        EXPECT_EQ(page_->HistoryText(), all[port]);
    }
    page_->SetHistoryPort(SetupNav::kAllPorts);
    EXPECT_EQ(page_->HistoryText().split('\n'), all);

    // GLL is the default position source: a position within the last ten seconds.
    EXPECT_EQ(page_->NavStatusText(), "NAV : On");
    EXPECT_TRUE(page_->StatusLinesText().contains("LATLON: LAT 51"))
        << page_->StatusLinesText().toStdString();
    ticks_.AdvanceTick(10001);
    cfg_->TimerPass();
    EXPECT_EQ(page_->NavStatusText(), "NAV : No data (Off)");
    EXPECT_TRUE(test::Screenshot(*cfg_, "page_setup_nav.png"));
}

TEST_F(SetupNavTest, PortStatusFollowsTheEnabledPorts) {
    cfg_->TimerPass();
    EXPECT_EQ(page_->PortStatusText(), "No serial port enabled");
    // A port that cannot open says so; no real device is touched.
    NavigationConfig c = system_->Navigation().Get();
    c.ports[0] = {4800, 1, 1, "/nonexistent/halvo-tty"};
    system_->Navigation().Set(c);
    ASSERT_TRUE(TickUntil(*cfg_, [&] { return page_->PortStatusText() == "[Cannot Open Port] "; }))
        << page_->PortStatusText().toStdString();
}

}  // namespace
}  // namespace halvo

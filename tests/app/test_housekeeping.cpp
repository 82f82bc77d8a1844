#include <gtest/gtest.h>

#include "app/EventLog.h"
#include "app/Housekeeping.h"

namespace halvo {
namespace {

// The world the indicators look at, changed by the tests between passes.
struct World {
    std::uint32_t tick = 0;
    bool playback = false;
    int nav = 2;
    std::uint32_t link = 1;
    RecorderIndicator recorder{RecorderIndicator::Record, 3};
    std::uint32_t alerts = 0;
    int altitudeDisplay = -1;
    double altitude = 12.34;
    std::string status = "status line";
};

class HousekeepingTest : public ::testing::Test {
  protected:
    HousekeepingTest() : log_([] { return TimeValue{}; }), hk_(Sources(), &log_) {}

    Housekeeping::Sources Sources() {
        Housekeeping::Sources s;
        s.tick = [this] { return w_.tick; };
        s.statusLine = [this] { return w_.status; };
        s.isPlayback = [this] { return w_.playback; };
        s.navStatus = [this] { return w_.nav; };
        s.sonarLinkWord = [this] { return w_.link; };
        s.recorder = [this] { return w_.recorder; };
        s.alertWord = [this] { return w_.alerts; };
        s.alertText = [this] { return w_.alerts != 0 ? "ALERTS:  LEAK DISK" : " No Alerts"; };
        s.altitudeDisplayNumber = [this] { return w_.altitudeDisplay; };
        s.statusAltitudeMetres = [this] { return w_.altitude; };
        s.trackedAltitude = [](int display) { return -1.0 * display; };
        return s;
    }
    // Runs the 250 ms timer for `ms` of program time.
    void Run(std::uint32_t ms) {
        for (std::uint32_t t = 0; t < ms; t += 250) {
            w_.tick += 250;
            hk_.Update();
        }
    }
    int LinesContaining(const std::string& text) {
        int n = 0;
        for (const auto& line : log_.Lines()) n += line.find(text) != std::string::npos;
        return n;
    }

    World w_;
    EventLog log_;
    Housekeeping hk_;
};

TEST_F(HousekeepingTest, LinkDropTurnsRedWithinTwoSecondsAndLogsOnce) {
    Run(2000);
    EXPECT_EQ(hk_.Pane(Housekeeping::kLinkPane).text, "NET:ON");
    EXPECT_EQ(hk_.Pane(Housekeeping::kNavigationPane).text, "GPS:ON");
    w_.link = 2;
    Run(2000);
    EXPECT_EQ(hk_.Pane(Housekeeping::kLinkPane).text, "NET:OFF");
    EXPECT_TRUE(hk_.Pane(Housekeeping::kLinkPane).red);
    Run(6000);
    EXPECT_EQ(LinesContaining("SONAR : Not Connected"), 1);
    EXPECT_EQ(LinesContaining("SONAR : Connected"), 1);

    // A red pane in state 1 alternates its text colour; a state-2 pane stays white.
    bool sawBlack = false, sawWhite = false;
    for (int i = 0; i < 4; ++i) {
        Run(250);
        (hk_.Pane(Housekeeping::kLinkPane).whiteText ? sawWhite : sawBlack) = true;
    }
    EXPECT_TRUE(sawBlack && sawWhite);
    hk_.SetPane(5, 2, "X");
    for (int i = 0; i < 4; ++i) {
        Run(250);
        EXPECT_TRUE(hk_.Pane(5).whiteText);
    }
}

TEST_F(HousekeepingTest, PlaybackShowsNeitherNavigationNorLinkAsFaults) {
    w_.playback = true;
    w_.link = 0;
    w_.nav = 0;
    w_.recorder = {RecorderIndicator::Playback, 0};
    Run(2000);
    EXPECT_EQ(hk_.Pane(0).text, "NAV:PB");
    EXPECT_EQ(hk_.Pane(1).text, "NET:PB");
    EXPECT_FALSE(hk_.Pane(0).red);
    EXPECT_FALSE(hk_.Pane(1).red);
    EXPECT_EQ(hk_.Pane(2).state, 2);
    EXPECT_EQ(LinesContaining("NAV : Ignored in Playback"), 1);
}

TEST_F(HousekeepingTest, RecorderAndAltitudeRules) {
    Run(2000);
    w_.recorder.fileNumber = 4;  // same state, new file
    Run(2000);
    EXPECT_EQ(hk_.Pane(2).text, "R:004");

    struct Case {
        int display;
        double altitude;
        std::uint32_t alerts;
        const char* text;
        int state;
    } cases[] = {{-1, 10.0, 0, "Alt  10", 0},  // exactly 10: no decimal
                 {-1, 9.96, 0, "Alt 10.0", 0},
                 {-1, 2.25, 1, "Alt 2.2", 1},  // "%3.1f" rounds half to even here; alerts blink
                 {3, 0, 0, "Alt 3.0", 0},      // a display's tracked altitude, taken absolute
                 {10, 5, 0, "Alerts", 0}};
    for (const Case& c : cases) {
        w_.altitudeDisplay = c.display;
        w_.altitude = c.altitude;
        w_.alerts = c.alerts;
        Run(2000);
        EXPECT_EQ(hk_.Pane(3).text, c.text) << c.display << " " << c.altitude;
        EXPECT_EQ(hk_.Pane(3).state, c.state) << c.text;
    }
}

// The alert words have a pane of their own, shown at the next pass and cleared by a word of 0,
// whatever the altitude pane is set to watch.
TEST_F(HousekeepingTest, AlertPaneFollowsTheWordAtEveryPass) {
    w_.altitudeDisplay = 10;
    Run(250);
    EXPECT_EQ(hk_.Pane(Housekeeping::kAlertPane).text, "");
    w_.alerts = 0x30;
    w_.tick += 250;
    EXPECT_TRUE(hk_.Update().barChanged);
    EXPECT_EQ(hk_.Pane(Housekeeping::kAlertPane).text, "ALERTS:  LEAK DISK");
    EXPECT_EQ(hk_.Pane(Housekeeping::kAlertPane).state, 2);
    w_.alerts = 0;
    Run(250);
    EXPECT_EQ(hk_.Pane(Housekeeping::kAlertPane).text, "");
    EXPECT_EQ(hk_.Pane(Housekeeping::kAlertPane).state, 0);
}

TEST_F(HousekeepingTest, HeldMessageKeepsTheStatusLineAwayForThreeSeconds) {
    w_.tick = 1000;
    hk_.ShowMessage("cursor 12.5 m");
    Run(2750);
    EXPECT_EQ(hk_.StatusText(), "cursor 12.5 m");
    Run(250);
    EXPECT_EQ(hk_.StatusText(), "status line");
    hk_.ShowMessage("held");
    w_.tick -= 5000;  // the tick went back: the hold is over
    hk_.Update();
    EXPECT_EQ(hk_.StatusText(), "status line");
}

}  // namespace
}  // namespace halvo

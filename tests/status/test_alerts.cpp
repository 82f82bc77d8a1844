// Alerts: every test at its boundary, playback, the overflow watch, the sensor silence windows
// and the clearing on a settings change.

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "status/StatusTestSupport.h"

namespace halvo::test {
namespace {

class Alerts : public StatusRig {
  protected:
    void SetUp() override {
        StatusRig::SetUp();
        StatusSources s;
        s.navStatus = [this] { return nav_; };
        s.display = [](int n) { return DisplayState{0, 0, n == 2 ? -4.0 : 25.0, 0}; };
        PlugStorage(s, storage_);
        ASSERT_TRUE(processor_.SetSources(std::move(s)));
    }

    // The word after one live trace evaluated under these settings.
    std::uint32_t WordFor(const AlertSettings& settings, const Fields& fields) {
        control_.setAlertSettings(settings);
        Feed(MakeTrace(fields));
        return processor_.getAlerts();
    }

    int nav_ = 2;
};

struct BoundaryCase {
    const char* name;
    std::function<void(AlertSettings&, GeneralValues&)> set;
    Fields fields;
    std::uint32_t expected;
};

TEST_F(Alerts, EachTestRaisesExactlyAtItsBoundary) {
    auto limits = [](float AlertSettings::*min, float AlertSettings::*max, float lo, float hi) {
        return [=](AlertSettings& a, GeneralValues&) {
            a.*min = lo;
            a.*max = hi;
        };
    };
    auto alt = [](int display) {
        return [=](AlertSettings& a, GeneralValues&) { a.altitudeDisplay = display; };
    };
    auto misc = [](int lo, int hi) {
        return [=](AlertSettings& a, GeneralValues&) {
            a.miscMin = lo;
            a.miscMax = hi;
        };
    };
    auto hot = [](int channel) {
        return [=](AlertSettings& a, GeneralValues& g) {
            a.temperatureMax = 20.0f;
            g.BottleTemperatureChannel = channel;
            g.BottleTemperatureGain = 1.0f;
            g.BottleTemperatureOffset = 0.5f;
        };
    };
    auto none = [](AlertSettings&, GeneralValues&) {};
    using AS = AlertSettings;
    using F = TraceField;
    const BoundaryCase cases[] = {
        // 1820 steps are 9.997 degrees, 1821 are 10.003.
        {"roll defaults", none, {{F::Roll, 16384}}, 0},
        {"roll inside", limits(&AS::rollMin, &AS::rollMax, -10, 10), {{F::Roll, 1820}}, 0},
        {"roll above", limits(&AS::rollMin, &AS::rollMax, -10, 10), {{F::Roll, 1821}}, AlertRoll},
        {"roll below", limits(&AS::rollMin, &AS::rollMax, -10, 10), {{F::Roll, -1821}}, AlertRoll},
        {"pitch below",
         limits(&AS::pitchMin, &AS::pitchMax, -5, 5),
         {{F::Pitch, -1000}},
         AlertPitch},
        {"altimeter at level", alt(-1), {{F::Altitude, 10000}}, 0},
        {"altimeter under level", alt(-1), {{F::Altitude, 9999}}, AlertAltitude},
        {"display tracking", alt(2), {{F::Altitude, 50000}}, AlertAltitude},
        {"display clear", alt(3), {{F::Altitude, 0}}, 0},
        {"display 10 is off", alt(10), {{F::Altitude, 0}}, 0},
        {"display -2 is off", alt(-2), {{F::Altitude, 0}}, 0},
        {"bottle cool", hot(5), {{F::AnnotationWord5, 19}}, 0},
        {"bottle hot", hot(5), {{F::AnnotationWord5, 20}}, AlertHot},
        {"bottle channel 8", hot(8), {{F::AnnotationWord8, 100}}, 0},
        {"misc default low", none, {{F::AnnotationWord4, -1}}, AlertLeak},
        {"misc default edge", none, {{F::AnnotationWord4, 0}}, 0},
        {"misc default top", none, {{F::AnnotationWord4, 32767}}, 0},
        {"misc equal hit", misc(100, 100), {{F::AnnotationWord4, 100}}, AlertLeak},
        {"misc equal under", misc(100, 100), {{F::AnnotationWord4, 99}}, 0},
        {"misc equal over", misc(100, 100), {{F::AnnotationWord4, 101}}, 0},
        // Limits crossed the other way leave no value inside the reversed sense.
        {"crossed between", misc(200, 100), {{F::AnnotationWord4, 150}}, 0},
        {"crossed at min", misc(200, 100), {{F::AnnotationWord4, 200}}, 0},
        {"adc at 32000", none, {{F::ADCMax, 32000}}, 0},
        {"adc at 32001", none, {{F::ADCMax, 32001}}, AlertAdcClip},
        {"adc unsigned", none, {{F::ADCMax, -1}}, AlertAdcClip}};
    for (const BoundaryCase& c : cases) {
        AlertSettings a;
        a.alertFlags = AlertRoll | AlertPitch | AlertAltitude | AlertHot | AlertLeak | AlertAdcClip;
        a.altitudeDisplay = 5;  // off unless the case says otherwise: display 5 sees 25 m
        GeneralValues g;
        c.set(a, g);
        general_.Update(g);
        EXPECT_EQ(WordFor(a, c.fields), c.expected) << c.name;
        // Without its enable bit the same trace raises nothing.
        a.alertFlags &= ~static_cast<std::int32_t>(c.expected);
        EXPECT_EQ(WordFor(a, c.fields), 0u) << c.name;
    }
}

TEST_F(Alerts, DiskAndNavigationLimitsAndPlaybackHidesThemOnly) {
    struct Case {
        int nav;
        int freeMB;
        int minDiskFree;
        std::uint32_t expected;
    };
    // The last case is left in place for the playback below.
    const Case cases[] = {
        {2, 11, 10, 0},        {2, 10, 10, AlertDisk}, {2, 0, 10, AlertDisk},
        {2, -1, 10, 0},  // no record folder
        {2, 0, -1, 0},   // watch switched off
        {1, 50, 10, AlertNav}, {0, 50, 10, AlertNav},  {1, 10, 10, AlertNav | AlertDisk}};
    AlertSettings a;
    for (const Case& c : cases) {
        nav_ = c.nav;
        StorageStatus st;
        st.freeMB = c.freeMB;
        storage_.PublishStatus(st);
        a.alertFlags = AlertNav | AlertDisk;
        a.minDiskFree = c.minDiskFree;
        EXPECT_EQ(WordFor(a, {}), c.expected) << c.nav << " " << c.freeMB << " " << c.minDiskFree;
    }

    // A file played back hides the lost fix and the full disk, but not what the trace says.
    a.alertFlags = AlertNav | AlertDisk | AlertAdcClip;
    EXPECT_EQ(WordFor(a, {{TraceField::ADCMax, 32767}}), AlertNav | AlertDisk | AlertAdcClip);
    EXPECT_EQ(processor_.alertText(), "ALERTS:  DISK NAV ADCCLIP");
    storage_.RequestPlayback();
    ASSERT_TRUE(storage_.isPlaybackMode());
    EXPECT_EQ(WordFor(a, {{TraceField::ADCMax, 32767}}), AlertAdcClip);
    EXPECT_EQ(processor_.alertText(), "ALERTS:  ADCCLIP");
}

TEST_F(Alerts, OverflowLastsOneEvaluationPerDrop) {
    AlertSettings a;
    a.alertFlags = AlertOverflow;
    control_.setAlertSettings(a);
    const int pings[] = {7, 8, 10, 11, 12, 12};  // the first trace is a gap too
    const std::uint32_t expected[] = {AlertOverflow, 0, AlertOverflow, 0, 0, AlertOverflow};
    for (int i = 0; i < 6; ++i) {
        Feed(MakeTrace({{TraceField::PingNumber, pings[i]}}));
        EXPECT_EQ(processor_.getAlerts(), expected[i]) << i;
    }
}

TEST_F(Alerts, SilentSensorsRaiseAfterOneWindowAndClearAfterOneMessage) {
    AlertSettings a;
    a.alertFlags = AlertNoPitchRoll | AlertNoSvs | AlertNoPressure;
    control_.setAlertSettings(a);
    ticks_.SetTick(1000);
    processor_.start();

    Send(MakePitchRoll());
    Send(MakePressure(0x01));
    IdleAt(6000);  // the window's last millisecond: still open
    Feed(MakeTrace({}));
    EXPECT_EQ(processor_.getAlerts(), 0u);
    IdleAt(6001);
    EXPECT_EQ(processor_.getAlerts(), 0u);  // reaches the word only with a trace
    Feed(MakeTrace({}));
    EXPECT_EQ(processor_.alertText(), "ALERTS:  NOSVS");

    Send(MakePressure(0x10));
    Send(MakePressure(0x10, 0, 75));  // too short: not a sensor reading
    IdleAt(11002);
    Feed(MakeTrace({}));
    EXPECT_EQ(processor_.getAlerts(), AlertNoPitchRoll | AlertNoPressure);

    // With traces stopped the word stands, silent or not.
    Send(MakePitchRoll());
    Send(MakePressure(0x11));
    IdleAt(16003);
    EXPECT_EQ(processor_.getAlerts(), AlertNoPitchRoll | AlertNoPressure);
    Feed(MakeTrace({}));
    EXPECT_EQ(processor_.getAlerts(), 0u);

    // A tick that went backward ends the window too.
    IdleAt(100);
    Feed(MakeTrace({}));
    EXPECT_EQ(processor_.getAlerts(), AlertNoPitchRoll | AlertNoSvs | AlertNoPressure);
}

TEST_F(Alerts, SettingsChangeClearsAtOnceAndGivesAWholeWindow) {
    AlertSettings a;
    a.alertFlags = AlertAdcClip;
    ticks_.SetTick(0);
    EXPECT_EQ(WordFor(a, {{TraceField::ADCMax, 32767}}), AlertAdcClip);

    a.alertFlags = AlertAdcClip | AlertNoSvs;
    control_.setAlertSettings(a);
    Send(MakePitchRoll());  // any message takes the new settings
    EXPECT_EQ(processor_.getAlerts(), 0u);

    IdleAt(5001);  // no SVS in this window, but the watch was switched on inside it
    Feed(MakeTrace({}));
    EXPECT_EQ(processor_.getAlerts(), 0u);
    IdleAt(10002);
    Feed(MakeTrace({}));
    EXPECT_EQ(processor_.getAlerts(), AlertNoSvs);
}

}  // namespace
}  // namespace halvo::test

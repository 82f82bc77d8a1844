// Steering the program clock by sentence time: the gate, the step, the two filters and the
// carried remainder, on a fake tick and a fake wall clock.

#include <gtest/gtest.h>

#include "app/ProgramClock.h"
#include "dsp/ClockSteering.h"
#include "nav/NavigationConfig.h"
#include "nav/NavigationFix.h"
#include "platform/FakeSystemClock.h"
#include "platform/FakeTickSource.h"

namespace halvo {
namespace {

constexpr std::int32_t kNoon = 1709208000;  // 2024-02-29 12:00:00 UTC

struct Rig {
    Rig() {
        clock.SetSource(0);
        wall.SetNow(kNoon, 0);
        ticks.SetTick(50000);
        clock.SyncFromSystem();
    }
    // A ZDA of 12:00:00 on the same day, read `errMs` before the time it states.
    ClockSteering::Outcome Zda(std::int32_t errMs, float second = 0.0f) {
        fix.zda.hour = 12, fix.zda.minute = 0, fix.zda.second = second;
        fix.zda.day = 29, fix.zda.month = 2, fix.zda.year = 2024;
        ++fix.zda.stamp;
        const TimeValue read =
            NormaliseTime(kNoon, static_cast<std::int64_t>(second) * 1000 - errMs);
        return steering.Steer(fix, NavigationConfig::TimeZda, read, clock);
    }
    std::int32_t Moved(TimeValue before) { return ProgramClock::DiffMs(clock.Now(), before); }

    FakeTickSource ticks;
    FakeSystemClock wall;
    ProgramClock clock{ticks, wall};
    NavigationFix fix;
    ClockSteering steering;
};

TEST(ClockSteering, ThresholdsChooseStepFastOrSlow) {
    struct Case {
        std::int32_t err;
        ClockSteering::Outcome outcome;
        double filtered;  // after the call
        std::int32_t moved;
    };
    const Case cases[] = {
        {200, ClockSteering::Outcome::Filtered, 4.0, 0},  // slow: 0.02 * 200
        {-200, ClockSteering::Outcome::Filtered, -4.0, 0},
        {201, ClockSteering::Outcome::Filtered, 20.1 - 1.005, 1},  // fast: 0.1 * 201, a = 1.005
        {5000, ClockSteering::Outcome::Filtered, 500.0 - 25.0, 25},
        {-5000, ClockSteering::Outcome::Filtered, -500.0 + 25.0, -25},
    };
    for (const Case& c : cases) {
        Rig rig;
        const TimeValue before = rig.clock.Now();
        EXPECT_EQ(rig.Zda(c.err), c.outcome) << c.err;
        EXPECT_NEAR(rig.steering.Filtered(), c.filtered, 1e-9) << c.err;
        EXPECT_EQ(rig.Moved(before), c.moved) << c.err;
        EXPECT_EQ(rig.steering.LastErrorMs(), c.err);
        EXPECT_TRUE(rig.wall.SetCalls().empty());
    }
}

TEST(ClockSteering, AnErrorBeyondFiveSecondsStepsTheClock) {
    Rig rig;
    rig.Zda(201);
    EXPECT_EQ(rig.Zda(5001), ClockSteering::Outcome::Stepped);
    EXPECT_EQ(rig.steering.Filtered(), 0.0);
    EXPECT_EQ(rig.steering.Remainder(), 0.0);
    EXPECT_EQ(rig.steering.LastErrorMs(), 5001);
    ASSERT_EQ(rig.wall.SetCalls().size(), 1u);
    EXPECT_EQ(rig.wall.SetCalls()[0], (UtcDateTime{2024, 2, 29, 12, 0, 0, 0}));
    EXPECT_EQ(rig.clock.Now().seconds, kNoon);
}

TEST(ClockSteering, TheRemainderCarriesSubMillisecondCorrections) {
    Rig rig;
    const TimeValue before = rig.clock.Now();
    rig.Zda(200);  // f 4, a 0.2
    EXPECT_NEAR(rig.steering.Remainder(), 0.2, 1e-12);
    rig.Zda(200);  // f 7.92, a 0.396 + 0.2
    EXPECT_NEAR(rig.steering.Remainder(), 0.596, 1e-12);
    EXPECT_EQ(rig.Moved(before), 0);
    rig.Zda(200);  // f 11.7616, a 0.58808 + 0.596 = 1.18408: one millisecond on
    EXPECT_EQ(rig.Moved(before), 1);
    EXPECT_NEAR(rig.steering.Remainder(), 0.18408, 1e-9);
    EXPECT_NEAR(rig.steering.Filtered(), 11.7616 - 1.18408, 1e-9);
}

TEST(ClockSteering, GateMidnightAndSources) {
    Rig rig;
    rig.Zda(300);
    const std::int32_t counter = rig.steering.LastCounter();
    // The same counter again does nothing.
    EXPECT_EQ(rig.steering.Steer(rig.fix, NavigationConfig::TimeZda, {kNoon, 0}, rig.clock),
              ClockSteering::Outcome::SameCounter);
    // GGA time is no steering source.
    EXPECT_EQ(rig.steering.Steer(rig.fix, NavigationConfig::TimeGga, {kNoon, 0}, rig.clock),
              ClockSteering::Outcome::NoSource);
    // Hour and minute both 0: the counter is taken, the clock is left alone.
    rig.fix.zda.hour = 0, rig.fix.zda.minute = 0, ++rig.fix.zda.stamp;
    EXPECT_EQ(rig.steering.Steer(rig.fix, NavigationConfig::TimeZda, {kNoon, 0}, rig.clock),
              ClockSteering::Outcome::Midnight);
    EXPECT_EQ(rig.steering.LastCounter(), counter + 1);
    // RMC time is gated by the ZDA counter.
    rig.fix.rmc.hour = 12, rig.fix.rmc.minute = 0, rig.fix.rmc.stamp = 99;
    EXPECT_EQ(rig.steering.Steer(rig.fix, NavigationConfig::TimeRmc, {kNoon, 0}, rig.clock),
              ClockSteering::Outcome::SameCounter);
    ++rig.fix.zda.stamp;
    EXPECT_EQ(rig.steering.Steer(rig.fix, NavigationConfig::TimeRmc, {kNoon, 0}, rig.clock),
              ClockSteering::Outcome::Filtered);
    // GLL uses its own counter and time.
    rig.fix.gll.hour = 12, rig.fix.gll.minute = 0, rig.fix.gll.second = 1.9f, rig.fix.gll.stamp = 5;
    EXPECT_EQ(rig.steering.Steer(rig.fix, NavigationConfig::TimeGll, {kNoon, 0}, rig.clock),
              ClockSteering::Outcome::Filtered);
    EXPECT_EQ(rig.steering.LastErrorMs(), 1000);  // the second is truncated
}

TEST(ClockSteering, ZdaTakesMonthAndYearButNotTheDay) {
    // The message's own day (29) stays; ZDA's month moves it to 29 March.
    EXPECT_EQ(ClockSteering::SentenceSeconds({kNoon, 0}, 12, 0, 0.0, true, 3, 2024),
              kNoon + 29 * 86400);
    EXPECT_EQ(ClockSteering::SentenceSeconds({kNoon, 0}, 13, 30, 15.9, false, 3, 2025),
              kNoon + 5415);
    Rig rig;
    rig.fix.zda = ZdaRecord{12, 0, 0.0f, 1, 3, 2024, 0, 0, 7};
    EXPECT_EQ(rig.steering.Steer(rig.fix, NavigationConfig::TimeZda, {kNoon, 0}, rig.clock),
              ClockSteering::Outcome::Stepped);
    ASSERT_EQ(rig.wall.SetCalls().size(), 1u);
    EXPECT_EQ(rig.wall.SetCalls()[0], (UtcDateTime{2024, 3, 29, 12, 0, 0, 0}));
}

}  // namespace
}  // namespace halvo

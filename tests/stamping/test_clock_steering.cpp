// Steering the program clock by sentence time: the gate, the step, the two filters and the
// carried remainder, on a fake tick and a fake wall clock.

#include <gtest/gtest.h>

#include <tuple>

#include "stamping/ClockSteering.h"
#include "stamping/StampingRig.h"

namespace halvo::test {
namespace {

using Outcome = ClockSteering::Outcome;

// The stamping rig's clocks with a steering of its own and the fix it reads.
struct Rig : StampingRig {
    // A new ZDA of 12:00:00 that day, read `errMs` before the time it states.
    Outcome Zda(std::int32_t errMs) {
        fix.zda = ZdaRecord{12, 0, 0.0f, 29, 2, 2024, 0, 0, fix.zda.stamp + 1};
        return steering.Steer(fix, NavigationConfig::TimeZda, NormaliseTime(kNoon, -errMs), clock);
    }
    std::int32_t Moved() { return ProgramClock::DiffMs(clock.Now(), start); }

    TimeValue start = clock.Now();
    NavigationFix fix;
    ClockSteering steering;
};

TEST(ClockSteering, ThresholdsChooseStepFastOrSlow) {
    const std::tuple<std::int32_t, double, std::int32_t> cases[] = {
        {200, 4.0, 0},                // slow: 0.02 * 200, a = 0.2
        {-200, -4.0, 0},              //
        {201, 20.1 - 1.005, 1},       // fast: 0.1 * 201, a = 1.005
        {-5000, -500.0 + 25.0, -25},  // still filtered at exactly 5000
    };
    for (const auto& [err, filtered, moved] : cases) {
        Rig rig;
        EXPECT_EQ(rig.Zda(err), Outcome::Filtered) << err;
        EXPECT_NEAR(rig.steering.Filtered(), filtered, 1e-9) << err;
        EXPECT_EQ(rig.Moved(), moved) << err;
        EXPECT_TRUE(rig.wall.SetCalls().empty());
    }
    Rig rig;
    rig.Zda(201);
    EXPECT_EQ(rig.Zda(5001), Outcome::Stepped);
    EXPECT_EQ(rig.steering.Filtered(), 0.0);
    EXPECT_EQ(rig.steering.Remainder(), 0.0);
    EXPECT_EQ(rig.steering.LastErrorMs(), 5001);
    ASSERT_EQ(rig.wall.SetCalls().size(), 1u);
    EXPECT_EQ(rig.wall.SetCalls()[0], (UtcDateTime{2024, 2, 29, 12, 0, 0, 0}));
}

TEST(ClockSteering, TheRemainderCarriesSubMillisecondCorrections) {
    Rig rig;
    rig.Zda(200);  // f 4, a 0.2
    rig.Zda(200);  // f 7.92, a 0.396 + 0.2
    EXPECT_NEAR(rig.steering.Remainder(), 0.596, 1e-12);
    EXPECT_EQ(rig.Moved(), 0);
    rig.Zda(200);  // f 11.7616, a 0.58808 + 0.596 = 1.18408: one millisecond on
    EXPECT_EQ(rig.Moved(), 1);
    EXPECT_NEAR(rig.steering.Remainder(), 0.18408, 1e-9);
}

TEST(ClockSteering, GateMidnightSourcesAndTheDayThatStays) {
    Rig rig;
    rig.Zda(300);
    const TimeValue noon{kNoon, 0};
    EXPECT_EQ(rig.steering.Steer(rig.fix, NavigationConfig::TimeZda, noon, rig.clock),
              Outcome::SameCounter);
    EXPECT_EQ(rig.steering.Steer(rig.fix, NavigationConfig::TimeGga, noon, rig.clock),
              Outcome::NoSource);
    rig.fix.zda.hour = 0, rig.fix.zda.minute = 0, ++rig.fix.zda.stamp;
    EXPECT_EQ(rig.steering.Steer(rig.fix, NavigationConfig::TimeZda, noon, rig.clock),
              Outcome::Midnight);
    // RMC's time is gated by ZDA's counter; GLL by its own, its second truncated.
    rig.fix.rmc.hour = 12, rig.fix.rmc.stamp = 99;
    EXPECT_EQ(rig.steering.Steer(rig.fix, NavigationConfig::TimeRmc, noon, rig.clock),
              Outcome::SameCounter);
    rig.fix.gll.hour = 12, rig.fix.gll.second = 1.9f, rig.fix.gll.stamp = 5;
    EXPECT_EQ(rig.steering.Steer(rig.fix, NavigationConfig::TimeGll, noon, rig.clock),
              Outcome::Filtered);
    EXPECT_EQ(rig.steering.LastErrorMs(), 1000);
    // ZDA's month and year are taken, its day is not: 1 March on the 29th is 29 March.
    rig.fix.zda = ZdaRecord{12, 0, 0.0f, 1, 3, 2024, 0, 0, 77};
    EXPECT_EQ(rig.steering.Steer(rig.fix, NavigationConfig::TimeZda, noon, rig.clock),
              Outcome::Stepped);
    EXPECT_EQ(rig.wall.SetCalls().back(), (UtcDateTime{2024, 3, 29, 12, 0, 0, 0}));
}

}  // namespace
}  // namespace halvo::test

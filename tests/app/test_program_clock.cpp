#include <gtest/gtest.h>

#include <cstdint>

#include "app/ProgramClock.h"
#include "platform/FakeSystemClock.h"
#include "platform/FakeTickSource.h"

namespace halvo {
namespace {

class ProgramClockTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ticks_.SetTick(1000);
        ticks_.SetFrequency(3);
        ticks_.SetCounter(10);  // 10/3 s: 3333 ms
        system_.SetNow(2'000'000'000, 250);
    }
    FakeTickSource ticks_;
    FakeSystemClock system_;
    ProgramClock clock_{ticks_, system_};
};

TEST_F(ProgramClockTest, TimerSourceMapsToTheTimeBase) {
    struct Case {
        int timerSource;
        int source;  // after first use
        std::uint32_t tick;
    };
    const Case cases[] = {
        {-1, ProgramClock::kSourcePerformanceCounter, 3333},
        {1, ProgramClock::kSourcePerformanceCounter, 3333},  // behaves as -1
        {0, ProgramClock::kSourceTickCount, 1000},
        {2, ProgramClock::kSourceTickCountAlt, 1000},
        {3, ProgramClock::kSourceSystemTime, 0},
        {4, ProgramClock::kSourcePerformanceCounter, 3333},  // not a choice: ignored
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.timerSource);
        ProgramClock clock(ticks_, system_);
        clock.SetSource(c.timerSource);
        EXPECT_EQ(clock.Tick(), c.tick);
        EXPECT_EQ(clock.Source(), c.source);
    }
    // The system-time source counts from its first use.
    ProgramClock clock(ticks_, system_);
    clock.SetSource(3);
    clock.Tick();
    system_.SetNow(2'000'000'001, 750);
    EXPECT_EQ(clock.Tick(), 1500u);
}

TEST_F(ProgramClockTest, WithoutACounterTheTickCountIsUsed) {
    ticks_.SetHasCounter(false);
    EXPECT_EQ(clock_.Tick(), 1000u);
    EXPECT_EQ(clock_.CounterState(), 2);
    ticks_.SetHasCounter(true);  // asked once only
    EXPECT_EQ(clock_.Tick(), 1000u);
}

TEST_F(ProgramClockTest, SetBelowTenYearsIsRefusedAndASetCalibratesFromTheSystem) {
    clock_.SyncFromSystem();
    const auto before = clock_.Current();
    TimeValue early{315'359'999, 0};
    EXPECT_EQ(clock_.SetTime(early), -1);
    EXPECT_EQ(clock_.Current(), before);
    EXPECT_TRUE(system_.SetCalls().empty());

    TimeValue t{1'700'000'000, 500};
    EXPECT_EQ(clock_.SetTime(t), 1);
    ASSERT_EQ(system_.SetCalls().size(), 1u);
    EXPECT_EQ(system_.SetCalls()[0], (UtcDateTime{2023, 11, 14, 22, 13, 20, 500}));
    EXPECT_EQ(clock_.Now(), (TimeValue{1'700'000'000, 500}));
    EXPECT_FALSE(clock_.OwnClock());
    TimeValue ok{315'360'000, 0};  // the first second not refused
    EXPECT_EQ(clock_.SetTime(ok), 1);
}

TEST_F(ProgramClockTest, OneFailedSetMakesTheProgramKeepItsOwnClock) {
    ticks_.SetHasCounter(false);
    system_.SetFailSet(true);
    TimeValue t{1'600'000'000, 250};
    EXPECT_EQ(clock_.SetTime(t), 0);
    EXPECT_TRUE(clock_.OwnClock());
    EXPECT_EQ(clock_.Now(), (TimeValue{1'600'000'000, 250}));
    ticks_.AdvanceTick(1800);
    EXPECT_EQ(clock_.Now(), (TimeValue{1'600'000'002, 50}));

    system_.SetFailSet(false);
    TimeValue later{1'600'000'100, 0};
    EXPECT_EQ(clock_.SetTime(later), 0);
    EXPECT_EQ(system_.SetCalls().size(), 1u);  // never asked again
    EXPECT_EQ(clock_.Now(), later);
    clock_.SyncFromSystem();  // leaves the program's own time alone
    EXPECT_EQ(clock_.Now(), later);
}

TEST_F(ProgramClockTest, SlewMovesProgramTimeAtTheSameTick) {
    clock_.SyncFromSystem();
    const std::uint32_t tick = clock_.Tick();
    const TimeValue before = clock_.TimeAt(tick);
    EXPECT_EQ(before, (TimeValue{2'000'000'000, 250}));
    clock_.Slew(100);
    EXPECT_EQ(clock_.TimeAt(tick), (TimeValue{2'000'000'000, 150}));
    clock_.Slew(-350);
    EXPECT_EQ(clock_.TimeAt(tick), (TimeValue{2'000'000'000, 500}));
}

TEST_F(ProgramClockTest, SyncKeepsCalibrationWithinHalfASecond) {
    clock_.SyncFromSystem();
    const auto calibrated = clock_.Current();
    system_.SetNow(2'000'000'000, 649);  // 399 ms of drift is tolerated
    clock_.SyncFromSystem();
    EXPECT_EQ(clock_.Current(), calibrated);
    system_.SetNow(2'000'000'001, 0);  // 750 ms is not
    clock_.SyncFromSystem();
    EXPECT_EQ(clock_.Now(), (TimeValue{2'000'000'001, 0}));
}

TEST_F(ProgramClockTest, TimeAtCarriesAcrossTheTickWrapAndDiffIsClamped) {
    system_.SetFailSet(true);
    ticks_.SetHasCounter(false);
    ticks_.SetTick(0xFFFFFF00u);
    TimeValue t{1'600'000'000, 0};
    ASSERT_EQ(clock_.SetTime(t), 0);
    EXPECT_EQ(clock_.TimeAt(0x00000100u), (TimeValue{1'600'000'000, 512}));
    EXPECT_EQ(clock_.TimeAt(0xFFFFFE00u), (TimeValue{1'599'999'999, 744}));
    EXPECT_EQ(ProgramClock::DiffMs({2'000'000'000, 0}, {0, 0}), 2147483647);
    EXPECT_EQ(ProgramClock::DiffMs({0, 0}, {2'000'000'000, 0}), -2147483647);
    EXPECT_EQ(ProgramClock::DiffMs({10, 5}, {9, 900}), 105);
}

}  // namespace
}  // namespace halvo

// Readers on other threads take the calibration without a lock while writers keep replacing it.
// Built for the thread sanitizer too; the check below also catches a torn entry on its own.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "app/ProgramClock.h"
#include "platform/FakeSystemClock.h"
#include "platform/FakeTickSource.h"

namespace halvo {
namespace {

TEST(ProgramClockThreads, ReadersNeverSeeATornCalibration) {
    FakeTickSource ticks;
    FakeSystemClock system;
    system.SetFailSet(true);
    ticks.SetHasCounter(false);
    ticks.SetTick(0);
    ProgramClock clock(ticks, system);

    // Every entry written has offset == -(seconds % 1000): at tick 0 the offset is -ms.
    constexpr int kWrites = 100000;
    std::atomic<int> writersDone{0};
    auto writer = [&](std::int32_t first) {
        for (int i = 0; i < kWrites; ++i) {
            TimeValue t{first + i, (first + i) % 1000};
            clock.SetTime(t);
        }
        writersDone.fetch_add(1);
    };
    std::atomic<long> torn{0};
    std::atomic<long> reads{0};
    auto reader = [&] {
        for (long n = 0; n < 5'000'000 && writersDone.load() < 2; ++n) {
            const auto c = clock.Current();
            if (c.offset != -(c.seconds % 1000)) torn.fetch_add(1);
            const TimeValue now = clock.TimeAt(0);
            if (now.ms != now.seconds % 1000) torn.fetch_add(1);
            reads.fetch_add(1, std::memory_order_relaxed);
        }
    };
    std::vector<std::thread> threads;
    threads.emplace_back(reader);
    threads.emplace_back(reader);
    threads.emplace_back(writer, 400'000'000);
    threads.emplace_back(writer, 500'000'123);
    for (auto& t : threads) t.join();
    EXPECT_EQ(torn.load(), 0);
    EXPECT_GT(reads.load(), 0);
    EXPECT_TRUE(clock.OwnClock());
}

}  // namespace
}  // namespace halvo

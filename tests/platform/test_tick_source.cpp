#include <gtest/gtest.h>

#include <cstdint>

#include "platform/MonotonicTickSource.h"

namespace halvo {
namespace {

TEST(MonotonicTickSource, CounterAndTickCountComeFromOneSteadyClock) {
    MonotonicTickSource source;
    std::int64_t frequency = 0;
    ASSERT_TRUE(source.PerformanceFrequency(frequency));
    EXPECT_EQ(frequency, 1'000'000'000);

    std::int64_t previous = 0;
    ASSERT_TRUE(source.PerformanceCounter(previous));
    for (int i = 0; i < 1000; ++i) {
        std::int64_t count = 0;
        ASSERT_TRUE(source.PerformanceCounter(count));
        EXPECT_GE(count, previous);
        previous = count;
    }
    std::int64_t count = 0;
    source.PerformanceCounter(count);
    const std::uint32_t tick = source.TickCount();
    const auto fromCounter = static_cast<std::uint32_t>(count / 1'000'000);
    // Same clock, read a moment apart: within a few milliseconds, wrap included.
    EXPECT_LT(tick - fromCounter, 50u);
}

}  // namespace
}  // namespace halvo

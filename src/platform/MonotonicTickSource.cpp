#include "platform/MonotonicTickSource.h"

#include <time.h>

namespace halvo {

namespace {
constexpr std::int64_t kNanosPerSecond = 1'000'000'000;

bool ReadMonotonic(timespec& ts) {
    return clock_gettime(CLOCK_MONOTONIC, &ts) == 0;
}
}  // namespace

std::uint32_t MonotonicTickSource::TickCount() {
    timespec ts{};
    if (!ReadMonotonic(ts)) return 0;
    // Truncation to 32 bits is the point: the tick wraps like the one the rest of the code expects.
    const auto ms = static_cast<std::uint64_t>(ts.tv_sec) * 1000u +
                    static_cast<std::uint64_t>(ts.tv_nsec / 1'000'000);
    return static_cast<std::uint32_t>(ms);
}

bool MonotonicTickSource::PerformanceCounter(std::int64_t& count) {
    timespec ts{};
    if (!ReadMonotonic(ts)) return false;
    count = static_cast<std::int64_t>(ts.tv_sec) * kNanosPerSecond + ts.tv_nsec;
    return true;
}

bool MonotonicTickSource::PerformanceFrequency(std::int64_t& frequency) {
    timespec ts{};
    if (!ReadMonotonic(ts)) return false;
    frequency = kNanosPerSecond;
    return true;
}

}  // namespace halvo

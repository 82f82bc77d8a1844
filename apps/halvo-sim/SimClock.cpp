#include "halvo-sim/SimClock.h"

#include <ctime>

namespace halvo {

std::int64_t SystemWallClock::NowMs() const {
    timespec ts{};
    clock_gettime(CLOCK_REALTIME, &ts);
    return static_cast<std::int64_t>(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000;
}

void SimDeviceClock::Set(TimeValue t) {
    const std::int64_t target = static_cast<std::int64_t>(t.seconds) * 1000 + t.ms;
    offsetMs_.store(target - wall_.NowMs());
}

}  // namespace halvo

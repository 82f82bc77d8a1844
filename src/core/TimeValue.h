#pragma once
// The program's time value: seconds since 1970 and milliseconds, normalised to 0..999.

#include <cstdint>

namespace halvo {

struct TimeValue {
    std::int32_t seconds = 0;
    std::int32_t ms = 0;

    friend bool operator==(const TimeValue&, const TimeValue&) = default;
};

// Folds any millisecond count into the seconds so that ms ends up in 0..999.
inline TimeValue NormaliseTime(std::int64_t seconds, std::int64_t ms) {
    std::int64_t s = seconds + ms / 1000;
    std::int64_t r = ms % 1000;
    if (r < 0) {
        s -= 1;
        r += 1000;
    }
    return TimeValue{static_cast<std::int32_t>(s), static_cast<std::int32_t>(r)};
}

}  // namespace halvo

#pragma once
// Float to integer the way the status digest wants it: toward zero, with NaN as 0 and values
// beyond the 32-bit range held at its ends, so that a wild sensor value or setting can never
// make the conversion undefined.

#include <cmath>
#include <cstdint>
#include <limits>

namespace halvo {

inline std::int32_t TruncateToInt32(double v) {
    if (std::isnan(v)) return 0;
    if (v >= 2147483647.0) return std::numeric_limits<std::int32_t>::max();
    if (v <= -2147483648.0) return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(v);
}

}  // namespace halvo

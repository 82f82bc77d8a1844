#pragma once
// User units to and from samples. `UserUnits` 1 is milliseconds, 2 samples, anything else metres
// of two-way travel at `WaterSoundSpeed`. The arithmetic is in double and every conversion to a
// count truncates toward zero.

#include <cmath>
#include <cstdint>

namespace halvo {

struct GeneralValues;

// Counts that come from settings are held to this, so that sums and differences of two stay in
// an int: a huge or non-finite setting must not become undefined arithmetic.
constexpr std::int32_t kMaxSampleCount = 1'000'000'000;

// Truncation toward zero held to ±kMaxSampleCount; NaN gives 0.
inline std::int32_t TruncCount(double v) {
    if (!(v == v)) return 0;
    if (v >= kMaxSampleCount) return kMaxSampleCount;
    if (v <= -kMaxSampleCount) return -kMaxSampleCount;
    return static_cast<std::int32_t>(v);
}

std::int32_t ToSamples(double x, float rate, const GeneralValues& general);
double FromSamples(double n, float rate, const GeneralValues& general);

}  // namespace halvo

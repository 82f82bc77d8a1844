#pragma once
// The offset from the navigation antenna to the towed body, in the units of the trace's group
// coordinates (10000 times minutes of arc). Trace stamping adds it to the stored position, and
// playback adds it before comparing with a latitude or longitude range, so both call this.

#include <cmath>
#include <cstdint>
#include <numbers>

namespace halvo {

struct AntennaOffset {
    double dx = 0.0;  // longitude, 10000 * minutes of arc
    double dy = 0.0;  // latitude, 10000 * minutes of arc
};

// laybackEnabled is bit 0 of GPSFlags ("Layback Enable"). antennaeO is the offset to starboard
// and antennaeR the offset back, both in centimetres; course in degrees; groupCoordY the
// latitude in 10000 * minutes of arc, which scales the longitude offset to the parallel.
inline AntennaOffset AntennaCorrection(bool laybackEnabled, std::int16_t antennaeO,
                                       std::int16_t antennaeR, std::int16_t course,
                                       std::int32_t groupCoordY) {
    constexpr double kMetresPerMinute = 1852.0;
    AntennaOffset out;
    if (laybackEnabled) {
        const double o = antennaeO * 0.01;
        const double r = antennaeR * 0.01;
        const double c = course * std::numbers::pi / 180.0;
        const double b = c - std::atan2(o, r);
        const double dist = std::sqrt(r * r + o * o);
        out.dy = -std::cos(b) * dist / kMetresPerMinute * 10000.0;
        out.dx = std::sin(b) * dist / kMetresPerMinute * 10000.0;
    }
    // 108,000,000 is 180 degrees in these units.
    const double f = std::cos(groupCoordY * std::numbers::pi / 108000000.0);
    if (f != 0.0) out.dx /= f;
    return out;
}

}  // namespace halvo

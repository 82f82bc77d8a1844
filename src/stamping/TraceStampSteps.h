#pragma once
// The arithmetic of the stamping steps, one function per step, on a trace header view. The
// observer (SegyDataProcessor) decides when each runs; these only compute and write.

#include <cstdint>
#include <span>

#include "core/TraceHeader.h"

namespace halvo {

struct NavigationSnapshot;

namespace stamping {

constexpr std::int32_t kAttitudeValid = 0x20;  // bit 5 of Validity Flags
constexpr double kHeaveLimitSamples = 10000.0;

// Truncation toward zero, held to 32 bits; NaN gives 0. Settings are typed by hand, so no value
// may reach an undefined conversion.
std::int32_t Trunc(double v);

// Pitch or roll in 180/32767 degree with the bias removed, wrapped once into -180..180 degrees
// and scaled back to the same units.
std::int32_t BiasedAngle(std::int32_t raw, double biasDegrees);

// Samples of a vertical displacement in metres at half the sound speed per sample interval;
// 0 when it lies outside +-10000 samples or cannot be computed (zero speed or interval).
double HeaveSamples(double metres, double soundSpeed, std::uint32_t intervalNs);

// The heave in millimetres that a played trace's heave samples stand for (rebuilt attitude).
std::int32_t HeaveMillimetres(double soundSpeed, std::uint32_t intervalNs, std::int32_t samples);

// `Pressure PSI * 1000` from a raw reading in thousandths of a PSI.
std::int32_t PressureField(std::int32_t raw, double gain, double offset);

// `NMEA Day`: the day of the month plus the days before the month, plus a leap day after
// February in every year divisible by 4; there is deliberately no century rule. A month outside
// 1..12 adds nothing.
std::int32_t DayOfYear(std::int32_t day, std::int32_t month, std::int32_t year);

// Step 9: the analog readings (24 bytes, twelve Int16) into the annotation words, and the
// temperature from one channel when its value is believable.
void StampAnalog(TraceHeaderView& th, std::span<const std::uint8_t> readings,
                 std::int32_t temperatureChannel, double gain, double offset);

// Step 13: runs the channel's depth low-pass (single precision) and returns the heave samples
// to write, already negated.
std::int32_t DepthHeave(float& filter, std::int32_t depthMm, double heaveScale, double soundSpeed,
                        std::uint32_t intervalNs);

// Step 15: heading, time, day of year, course, speed and position of the snapshot.
void StampNavigation(TraceHeaderView& th, const NavigationSnapshot& s);

// Step 17: source coordinates become the group coordinates plus the antenna offset.
void StampLayback(TraceHeaderView& th, std::int16_t gpsFlags);

}  // namespace stamping
}  // namespace halvo

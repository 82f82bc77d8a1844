#include "stamping/TraceStampSteps.h"

#include <cmath>

#include "core/ByteOrder.h"
#include "nav/AntennaCorrection.h"
#include "nav/NavigationSnapshot.h"

namespace halvo::stamping {

std::int32_t Trunc(double v) {
    if (std::isnan(v)) return 0;
    if (v >= 2147483647.0) return 2147483647;
    if (v <= -2147483648.0) return -2147483647 - 1;
    return static_cast<std::int32_t>(v);
}

std::int32_t BiasedAngle(std::int32_t raw, double biasDegrees) {
    double p = raw * 180.0 / 32767.0 - biasDegrees;
    if (p > 180.0) p -= 360.0;
    if (p < -180.0) p += 360.0;
    return Trunc(p * 32767.0 / 180.0);
}

double HeaveSamples(double metres, double soundSpeed, std::uint32_t intervalNs) {
    const double h = metres / (soundSpeed * 0.5) / (intervalNs / 1e9);
    // Written so that NaN and infinity fall out as well.
    if (!(h >= -kHeaveLimitSamples && h <= kHeaveLimitSamples)) return 0.0;
    return h;
}

std::int32_t HeaveMillimetres(double soundSpeed, std::uint32_t intervalNs, std::int32_t samples) {
    return Trunc(soundSpeed * (intervalNs / 1e9) * samples * 1000.0 * 0.5);
}

std::int32_t PressureField(std::int32_t raw, double gain, double offset) {
    return Trunc(1000.0 * (raw / 1000.0 * gain + offset) + 0.5);
}

std::int32_t DayOfYear(std::int32_t day, std::int32_t month, std::int32_t year) {
    static constexpr std::int32_t kDaysBefore[12] = {0,   31,  59,  90,  120, 151,
                                                     181, 212, 243, 273, 304, 334};
    std::int32_t d = day;
    if (month >= 1 && month <= 12) d += kDaysBefore[month - 1];
    if (year % 4 == 0 && month > 2) d += 1;
    return d;
}

void StampAnalog(TraceHeaderView& th, std::span<const std::uint8_t> readings,
                 std::int32_t temperatureChannel, double gain, double offset) {
    if (temperatureChannel >= 0 && temperatureChannel <= 7) {
        const auto raw = GetLE<std::int16_t>(readings, 2 * temperatureChannel);
        const double v = (raw * gain + offset) * 10.0;
        if (v > -2000.0 && v < 2000.0) th.SetInt(TraceField::Temperature, Trunc(v));
    }
    for (int i = 0; i < 12; ++i) {
        const auto field =
            static_cast<TraceField>(static_cast<int>(TraceField::AnnotationWord0) + i);
        th.SetInt(field, GetLE<std::int16_t>(readings, 2 * i));
    }
}

std::int32_t DepthHeave(float& filter, std::int32_t depthMm, double heaveScale, double soundSpeed,
                        std::uint32_t intervalNs) {
    filter = 0.95f * filter + 0.05f * static_cast<float>(depthMm);
    const double dev = (depthMm - static_cast<double>(filter)) / 1000.0 * heaveScale;
    return Trunc(-HeaveSamples(dev, soundSpeed, intervalNs));
}

void StampNavigation(TraceHeaderView& th, const NavigationSnapshot& s) {
    th.SetInt(TraceField::Heading, Trunc(s.heading));
    th.SetInt(TraceField::NMEAHour, s.hour);
    th.SetInt(TraceField::NMEAMinute, s.minute);
    th.SetInt(TraceField::NMEASecond, Trunc(s.second));
    th.SetInt(TraceField::NMEACourse, Trunc(s.course));
    th.SetInt(TraceField::NMEASpeed, Trunc(s.speed * 10.0));
    th.SetInt(TraceField::NMEADay, DayOfYear(s.day, s.month, s.year));
    th.SetInt(TraceField::NMEAYear, s.year);

    std::int32_t sourceX = Trunc(s.lonDegrees * 3600.0 + s.lonMinutes * 60.0);
    std::int32_t sourceY = Trunc(s.latDegrees * 3600.0 + s.latMinutes * 60.0);
    std::int32_t groupX = Trunc((s.lonDegrees * 60.0 + s.lonMinutes) * 10000.0);
    std::int32_t groupY = Trunc((s.latDegrees * 60.0 + s.latMinutes) * 10000.0);
    // Only an upper-case "W" counts for longitude; latitude takes either case of "S".
    if (s.lonHemisphere == 'W') sourceX = -sourceX, groupX = -groupX;
    if (s.latHemisphere == 'S' || s.latHemisphere == 's') sourceY = -sourceY, groupY = -groupY;
    th.SetInt(TraceField::SourceCoordX, sourceX);
    th.SetInt(TraceField::SourceCoordY, sourceY);
    th.SetInt(TraceField::GroupCoordX, groupX);
    th.SetInt(TraceField::GroupCoordY, groupY);
    th.SetInt(TraceField::CoordUnits, 2);
}

void StampLayback(TraceHeaderView& th, std::int16_t gpsFlags) {
    const std::int32_t groupX = th.GetInt(TraceField::GroupCoordX);
    const std::int32_t groupY = th.GetInt(TraceField::GroupCoordY);
    const AntennaOffset off = AntennaCorrection(
        (gpsFlags & 1) != 0, static_cast<std::int16_t>(th.GetInt(TraceField::NMEAAntennaeO)),
        static_cast<std::int16_t>(th.GetInt(TraceField::NMEAAntennaeR)),
        static_cast<std::int16_t>(th.GetInt(TraceField::NMEACourse)), groupY);
    th.SetInt(TraceField::SourceCoordX, Trunc(groupX + off.dx));
    th.SetInt(TraceField::SourceCoordY, Trunc(groupY + off.dy));
}

}  // namespace halvo::stamping

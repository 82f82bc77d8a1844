#include "nav/NavigationText.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "nav/AntennaCorrection.h"

namespace halvo {

namespace {

constexpr int kAttitudeValid = 0x20;  // bit 5 of Validity Flags

std::string Format(const char* format, ...) {
    char buffer[256];
    va_list args;
    va_start(args, format);
    const int n = std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    if (n < 0) return {};
    return std::string(buffer, static_cast<std::size_t>(n) < sizeof buffer ? n : sizeof buffer - 1);
}

// The sum of a coordinate and its correction, truncated, held to 32 bits.
std::int64_t Corrected(std::int32_t value, double offset) {
    const double v = std::trunc(value + offset);
    if (!std::isfinite(v)) return value;
    if (v > 2147483647.0) return 2147483647;
    if (v < -2147483648.0) return -2147483648LL;
    return static_cast<std::int64_t>(v);
}

struct Corrected2 {
    std::int64_t x = 0;
    std::int64_t y = 0;
};

Corrected2 CorrectedPosition(const ConstTraceHeaderView& th, std::int16_t gpsFlags) {
    const std::int32_t x = th.GetInt(TraceField::GroupCoordX);
    const std::int32_t y = th.GetInt(TraceField::GroupCoordY);
    const AntennaOffset off = AntennaCorrection(
        (gpsFlags & 1) != 0, static_cast<std::int16_t>(th.GetInt(TraceField::NMEAAntennaeO)),
        static_cast<std::int16_t>(th.GetInt(TraceField::NMEAAntennaeR)),
        static_cast<std::int16_t>(th.GetInt(TraceField::NMEACourse)), y);
    return {Corrected(x, off.dx), Corrected(y, off.dy)};
}

// "%d:%07.4f %c" of one coordinate.
std::string Half(std::int64_t value, char positive, char negative) {
    const std::int64_t a = std::llabs(value);
    const int degrees = static_cast<int>(a / 600000);
    const double minutes = static_cast<double>(a % 600000) / 10000.0;
    return Format("%d:%07.4f %c", degrees, minutes, value < 0 ? negative : positive);
}

}  // namespace

MonthDay MonthDayOf(int dayOfYear, int year) {
    static constexpr int kLengths[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    MonthDay md{1, dayOfYear};
    for (int m = 0; m < 11; ++m) {
        const int length = kLengths[m] + (m == 1 && year % 4 == 0 ? 1 : 0);
        if (md.day <= length) break;
        md.day -= length;
        md.month = m + 2;
    }
    return md;
}

std::string PositionText(const ConstTraceHeaderView& th, std::int16_t gpsFlags) {
    const Corrected2 p = CorrectedPosition(th, gpsFlags);
    return Half(p.y, 'N', 'S') + " " + Half(p.x, 'E', 'W');
}

std::string PositionAnnotationText(const ConstTraceHeaderView& th, std::int16_t gpsFlags) {
    const int units = th.GetInt(TraceField::CoordUnits);
    if (units == 2) return PositionText(th, gpsFlags);  // "%d:%07.4f %c " then "%d:%07.4f %c"
    if (units == 1 || units == 3) {
        const Corrected2 p = CorrectedPosition(th, gpsFlags);
        const std::int64_t div = units == 1 ? 1000 : 10;
        return Format("(X %lld Y %lld)", static_cast<long long>(p.x / div),
                      static_cast<long long>(p.y / div));
    }
    return "(No Nav)";
}

std::string TimeText(const ConstTraceHeaderView& th) {
    const int year = th.GetInt(TraceField::NMEAYear);
    if (year == 0) {
        return Format("(%02d:%02d:%02d)", th.GetInt(TraceField::Hour),
                      th.GetInt(TraceField::Minute), th.GetInt(TraceField::Second));
    }
    const MonthDay md = MonthDayOf(th.GetInt(TraceField::NMEADay), year);
    return Format("(%02d:%02d:%02d %02d/%02d/%02d)", th.GetInt(TraceField::NMEAHour),
                  th.GetInt(TraceField::NMEAMinute), th.GetInt(TraceField::NMEASecond), md.month,
                  md.day, year % 100);
}

std::string SpeedCourseText(const ConstTraceHeaderView& th) {
    return Format("(%3.1fkt %dd)", th.GetInt(TraceField::NMEASpeed) / 10.0,
                  th.GetInt(TraceField::NMEACourse));
}

std::string AttitudeText(const ConstTraceHeaderView& th, double soundSpeed) {
    const auto interval = static_cast<std::uint32_t>(th.GetInt(TraceField::SampleIntervalNS));
    if ((th.GetInt(TraceField::ValidityFlags) & kAttitudeValid) == 0 || interval == 0) {
        return "No Pitch Roll";
    }
    const double pitch = th.GetInt(TraceField::Pitch) * 180.0 / 32768.0;
    const double roll = th.GetInt(TraceField::Roll) * 180.0 / 32768.0;
    const double heave =
        th.GetInt(TraceField::HeaveCompensationSamples) * (interval / 1e9) * soundSpeed * 0.5;
    const double compass = th.GetInt(TraceField::Heading) / 100.0;
    return Format("P %5.2f R %5.2f H %6.3f C %2.1f", pitch, roll, heave, compass);
}

}  // namespace halvo

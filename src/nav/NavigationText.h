#pragma once
// The texts that status lines, cursors and image annotations show of a trace's navigation, all
// built from a stamped trace header. Coordinates are 10000 times minutes of arc.

#include <cstdint>
#include <string>

#include "core/TraceHeader.h"

namespace halvo {

// Month (1..12) and day of the month of a day of the year. Every year divisible by 4 has a leap
// day, as the stamping step counts. A day past the year's end stays in December; a day below 1
// is January's.
struct MonthDay {
    int month = 1;
    int day = 1;
};
MonthDay MonthDayOf(int dayOfYear, int year);

// "%d:%07.4f %c %d:%07.4f %c": latitude then longitude from `Group CoordY` and `Group CoordX`
// with the antenna correction added (bit 0 of gpsFlags enables the offsets) and truncated.
std::string PositionText(const ConstTraceHeaderView& th, std::int16_t gpsFlags);

// The image annotation's variant, by `Coord Units`: 2 the position as above with a blank
// between the two halves, 1 "(X %d Y %d)" with the corrected coordinates / 1000, 3 the same
// / 10, anything else "(No Nav)".
std::string PositionAnnotationText(const ConstTraceHeaderView& th, std::int16_t gpsFlags);

// "(%02d:%02d:%02d %02d/%02d/%02d)": NMEA hour, minute, second, then month/day/year % 100. With
// `NMEA Year` 0 the header's own `Hour`, `Minute` and `Second`: "(%02d:%02d:%02d)".
std::string TimeText(const ConstTraceHeaderView& th);

// "(%3.1fkt %dd)": `NMEA Speed` / 10 and `NMEA Course`.
std::string SpeedCourseText(const ConstTraceHeaderView& th);

// "P %5.2f R %5.2f H %6.3f C %2.1f": pitch and roll in degrees, heave in metres from the heave
// samples, the interval and `soundSpeed` (m/s), compass from `Heading 100 * Degrees`. Without
// the attitude bit of `Validity Flags` or with a zero interval: "No Pitch Roll".
std::string AttitudeText(const ConstTraceHeaderView& th, double soundSpeed);

}  // namespace halvo

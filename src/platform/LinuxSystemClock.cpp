#include "platform/LinuxSystemClock.h"

#include <time.h>

namespace halvo {

namespace {

bool IsValidDate(const UtcDateTime& t) {
    static constexpr int kDays[12] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (t.year < 1970 || t.month < 1 || t.month > 12 || t.day < 1) return false;
    const bool leap = (t.year % 4 == 0 && t.year % 100 != 0) || t.year % 400 == 0;
    const int maxDay = (t.month == 2 && !leap) ? 28 : kDays[t.month - 1];
    return t.day <= maxDay && t.hour >= 0 && t.hour < 24 && t.minute >= 0 && t.minute < 60 &&
           t.second >= 0 && t.second < 60 && t.milliseconds >= 0 && t.milliseconds < 1000;
}

}  // namespace

SystemTimeReading LinuxSystemClock::Read() {
    timespec ts{};
    if (clock_gettime(CLOCK_REALTIME, &ts) != 0) return {};
    return SystemTimeReading{static_cast<std::int64_t>(ts.tv_sec),
                             static_cast<std::int32_t>(ts.tv_nsec / 1'000'000)};
}

bool LinuxSystemClock::Set(const UtcDateTime& utc) {
    if (!IsValidDate(utc)) return false;
    tm parts{};
    parts.tm_year = utc.year - 1900;
    parts.tm_mon = utc.month - 1;
    parts.tm_mday = utc.day;
    parts.tm_hour = utc.hour;
    parts.tm_min = utc.minute;
    parts.tm_sec = utc.second;
    const time_t seconds = timegm(&parts);
    if (seconds == static_cast<time_t>(-1)) return false;
    timespec ts{};
    ts.tv_sec = seconds;
    ts.tv_nsec = static_cast<long>(utc.milliseconds) * 1'000'000L;
    return clock_settime(CLOCK_REALTIME, &ts) == 0;
}

}  // namespace halvo

#pragma once
// The machine's wall clock: read it, and try to set it. Setting normally fails for want of
// privilege, and callers must take that as the ordinary case.

#include <cstdint>

namespace halvo {

// One reading of the wall clock: seconds since 1970 and the milliseconds within that second.
struct SystemTimeReading {
    std::int64_t seconds = 0;
    std::int32_t ms = 0;
};

// A calendar date and time in UTC, the form in which the clock is set.
struct UtcDateTime {
    int year = 1970;  // full year
    int month = 1;    // 1..12
    int day = 1;      // 1..31
    int hour = 0;
    int minute = 0;
    int second = 0;
    int milliseconds = 0;

    friend bool operator==(const UtcDateTime&, const UtcDateTime&) = default;
};

class SystemClock {
  public:
    virtual ~SystemClock() = default;

    // Seconds and milliseconds come from one reading, so they always belong together.
    virtual SystemTimeReading Read() = 0;

    // True when the machine's clock now shows the given time.
    virtual bool Set(const UtcDateTime& utc) = 0;
};

}  // namespace halvo

#include "stamping/ClockSteering.h"

#include <cmath>
#include <cstdlib>
#include <ctime>

#include "app/ProgramClock.h"
#include "nav/NavigationConfig.h"
#include "nav/NavigationFix.h"

namespace halvo {

namespace {

// Sentence fields are range-checked by the parser, but a TWC or vendor time may not be; keep
// every value the calendar conversion sees within what it handles.
int Held(double v, int lo, int hi) {
    if (!(v >= lo)) return lo;
    if (v > hi) return hi;
    return static_cast<int>(std::trunc(v));
}

}  // namespace

std::int64_t ClockSteering::SentenceSeconds(TimeValue messageTime, int hour, int minute,
                                            double second, bool replaceDate, int month, int year) {
    const std::time_t t = messageTime.seconds;
    std::tm parts{};
    if (gmtime_r(&t, &parts) == nullptr) return messageTime.seconds;
    parts.tm_hour = Held(hour, 0, 99);
    parts.tm_min = Held(minute, 0, 99);
    parts.tm_sec = Held(second, 0, 99);
    if (replaceDate) {
        parts.tm_mon = Held(month, 0, 99) - 1;  // month 0 falls back into December
        parts.tm_year = Held(year, 1900, 9999) - 1900;
    }
    // timegm is the UTC conversion that mktime minus the local zone offset stands for.
    const std::int64_t seconds = timegm(&parts);
    // Time values are 32-bit seconds.
    if (seconds > 2147483647) return 2147483647;
    if (seconds < -2147483647) return -2147483647;
    return seconds;
}

ClockSteering::Outcome ClockSteering::Steer(const NavigationFix& fix, std::int32_t timeSource,
                                            TimeValue messageTime, ProgramClock& clock) {
    std::int32_t counter = 0;
    int hour = 0, minute = 0;
    double second = 0;
    bool replaceDate = false;
    switch (timeSource) {
        case NavigationConfig::TimeRmc:
            // Gated by ZDA's counter while the time of day comes from RMC: as designed.
            counter = fix.zda.stamp;
            hour = fix.rmc.hour, minute = fix.rmc.minute, second = fix.rmc.second;
            break;
        case NavigationConfig::TimeGll:
            counter = fix.gll.stamp;
            hour = fix.gll.hour, minute = fix.gll.minute, second = fix.gll.second;
            break;
        case NavigationConfig::TimeZda:
            counter = fix.zda.stamp;
            hour = fix.zda.hour, minute = fix.zda.minute, second = fix.zda.second;
            replaceDate = true;
            break;
        default:
            return Outcome::NoSource;
    }
    if (counter == lastCounter_) return Outcome::SameCounter;
    lastCounter_ = counter;
    if (hour == 0 && minute == 0) return Outcome::Midnight;

    // ZDA's day of the month is not taken over: the message's own day stays, as designed.
    const std::int64_t sentence = SentenceSeconds(messageTime, hour, minute, second, replaceDate,
                                                  fix.zda.month, fix.zda.year);
    const TimeValue sentenceTime{static_cast<std::int32_t>(sentence), 0};
    const std::int32_t err = ProgramClock::DiffMs(sentenceTime, messageTime);

    if (std::abs(err) > kStepLimitMs) {
        TimeValue to = sentenceTime;
        clock.SetTime(to);
        filtered_ = 0;
        remainder_ = 0;
        lastError_ = err;
        Publish();
        return Outcome::Stepped;
    }
    if (std::abs(err) > kFastLimitMs) {
        filtered_ = 0.1 * err + 0.9 * filtered_;
    } else {
        filtered_ = 0.98 * filtered_ + 0.02 * err;
    }
    const double a = 0.05 * filtered_ + remainder_;
    const double q = std::trunc(a);
    remainder_ = a - q;
    if (q != 0) {
        // Slew moves program time back by its argument; a positive error wants it forward.
        clock.Slew(-static_cast<std::int32_t>(q));
        filtered_ -= a;
    }
    lastError_ = err;
    Publish();
    return Outcome::Filtered;
}

}  // namespace halvo

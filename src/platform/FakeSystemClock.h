#pragma once
// Test seam: a wall clock the test sets by hand. It records every attempt to set it and can be
// told to refuse, as the real one does without privilege. Safe to use from several threads.

#include <mutex>
#include <vector>

#include "platform/SystemClock.h"

namespace halvo {

class FakeSystemClock final : public SystemClock {
  public:
    SystemTimeReading Read() override {
        std::lock_guard lock(mutex_);
        ++reads_;
        return now_;
    }

    bool Set(const UtcDateTime& utc) override {
        std::lock_guard lock(mutex_);
        setCalls_.push_back(utc);
        if (failSet_) return false;
        now_ = SystemTimeReading{DaysFromCivil(utc.year, utc.month, utc.day) * 86400 +
                                     utc.hour * 3600 + utc.minute * 60 + utc.second,
                                 utc.milliseconds};
        return true;
    }

    void SetNow(std::int64_t seconds, std::int32_t ms) {
        std::lock_guard lock(mutex_);
        now_ = SystemTimeReading{seconds, ms};
    }
    void SetFailSet(bool fail) {
        std::lock_guard lock(mutex_);
        failSet_ = fail;
    }
    std::vector<UtcDateTime> SetCalls() const {
        std::lock_guard lock(mutex_);
        return setCalls_;
    }
    int Reads() const {
        std::lock_guard lock(mutex_);
        return reads_;
    }

  private:
    // Days since 1970-01-01 of a proleptic Gregorian date.
    static std::int64_t DaysFromCivil(std::int64_t y, int m, int d) {
        y -= m <= 2;
        const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
        const std::int64_t yoe = y - era * 400;
        const std::int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
        const std::int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
        return era * 146097 + doe - 719468;
    }

    mutable std::mutex mutex_;
    SystemTimeReading now_{};
    bool failSet_ = false;
    int reads_ = 0;
    std::vector<UtcDateTime> setCalls_;
};

}  // namespace halvo

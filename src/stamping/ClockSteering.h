#pragma once
// Steers the program's clock to the time of navigation sentences. Each new sentence time
// (gated by the change counter of the chosen time source) gives an error against the time the
// sentence message was read at. A large error steps the clock; smaller ones pass a low-pass
// filter whose output is applied in whole milliseconds, the fraction carried to the next round.

#include <atomic>
#include <cstdint>

#include "core/TimeValue.h"

namespace halvo {

struct NavigationFix;
class ProgramClock;

class ClockSteering {
  public:
    static constexpr std::int32_t kStepLimitMs = 5000;  // above: step the clock
    static constexpr std::int32_t kFastLimitMs = 200;   // above: the fast filter

    // What one call did, for tests and the log.
    enum class Outcome { NoSource, SameCounter, Midnight, Stepped, Filtered };

    // One recognised sentence. `timeSource` is TimeSource of the navigation settings;
    // `messageTime` the reading time of the sentence's message.
    Outcome Steer(const NavigationFix& fix, std::int32_t timeSource, TimeValue messageTime,
                  ProgramClock& clock);

    double Filtered() const { return filtered_; }
    double Remainder() const { return remainder_; }
    std::int32_t LastErrorMs() const { return lastError_; }
    std::int32_t LastCounter() const { return lastCounter_; }

    // The current and the filtered clock error as last published, for other threads (the
    // port status of the navigation page). The fields above belong to the bus thread.
    std::int32_t PublishedErrorMs() const { return shownError_.load(std::memory_order_relaxed); }
    double PublishedAverageMs() const { return shownAverage_.load(std::memory_order_relaxed); }

    // The sentence time of day laid over the message's own date, as seconds since 1970 (UTC).
    // Exposed for tests; `replaceDate` also takes month and year (the day never moves).
    static std::int64_t SentenceSeconds(TimeValue messageTime, int hour, int minute, double second,
                                        bool replaceDate, int month, int year);

  private:
    std::int32_t lastCounter_ = 0;
    double filtered_ = 0;
    double remainder_ = 0;
    std::int32_t lastError_ = 0;
    std::atomic<std::int32_t> shownError_{0};
    std::atomic<double> shownAverage_{0};

    void Publish() {
        shownError_.store(lastError_, std::memory_order_relaxed);
        shownAverage_.store(filtered_, std::memory_order_relaxed);
    }
};

}  // namespace halvo

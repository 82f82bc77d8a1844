#pragma once
// The event log: a ring of short time-stamped lines in memory, written by the bus, serial and
// user-interface threads at once and read by the logs page and the headless program.
//
// Each line starts with the time of day as "HH:MM:SS  " and holds at most 90 characters of text
// after it, cut without a mark. Every line gets a sequence number, so a reader can ask for what
// came after the last line it saw even when the ring has wrapped meanwhile.

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "core/TimeValue.h"

namespace halvo {

class ProgramClock;

class EventLog {
  public:
    static constexpr std::size_t kMaxText = 90;
    static constexpr std::size_t kDefaultCapacity = 2000;

    using NowFn = std::function<TimeValue()>;

    explicit EventLog(NowFn now, std::size_t capacity = kDefaultCapacity);
    // Lines stamped with the program clock's time.
    explicit EventLog(ProgramClock& clock, std::size_t capacity = kDefaultCapacity);

    void Add(std::string_view text);
    // printf-style; the text is cut at kMaxText like any other.
    void Addf(const char* format, ...) __attribute__((format(printf, 2, 3)));

    struct Line {
        std::uint64_t sequence = 0;  // 1 for the first line ever added
        std::string text;            // with the time prefix
    };
    // Lines with a sequence above `after`, oldest first (what is still held in the ring).
    std::vector<Line> Since(std::uint64_t after) const;
    std::vector<std::string> Lines() const;
    // Sequence number of the newest line; 0 before the first.
    std::uint64_t LastSequence() const;
    void Clear();

    // Optional listener, called after each line is stored (outside the lock).
    void SetListener(std::function<void(const Line&)> listener);

    // "HH:MM:SS  " of a time, UTC.
    static std::string TimePrefix(const TimeValue& time);

  private:
    NowFn now_;
    std::size_t capacity_;
    mutable std::mutex mutex_;
    std::deque<Line> lines_;
    std::uint64_t sequence_ = 0;
    std::function<void(const Line&)> listener_;
};

}  // namespace halvo

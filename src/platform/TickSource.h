#pragma once
// Where the program's ticks come from: a millisecond tick count that wraps every 49.7 days, and
// a finer counter with its frequency that may be missing. The program clock asks nothing else.

#include <cstdint>

namespace halvo {

class TickSource {
  public:
    virtual ~TickSource() = default;

    // Milliseconds since some fixed point, 32 bits, wrapping.
    virtual std::uint32_t TickCount() = 0;

    // The fine counter. False when there is none; count is then untouched.
    virtual bool PerformanceCounter(std::int64_t& count) = 0;

    // Counts per second of the fine counter. False when there is none.
    virtual bool PerformanceFrequency(std::int64_t& frequency) = 0;
};

}  // namespace halvo

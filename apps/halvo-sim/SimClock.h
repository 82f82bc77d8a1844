#pragma once
// The simulator's notion of time. The wall clock is injectable so tests can fix it; the
// device clock sits on top of it and is what the topside may set or slew. Setting it moves
// an offset inside the simulator and never touches the machine's clock.

#include <atomic>
#include <cstdint>

#include "core/TimeValue.h"

namespace halvo {

class SimWallClock {
  public:
    virtual ~SimWallClock() = default;
    // Milliseconds since 1970, UTC.
    virtual std::int64_t NowMs() const = 0;
};

class SystemWallClock final : public SimWallClock {
  public:
    std::int64_t NowMs() const override;
};

// A clock that stands still until told otherwise: for tests.
class FixedWallClock final : public SimWallClock {
  public:
    explicit FixedWallClock(std::int64_t ms) : ms_(ms) {}
    std::int64_t NowMs() const override { return ms_.load(); }
    void Set(std::int64_t ms) { ms_.store(ms); }
    void Advance(std::int64_t ms) { ms_.fetch_add(ms); }

  private:
    std::atomic<std::int64_t> ms_;
};

class SimDeviceClock {
  public:
    explicit SimDeviceClock(const SimWallClock& wall) : wall_(wall) {}
    std::int64_t NowMs() const { return wall_.NowMs() + offsetMs_.load(); }
    TimeValue Now() const { return NormaliseTime(0, NowMs()); }
    // What a clock set from the topside does: from now on the device reads `t`.
    void Set(TimeValue t);
    void Slew(std::int32_t ms) { offsetMs_.fetch_add(ms); }
    std::int64_t OffsetMs() const { return offsetMs_.load(); }

  private:
    const SimWallClock& wall_;
    std::atomic<std::int64_t> offsetMs_{0};
};

}  // namespace halvo

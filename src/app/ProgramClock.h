#pragma once
// The program's one clock. Time is a calibration (seconds since 1970 at a tick offset) plus the
// tick, so it runs smoothly between calibrations and can be steered without touching the tick.
//
// Calibrations live in a ring of four slots. A writer fills the slot after the current one and
// then moves the index, so readers on any thread take no lock. Each slot is one 64-bit atomic
// word, so a reader gets a whole old entry or a whole new one, never half of each, even if
// writers have gone right round the ring meanwhile. Two writers at the same moment can lose one
// of their two changes; that is accepted.

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>

#include "core/TimeValue.h"

namespace halvo {

class SystemClock;
class TickSource;

class ProgramClock {
  public:
    // Time bases. Source 0 is "not chosen" and becomes 2 at first use.
    static constexpr int kSourceUnset = 0;
    static constexpr int kSourceTickCount = 1;
    static constexpr int kSourcePerformanceCounter = 2;
    static constexpr int kSourceSystemTime = 3;
    static constexpr int kSourceTickCountAlt = 4;

    // Seconds below this (ten years of 365 days) are not a believable date.
    static constexpr std::int32_t kMinSetSeconds = 315'360'000;
    // Where a date that cannot be converted is moved to.
    static constexpr std::int32_t kFallbackSeconds = 316'000'000;

    struct Calibration {
        std::int32_t seconds = 0;  // since 1970
        std::int32_t offset = 0;   // tick at the start of that second, ms
        friend bool operator==(const Calibration&, const Calibration&) = default;
    };

    ProgramClock(TickSource& ticks, SystemClock& system) : ticks_(ticks), system_(system) {}

    // The TimerSource setting: 0, 1, 2, 3 choose sources 1, 0, 4, 3; anything else is ignored.
    void SetSource(int timerSource);
    int Source() const { return source_.load(std::memory_order_acquire); }

    // Milliseconds from the chosen source, 32 bits, wrapping.
    std::uint32_t Tick();
    TimeValue Now();
    TimeValue TimeAt(std::uint32_t tick) const;
    // (a - b) in ms, worked in floating point and held to +-2147483647.
    static std::int32_t DiffMs(const TimeValue& a, const TimeValue& b);

    // Calibrates from the system clock, unless the program keeps its own clock.
    void SyncFromSystem();
    // -1 refused, 1 the system clock was set, 0 only the program's clock was. A date that
    // cannot be converted is moved to kFallbackSeconds, in time as well.
    int SetTime(TimeValue& time);
    // Program time falls back by delta ms (a negative delta moves it on).
    void Slew(std::int32_t delta);

    // Set after the first failed attempt to set the system clock; never cleared again.
    bool OwnClock() const { return ownClock_.load(std::memory_order_acquire); }
    Calibration Current() const;

    // Performance counter state: 0 untested, 1 usable, 2 not usable.
    int CounterState() const { return counterState_.load(std::memory_order_acquire); }

  private:
    void FirstUse();
    std::uint32_t TickCountOrCounter();
    std::int64_t SystemMs();
    void Publish(std::uint32_t slot, Calibration entry);
    std::uint32_t NextSlot() const;

    static std::uint64_t Pack(Calibration c);
    static Calibration Unpack(std::uint64_t word);

    TickSource& ticks_;
    SystemClock& system_;

    std::atomic<int> source_{kSourceUnset};
    std::once_flag firstUse_;
    std::int64_t base_ = 0;  // written once, inside firstUse_

    std::array<std::atomic<std::uint64_t>, 4> ring_{};
    std::atomic<std::uint32_t> index_{0};
    std::atomic<bool> ownClock_{false};

    std::atomic<int> counterState_{0};
    std::atomic<std::int64_t> frequency_{0};
};

}  // namespace halvo

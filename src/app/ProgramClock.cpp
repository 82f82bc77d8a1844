#include "app/ProgramClock.h"

#include <time.h>

#include <cstdlib>

#include "platform/SystemClock.h"
#include "platform/TickSource.h"

namespace halvo {

namespace {

// A counter faster than this could overflow the millisecond sum below; treat it as unusable.
constexpr std::int64_t kMaxFrequency = 1'000'000'000'000'000;

bool ToUtc(std::int32_t seconds, std::int32_t ms, UtcDateTime& out) {
    const time_t t = seconds;
    tm parts{};
    if (gmtime_r(&t, &parts) == nullptr) return false;
    out = UtcDateTime{parts.tm_year + 1900,
                      parts.tm_mon + 1,
                      parts.tm_mday,
                      parts.tm_hour,
                      parts.tm_min,
                      parts.tm_sec,
                      ms};
    return true;
}

TimeValue At(const ProgramClock::Calibration& c, std::uint32_t tick) {
    // Unsigned difference: a tick that wrapped past 2^32 still gives the right distance.
    const auto ms = static_cast<std::int32_t>(tick - static_cast<std::uint32_t>(c.offset));
    return NormaliseTime(c.seconds, ms);
}

std::int32_t OffsetFor(std::uint32_t tick, std::int32_t ms) {
    return static_cast<std::int32_t>(tick - static_cast<std::uint32_t>(ms));
}

}  // namespace

std::uint64_t ProgramClock::Pack(Calibration c) {
    return (static_cast<std::uint64_t>(static_cast<std::uint32_t>(c.seconds)) << 32) |
           static_cast<std::uint32_t>(c.offset);
}

ProgramClock::Calibration ProgramClock::Unpack(std::uint64_t word) {
    return Calibration{static_cast<std::int32_t>(static_cast<std::uint32_t>(word >> 32)),
                       static_cast<std::int32_t>(static_cast<std::uint32_t>(word))};
}

void ProgramClock::SetSource(int timerSource) {
    static constexpr int kMap[] = {kSourceTickCount, kSourceUnset, kSourceTickCountAlt,
                                   kSourceSystemTime};
    if (timerSource < 0 || timerSource > 3) return;
    source_.store(kMap[timerSource], std::memory_order_release);
}

void ProgramClock::FirstUse() {
    int unset = kSourceUnset;
    source_.compare_exchange_strong(unset, kSourcePerformanceCounter, std::memory_order_acq_rel);
    base_ = source_.load(std::memory_order_acquire) == kSourceSystemTime ? SystemMs() : 0;
}

std::int64_t ProgramClock::SystemMs() {
    const SystemTimeReading r = system_.Read();
    // Unsigned arithmetic: a wild reading wraps instead of overflowing.
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(r.seconds) * 1000u +
                                     static_cast<std::uint64_t>(static_cast<std::int64_t>(r.ms)));
}

std::uint32_t ProgramClock::TickCountOrCounter() {
    int state = counterState_.load(std::memory_order_acquire);
    if (state == 0) {
        std::int64_t f = 0;
        const bool usable = ticks_.PerformanceFrequency(f) && f > 0 && f <= kMaxFrequency;
        if (usable) frequency_.store(f, std::memory_order_release);
        state = usable ? 1 : 2;
        counterState_.store(state, std::memory_order_release);
    }
    std::int64_t count = 0;
    if (state == 1 && ticks_.PerformanceCounter(count)) {
        const std::int64_t f = frequency_.load(std::memory_order_acquire);
        const std::uint64_t ms = static_cast<std::uint64_t>(count / f) * 1000u +
                                 static_cast<std::uint64_t>(((count % f) * 1000) / f);
        return static_cast<std::uint32_t>(ms);
    }
    return ticks_.TickCount();
}

std::uint32_t ProgramClock::Tick() {
    std::call_once(firstUse_, [this] { FirstUse(); });
    switch (source_.load(std::memory_order_acquire)) {
        case kSourcePerformanceCounter:
            return TickCountOrCounter();
        case kSourceSystemTime:
            return static_cast<std::uint32_t>(static_cast<std::uint64_t>(SystemMs()) -
                                              static_cast<std::uint64_t>(base_));
        default:
            return ticks_.TickCount();
    }
}

ProgramClock::Calibration ProgramClock::Current() const {
    const std::uint32_t i = index_.load(std::memory_order_acquire) & 3u;
    return Unpack(ring_[i].load(std::memory_order_acquire));
}

std::uint32_t ProgramClock::NextSlot() const {
    return (index_.load(std::memory_order_acquire) + 1u) & 3u;
}

void ProgramClock::Publish(std::uint32_t slot, Calibration entry) {
    ring_[slot].store(Pack(entry), std::memory_order_release);
    index_.store(slot, std::memory_order_release);
}

TimeValue ProgramClock::TimeAt(std::uint32_t tick) const {
    return At(Current(), tick);
}

TimeValue ProgramClock::Now() {
    return TimeAt(Tick());
}

std::int32_t ProgramClock::DiffMs(const TimeValue& a, const TimeValue& b) {
    double d = (static_cast<double>(a.seconds) - static_cast<double>(b.seconds)) * 1000.0 +
               (static_cast<double>(a.ms) - static_cast<double>(b.ms));
    if (d > 2147483647.0) d = 2147483647.0;
    if (d < -2147483647.0) d = -2147483647.0;
    return static_cast<std::int32_t>(d);
}

void ProgramClock::SyncFromSystem() {
    if (OwnClock()) return;
    const std::uint32_t slot = NextSlot();
    Calibration c = Current();
    for (int attempt = 0; attempt < 5; ++attempt) {
        const SystemTimeReading sys = system_.Read();
        const TimeValue program = At(c, Tick());
        const TimeValue system = NormaliseTime(sys.seconds, sys.ms);
        if (std::abs(DiffMs(system, program)) < 500) break;
        const SystemTimeReading fresh = system_.Read();
        c.seconds = static_cast<std::int32_t>(fresh.seconds);
        c.offset = OffsetFor(Tick(), fresh.ms);
    }
    Publish(slot, c);
}

int ProgramClock::SetTime(TimeValue& time) {
    if (time.seconds < kMinSetSeconds) return -1;
    if (!OwnClock()) {
        UtcDateTime utc;
        if (!ToUtc(time.seconds, time.ms, utc)) {
            time.seconds = kFallbackSeconds;
            ToUtc(time.seconds, time.ms, utc);
        }
        if (system_.Set(utc)) {
            SyncFromSystem();
            return 1;
        }
    }
    // From the first refusal on, the program keeps its own time and leaves the system alone.
    ownClock_.store(true, std::memory_order_release);
    Publish(NextSlot(), Calibration{time.seconds, OffsetFor(Tick(), time.ms)});
    return 0;
}

void ProgramClock::Slew(std::int32_t delta) {
    Calibration c = Current();
    c.offset = static_cast<std::int32_t>(static_cast<std::uint32_t>(c.offset) +
                                         static_cast<std::uint32_t>(delta));
    Publish(NextSlot(), c);
}

}  // namespace halvo

#pragma once
// Test seam: a tick source whose values the test sets by hand. Safe to read from other threads.

#include <atomic>

#include "platform/TickSource.h"

namespace halvo {

class FakeTickSource final : public TickSource {
  public:
    std::uint32_t TickCount() override {
        tickCalls_.fetch_add(1, std::memory_order_relaxed);
        return tick_.load(std::memory_order_acquire);
    }

    bool PerformanceCounter(std::int64_t& count) override {
        if (!hasCounter_.load(std::memory_order_acquire)) return false;
        counterCalls_.fetch_add(1, std::memory_order_relaxed);
        count = counter_.load(std::memory_order_acquire);
        return true;
    }

    bool PerformanceFrequency(std::int64_t& frequency) override {
        if (!hasCounter_.load(std::memory_order_acquire)) return false;
        frequency = frequency_.load(std::memory_order_acquire);
        return true;
    }

    void SetTick(std::uint32_t ms) { tick_.store(ms, std::memory_order_release); }
    void AdvanceTick(std::uint32_t ms) { tick_.fetch_add(ms, std::memory_order_acq_rel); }
    void SetCounter(std::int64_t count) { counter_.store(count, std::memory_order_release); }
    void SetFrequency(std::int64_t f) { frequency_.store(f, std::memory_order_release); }
    // Switch the fine counter off, as on a machine that has none.
    void SetHasCounter(bool has) { hasCounter_.store(has, std::memory_order_release); }

    int TickCalls() const { return tickCalls_.load(std::memory_order_relaxed); }
    int CounterCalls() const { return counterCalls_.load(std::memory_order_relaxed); }

  private:
    std::atomic<std::uint32_t> tick_{0};
    std::atomic<std::int64_t> counter_{0};
    std::atomic<std::int64_t> frequency_{1000};
    std::atomic<bool> hasCounter_{true};
    std::atomic<int> tickCalls_{0};
    std::atomic<int> counterCalls_{0};
};

}  // namespace halvo

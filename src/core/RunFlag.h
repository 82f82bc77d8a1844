#pragma once
// The application's run flag: raised once before any long-lived thread starts and cleared at
// close. Every long-lived thread tests it in its loop. Atomic, since it crosses threads.

#include <atomic>
#include <cstdint>

namespace halvo {

class RunFlag {
  public:
    void Raise() { value_.fetch_add(1, std::memory_order_acq_rel); }
    void Clear() { value_.store(0, std::memory_order_release); }
    bool IsSet() const { return value_.load(std::memory_order_acquire) != 0; }
    std::uint32_t Value() const { return value_.load(std::memory_order_acquire); }

  private:
    std::atomic<std::uint32_t> value_{0};
};

}  // namespace halvo

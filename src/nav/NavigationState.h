#pragma once
// The navigation snapshot behind its lock. The stamping step writes it on the bus thread;
// settings pages and the status digest read it from theirs.
//
// The lock keeps a holder count. Acquire takes the lock, counts up and hands out the snapshot;
// Release counts down and drops the lock. A release (or a guarded step) that finds the count at
// 0, or finds the lock held by another thread, raises "Nav Data Lock Error" titled "Lock Error"
// through the notifier and carries on without touching the lock.

#include <atomic>
#include <cstdint>
#include <mutex>
#include <thread>

#include "nav/NavigationFix.h"
#include "nav/NavigationSnapshot.h"

namespace halvo {

class Notifier;

class NavigationState {
  public:
    static constexpr std::uint32_t kStatusWindowMs = 10000;

    // getNavStatus values.
    enum Status { NoData = 0, DataNoPosition = 1, PositionGood = 2 };

    explicit NavigationState(Notifier& notifier) : notifier_(notifier) {}
    NavigationState(const NavigationState&) = delete;
    NavigationState& operator=(const NavigationState&) = delete;

    // The guarded pair. Acquire may nest on one thread; each Acquire needs its Release.
    NavigationSnapshot& Acquire();
    void Release();
    // Inside the guarded area: true when this thread holds the lock, else the error is raised.
    bool ConfirmHeld();
    int Depth() const { return depth_.load(std::memory_order_acquire); }

    // The bus thread's update, under the lock (see NavigationSnapshot::TakeOver).
    void Update(const NavigationFix& fix, std::int32_t latLonSource, std::int32_t timeSource,
                std::uint32_t tick, TimeValue programNow);
    // A whole copy, taken under the lock.
    NavigationSnapshot Copy();

    // 2 a position taken within the last 10 s, 1 any update within it, 0 neither.
    int getNavStatus(std::uint32_t tick);

    // The lock itself, for an owner that guards more than the snapshot with it (the fix the
    // parser writes). Same holder count as Acquire and Release.
    void Lock();
    void Unlock() { Release(); }

  private:
    void LockError();

    Notifier& notifier_;
    std::recursive_mutex mutex_;
    std::atomic<int> depth_{0};
    std::atomic<std::thread::id> holder_{};
    NavigationSnapshot snapshot_;
};

// Holds the lock of a NavigationState for one scope.
class NavigationLock {
  public:
    explicit NavigationLock(NavigationState& state) : state_(state) { state_.Lock(); }
    ~NavigationLock() { state_.Unlock(); }
    NavigationLock(const NavigationLock&) = delete;
    NavigationLock& operator=(const NavigationLock&) = delete;

  private:
    NavigationState& state_;
};

}  // namespace halvo

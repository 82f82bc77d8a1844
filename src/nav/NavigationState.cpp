#include "nav/NavigationState.h"

#include "app/Notifier.h"

namespace halvo {

void NavigationState::LockError() {
    notifier_.Notify("Lock Error", "Nav Data Lock Error");
}

void NavigationState::Lock() {
    mutex_.lock();
    holder_.store(std::this_thread::get_id(), std::memory_order_release);
    depth_.fetch_add(1, std::memory_order_acq_rel);
}

NavigationSnapshot& NavigationState::Acquire() {
    Lock();
    return snapshot_;
}

bool NavigationState::ConfirmHeld() {
    if (depth_.load(std::memory_order_acquire) == 0 ||
        holder_.load(std::memory_order_acquire) != std::this_thread::get_id()) {
        LockError();
        return false;
    }
    return true;
}

void NavigationState::Release() {
    // Unlocking a lock this thread does not hold would be undefined; report it and go on.
    if (!ConfirmHeld()) return;
    if (depth_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        holder_.store(std::thread::id{}, std::memory_order_release);
    }
    mutex_.unlock();
}

void NavigationState::Update(const NavigationFix& fix, std::int32_t latLonSource,
                             std::int32_t timeSource, std::uint32_t tick, TimeValue programNow) {
    NavigationSnapshot& s = Acquire();
    if (ConfirmHeld()) s.TakeOver(fix, latLonSource, timeSource, tick, programNow);
    Release();
}

NavigationSnapshot NavigationState::Copy() {
    const NavigationSnapshot copy = Acquire();
    Release();
    return copy;
}

int NavigationState::getNavStatus(std::uint32_t tick) {
    const NavigationSnapshot s = Copy();
    if (NavigationSnapshot::Within(s.hasPosition, s.positionTick, tick, kStatusWindowMs)) {
        return PositionGood;
    }
    if (NavigationSnapshot::Within(s.hasUpdate, s.updateTick, tick, kStatusWindowMs)) {
        return DataNoPosition;
    }
    return NoData;
}

}  // namespace halvo

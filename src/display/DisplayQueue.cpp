#include "display/DisplayQueue.h"

namespace halvo {

bool DisplayQueue::TryPut(std::unique_ptr<SonarDataCacheElement>& element, int kind,
                          std::uint32_t word) {
    const std::uint64_t head = head_.load(std::memory_order_relaxed);
    const std::uint64_t tail = tail_.load(std::memory_order_acquire);
    if (head - tail >= kCapacity) return false;
    DisplayQueueEntry& e = entries_[head % kCapacity];
    e.kind = kind;
    e.word = word;
    e.element = std::move(element);
    head_.store(head + 1, std::memory_order_release);
    return true;
}

bool DisplayQueue::Take(DisplayQueueEntry& out) {
    const std::uint64_t tail = tail_.load(std::memory_order_relaxed);
    const std::uint64_t head = head_.load(std::memory_order_acquire);
    if (head == tail) return false;
    DisplayQueueEntry& e = entries_[tail % kCapacity];
    out.kind = e.kind;
    out.word = e.word;
    out.element = std::move(e.element);
    tail_.store(tail + 1, std::memory_order_release);
    return true;
}

std::uint32_t DisplayQueue::Waiting() const {
    return static_cast<std::uint32_t>(head_.load(std::memory_order_acquire) -
                                      tail_.load(std::memory_order_acquire));
}

}  // namespace halvo

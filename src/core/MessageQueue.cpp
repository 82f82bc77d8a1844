#include "core/MessageQueue.h"

#include <chrono>
#include <new>
#include <thread>

namespace halvo {

void DoneEvent::Set() {
    std::lock_guard<std::mutex> g(mutex_);
    set_ = true;
    cv_.notify_all();
}

void DoneEvent::WaitSet() {
    std::unique_lock<std::mutex> g(mutex_);
    cv_.wait(g, [this] { return set_; });
}

MessageQueue::MessageQueue(bool useLock, std::size_t capacity)
    : capacity_(capacity), useLock_(useLock), entries_(capacity) {}

MessageQueue::~MessageQueue() {
    check_.store(1, std::memory_order_relaxed);
}

std::unique_ptr<MessageQueue> MessageQueue::Create(bool useLock, std::size_t capacity) {
    if (capacity == 0 || capacity > 0x7FFFFFFFu) return nullptr;
    try {
        return std::unique_ptr<MessageQueue>(new MessageQueue(useLock, capacity));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

int MessageQueue::Store(const QueueEntry& e) {
    std::unique_lock<std::mutex> g(lock_, std::defer_lock);
    if (useLock_) g.lock();
    const std::uint32_t w = write_.load(std::memory_order_relaxed);
    const std::uint32_t r = read_.load(std::memory_order_acquire);
    if (w - r >= capacity_) return kFull;
    entries_[w % capacity_] = e;
    // The entry is complete before the counter moves past it: the consumer reads without a lock.
    write_.store(w + 1);  // seq_cst: pairs with the waiter count below
    g = {};
    if (waiters_.load() > 0) {
        std::lock_guard<std::mutex> wg(waitMutex_);
        wake_.notify_all();
    }
    return kStored;
}

int MessageQueue::Post(std::uintptr_t first, std::uintptr_t second, std::uintptr_t third,
                       std::size_t length) {
    QueueEntry e;
    e.first = first;
    e.second = second;
    e.third = third;
    e.length = length;
    return Store(e);
}

int MessageQueue::PostWithReply(std::uintptr_t first, std::uintptr_t second, std::uintptr_t third,
                                MessageQueue* replyQueue, std::uintptr_t replyTag) {
    QueueEntry e;
    e.first = first;
    e.second = second;
    e.third = third;
    e.replyQueue = replyQueue;
    e.replyTag = replyTag;
    return Store(e);
}

int MessageQueue::PostAndWait(std::uintptr_t first, std::uintptr_t second, std::uintptr_t third) {
    DoneEvent done;
    int result = -1;
    QueueEntry e;
    e.first = first;
    e.second = second;
    e.third = third;
    e.result = &result;
    e.done = &done;
    while (Store(e) != kStored) std::this_thread::sleep_for(std::chrono::milliseconds(100));
    done.WaitSet();
    return result;
}

int MessageQueue::Post(MessageQueue* q, std::uintptr_t first, std::uintptr_t second,
                       std::uintptr_t third) {
    return q ? q->Post(first, second, third) : kNoQueue;
}

int MessageQueue::PostAndWait(MessageQueue* q, std::uintptr_t first, std::uintptr_t second,
                              std::uintptr_t third) {
    return q ? q->PostAndWait(first, second, third) : kNoQueue;
}

const QueueEntry* MessageQueue::Peek() const {
    const std::uint32_t r = read_.load(std::memory_order_relaxed);
    if (write_.load(std::memory_order_acquire) == r) return nullptr;
    return &entries_[r % capacity_];
}

void MessageQueue::Pop(int result) {
    const std::uint32_t r = read_.load(std::memory_order_relaxed);
    if (write_.load(std::memory_order_acquire) == r) return;
    const QueueEntry e = entries_[r % capacity_];
    if (e.result) *e.result = result;
    if (e.replyQueue) {
        e.replyQueue->Post(static_cast<std::uintptr_t>(result), e.third, e.replyTag);
    }
    read_.store(r + 1, std::memory_order_release);
    if (e.done) e.done->Set();
}

std::uint32_t MessageQueue::Depth() const {
    return write_.load(std::memory_order_acquire) - read_.load(std::memory_order_acquire);
}

int MessageQueue::Wait(int timeoutMs) {
    if (Depth() > 0) return 1;
    if (timeoutMs <= 0) return 0;
    std::unique_lock<std::mutex> g(waitMutex_);
    waiters_.fetch_add(1);
    const bool any = wake_.wait_for(g, std::chrono::milliseconds(timeoutMs),
                                    [this] { return write_.load() != read_.load(); });
    waiters_.fetch_sub(1, std::memory_order_acq_rel);
    return any ? 1 : 0;
}

}  // namespace halvo

#pragma once
// Bounded ring of entries shared by the buses, the transmit queues and the display queue. Many
// producers post under the queue lock; one consumer peeks and pops without it. The counters only
// ever grow (and wrap as unsigned 32-bit numbers); the entry for counter c lies at c % capacity.

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace halvo {

class MessageQueue;

// Signalled by the consumer's Pop for a producer that waits on its entry.
class DoneEvent {
  public:
    void Set();
    void WaitSet();

  private:
    std::mutex mutex_;
    std::condition_variable cv_;
    bool set_ = false;
};

// Seven words. On a bus: source, extra word, message. On a transmit queue: 0, bytes, block.
struct QueueEntry {
    std::uintptr_t first = 0;
    std::uintptr_t second = 0;
    std::uintptr_t third = 0;
    MessageQueue* replyQueue = nullptr;
    std::uintptr_t replyTag = 0;
    int* result = nullptr;
    DoneEvent* done = nullptr;
    // Size of the block behind `third`, kept beside the pointer so the owner can rebuild its
    // handle without trusting the size field inside the block.
    std::size_t length = 0;
};

class MessageQueue {
  public:
    static constexpr std::uint32_t kCheckWord = 1315;
    static constexpr int kStored = 1;
    static constexpr int kFull = -2;
    static constexpr int kNoQueue = -1;

    // Null when memory runs out (or the capacity is 0).
    static std::unique_ptr<MessageQueue> Create(bool useLock, std::size_t capacity);
    ~MessageQueue();  // Destroy: does not touch what entries point at; the owner drains first

    // 1 stored, -2 full; the static forms answer -1 for a missing queue.
    int Post(std::uintptr_t first, std::uintptr_t second, std::uintptr_t third,
             std::size_t length = 0);
    int PostWithReply(std::uintptr_t first, std::uintptr_t second, std::uintptr_t third,
                      MessageQueue* replyQueue, std::uintptr_t replyTag);
    // Retries every 100 ms while full, then blocks until the consumer pops the entry and
    // returns the consumer's result.
    int PostAndWait(std::uintptr_t first, std::uintptr_t second, std::uintptr_t third);
    static int Post(MessageQueue* q, std::uintptr_t first, std::uintptr_t second,
                    std::uintptr_t third);
    static int PostAndWait(MessageQueue* q, std::uintptr_t first, std::uintptr_t second,
                           std::uintptr_t third);

    // Consumer side, one thread only.
    const QueueEntry* Peek() const;
    void Pop(int result);

    std::uint32_t Depth() const;
    std::size_t Capacity() const { return capacity_; }
    std::uint32_t CheckWord() const { return check_.load(std::memory_order_relaxed); }
    // 1 something to read, 0 timed out (or timeout 0 and nothing there).
    int Wait(int timeoutMs);

  private:
    MessageQueue(bool useLock, std::size_t capacity);
    int Store(const QueueEntry& e);

    const std::size_t capacity_;
    const bool useLock_;
    std::atomic<std::uint32_t> check_{kCheckWord};
    std::atomic<std::uint32_t> read_{0};
    std::atomic<std::uint32_t> write_{0};
    std::vector<QueueEntry> entries_;
    std::mutex lock_;
    std::mutex waitMutex_;
    std::condition_variable wake_;
    std::atomic<int> waiters_{0};
};

}  // namespace halvo

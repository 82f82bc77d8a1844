#pragma once
// One bus: a bounded queue, one consumer thread, and observers called synchronously on that
// thread in the order they attached. The observer lock is held for a whole burst of messages,
// so the list never changes under a running burst.

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "core/AcquireFilter.h"
#include "core/MessageObserver.h"
#include "core/MessageQueue.h"
#include "core/MessageTypes.h"
#include "core/Normalise.h"
#include "core/Pipeline.h"
#include "core/RunFlag.h"
#include "core/SonarMessage.h"

namespace halvo {

// One slot of the post-mortem ring of the last 32 dispatched messages.
struct HistoryEntry {
    std::uint8_t source = 0;
    std::uint8_t channel = 0;
    std::uint8_t subsystem = 0;
    std::uint8_t direction = 0;
    std::uint16_t type = 0;
    std::uint32_t word = 0;  // first payload word; kept from the previous occupant when size < 4
    std::int32_t size = 0;
};

class MessageProcessor {
  public:
    enum State : int { NotStarted = 0, Running = 1, StopRequested = 2, Stopped = 3 };
    static constexpr std::size_t kHistorySize = 32;
    static constexpr std::size_t kDefaultQueueSize = 200;
    static constexpr int kIdlePeriodMs = 50;
    static constexpr int kStopWaitMs = 1000;

    MessageProcessor(std::string name, const RunFlag& runFlag, const AcquireFilter& filter,
                     UtcSecondsFn utcNow);
    virtual ~MessageProcessor();
    MessageProcessor(const MessageProcessor&) = delete;
    MessageProcessor& operator=(const MessageProcessor&) = delete;

    // No effect unless not started: creates the queue and starts the bus thread.
    void Start(std::size_t queueCapacity = kDefaultQueueSize);

    // Asks the thread to stop after the message in hand; returns at once. From then on a Detach
    // waits at most kStopWaitMs for a thread stuck in an observer, which will call no other.
    void RequestStop();
    // Asks the thread to stop and waits up to `waitMs` for it; true once it has stopped and been
    // joined (or never ran). False leaves a thread that is stuck inside an observer.
    bool StopWithin(int waitMs);
    // Lets a stuck thread go. The caller must then keep this object alive for good: the thread
    // still runs in it, and when its observer returns it walks no further observer and ends.
    void Abandon();

    // 0 when accepted (the bus owns the block and `message` is left empty), 1 otherwise (the
    // caller still owns it). Never blocks.
    int Post(SonarMessage& message, int source, std::uint32_t extra = 0);
    std::uint32_t QueueDepth() const;
    std::size_t QueueCapacity() const { return capacity_; }

    void Attach(MessageObserver* observer);
    // Removes the first entry holding this observer; nothing if it is not on the list. Waits
    // for the bus to go idle, without limit while it runs.
    void Detach(MessageObserver* observer);

    // Runs the three stages for one message and releases it. Takes no lock: a caller that is
    // not the bus thread must be sure nothing else dispatches at the same time.
    virtual void Dispatch(SonarMessage message, int source, std::uint32_t extra);

    int state() const { return state_.load(); }
    const std::string& name() const { return name_; }
    std::array<HistoryEntry, kHistorySize> History() const { return history_; }
    std::size_t HistoryIndex() const { return historyIndex_; }
    FilterSnapshot Snapshot() const { return snapshot_; }
    std::vector<MessageObserver*> Observers();
    // Milliseconds since boot of the last idle tick; kept for inspection only.
    std::int64_t LastIdleMs() const { return lastIdleMs_.load(); }

  protected:
    virtual void Run();

  private:
    void WriteHistory(const SonarMessage& message, int source);

    const std::string name_;
    const RunFlag& runFlag_;
    const AcquireFilter& filter_;

    std::array<HistoryEntry, kHistorySize> history_{};
    std::size_t historyIndex_ = 0;
    FilterSnapshot snapshot_;
    std::size_t capacity_ = kDefaultQueueSize;
    std::atomic<int> state_{NotStarted};
    std::unique_ptr<MessageQueue> queueOwner_;
    std::atomic<MessageQueue*> queue_{nullptr};
    Pipeline pipeline_;
    std::atomic<std::int64_t> lastIdleMs_{0};
    std::recursive_timed_mutex lock_;
    std::atomic<bool> stuck_{false};  // a stopping thread did not let the lock go in time
    std::thread thread_;
};

}  // namespace halvo

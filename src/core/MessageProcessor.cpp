#include "core/MessageProcessor.h"

#include <pthread.h>

#include <chrono>

namespace halvo {

namespace {
std::int64_t SteadyMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}
}  // namespace

MessageProcessor::MessageProcessor(std::string name, const RunFlag& runFlag,
                                   const AcquireFilter& filter, UtcSecondsFn utcNow)
    : name_(std::move(name)), runFlag_(runFlag), filter_(filter), pipeline_(std::move(utcNow)) {
    pipeline_.SetArrival([this](const SonarMessage& m, int source) { WriteHistory(m, source); });
    // The acquire filter only ever cuts what the sonar sent.
    pipeline_.SetGate([this](const SonarMessage& m, int source) {
        return source != SourceSonarData ||
               AcquireFilter::Passes(snapshot_.value, m.direction(), m.type());
    });
}

MessageProcessor::~MessageProcessor() {
    // An owner that did not let a stuck thread go gets the plain join: never a thread left
    // running on a dead object.
    if (!StopWithin(kStopWaitMs) && thread_.joinable()) thread_.join();
    if (MessageQueue* q = queue_.load()) {
        while (const QueueEntry* e = q->Peek()) {
            SonarMessage::Adopt(reinterpret_cast<std::uint8_t*>(e->third), e->length);
            q->Pop(0);
        }
    }
}

void MessageProcessor::RequestStop() {
    int running = Running;
    if (state_.compare_exchange_strong(running, StopRequested)) pipeline_.Stop();
}

bool MessageProcessor::StopWithin(int waitMs) {
    RequestStop();
    if (!thread_.joinable()) return true;
    constexpr int kStepMs = 10;
    for (int waited = 0; waited < waitMs && state_.load() != Stopped; waited += kStepMs) {
        std::this_thread::sleep_for(std::chrono::milliseconds(kStepMs));
    }
    if (state_.load() != Stopped) return false;
    thread_.join();
    return true;
}

void MessageProcessor::Abandon() {
    if (thread_.joinable()) thread_.detach();
}

void MessageProcessor::Start(std::size_t queueCapacity) {
    int expected = NotStarted;
    if (state_.load() != NotStarted) return;
    capacity_ = queueCapacity > 0 ? queueCapacity : kDefaultQueueSize;
    queueOwner_ = MessageQueue::Create(true, capacity_);
    if (!queueOwner_) return;
    queue_.store(queueOwner_.get());
    if (!state_.compare_exchange_strong(expected, Running)) return;
    thread_ = std::thread([this] { Run(); });
}

int MessageProcessor::Post(SonarMessage& message, int source, std::uint32_t extra) {
    MessageQueue* q = queue_.load();
    if (!q || !message) return 1;
    std::size_t length = 0;
    std::uint8_t* block = message.Release(length);
    const int r = q->Post(static_cast<std::uintptr_t>(static_cast<std::intptr_t>(source)), extra,
                          reinterpret_cast<std::uintptr_t>(block), length);
    if (r != MessageQueue::kStored) {
        message = SonarMessage::Adopt(block, length);
        return 1;
    }
    return 0;
}

std::uint32_t MessageProcessor::QueueDepth() const {
    MessageQueue* q = queue_.load();
    return q ? q->Depth() : 0;
}

void MessageProcessor::Attach(MessageObserver* observer) {
    if (!observer) return;
    std::lock_guard g(lock_);
    pipeline_.Attach(observer);
}

void MessageProcessor::Detach(MessageObserver* observer) {
    std::unique_lock g(lock_, std::defer_lock);
    if (state_.load() == StopRequested) {
        // A thread that does not let go within the time is stuck in an observer, and a stopping
        // thread calls no further observer: leaving the entry is then safe, and waiting is not.
        if (stuck_.load() || !g.try_lock_for(std::chrono::milliseconds(kStopWaitMs))) {
            stuck_.store(true);
            return;
        }
    } else {
        g.lock();
    }
    pipeline_.Detach(observer);
}

std::vector<MessageObserver*> MessageProcessor::Observers() {
    std::lock_guard g(lock_);
    return pipeline_.Observers();
}

void MessageProcessor::WriteHistory(const SonarMessage& m, int source) {
    HistoryEntry& h = history_[historyIndex_];
    h.source = static_cast<std::uint8_t>(source);
    h.channel = m.channel();
    h.subsystem = m.subsystem();
    h.direction = m.direction();
    h.type = m.type();
    h.size = m.size();
    if (h.size >= 4) h.word = GetLE<std::uint32_t>(m.Payload(), 0, h.word);
    historyIndex_ = (historyIndex_ + 1) % kHistorySize;
}

void MessageProcessor::Dispatch(SonarMessage message, int source, std::uint32_t extra) {
    pipeline_.Dispatch(message, source, extra);
}

void MessageProcessor::Run() {
    pthread_setname_np(pthread_self(), name_.substr(0, 15).c_str());
    while (queue_.load() == nullptr) std::this_thread::sleep_for(std::chrono::milliseconds(1000));
    MessageQueue* q = queue_.load();
    if (!runFlag_.IsSet()) {
        state_.store(Stopped);
        return;
    }
    bool held = false;
    std::int64_t lastTick = SteadyMs() - kIdlePeriodMs;
    for (;;) {
        if (state_.load() == StopRequested) break;
        if (const QueueEntry* e = q->Peek()) {
            if (!held) {
                lock_.lock();
                held = true;
            }
            filter_.Refresh(snapshot_);
            Dispatch(SonarMessage::Adopt(reinterpret_cast<std::uint8_t*>(e->third), e->length),
                     static_cast<int>(static_cast<std::intptr_t>(e->first)),
                     static_cast<std::uint32_t>(e->second));
            q->Pop(0);
        } else {
            // Empty queue: an idle tick at most every 50 ms, then the lock is let go so that
            // Attach and Detach from other threads can get in. The wait ends early on a post,
            // so a trickle of messages is not held back by the tick period.
            if (!held) {
                lock_.lock();
                held = true;
            }
            const std::int64_t now = SteadyMs();
            if (now - lastTick >= kIdlePeriodMs || now < lastTick) {
                Dispatch(SonarMessage{}, SourceIdle, 0);
                lastTick = SteadyMs();
                lastIdleMs_.store(lastTick);
            }
            lock_.unlock();
            held = false;
            const std::int64_t wait = kIdlePeriodMs - (SteadyMs() - lastTick);
            q->Wait(static_cast<int>(wait > 0 ? wait : 1));
        }
        // The stop request first: a thread let go by its owner must not read the run flag of a
        // program that may have ended.
        if (state_.load() == StopRequested || !runFlag_.IsSet()) break;
    }
    // Let the lock go even when a burst ended the loop, so the mutex dies unlocked.
    if (held) lock_.unlock();
    state_.store(Stopped);
}

}  // namespace halvo

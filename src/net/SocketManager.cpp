#include "net/SocketManager.h"

#include <poll.h>

#include <cerrno>
#include <chrono>
#include <vector>

#include "net/SocketIO.h"
#include "platform/TickSource.h"

namespace halvo {

namespace {

constexpr std::size_t kMaxPerSet = 64;
constexpr long kLowBandwidth = 1024;

void SleepMs(int ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

bool Passed(std::uint32_t now, std::uint32_t since, int ms) {
    const auto elapsed = static_cast<std::int32_t>(now - since);
    return elapsed < 0 || elapsed >= ms;
}

}  // namespace

SocketManager::SocketManager(TickSource& ticks, int timerPeriodMs)
    : ticks_(ticks), timerPeriodMs_(timerPeriodMs > 0 ? timerPeriodMs : kDefaultTimerPeriodMs) {}

SocketManager::~SocketManager() {
    Stop();
    std::lock_guard lock(lock_);
    sockets_.clear();
}

void SocketManager::Start() {
    std::lock_guard start(startLock_);
    if (thread_.joinable()) {
        if (state_.load() == Running) return;
        thread_.join();  // a stop was asked for; let it finish, then start afresh
    }
    threadUp_.store(false);
    state_.store(Running);
    thread_ = std::thread([this] { Run(); });
}

void SocketManager::Stop() {
    std::lock_guard start(startLock_);
    if (!thread_.joinable()) return;
    state_.store(StopRequested);
    if (thread_.get_id() == std::this_thread::get_id()) return;
    thread_.join();
}

void SocketManager::WaitForThread() const {
    for (int i = 0; i < 100 && state_.load() == Running && !threadUp_.load(); ++i) SleepMs(20);
}

void SocketManager::Add(std::unique_ptr<SocketIO> socket) {
    opened_.fetch_add(1);
    sockets_.push_back(std::move(socket));
}

SocketIO* SocketManager::Listen(const std::string& host, int port, int transmitSize,
                                int receiveSize, SocketMessageHandler* handler,
                                std::uintptr_t user) {
    WaitForThread();
    auto s = std::make_unique<SocketIO>(SocketIO::RoleListener, host, port, handler, user, ticks_,
                                        failures_);
    s->SetTransmitSize(transmitSize);
    s->SetReceiveSize(receiveSize);
    if (!s->Listen()) return nullptr;
    SocketIO* p = s.get();
    std::lock_guard lock(lock_);
    Add(std::move(s));
    return p;
}

SocketIO* SocketManager::Connect(const std::string& host, int port, int transmitSize,
                                 int receiveSize, SocketMessageHandler* handler, int reconnectMs,
                                 std::uintptr_t user) {
    WaitForThread();
    auto s = std::make_unique<SocketIO>(SocketIO::RoleClient, host, port, handler, user, ticks_,
                                        failures_);
    s->SetTransmitSize(transmitSize);
    s->SetReceiveSize(receiveSize);
    s->SetReconnectInterval(reconnectMs);
    SocketIO* p = s.get();
    // Connect under the list lock: its handler calls must not meet the socket thread's.
    std::lock_guard lock(lock_);
    s->Connect();
    Add(std::move(s));
    return p;
}

void SocketManager::Remove(SocketIO* socket) {
    std::lock_guard lock(lock_);
    for (auto it = sockets_.begin(); it != sockets_.end(); ++it) {
        if (it->get() == socket) {
            sockets_.erase(it);
            ++removals_;
            return;
        }
    }
}

void SocketManager::SetTickCallback(std::function<void()> callback) {
    std::lock_guard lock(tickLock_);
    tick_ = std::move(callback);
}

void SocketManager::SetBandwidthLimit(long allowance, long rate) {
    std::lock_guard lock(lock_);
    allowance_ = allowance > 0 ? allowance : 0;
    rate_ = rate > 0 ? rate : 0;
    used_ = 0;
    lastUpdate_ = ticks_.TickCount();
}

int SocketManager::SocketCount() const {
    std::lock_guard lock(lock_);
    return static_cast<int>(sockets_.size());
}

long SocketManager::BandwidthLeft(std::uint32_t now) {
    if (allowance_ <= 0) return -1;
    const auto elapsed = static_cast<std::int64_t>(static_cast<std::int32_t>(now - lastUpdate_));
    lastUpdate_ = now;
    if (elapsed > 0) used_ -= static_cast<long>(elapsed * rate_ / 1000);
    if (used_ < 0) used_ = 0;
    const long left = allowance_ - used_;
    return left > 0 ? left : 0;
}

void SocketManager::Run() {
    threadUp_.store(true);
    lastTimer_ = ticks_.TickCount();
    while (state_.load() != StopRequested) {
        Pass();
        if (state_.load() == StopRequested) break;
        const std::uint32_t now = ticks_.TickCount();
        if (!Passed(now, lastTimer_, timerPeriodMs_)) continue;
        lastTimer_ = now;
        {
            std::lock_guard lock(tickLock_);
            if (tick_) tick_();
        }
        std::lock_guard lock(lock_);
        for (auto& s : sockets_) {
            if (!s->CloseRequested()) s->TimerCheck();
        }
    }
}

void SocketManager::Pass() {
    std::vector<pollfd> fds;
    std::vector<SocketIO*> who;
    std::uint64_t version = 0;
    bool waitingForBuffer = false;
    long left = -1;
    {
        std::lock_guard lock(lock_);
        left = BandwidthLeft(ticks_.TickCount());
        sockets_.remove_if([this](const std::unique_ptr<SocketIO>& s) {
            if (!s->CloseRequested()) return false;
            ++removals_;
            return true;
        });
        // Higher priority ahead; the sort is stable, so equals keep their order.
        sockets_.sort([](const std::unique_ptr<SocketIO>& a, const std::unique_ptr<SocketIO>& b) {
            return a->priority() > b->priority();
        });
        std::size_t reads = 0, writes = 0, errors = 0;
        for (auto& sp : sockets_) {
            SocketIO* s = sp.get();
            if (s->ClosedCount() != 0 || s->fd() < 0) continue;
            short events = 0;
            if (s->role() == SocketIO::RoleListener) {
                if (reads >= kMaxPerSet) continue;
                ++reads;
                events = POLLIN;
            } else {
                s->ApplySettings();
                const bool starved = left >= 0 && left <= kLowBandwidth && s->priority() == 0;
                if (!starved && writes < kMaxPerSet && s->WantsWrite()) {
                    ++writes;
                    events |= POLLOUT;
                }
                if (reads < kMaxPerSet) {
                    if (s->WantsRead()) {
                        ++reads;
                        events |= POLLIN;
                    } else if (s->fd() >= 0) {
                        waitingForBuffer = true;
                    }
                }
                if (s->fd() < 0 || errors >= kMaxPerSet) continue;
                ++errors;
            }
            fds.push_back(pollfd{s->fd(), events, 0});
            who.push_back(s);
        }
        version = removals_;
    }
    if (fds.empty()) {
        SleepMs(100);
        return;
    }
    // A reader waiting for a block on a full bus retries soon rather than at the slice's end.
    const int r = ::poll(fds.data(), fds.size(), waitingForBuffer ? 1 : kSelectTimeoutMs);
    if (r < 0) {
        if (errno != EINTR) SleepMs(kSelectTimeoutMs);
        return;
    }
    if (state_.load() == StopRequested || r == 0) return;

    int work = 0;
    bool failed = false;
    std::vector<std::unique_ptr<SocketIO>> accepted;
    {
        std::lock_guard lock(lock_);
        if (removals_ != version) return;  // the pollfds may name a destroyed socket
        const long leftBefore = left;
        bool priorityWorked = false;
        for (std::size_t i = 0; i < fds.size(); ++i) {
            SocketIO* s = who[i];
            const short re = fds[i].revents;
            if (re == 0 || s->CloseRequested() || s->fd() < 0) continue;
            if (re & (POLLERR | POLLNVAL)) {
                // A peer that resets the link may have sent bytes just before: they are still
                // queued here and are read first (a reader waiting for a block reads them once
                // it has one). The read that finds the queue empty then reports the reset.
                const bool queued =
                    !(re & POLLNVAL) && s->role() != SocketIO::RoleListener && s->QueuedBytes() > 0;
                if (queued && !(fds[i].events & POLLIN)) continue;
                if (!queued) {
                    s->OnError();
                    if (s->fd() < 0) continue;
                }
            }
            if (priorityWorked) continue;
            const bool listener = s->role() == SocketIO::RoleListener;
            const bool readable = (re & POLLIN) || ((re & POLLHUP) && (fds[i].events & POLLIN));
            if (readable) {
                const int before = s->ConnectedCount();
                if (!listener) s->MarkUp();
                if (before == 0 && s->ConnectedCount() > 0) connectedTotal_.fetch_add(1);
                std::unique_ptr<SocketIO> fresh;
                if (!s->OnReadable(fresh)) failed = true;
                if (fresh) accepted.push_back(std::move(fresh));
                ++work;
                if (s->priority() > 0) priorityWorked = true;
            }
            if (s->fd() < 0 || !(re & POLLOUT)) continue;
            if (left == 0 && s->priority() == 0) continue;
            if (s->ConnectedCount() == 0) {
                s->MarkUp();
                connectedTotal_.fetch_add(1);
                ++work;
            }
            if (s->HasTransmit() || s->ConnectedCount() > 0) {
                if (!s->OnWritable(left)) failed = true;
                ++work;
                if (s->priority() > 0) priorityWorked = true;
            }
        }
        if (leftBefore > 0 && left >= 0) used_ += leftBefore - left;
        for (auto& a : accepted) Add(std::move(a));
    }
    if (failed && work == 0) SleepMs(20);
    // Events that nobody could act on (a hang-up while the reader waits for a block) must not
    // spin the loop.
    if (work == 0) SleepMs(5);
}

}  // namespace halvo

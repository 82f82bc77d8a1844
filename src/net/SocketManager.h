#pragma once
// One thread and one poll loop for every socket of the program. Sockets stay in priority order;
// once a second each socket gets its timer check (alive probe, reconnect, handler tick) and the
// manager's tick callback runs. Handler operations run on this thread, under the list lock.
//
// The bandwidth limit is kept for completeness; nothing in the program sets it.

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace halvo {

class SocketIO;
class SocketMessageHandler;
class TickSource;

class SocketManager {
  public:
    enum State : int { NotStarted = 0, Running = 1, StopRequested = 2 };
    static constexpr int kDefaultTimerPeriodMs = 1000;
    static constexpr int kSelectTimeoutMs = 10;  // slice of 100 ms x 1000 / 10 microseconds

    // `timerPeriodMs` is the grain of the alive, reconnect and tick timers.
    explicit SocketManager(TickSource& ticks, int timerPeriodMs = kDefaultTimerPeriodMs);
    // Stops the thread and destroys every socket.
    ~SocketManager();
    SocketManager(const SocketManager&) = delete;
    SocketManager& operator=(const SocketManager&) = delete;

    // Starts the thread; no effect while it runs.
    void Start();
    // Asks the thread to stop and joins it. Sockets stay listed until Remove or destruction.
    void Stop();
    int state() const { return state_.load(); }
    bool IsRunning() const { return state_.load() == Running; }

    // A listener on host:port (port 0 picks one; see SocketIO::LocalPort), or null if it cannot
    // bind. The manager owns the object.
    SocketIO* Listen(const std::string& host, int port, int transmitSize, int receiveSize,
                     SocketMessageHandler* handler, std::uintptr_t user);
    // A client that connects now and, after any failure, again every `reconnectMs`. The manager
    // owns the object; it is never null for want of a peer.
    SocketIO* Connect(const std::string& host, int port, int transmitSize, int receiveSize,
                      SocketMessageHandler* handler, int reconnectMs, std::uintptr_t user);
    // Takes the socket off the list and destroys it now; after this its handler is never called
    // again. Not to be called from a handler operation.
    void Remove(SocketIO* socket);

    void SetTickCallback(std::function<void()> callback);
    // Bytes per period allowed and refill rate in bytes per second; allowance 0 means no limit.
    void SetBandwidthLimit(long allowance, long rate);

    int SocketCount() const;
    std::uint32_t SocketsOpened() const { return opened_.load(); }
    std::uint32_t SocketsConnected() const { return connectedTotal_.load(); }
    // Closings over all sockets.
    std::uint32_t Failures() const { return failures_.load(); }

  private:
    void Run();
    void WaitForThread() const;
    long BandwidthLeft(std::uint32_t now);
    void Add(std::unique_ptr<SocketIO> socket);
    void Pass();

    TickSource& ticks_;
    const int timerPeriodMs_;
    mutable std::mutex lock_;
    std::list<std::unique_ptr<SocketIO>> sockets_;
    std::uint64_t removals_ = 0;  // under lock_: pointers taken before a removal are stale
    std::atomic<int> state_{NotStarted};
    std::atomic<bool> threadUp_{false};
    std::thread thread_;
    std::mutex startLock_;

    std::mutex tickLock_;
    std::function<void()> tick_;
    std::uint32_t lastTimer_ = 0;

    long allowance_ = 0;
    long rate_ = 0;
    long used_ = 0;
    std::uint32_t lastUpdate_ = 0;

    std::atomic<std::uint32_t> opened_{0};
    std::atomic<std::uint32_t> connectedTotal_{0};
    std::atomic<std::uint32_t> failures_{0};
};

}  // namespace halvo

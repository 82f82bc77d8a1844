#pragma once
// One TCP socket in one of three roles: a listener, a connection a listener accepted, or a
// client that connects out and reconnects after its interval whenever the link goes down. It
// moves a fixed-size header and then the announced body straight into the block its handler
// gives, and sends whatever the handler hands it. It knows nothing about what the bytes mean.
//
// All socket calls happen on the socket manager's thread. Other threads only use the setters,
// RequestClose and the read-outs, which are single atomic words (the error text has its lock).

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace halvo {

class SocketMessageHandler;
class TickSource;

class SocketIO {
  public:
    enum Role : int { RoleListener = 0, RoleAccepted = 1, RoleClient = 2 };

    static constexpr int kMinBufferSize = 1460;
    static constexpr int kMaxBufferSize = 500000;
    static constexpr int kDefaultBufferSize = 2048;
    static constexpr int kMaxHeaderSize = 256;
    static constexpr int kMinAliveMs = 500;      // alive times at or below this never probe
    static constexpr int kMinReconnectMs = 100;  // intervals at or below this never reconnect
    static constexpr std::size_t kMaxErrorChars = 199;

    // `failures` counts closings over all sockets; it must outlive the socket.
    SocketIO(Role role, std::string host, int port, SocketMessageHandler* handler,
             std::uintptr_t user, TickSource& ticks, std::atomic<std::uint32_t>& failures);
    ~SocketIO();
    SocketIO(const SocketIO&) = delete;
    SocketIO& operator=(const SocketIO&) = delete;

    // --- Any thread ---
    void SetAliveTimes(int probeMs, int giveUpMs);
    void SetNoDelay(int flag);
    void SetReceiveSize(int bytes);
    void SetTransmitSize(int bytes);
    void SetReconnectInterval(int ms) { reconnectMs_.store(ms); }
    void SetPriority(int priority) { priority_.store(priority); }
    // The socket thread closes and destroys the object at its next pass.
    void RequestClose() { closeRequests_.fetch_add(1); }

    // The connected count, or 0 while closed.
    int IsConnected() const;
    int ConnectedCount() const { return connected_.load(); }
    // How often the link went down since the last connect; non-zero means closed now.
    int ClosedCount() const { return closed_.load(); }
    bool CloseRequested() const { return closeRequests_.load() != 0; }
    Role role() const { return role_; }
    int priority() const { return priority_.load(); }
    const std::string& host() const { return host_; }
    int port() const { return port_; }
    // The port the socket is bound to here (a listener on port 0 learns its port from this).
    int LocalPort() const;
    int ReceiveSize() const { return recvSize_.load(); }
    int TransmitSize() const { return xmitSize_.load(); }
    int NoDelay() const { return noDelay_.load(); }
    // The last failure, latest replacing the one before.
    std::string ErrorText() const;

    // --- Socket thread only ---
    // Opens a client connection (non-blocking). False when it failed at once: the socket is
    // then closed and reconnects after its interval like after any other failure.
    bool Connect();
    // Binds and listens. False on failure, with the reason in the error text.
    bool Listen();
    int fd() const { return fd_; }
    SocketMessageHandler* handler() const { return handler_; }
    void ApplySettings();
    // Whether the socket can take bytes now; asks the handler for a block when a header is
    // complete. May close the socket (a message that will never get a block).
    bool WantsRead();
    // Bytes received and not yet read (0 when unknown).
    int QueuedBytes() const;
    // Whether there is something to send (asks the handler while connected) or a connect to finish.
    bool WantsWrite();
    bool HasTransmit() const { return xmit_ != nullptr; }
    // The link is up: every readable event and the first writable one count.
    void MarkUp();
    // An error reported by poll. Closes unless the pending error is a harmless one.
    void OnError();
    // False when the read failed (the socket is then closed). A listener's new connection, if
    // the handler took it, comes back in `accepted`.
    bool OnReadable(std::unique_ptr<SocketIO>& accepted);
    // Sends what it can; `left` is the bandwidth left (-1 unlimited) and shrinks by what went.
    bool OnWritable(long& left);
    // Once a second: alive probe and give-up, reconnect, handler tick.
    void TimerCheck();
    void Close();
    void SetError(const char* format, ...) __attribute__((format(printf, 2, 3)));

    // A host text of four decimal parts, 0 to 255 each, in network byte order; empty otherwise.
    static std::optional<std::uint32_t> ParseDotted(std::string_view host);

  private:
    bool TakeBuffer();
    void ClearReadState();
    void ClearWriteState();
    bool ReadFailed(long result);
    void CloseHandle();
    void SetBufferSize(int option, int requested, const char* which);
    bool Resolve(std::uint32_t& address);
    static bool Passed(std::uint32_t now, std::uint32_t since, int ms);

    const Role role_;
    const std::string host_;
    const int port_;
    SocketMessageHandler* handler_;
    const std::uintptr_t user_;
    TickSource& ticks_;
    std::atomic<std::uint32_t>& failures_;

    std::atomic<int> recvSize_{kDefaultBufferSize};
    std::atomic<int> xmitSize_{kDefaultBufferSize};
    std::atomic<int> noDelay_{0};
    std::atomic<int> changes_{0};
    int applied_ = -1;

    int fd_ = -1;
    std::atomic<int> closeRequests_{0};
    std::atomic<int> closed_{0};
    std::atomic<int> connected_{0};

    // Read state: the header, then the body into the handler's block (or thrown away).
    std::vector<std::uint8_t> header_;
    int headerSize_ = 0;
    int recvPos_ = 0;
    bool headerDone_ = false;
    int bodySize_ = 0;
    std::span<std::uint8_t> target_;
    long discard_ = 0;

    // Write state.
    const std::uint8_t* xmit_ = nullptr;
    int xmitLength_ = -1;
    int sendPos_ = 0;

    std::atomic<int> probeMs_{0};
    std::atomic<int> giveUpMs_{0};
    std::uint32_t lastActivity_ = 0;
    bool probeOut_ = false;

    std::atomic<int> reconnectMs_{0};
    std::uint32_t closeTime_ = 0;
    bool closeTimeSet_ = false;

    std::atomic<int> priority_{0};
    mutable std::mutex errorMutex_;
    std::string error_;
};

}  // namespace halvo

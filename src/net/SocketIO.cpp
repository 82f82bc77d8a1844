#include "net/SocketIO.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "net/SocketMessageHandler.h"
#include "platform/TickSource.h"

namespace halvo {

namespace {

constexpr int kDiscardChunk = 8192;
// A connection that keeps delivering whole messages still lets the other sockets have a turn.
constexpr int kMessagesPerEvent = 64;
constexpr int kSendsPerEvent = 16;
constexpr int kConnectedCap = 1 << 30;

int ClampBuffer(int bytes) {
    return std::clamp(bytes, SocketIO::kMinBufferSize, SocketIO::kMaxBufferSize);
}

}  // namespace

SocketIO::SocketIO(Role role, std::string host, int port, SocketMessageHandler* handler,
                   std::uintptr_t user, TickSource& ticks, std::atomic<std::uint32_t>& failures)
    : role_(role),
      host_(std::move(host)),
      port_(port),
      handler_(handler),
      user_(user),
      ticks_(ticks),
      failures_(failures) {
    const int h = handler_ ? handler_->HeaderSize(user_) : 0;
    headerSize_ = std::clamp(h, 0, kMaxHeaderSize);
    header_.assign(static_cast<std::size_t>(headerSize_), 0);
}

SocketIO::~SocketIO() {
    CloseHandle();
}

void SocketIO::SetAliveTimes(int probeMs, int giveUpMs) {
    probeMs_.store(probeMs);
    giveUpMs_.store(giveUpMs);
}

void SocketIO::SetNoDelay(int flag) {
    const int v = flag ? 1 : 0;
    if (noDelay_.exchange(v) != v) changes_.fetch_add(1);
}

void SocketIO::SetReceiveSize(int bytes) {
    recvSize_.store(ClampBuffer(bytes));
    changes_.fetch_add(1);
}

void SocketIO::SetTransmitSize(int bytes) {
    xmitSize_.store(ClampBuffer(bytes));
    changes_.fetch_add(1);
}

int SocketIO::IsConnected() const {
    return closed_.load() != 0 ? 0 : connected_.load();
}

int SocketIO::LocalPort() const {
    if (fd_ < 0) return 0;
    sockaddr_in a{};
    socklen_t len = sizeof a;
    if (::getsockname(fd_, reinterpret_cast<sockaddr*>(&a), &len) != 0) return 0;
    return ntohs(a.sin_port);
}

std::string SocketIO::ErrorText() const {
    std::lock_guard lock(errorMutex_);
    return error_;
}

void SocketIO::SetError(const char* format, ...) {
    char text[kMaxErrorChars + 1];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    std::lock_guard lock(errorMutex_);
    error_ = text;
}

bool SocketIO::Passed(std::uint32_t now, std::uint32_t since, int ms) {
    // A tick that moved backward counts as passed.
    const auto elapsed = static_cast<std::int32_t>(now - since);
    return elapsed < 0 || elapsed >= ms;
}

void SocketIO::ClearReadState() {
    recvPos_ = 0;
    headerDone_ = false;
    bodySize_ = 0;
    target_ = {};
    discard_ = 0;
}

void SocketIO::ClearWriteState() {
    xmit_ = nullptr;
    xmitLength_ = -1;
    sendPos_ = 0;
}

void SocketIO::CloseHandle() {
    if (fd_ >= 0) {
        ::close(fd_);
        fd_ = -1;
    }
}

std::optional<std::uint32_t> SocketIO::ParseDotted(std::string_view host) {
    std::array<unsigned, 4> part{};
    std::size_t at = 0;
    for (std::size_t p = 0; p < part.size(); ++p) {
        if (p > 0) {
            if (at >= host.size() || host[at] != '.') return std::nullopt;
            ++at;
        }
        const std::size_t start = at;
        unsigned value = 0;
        // Every part is decimal, leading zeros included: "010" is ten, never eight.
        while (at < host.size() && host[at] >= '0' && host[at] <= '9') {
            value = std::min(value * 10 + static_cast<unsigned>(host[at] - '0'), 1000u);
            ++at;
        }
        if (at == start || value > 255) return std::nullopt;
        part[p] = value;
    }
    if (at != host.size()) return std::nullopt;
    return htonl((part[0] << 24) | (part[1] << 16) | (part[2] << 8) | part[3]);
}

bool SocketIO::Resolve(std::uint32_t& address) {
    if (const auto dotted = ParseDotted(host_)) {
        address = *dotted;
        return true;
    }
    // Text of digits and dots that is not four decimal parts is a mistyped address, not a name:
    // the resolver would read it in its own ways (octal, hexadecimal, fewer parts).
    if (host_.empty() || host_.find_first_not_of("0123456789.") == std::string::npos) return false;
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(host_.c_str(), nullptr, &hints, &found) != 0 || !found) return false;
    address = reinterpret_cast<const sockaddr_in*>(found->ai_addr)->sin_addr.s_addr;
    ::freeaddrinfo(found);
    return true;
}

bool SocketIO::Connect() {
    CloseHandle();
    ClearReadState();
    ClearWriteState();
    closed_.store(0);
    connected_.store(0);
    closeTimeSet_ = false;
    probeOut_ = false;

    std::uint32_t address = 0;
    if (port_ <= 0 || port_ > 65535 || !Resolve(address)) {
        SetError(" Socket (Can't connect: %s):\n", host_.c_str());
        Close();
        return false;
    }
    fd_ = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd_ < 0) {
        SetError(" Socket client (Can't aquire socket %d): %d\n", fd_, errno);
        Close();
        return false;
    }
    // Buffer sizes before the handshake, so the window scale fits them.
    applied_ = changes_.load() - 1;
    ApplySettings();

    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<std::uint16_t>(port_));
    a.sin_addr.s_addr = address;
    if (::connect(fd_, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0) return true;
    const int e = errno;
    if (e == EINPROGRESS || e == EALREADY || e == EINTR || e == EAGAIN) return true;
    if (e == EISCONN) {
        SetError(" Socket Client %d(already connected):  %d\n", fd_, e);
        return true;
    }
    if (e == ECONNREFUSED || e == ENETUNREACH || e == EHOSTUNREACH) {
        SetError(" Socket Client %d (Can't connect to remote process):  %d\n", fd_, e);
    } else {
        SetError(" Socket Client %d (did not connect to remote process):  %d\n", fd_, e);
    }
    Close();
    return false;
}

bool SocketIO::Listen() {
    CloseHandle();
    std::uint32_t address = 0;
    if (port_ < 0 || port_ > 65535 || !Resolve(address)) {
        SetError(" Socket (Can't connect: %s):\n", host_.c_str());
        return false;
    }
    fd_ = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd_ < 0) {
        SetError(" Listen (Can't aquire socket %d): %d\n", fd_, errno);
        return false;
    }
    const int one = 1;
    ::setsockopt(fd_, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<std::uint16_t>(port_));
    a.sin_addr.s_addr = address;
    if (::bind(fd_, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) {
        SetError(" Bind (Can't bind socket %d): %d\n", fd_, errno);
        CloseHandle();
        return false;
    }
    if (::listen(fd_, 5) != 0) {
        SetError(" Listen failed (socket %d): %d\n", fd_, errno);
        CloseHandle();
        return false;
    }
    return true;
}

void SocketIO::SetBufferSize(int option, int requested, const char* which) {
    int present = 0;
    socklen_t len = sizeof present;
    if (::getsockopt(fd_, SOL_SOCKET, option, &present, &len) != 0) {
        SetError(" getSockOpt() failed");
        present = kMinBufferSize;
    }
    // Only ever grow; each refusal tries again with a tenth less.
    int size = requested;
    while (size > kMinBufferSize && size >= present) {
        if (::setsockopt(fd_, SOL_SOCKET, option, &size, sizeof size) == 0) break;
        SetError(" Failed to set %s buffer for %d %d to %#x\n", which, fd_, port_,
                 static_cast<unsigned>(size));
        size -= size / 10;
    }
}

void SocketIO::ApplySettings() {
    const int changes = changes_.load();
    if (fd_ < 0 || changes == applied_) return;
    applied_ = changes;
    SetBufferSize(SO_RCVBUF, recvSize_.load(), "receive");
    SetBufferSize(SO_SNDBUF, xmitSize_.load(), "transmit");
    const int flag = noDelay_.load();
    if (::setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &flag, sizeof flag) != 0)
        SetError(" Socket %d %d Can't setsockopt: %d\n", fd_, port_, errno);
}

void SocketIO::Close() {
    const int count = closed_.fetch_add(1) + 1;
    failures_.fetch_add(1);
    if (count == 1) {
        closeTime_ = ticks_.TickCount();
        closeTimeSet_ = true;
    }
    // The handle goes at once, so the peer learns of the close now rather than at reconnect.
    CloseHandle();
    ClearReadState();
    ClearWriteState();
    if (handler_) handler_->Closed(user_);
}

void SocketIO::MarkUp() {
    const int c = connected_.load();
    if (c >= kConnectedCap) return;
    connected_.store(c + 1);
    if (c + 1 == 1) {
        if (handler_) handler_->Connected(user_);
        lastActivity_ = ticks_.TickCount();
        probeOut_ = false;
    }
}

int SocketIO::QueuedBytes() const {
    int n = 0;
    if (fd_ < 0 || ::ioctl(fd_, FIONREAD, &n) != 0) return 0;
    return n;
}

void SocketIO::OnError() {
    int err = 0;
    socklen_t len = sizeof err;
    if (fd_ < 0 || ::getsockopt(fd_, SOL_SOCKET, SO_ERROR, &err, &len) != 0) err = EBADF;
    if (err == 0 || err == EWOULDBLOCK || err == EINPROGRESS) return;
    SetError("Select Socket Error %d", err);
    Close();
}

bool SocketIO::WantsWrite() {
    if (fd_ < 0) return false;
    if (xmit_) return true;
    if (connected_.load() == 0) return role_ != RoleListener;  // a connect to finish
    if (!handler_) return false;
    int size = 0;
    const std::uint8_t* p = handler_->GetTransmit(size, user_);
    if (!p || size <= 0) return false;
    xmit_ = p;
    xmitLength_ = size;
    sendPos_ = 0;
    return true;
}

bool SocketIO::TakeBuffer() {
    const int total = headerSize_ + bodySize_;
    bool failed = false;
    std::span<std::uint8_t> block = handler_->GetBuffer(total, failed, user_);
    if (!block.empty() && block.size() >= static_cast<std::size_t>(total)) {
        std::copy(header_.begin(), header_.end(), block.begin());
        target_ = block;
        return true;
    }
    if (failed || !block.empty()) {
        SetError(" Message size too large %d\n", total);
        discard_ = total;
        Close();
    }
    return false;
}

bool SocketIO::WantsRead() {
    if (fd_ < 0 || headerSize_ <= 0 || !handler_) return false;
    if (!headerDone_ || discard_ > 0 || !target_.empty()) return true;
    return TakeBuffer();
}

bool SocketIO::ReadFailed(long result) {
    if (result < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) return false;
    SetError(" Read failed (socket %d): %d\n", fd_, result == 0 ? 0 : errno);
    Close();
    return true;
}

bool SocketIO::OnReadable(std::unique_ptr<SocketIO>& accepted) {
    if (fd_ < 0) return true;
    if (role_ == RoleListener) {
        const int c = ::accept4(fd_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (c < 0) {
            if (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR) return true;
            SetError(" accept failed (socket %d): %d\n", fd_, errno);
            Close();
            return false;
        }
        auto s = std::make_unique<SocketIO>(RoleAccepted, host_, port_, handler_, user_, ticks_,
                                            failures_);
        s->fd_ = c;
        s->priority_.store(priority_.load());
        s->SetAliveTimes(probeMs_.load(), giveUpMs_.load());
        s->recvSize_.store(recvSize_.load());
        s->xmitSize_.store(xmitSize_.load());
        s->noDelay_.store(noDelay_.load());
        SocketMessageHandler* h = handler_ ? handler_->Accepted(*s, user_) : nullptr;
        if (!h) return true;  // refused: the new object goes with `s`
        s->handler_ = h;
        s->headerSize_ = std::clamp(h->HeaderSize(user_), 0, kMaxHeaderSize);
        s->header_.assign(static_cast<std::size_t>(s->headerSize_), 0);
        accepted = std::move(s);
        return true;
    }
    if (headerSize_ <= 0 || !handler_) return true;
    std::uint8_t scratch[kDiscardChunk];
    for (int messages = 0; messages < kMessagesPerEvent && fd_ >= 0; ++messages) {
        if (!headerDone_) {
            const long n = ::recv(fd_, header_.data() + recvPos_,
                                  static_cast<std::size_t>(headerSize_ - recvPos_), 0);
            if (n <= 0) return !ReadFailed(n);
            recvPos_ += static_cast<int>(n);
            if (recvPos_ < headerSize_) return true;
            headerDone_ = true;
            bodySize_ = handler_->ValidateHeader(header_, user_);
            if (bodySize_ < 0 || bodySize_ > INT_MAX - headerSize_) {
                SetError(" Bad header (socket %d): %d\n", fd_, bodySize_);
                Close();
                return true;
            }
            if (!TakeBuffer()) return true;  // closed, or waiting for a block
        }
        if (target_.empty() && discard_ == 0) return true;
        const int total = headerSize_ + bodySize_;
        while (recvPos_ < total) {
            long n;
            if (discard_ > 0) {
                n = ::recv(fd_, scratch,
                           static_cast<std::size_t>(std::min(kDiscardChunk, total - recvPos_)), 0);
            } else {
                n = ::recv(fd_, target_.data() + recvPos_,
                           static_cast<std::size_t>(total - recvPos_), 0);
            }
            if (n <= 0) return !ReadFailed(n);
            recvPos_ += static_cast<int>(n);
        }
        if (discard_ == 0) {
            std::copy(header_.begin(), header_.end(), target_.begin());
            handler_->BodyComplete(user_);
        }
        lastActivity_ = ticks_.TickCount();
        probeOut_ = false;
        ClearReadState();
        // Keep going only while the next message can have a block at once.
        if (fd_ < 0) return true;
    }
    return true;
}

bool SocketIO::OnWritable(long& left) {
    for (int sends = 0; sends < kSendsPerEvent && fd_ >= 0; ++sends) {
        if (!xmit_) {
            if (connected_.load() == 0 || !WantsWrite()) return true;
        }
        long length = xmitLength_ - sendPos_;
        if (left >= 0 && priority_.load() == 0) length = std::min(length, left);
        if (length <= 0) return true;
        const long n = ::send(fd_, xmit_ + sendPos_, static_cast<std::size_t>(length),
                              MSG_NOSIGNAL | MSG_DONTWAIT);
        if (n < 0) {
            if (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR) return true;
            SetError(" Write failed (socket %d): %d\n", fd_, errno);
            Close();
            return false;
        }
        sendPos_ += static_cast<int>(n);
        if (left >= 0) left = std::max(0L, left - n);
        if (sendPos_ < xmitLength_) return true;  // the peer's window is full
        ClearWriteState();
        if (handler_) handler_->TransmitComplete(user_);
    }
    return true;
}

void SocketIO::TimerCheck() {
    const std::uint32_t now = ticks_.TickCount();
    if (handler_ && closed_.load() == 0 && connected_.load() > 0 && role_ != RoleListener) {
        const int probe = probeMs_.load();
        const int giveUp = giveUpMs_.load();
        if (probe > kMinAliveMs && giveUp > kMinAliveMs) {
            if (probeOut_) {
                if (Passed(now, lastActivity_, giveUp)) {
                    SetError("Alive timeout");
                    Close();
                }
            } else if (Passed(now, lastActivity_, probe)) {
                handler_->AlivePing(user_);
                probeOut_ = true;
                lastActivity_ = now;
            }
        }
    }
    if (closed_.load() != 0 && role_ == RoleClient && closeTimeSet_ &&
        reconnectMs_.load() > kMinReconnectMs && Passed(now, closeTime_, reconnectMs_.load())) {
        Connect();
    }
    if (handler_ && !CloseRequested()) handler_->Tick(user_);
}

}  // namespace halvo

#include "halvo-sim/SimLink.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace halvo {

void SimMessageFramer::Feed(std::span<const std::uint8_t> bytes) {
    if (bad_ || bytes.empty()) return;
    if (buffer_.size() < used_ + bytes.size()) buffer_.resize(used_ + bytes.size());
    std::memcpy(buffer_.data() + used_, bytes.data(), bytes.size());
    used_ += bytes.size();
}

SimMessageFramer::Result SimMessageFramer::Next(SonarMessage& out) {
    if (bad_) return Result::Bad;
    MessageHeader h;
    if (!MessageHeader::Read(std::span<const std::uint8_t>(buffer_.data(), used_), h))
        return Result::NeedMore;
    if (!h.HasMarker() || h.size < 0 || h.size > kSimMaxPayload) {
        bad_ = true;
        error_ = !h.HasMarker() ? "bad marker" : "bad size " + std::to_string(h.size);
        return Result::Bad;
    }
    const std::size_t total = kMessageHeaderSize + static_cast<std::size_t>(h.size);
    if (used_ < total) return Result::NeedMore;
    out = SonarMessage::FromBytes(std::span<const std::uint8_t>(buffer_.data(), total));
    std::memmove(buffer_.data(), buffer_.data() + total, used_ - total);
    used_ -= total;
    return Result::Message;
}

SimConnection::~SimConnection() {
    if (fd_ >= 0) ::close(fd_);
}

void SimConnection::Shutdown() {
    std::lock_guard lock(mutex_);
    if (!shut_ && fd_ >= 0) ::shutdown(fd_, SHUT_RDWR);
    shut_ = true;
}

void SimConnection::ShutdownAfterSent(int timeoutMs) {
    for (int waited = 0; waited < timeoutMs; waited += 2) {
        int unsent = 0;
        {
            std::lock_guard lock(mutex_);
            if (shut_ || fd_ < 0 || ::ioctl(fd_, SIOCOUTQ, &unsent) != 0 || unsent == 0) break;
        }
        ::usleep(2000);
    }
    Shutdown();
}

bool SimConnection::IsShut() const {
    std::lock_guard lock(mutex_);
    return shut_;
}

bool SimConnection::Send(std::span<const std::uint8_t> bytes, int timeoutMs) {
    std::lock_guard lock(mutex_);
    if (shut_) return false;
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t n =
            ::send(fd_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (n > 0) {
            sent += static_cast<std::size_t>(n);
            continue;
        }
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            pollfd p{fd_, POLLOUT, 0};
            const int r = ::poll(&p, 1, timeoutMs);
            if (r > 0 && !(p.revents & (POLLERR | POLLHUP | POLLNVAL))) continue;
            if (r < 0 && errno == EINTR) continue;
        }
        ::shutdown(fd_, SHUT_RDWR);
        shut_ = true;
        return false;
    }
    return true;
}

int SimListen(const std::string& host, int port, int& boundPort, std::string& error) {
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<std::uint16_t>(port));
    if (inet_pton(AF_INET, host.c_str(), &a.sin_addr) != 1) {
        error = "not an IPv4 address: " + host;
        return -1;
    }
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0) {
        error = std::string("socket: ") + std::strerror(errno);
        return -1;
    }
    const int one = 1;
    ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
    if (::bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0 || ::listen(fd, 4) != 0) {
        error = "port " + std::to_string(port) + ": " + std::strerror(errno);
        ::close(fd);
        return -1;
    }
    socklen_t len = sizeof a;
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&a), &len);
    boundPort = ntohs(a.sin_port);
    return fd;
}

}  // namespace halvo

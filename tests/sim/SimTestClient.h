#pragma once
// A minimal topside for simulator tests: connects to a loopback port, sends messages and reads
// whole messages back with a deadline. Built on the message core only.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "core/ByteOrder.h"
#include "core/SonarMessage.h"

namespace halvo::test {

class SimTestClient {
  public:
    explicit SimTestClient(int port) : fd_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_port = htons(static_cast<std::uint16_t>(port));
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (::connect(fd_, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) {
            ::close(fd_);
            fd_ = -1;
        }
    }
    ~SimTestClient() {
        if (fd_ >= 0) ::close(fd_);
    }
    SimTestClient(const SimTestClient&) = delete;
    SimTestClient& operator=(const SimTestClient&) = delete;

    bool connected() const { return fd_ >= 0; }
    bool Send(const SonarMessage& m) { return SendBytes(m.Wire()); }
    bool SendBytes(std::span<const std::uint8_t> b) {
        std::size_t sent = 0;
        while (fd_ >= 0 && sent < b.size()) {
            const ssize_t n = ::send(fd_, b.data() + sent, b.size() - sent, MSG_NOSIGNAL);
            if (n <= 0) return false;
            sent += static_cast<std::size_t>(n);
        }
        return fd_ >= 0;
    }
    // Sends a message with one 32-bit word (or none) as payload.
    bool SendWord(std::uint16_t type, std::uint8_t dir, std::uint8_t sub, std::uint8_t chan,
                  std::int32_t word) {
        SonarMessage m = SonarMessage::Build(type, dir, sub, chan, 4);
        PutLE<std::int32_t>(m.Payload(), 0, word);
        return Send(m);
    }
    bool SendQuery(std::uint16_t type, std::uint8_t sub, std::uint8_t chan = 0) {
        return Send(SonarMessage::Build(type, 1, sub, chan, 0));
    }

    // The next whole message, or nothing at the deadline or when the peer closed. `refused`
    // receives a header whose marker or size the client refuses to follow.
    std::optional<SonarMessage> Read(std::chrono::milliseconds timeout,
                                     MessageHeader* refused = nullptr) {
        if (fd_ < 0 || closed_) return std::nullopt;
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        std::uint8_t head[kMessageHeaderSize];
        if (!ReadExact(head, sizeof head, deadline)) return std::nullopt;
        MessageHeader h;
        MessageHeader::Read(head, h);
        if (!h.HasMarker() || h.size < 0 || h.size > 2000000) {
            if (refused) *refused = h;
            return std::nullopt;
        }
        SonarMessage m = SonarMessage::AllocateUninitialised(static_cast<std::size_t>(h.size));
        std::copy(head, head + sizeof head, m.Block().begin());
        if (!ReadExact(m.Block().data() + kMessageHeaderSize, static_cast<std::size_t>(h.size),
                       deadline))
            return std::nullopt;
        return m;
    }
    // Reads until `pred` holds for a message or the deadline passes.
    std::optional<SonarMessage> ReadUntil(const std::function<bool(const SonarMessage&)>& pred,
                                          std::chrono::milliseconds timeout) {
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        for (int guard = 0; guard < 1000000; ++guard) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0) return std::nullopt;
            auto m = Read(left);
            if (!m || pred(*m)) return m;
        }
        return std::nullopt;
    }
    // True when the peer has closed the connection within the timeout (data is discarded).
    bool WaitClosed(std::chrono::milliseconds timeout) {
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        std::uint8_t buf[65536];
        while (!closed_ && std::chrono::steady_clock::now() < deadline) {
            pollfd p{fd_, POLLIN, 0};
            if (::poll(&p, 1, 20) <= 0) continue;
            const ssize_t r = ::recv(fd_, buf, sizeof buf, 0);
            if (r == 0 || (r < 0 && errno != EINTR && errno != EAGAIN)) closed_ = true;
        }
        return closed_;
    }

  private:
    bool ReadExact(std::uint8_t* dst, std::size_t n,
                   std::chrono::steady_clock::time_point deadline) {
        std::size_t got = 0;
        while (got < n) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0) return false;
            pollfd p{fd_, POLLIN, 0};
            if (::poll(&p, 1, static_cast<int>(left.count())) <= 0) continue;
            const ssize_t r = ::recv(fd_, dst + got, n - got, 0);
            if (r == 0 || (r < 0 && errno != EINTR && errno != EAGAIN)) {
                closed_ = true;
                return false;
            }
            if (r > 0) got += static_cast<std::size_t>(r);
        }
        return true;
    }

    int fd_ = -1;
    bool closed_ = false;
};

}  // namespace halvo::test

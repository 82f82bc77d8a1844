#pragma once
// Pieces the network tests share: a raw loopback peer that plays a sonar byte by byte, an
// observer that keeps what reached a bus, and a bounded wait.

#include <arpa/inet.h>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

#include "core/MessageObserver.h"
#include "core/SonarMessage.h"

namespace halvo::test {

using namespace std::chrono_literals;

template <class Pred>
bool WaitFor(Pred pred, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!pred()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

// A listening socket on 127.0.0.1 with an ephemeral port; one connection at a time.
class RawPeer {
  public:
    // Port 0 picks a free one.
    explicit RawPeer(int port = 0) {
        listener_ = ::socket(AF_INET, SOCK_STREAM, 0);
        const int one = 1;
        ::setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        a.sin_port = htons(static_cast<std::uint16_t>(port));
        ::bind(listener_, reinterpret_cast<sockaddr*>(&a), sizeof a);
        ::listen(listener_, 4);
        socklen_t len = sizeof a;
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&a), &len);
        port_ = ntohs(a.sin_port);
    }
    ~RawPeer() {
        if (conn_ >= 0) ::close(conn_);
        ::close(listener_);
    }
    int port() const { return port_; }
    int accepts() const { return accepts_; }

    // Takes the next connection (the old one is closed). False when none came in time.
    bool Accept(std::chrono::milliseconds limit) {
        pollfd p{listener_, POLLIN, 0};
        if (::poll(&p, 1, static_cast<int>(limit.count())) <= 0) return false;
        const int c = ::accept(listener_, nullptr, nullptr);
        if (c < 0) return false;
        if (conn_ >= 0) ::close(conn_);
        conn_ = c;
        ++accepts_;
        return true;
    }
    bool Send(const std::vector<std::uint8_t>& bytes) {
        std::size_t done = 0;
        for (int i = 0; i < 100000 && done < bytes.size(); ++i) {
            const ssize_t n = ::send(conn_, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
            if (n <= 0) return false;
            done += static_cast<std::size_t>(n);
        }
        return done == bytes.size();
    }
    // Resets the connection (RST, as a sonar that is switched off mid-stream) once every byte
    // sent has left this side; false when they did not leave in time.
    bool Reset(std::chrono::milliseconds limit) {
        const bool left = WaitFor(
            [&] {
                int unsent = 0;
                return ::ioctl(conn_, SIOCOUTQ, &unsent) == 0 && unsent == 0;
            },
            limit);
        const linger hard{1, 0};
        ::setsockopt(conn_, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
        ::close(conn_);
        conn_ = -1;
        return left;
    }
    // Reads exactly n bytes; false on close or when they did not come in time.
    bool Read(std::vector<std::uint8_t>& out, std::size_t n, std::chrono::milliseconds limit) {
        out.assign(n, 0);
        std::size_t got = 0;
        const auto end = std::chrono::steady_clock::now() + limit;
        while (got < n && std::chrono::steady_clock::now() < end) {
            pollfd p{conn_, POLLIN, 0};
            if (::poll(&p, 1, 20) <= 0) continue;
            const ssize_t r = ::recv(conn_, out.data() + got, n - got, 0);
            if (r <= 0) return false;
            got += static_cast<std::size_t>(r);
        }
        return got == n;
    }
    // True when the topside closed the connection within the time.
    bool WaitClosed(std::chrono::milliseconds limit) {
        const auto end = std::chrono::steady_clock::now() + limit;
        std::uint8_t sink[4096];
        while (std::chrono::steady_clock::now() < end) {
            pollfd p{conn_, POLLIN, 0};
            if (::poll(&p, 1, 20) <= 0) continue;
            const ssize_t r = ::recv(conn_, sink, sizeof sink, 0);
            if (r <= 0) return true;
        }
        return false;
    }

  private:
    int listener_ = -1;
    int conn_ = -1;
    int port_ = 0;
    int accepts_ = 0;
};

// Wire bytes of a message: header as given, then `payload` bytes of a counting pattern.
inline std::vector<std::uint8_t> Frame(std::uint16_t marker, std::uint16_t type, std::int32_t size,
                                       std::size_t payload) {
    MessageHeader h = MessageHeader::Make(type, 2, 0, 0, size);
    h.marker = marker;
    std::vector<std::uint8_t> bytes(kMessageHeaderSize + payload);
    h.Write(bytes);
    for (std::size_t i = 0; i < payload; ++i)
        bytes[kMessageHeaderSize + i] = static_cast<std::uint8_t>(i * 7 + 3);
    return bytes;
}

// Keeps a copy of every message from one source as it arrived (the preview stage), and can be
// made slow on purpose.
class KeepingObserver : public MessageObserver {
  public:
    explicit KeepingObserver(int source, std::chrono::microseconds delay = {})
        : source_(source), delay_(delay) {}
    void PreviewMessage(SonarMessage* m, int source, std::uint32_t) override {
        if (!m || source != source_) return;
        if (delay_.count() > 0) std::this_thread::sleep_for(delay_);
        std::lock_guard lock(mutex_);
        const auto wire = m->Wire();
        kept_.emplace_back(wire.begin(), wire.end());
        count_.fetch_add(1);
    }
    int count() const { return count_.load(); }
    std::vector<std::vector<std::uint8_t>> Kept() const {
        std::lock_guard lock(mutex_);
        return kept_;
    }

  private:
    const int source_;
    const std::chrono::microseconds delay_;
    mutable std::mutex mutex_;
    std::vector<std::vector<std::uint8_t>> kept_;
    std::atomic<int> count_{0};
};

}  // namespace halvo::test

#pragma once
// One accepted TCP connection of the simulator: whole-message writes that any thread may make,
// and a framer that cuts the incoming stream into messages with the same checks the topside
// makes (marker, size limits). A stream that breaks the rules is closed, never resynchronised.

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "core/SonarMessage.h"

namespace halvo {

// Largest payload a header may announce, as the topside enforces it.
constexpr std::int32_t kSimMaxPayload = 5000000 - 1;

class SimMessageFramer {
  public:
    enum class Result { NeedMore, Message, Bad };
    // Feeds bytes; call Next until it says NeedMore. A Bad stream stays bad.
    void Feed(std::span<const std::uint8_t> bytes);
    Result Next(SonarMessage& out);
    const std::string& error() const { return error_; }

  private:
    std::vector<std::uint8_t> buffer_;
    std::size_t used_ = 0;
    bool bad_ = false;
    std::string error_;
};

class SimConnection {
  public:
    SimConnection(int fd, int localPort) : fd_(fd), localPort_(localPort) {}
    ~SimConnection();
    SimConnection(const SimConnection&) = delete;
    SimConnection& operator=(const SimConnection&) = delete;

    int fd() const { return fd_; }
    int localPort() const { return localPort_; }
    // Writes every byte or gives up after `timeoutMs` without progress; false then, and the
    // connection is shut down.
    bool Send(std::span<const std::uint8_t> bytes, int timeoutMs = 5000);
    // Wakes any writer and makes the peer see the end; the descriptor closes with the object.
    // Waits, at most timeoutMs, until every byte handed to the socket has left this side, then
    // shuts the link down: a deliberate drop must not discard what the sent log already counts.
    void ShutdownAfterSent(int timeoutMs);
    void Shutdown();
    bool IsShut() const;

  private:
    int fd_;
    int localPort_;
    mutable std::mutex mutex_;
    bool shut_ = false;
};

// A listening TCP socket on host:port (0 picks a free port). -1 on failure, with the reason.
int SimListen(const std::string& host, int port, int& boundPort, std::string& error);

}  // namespace halvo

#pragma once
// A minimal topside for simulator tests: connects to a loopback port, sends messages and reads
// whole messages back with a deadline. Built on the message core only.

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "core/SonarMessage.h"

namespace halvo::test {

class SimTestClient {
  public:
    explicit SimTestClient(int port);
    ~SimTestClient();
    SimTestClient(const SimTestClient&) = delete;
    SimTestClient& operator=(const SimTestClient&) = delete;

    bool connected() const { return fd_ >= 0; }
    bool Send(const SonarMessage& m);
    bool SendBytes(std::span<const std::uint8_t> bytes);
    // Sends a message with one 32-bit word (or none) as payload.
    bool SendWord(std::uint16_t type, std::uint8_t dir, std::uint8_t sub, std::uint8_t chan,
                  std::int32_t word);
    bool SendQuery(std::uint16_t type, std::uint8_t sub, std::uint8_t chan = 0);

    // The next whole message, or nothing at the deadline or when the peer closed. `headerOnly`
    // receives a header whose marker or size the client refuses to follow.
    std::optional<SonarMessage> Read(std::chrono::milliseconds timeout,
                                     MessageHeader* refused = nullptr);
    // Reads until `pred` holds for a message or the deadline passes.
    std::optional<SonarMessage> ReadUntil(const std::function<bool(const SonarMessage&)>& pred,
                                          std::chrono::milliseconds timeout);
    // True when the peer has closed the connection within the timeout (data is discarded).
    bool WaitClosed(std::chrono::milliseconds timeout);

  private:
    bool ReadExact(std::uint8_t* dst, std::size_t n,
                   std::chrono::steady_clock::time_point deadline);
    int fd_ = -1;
    bool closed_ = false;
};

}  // namespace halvo::test

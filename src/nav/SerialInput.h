#pragma once
// One navigation serial port: opens the line, reads bytes and cuts them into lines. Nothing here
// parses a sentence. Only its own reader thread calls the operations; the counters, the baud and
// the opened flag may be read from any thread for the status text.

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/SerialPort.h"

namespace halvo {

class SerialInput {
  public:
    static constexpr std::size_t kReadBufferSize = 2048;
    static constexpr std::size_t kLineBufferSize = 1000;
    // The line stops growing here; later bytes overwrite the last position.
    static constexpr std::size_t kMaxLineLength = 998;
    static constexpr int kDefaultBaud = 4800;
    static constexpr int kFallbackBaud = 2400;
    static constexpr int kTotalReadTimeoutMs = 100;

    SerialInput() = default;
    SerialInput(const SerialInput&) = delete;
    SerialInput& operator=(const SerialInput&) = delete;

    // The speeds a navigation port may run at; anything else becomes kFallbackBaud at open.
    static bool IsListedBaud(int baud);
    // Gap allowed between bytes of one read: 50000 / baud ms, integer division.
    static int IntervalTimeoutMs(int baud) { return baud > 0 ? 50000 / baud : 0; }

    // Closes any line, clears both counters and opens the port, if its number is 1 to 255.
    bool open();
    // Stores the number (and the device path, empty for /dev/ttyS<number-1>) and reopens.
    bool setPort(int number, std::string device = {});
    // Stores the baud and reopens only when it differs.
    void setBaud(int baud);
    void close();

    // One read at most. A finished line (with its line feed) adds 1 to `count`; the view lives
    // until the next call. Opens the port at the first call.
    std::optional<std::string_view> readLine(int& count);

    bool isOpen() const { return opened_.load(std::memory_order_acquire); }
    int bytesReceived() const { return bytesReceived_.load(std::memory_order_relaxed); }
    int overflowCount() const { return overflowCount_.load(std::memory_order_relaxed); }
    int baud() const { return baud_.load(std::memory_order_relaxed); }
    int port() const { return port_; }
    const std::string& devicePath() const { return path_; }
    // Why the last open failed; empty after a good open.
    const std::string& lastError() const { return error_; }

  private:
    std::atomic<bool> opened_{false};
    std::atomic<int> bytesReceived_{0};
    std::atomic<int> overflowCount_{0};
    std::array<std::uint8_t, kReadBufferSize> readBuffer_{};
    std::size_t readCursor_ = 0;
    std::size_t bytesInBuffer_ = 0;
    SerialPort handle_;
    std::array<char, kLineBufferSize> line_{};
    std::size_t lineLength_ = 0;
    std::atomic<int> baud_{kDefaultBaud};  // read by the status side too
    int port_ = 0;

    std::string device_;
    std::string path_;
    std::string error_;
    bool firstUseDone_ = false;
};

}  // namespace halvo

#pragma once
// JSON-lines record of messages that crossed a link: one object per line, written whole under
// a lock so lines from the command and data threads never interleave.

#include <cstdint>
#include <cstdio>
#include <mutex>
#include <span>
#include <string>

#include "halvo-sim/SimClock.h"

namespace halvo {

// CRC-32 (IEEE, reflected, as zip and Ethernet use it) of the bytes.
std::uint32_t SimCrc32(std::span<const std::uint8_t> bytes);

class SimLog {
  public:
    // withCrc adds "crc32" over the whole message (header and payload as they went out).
    SimLog(const SimWallClock& clock, bool withCrc) : clock_(clock), withCrc_(withCrc) {}
    ~SimLog();
    SimLog(const SimLog&) = delete;
    SimLog& operator=(const SimLog&) = delete;

    // Opens (truncates) the file. False, with the reason in error(), when it cannot.
    bool Open(const std::string& path);
    bool IsOpen() const { return file_ != nullptr; }
    const std::string& error() const { return error_; }

    // `wire` is the message as it crossed the link: 16 header bytes then the payload.
    void Record(const char* link, int port, std::span<const std::uint8_t> wire);

  private:
    const SimWallClock& clock_;
    bool withCrc_;
    std::mutex mutex_;
    std::FILE* file_ = nullptr;
    std::uint64_t count_ = 0;
    std::string error_;
};

}  // namespace halvo

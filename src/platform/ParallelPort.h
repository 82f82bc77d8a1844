#pragma once
// Direct byte writes to parallel-port I/O addresses, used only for the diagnostic pulse that
// shows each received navigation line on an oscilloscope. Nothing else depends on it.

#include <cstdint>

namespace halvo {

class ParallelPort {
  public:
    virtual ~ParallelPort() = default;

    // Whether writes can reach hardware at all.
    virtual bool Available() const = 0;
    // Writes one byte to an I/O address. False when it did not reach the port.
    virtual bool Write(std::uint16_t address, std::uint8_t value) = 0;
};

}  // namespace halvo

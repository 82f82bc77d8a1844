#include "platform/LinuxParallelPort.h"

namespace halvo {

bool LinuxParallelPort::Write(std::uint16_t /*address*/, std::uint8_t /*value*/) {
    return false;
}

}  // namespace halvo

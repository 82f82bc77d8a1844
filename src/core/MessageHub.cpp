#include "core/MessageHub.h"

#include <chrono>
#include <cstring>

#include "core/MessageTypes.h"

namespace halvo {

std::int64_t SystemUtcSeconds() {
    using namespace std::chrono;
    return duration_cast<seconds>(system_clock::now().time_since_epoch()).count();
}

MessageHub::MessageHub(const RunFlag& runFlag, UtcSecondsFn utcNow)
    : command_("halvo-cmd-bus", runFlag, filter_, utcNow),
      data_("halvo-data-bus", runFlag, filter_, utcNow) {}

void MessageHub::Start(std::size_t queueCapacity) {
    command_.Start(queueCapacity);
    data_.Start(queueCapacity);
}

int MessageHub::SendCommand(const void* data, std::size_t length, int type, int channel,
                            int direction, int subsystem, int source) {
    if (length > 0x7FFFFFFFu - kMessageHeaderSize) return 1;
    SonarMessage m;
    if (type > 0) {
        const std::uint8_t dir = (direction == DirQuery || direction == DirReply)
                                     ? static_cast<std::uint8_t>(direction)
                                     : std::uint8_t{DirSet};
        m = SonarMessage::Build(
            static_cast<std::uint16_t>(type), dir, static_cast<std::uint8_t>(subsystem),
            static_cast<std::uint8_t>(channel), static_cast<std::int32_t>(length));
        if (!m) return 1;
        if (length > 0 && data) std::memcpy(m.Block().data() + kMessageHeaderSize, data, length);
    } else {
        // A whole message: shorter than a header it cannot be one.
        if (length < kMessageHeaderSize || !data) return 1;
        m = SonarMessage::FromBytes({static_cast<const std::uint8_t*>(data), length});
        if (!m) return 1;
    }
    return command_.Post(m, source, 0) == 0 ? 0 : 1;
}

}  // namespace halvo

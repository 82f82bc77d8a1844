#include "core/MessageHub.h"

#include <chrono>
#include <cstdio>
#include <cstring>

#include "core/MessageTypes.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define HALVO_HAS_ASAN 1
#endif
#endif
#ifndef HALVO_HAS_ASAN
#define HALVO_HAS_ASAN 0
#endif
#if defined(__SANITIZE_ADDRESS__) || HALVO_HAS_ASAN
#include <sanitizer/lsan_interface.h>
#endif

namespace halvo {

std::int64_t SystemUtcSeconds() {
    using namespace std::chrono;
    return duration_cast<seconds>(system_clock::now().time_since_epoch()).count();
}

namespace {

// Left to the process's end on purpose; a leak checker is told so.
void KeepForever(const void* object) {
#if defined(__SANITIZE_ADDRESS__) || HALVO_HAS_ASAN
    __lsan_ignore_object(object);
#else
    static_cast<void>(object);
#endif
}

}  // namespace

MessageHub::MessageHub(const RunFlag& runFlag, UtcSecondsFn utcNow)
    : filter_(std::make_unique<AcquireFilter>()),
      command_(std::make_unique<MessageProcessor>("halvo-cmd-bus", runFlag, *filter_, utcNow)),
      data_(std::make_unique<MessageProcessor>("halvo-data-bus", runFlag, *filter_, utcNow)) {}

MessageHub::~MessageHub() {
    bool abandoned = false;
    for (std::unique_ptr<MessageProcessor>* bus : {&command_, &data_}) {
        if ((*bus)->StopWithin(MessageProcessor::kStopWaitMs)) continue;
        std::fprintf(stderr, "halvo: %s did not stop within a second; leaving it behind\n",
                     (*bus)->name().c_str());
        (*bus)->Abandon();
        KeepForever(bus->release());  // kept for the thread that still runs in it
        abandoned = true;
    }
    if (abandoned) KeepForever(filter_.release());
}

void MessageHub::Start(std::size_t queueCapacity) {
    command_->Start(queueCapacity);
    data_->Start(queueCapacity);
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
    return command_->Post(m, source, 0) == 0 ? 0 : 1;
}

}  // namespace halvo

#pragma once
// Turns sentences and binary sensor messages into the one record of latest values,
// NavigationFix. Runs on the bus thread; callers in other threads copy the fix under the lock of
// its owner. Every "now" is passed in by the caller.

#include <cstdint>
#include <span>
#include <string_view>

#include "core/SensorPayloads.h"
#include "core/TimeValue.h"
#include "nav/NavigationFix.h"
#include "nav/SentenceHistory.h"
#include "nav/SentenceKind.h"

namespace halvo {

// One message as the parser needs it: the header fields it reads and the payload bytes behind
// the header, bounded by the header's size.
struct SensorMessageView {
    std::uint16_t type = 0;
    std::uint8_t version = 0;
    std::uint8_t channel = 0;
    std::span<const std::uint8_t> payload;
};

class SentenceParser {
  public:
    // One sentence with the time of its reading. `port` goes into the history's code byte.
    SentenceResult ParseSentence(std::string_view text, std::int32_t seconds, std::int32_t ms,
                                 std::uint8_t port = 0);

    // Any message from the bus. For 2002 the result is the sentence's; for every other type it
    // is not accepted (kind None). The container time is settled last.
    SentenceResult ProcessMessage(const SensorMessageView& message, TimeValue now);

    const NavigationFix& Fix() const { return fix_; }
    const SentenceHistory& History() const { return history_; }
    const ContainerTime& Container() const { return container_; }
    TimeValue LastNmeaTime() const { return lastNmeaTime_; }
    std::uint8_t TraceVersion() const { return traceVersion_; }

  private:
    void ProcessSensor(const SensorMessageView& m, TimeValue now);

    NavigationFix fix_;
    SentenceHistory history_;
    ContainerTime container_;
    TimeValue lastNmeaTime_{};
    std::uint8_t traceVersion_ = 0;
};

}  // namespace halvo

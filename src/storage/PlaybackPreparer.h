#pragma once
// The steps every played record passes between the reader and the bus: sensor hiding
// ("Reparse Data"), range hiding, and the marks at file start. A hidden record is not removed:
// its type becomes 41, it still travels the bus and still counts against the rate.

#include <cstdint>
#include <functional>
#include <optional>

#include "core/SonarMessage.h"
#include "storage/StorageSettings.h"

namespace halvo {

// What playback needs to know from other parts of the system.
struct PlaybackContext {
    // First channel of the sonar whose subsystem is this one, searched over the four sonars;
    // empty when none matches. Unset: no sonar matches.
    std::function<std::optional<int>(std::uint8_t subsystem)> firstChannelOf;
    // GPSFlags of the general settings; bit 0 enables the antenna offsets. Unset: 0.
    std::function<std::int16_t()> gpsFlags;
};

class PlaybackPreparer {
  public:
    // Two bits for each of fourteen channel indices.
    static constexpr std::uint32_t kFullMarkMask = 0x0FFFFFFFu;
    static constexpr int kMarkedChannels = 14;

    // At every opening: the first two traces of each channel will be marked again.
    void ResetMarks() { markMask_ = kFullMarkMask; }
    std::uint32_t MarkMask() const { return markMask_; }

    // The three steps in order. Returns true when the record was hidden.
    bool Prepare(SonarMessage& message, const StorageSettings& settings,
                 const PlaybackContext& context);

    // The value range hiding compares, for a type 80 message, or empty when the range type
    // asks for none or the trace header is incomplete.
    static std::optional<std::int64_t> RangeValue(const SonarMessage& message, int rangeType,
                                                  bool laybackEnabled);

  private:
    void Mark(SonarMessage& message, const PlaybackContext& context);

    std::uint32_t markMask_ = kFullMarkMask;
};

}  // namespace halvo

#include "storage/PlaybackPreparer.h"

#include <cmath>

#include "core/MessageTypes.h"
#include "core/TraceHeader.h"
#include "nav/AntennaCorrection.h"

namespace halvo {

namespace {

bool IsSensorMessage(std::uint16_t type) {
    return type == MsgNmea || type == MsgAnalog || type == MsgPressure || type == MsgPitchRoll;
}

}  // namespace

std::optional<std::int64_t> PlaybackPreparer::RangeValue(const SonarMessage& message, int rangeType,
                                                         bool laybackEnabled) {
    const ConstTraceHeaderView th(message.Payload());
    if (!th.valid()) return std::nullopt;
    if (rangeType == 1) return th.GetInt(TraceField::PingNumber);
    if (rangeType != 2 && rangeType != 3) return std::nullopt;
    const AntennaOffset off = AntennaCorrection(
        laybackEnabled, static_cast<std::int16_t>(th.GetInt(TraceField::NMEAAntennaeO)),
        static_cast<std::int16_t>(th.GetInt(TraceField::NMEAAntennaeR)),
        static_cast<std::int16_t>(th.GetInt(TraceField::NMEACourse)),
        th.GetInt(TraceField::GroupCoordY));
    const double value = rangeType == 2 ? th.GetInt(TraceField::GroupCoordY) + off.dy
                                        : th.GetInt(TraceField::GroupCoordX) + off.dx;
    if (!std::isfinite(value)) return std::nullopt;
    return static_cast<std::int64_t>(std::trunc(value));
}

bool PlaybackPreparer::Prepare(SonarMessage& message, const StorageSettings& settings,
                               const PlaybackContext& context) {
    bool hidden = false;
    if (!settings.ReparseData() && IsSensorMessage(message.type())) {
        message.set_type(MsgAlive);
        hidden = true;
    }
    if (settings.playbackRangeType != 0 && message.type() == MsgTrace) {
        const bool layback = context.gpsFlags && (context.gpsFlags() & 1) != 0;
        const auto value = RangeValue(message, settings.playbackRangeType, layback);
        if (value && (*value < settings.playbackRange0 || *value > settings.playbackRange1)) {
            message.set_type(MsgAlive);
            hidden = true;
        }
    }
    if (settings.markFileStart != 0) Mark(message, context);
    return hidden;
}

void PlaybackPreparer::Mark(SonarMessage& message, const PlaybackContext& context) {
    const std::uint16_t type = message.type();
    // Only traces take a mark; other messages leave the channel's two bits as they are.
    if (type != MsgTrace && type != MsgSideScanTrace) return;
    int index = message.channel();
    if (context.firstChannelOf) {
        if (auto first = context.firstChannelOf(message.subsystem())) index += *first;
    }
    if (index < 0 || index >= kMarkedChannels) return;
    const int shift = 2 * index;
    const std::uint32_t bits = (markMask_ >> shift) & 3u;
    if (bits == 0) return;
    if (type == MsgTrace) {
        PutLE<std::int16_t>(message.Payload(), 184, 1);
    } else {
        PutLE<std::int16_t>(message.Payload(), 34, 0);
    }
    // Low bit first, then both: each channel is marked twice.
    markMask_ &= (bits & 1u) ? ~(1u << shift) : ~(3u << shift);
}

}  // namespace halvo

#include "dsp/graph/GraphTaker.h"

#include <cmath>
#include <utility>

#include "core/ByteOrder.h"
#include "core/MessageTypes.h"
#include "core/SonarMessage.h"
#include "core/TraceHeader.h"
#include "dsp/SonarChannelMap.h"

namespace halvo {

namespace {
constexpr int kFirstQcChannel = 52;
}

int GraphTaker::ChannelOf(const SonarMessage& message, const SonarChannelMapIF* sonars) {
    int first = 0;
    const int sonar = sonars != nullptr ? sonars->FindSonar(message.subsystem(), first) : -1;
    if (sonar < 0) return -1;
    const int byte = message.channel();
    if (message.direction() == DirQC) {
        if (byte > 1) return -1;
        return kFirstQcChannel + 2 * sonar + byte;
    }
    return first + byte;
}

void GraphTaker::DeliverMessage(SonarMessage* message, int, std::uint32_t) {
    if (message == nullptr || message->type() != MsgTrace || pause_.load()) return;
    const int channel = ChannelOf(*message, sonars_);
    if (channel < 0) return;
    for (int s = 0; s < 2; ++s) {
        GraphSlot& slot = slots_[static_cast<std::size_t>(s)];
        if (slot.Waiting() || channel_[static_cast<std::size_t>(s)].load() != channel) continue;
        Take(slot, *message);
    }
}

void GraphTaker::Take(GraphSlot& slot, const SonarMessage& message) {
    const std::span<const std::uint8_t> payload = message.Payload();
    if (payload.size() < kTraceHeaderSize) return;
    const ConstTraceHeaderView th(payload);
    const int format = th.GetInt(TraceField::DataFormat);
    const std::size_t bytes = (format == 7 || format == 10) ? 4 : 2;
    const std::size_t n = (payload.size() - kTraceHeaderSize) / bytes;
    if (n < 1 || n > static_cast<std::size_t>(GraphSlot::kMaxValues)) return;
    slot.values.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
        const std::size_t at = kTraceHeaderSize + i * bytes;
        slot.values[i] = bytes == 4 ? GetLE<float>(payload, at)
                                    : static_cast<float>(GetLE<std::int16_t>(payload, at));
    }
    slot.interval = static_cast<std::uint32_t>(th.GetInt(TraceField::SampleIntervalNS));
    slot.startDepth = th.GetInt(TraceField::StartDepth);
    slot.adcGain = th.GetInt(TraceField::ADCGain);
    slot.ping = static_cast<std::uint32_t>(th.GetInt(TraceField::PingNumber));
    float scale = std::ldexp(1.0f, -th.GetInt(TraceField::WeightingFactor));
    if (slot.adcGain != 0 && xAdcGain_.load()) scale *= static_cast<float>(slot.adcGain);
    slot.scale = scale;
    slot.format = (format == 7 || format == 9) ? 1 : format == 10 ? 2 : format;
    slot.requested.fetch_add(1);
}

}  // namespace halvo

#include "dsp/HalvoDisplaysDataProcessor.h"

#include <utility>

#include "app/GeneralSettings.h"
#include "core/MessageTypes.h"
#include "core/SonarMessage.h"
#include "core/TraceHeader.h"
#include "display/DisplayProcessingSet.h"
#include "dsp/SonarChannelMap.h"

namespace halvo {

HalvoDisplaysDataProcessor::HalvoDisplaysDataProcessor(DisplayProcessingSet& set,
                                                       GeneralSettings& general,
                                                       DisplayLineOutput& output,
                                                       const SonarChannelMapIF* sonars)
    : set_(set), general_(general), sonars_(sonars) {
    for (int i = 0; i < kDisplays; ++i) {
        channels_[static_cast<std::size_t>(i)] =
            std::make_unique<HalvoDisplayChannelProcessor>(i, set, output, &reflection_);
    }
}

const GeneralValues& HalvoDisplaysDataProcessor::General() {
    const int count = general_.ChangeCount();
    if (count != generalCount_) {
        generalCopy_ = general_.Snapshot();
        generalCount_ = count;
    }
    return generalCopy_;
}

void HalvoDisplaysDataProcessor::DeliverMessage(SonarMessage* message, int source,
                                                std::uint32_t extra) {
    if (!message) return;
    if (source != SourceSonarData && source != SourcePlayback && source != SourceDerived) return;
    if (message->type() == MsgTrace) {
        OnTrace(*message);
    } else if (message->type() == MsgPressure) {
        OnSoundSpeed(*message);
    }
}

void HalvoDisplaysDataProcessor::OnTrace(SonarMessage& message) {
    const std::span<const std::uint8_t> payload = std::as_const(message).Payload();
    if (message.type() != MsgTrace || payload.size() < kTraceHeaderSize) return;
    const int channel = ConstTraceHeaderView(payload).GetInt(TraceField::ChannelNumber);
    const GeneralValues& g = General();
    const bool qc = message.direction() == DirQC;
    if (!qc) {
        const std::uint32_t masks[2] = {static_cast<std::uint32_t>(g.SummedChannel0),
                                        static_cast<std::uint32_t>(g.SummedChannel1)};
        for (int k = 0; k < 2; ++k) {
            SonarMessage* sum =
                summed_[static_cast<std::size_t>(k)].Offer(message, channel, masks[k]);
            if (sum) ProcessAsChannel(*sum, kSummedChannel0 + k);
        }
    }
    int first = 0;
    const int sonar = sonars_ ? sonars_->FindSonar(message.subsystem(), first) : -1;
    const int byte = message.channel();
    if (qc) {
        if (byte > 1 || sonar < 0) return;
        ProcessAsChannel(message, kFirstQcChannel + 2 * sonar + byte);
        return;
    }
    if (sonar < 0) {
        ProcessAsChannel(message, channel);
        return;
    }
    // Twice, as designed: every stage that runs over traces sees each trace twice, and each trace
    // gives two lines.
    ProcessAsChannel(message, first + byte);
    ProcessAsChannel(message, first + byte);
}

void HalvoDisplaysDataProcessor::ProcessAsChannel(SonarMessage& message, int c) {
    const std::span<std::uint8_t> payload = message.Payload();
    if (payload.size() < kTraceHeaderSize) return;
    const std::span<std::uint8_t> header = payload.first(kTraceHeaderSize);
    const std::span<const std::uint8_t> samples = payload.subspan(kTraceHeaderSize);
    const GeneralValues& g = General();
    const int inUse = set_.DisplaysInUse();
    for (int i = 0; i < inUse && i < kDisplays; ++i) {
        HalvoDisplayChannelProcessor& p = *channels_[static_cast<std::size_t>(i)];
        const DisplayProcessingConfig& cfg = p.Refresh();
        const int k = cfg.Channel;
        const bool dual = cfg.DualChannel == 1;
        const int partner = (k & 1) != 0 ? k - 1 : k + 1;
        if (c == k) {
            p.ProcessLine(0, header, samples, g);
        } else if (dual && c == partner) {
            p.ProcessLine(1, header, samples, g);
        }
    }
}

void HalvoDisplaysDataProcessor::OnSoundSpeed(const SonarMessage& message) {
    const GeneralValues& g = General();
    if (g.SoundSpeedSource != 1) return;
    const std::span<const std::uint8_t> p = message.Payload();
    std::uint32_t flags = 0;
    std::int32_t raw = 0;
    if (!ReadLE(p, 24, flags) || !ReadLE(p, 32, raw)) return;
    if ((flags & 0x10u) == 0) return;
    const std::int32_t v = raw / 1000;
    const std::int32_t water = g.WaterSoundSpeed;
    if (v == water) return;
    ++soundSpeedDifferences_;
    // The raw value is in mm/s and the setting in m/s, so any real report is "far" and taken at
    // once; the patience only matters for values within a millimetre per second of the setting.
    const bool far = static_cast<std::int64_t>(raw) < static_cast<std::int64_t>(water) - 1 ||
                     static_cast<std::int64_t>(raw) > static_cast<std::int64_t>(water) + 1;
    if (far || soundSpeedDifferences_ > kSoundSpeedPatience) {
        general_.Modify([v](GeneralValues& values) { values.WaterSoundSpeed = v; });
        soundSpeedDifferences_ = 0;
    }
}

}  // namespace halvo

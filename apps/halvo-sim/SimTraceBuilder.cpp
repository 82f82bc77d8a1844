#include "halvo-sim/SimTraceBuilder.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/ByteOrder.h"
#include "core/MessageTypes.h"
#include "core/Normalise.h"
#include "core/PackedSamples.h"
#include "core/TraceHeader.h"

namespace halvo {

namespace {

std::int16_t Clamp16(double v) {
    return static_cast<std::int16_t>(std::clamp(std::lround(v), -32768L, 32767L));
}

// Compact forms learn the sample count from the payload size, so a packed count must fill
// whole words.
std::size_t GroupOf(int form, int code) {
    if (form != 84 && form != 85) return 1;
    const PackingCodeInfo info = PackingCodeOf(code);
    return info.layout == PackLayout::None ? 1
                                           : static_cast<std::size_t>(SamplesPerWord(info.layout));
}

}  // namespace

int SimFloatExponent(int code) {
    const PackingCodeInfo info = PackingCodeOf(code);
    if (!info.floatOutput) return 0;
    const int bits = info.layout == PackLayout::A ? 10 : (info.layout == PackLayout::B ? 7 : 4);
    const int maxShift = info.layout == PackLayout::A ? 6 : 15;
    const double fieldMax = info.isSigned ? (1 << (bits - 1)) - 1 : (1 << bits) - 1;
    return static_cast<int>(std::floor(std::log2(fieldMax * std::ldexp(1.0, maxShift) / 32767.0)));
}

SimTraceBuilder::SimTraceBuilder(const SimScene& scene, int form, int packing)
    : scene_(scene), form_(form), packing_(packing) {}

const std::vector<std::int32_t>& SimTraceBuilder::Values(const SimSubsystem& s, int channel,
                                                         const SimPingPlace& place,
                                                         SimTraceInfo& info) {
    const SimChannel& c = s.channels.at(static_cast<std::size_t>(std::clamp(channel, 0, 15)));
    const bool floats = packing_ >= 7;
    const int dataType = c.dataType;
    info = SimTraceInfo{};
    info.code = packing_;
    info.valuesPerSample = dataType == 1 ? 2 : 1;
    info.format = floats ? (dataType == 1 ? 7 : 10) : dataType;
    info.exponent = SimFloatExponent(packing_);

    const int pixel = std::max<int>(1, c.window.pixelDecimator);
    const double adcRate = s.adcRateHz > 0 ? s.adcRateHz : 25000;
    const double interval = pixel / adcRate;
    info.intervalNs = static_cast<std::int32_t>(std::lround(interval * 1e9));
    info.startSample = std::max<std::int32_t>(0, c.window.delay) / pixel;
    std::size_t samples =
        static_cast<std::size_t>(std::max<std::int32_t>(1, c.window.width / pixel));
    const std::size_t width = floats ? 4 : 2;
    const std::size_t cap = std::min<std::size_t>(
        0xFFFFF,
        (kSimMaxTracePayload - 240) / (width * static_cast<std::size_t>(info.valuesPerSample)));
    samples = std::min(samples, cap);
    const std::size_t group = GroupOf(form_, packing_);
    samples = (samples + group - 1) / group * group;
    info.samples = samples;

    const SimPulse& pulse = s.Pulse();
    SimRenderRequest req;
    req.sideScan = s.kind == SimSubsystemKind::SideScan;
    req.side = channel % 2;
    req.aft = channel >= 2;
    req.centreHz = 0.5 * (pulse.startHz + pulse.endHz);
    req.bandwidthHz = std::max(400, pulse.endHz - pulse.startHz);
    req.interval = interval;
    req.start = info.startSample;
    req.samples = samples;
    req.noiseKey = static_cast<std::uint32_t>(s.number * 64 + channel);
    re_.resize(samples);
    im_.resize(samples);
    scene_.Render(place, req, re_, im_);

    const double gain = std::max(0, c.gainMilli) / 1000.0;
    info.gainCode =
        gain > 0 ? std::clamp(static_cast<int>(std::lround(16.0 * std::log2(gain))), 0, 255) : 0;
    info.adcGain = static_cast<int>(std::pow(2.0, info.gainCode / 16.0) + 0.5);

    // Gain, then AGC as a power of two that the weighting factor undoes.
    const auto gf = static_cast<float>(gain);
    if (c.agc != 0) {
        float peak = 0.0f;
        for (std::size_t i = 0; i < samples; ++i)
            peak = std::max(peak, std::max(std::fabs(re_[i]), std::fabs(im_[i])));
        peak *= gf;
        while (peak > 0.0f && info.weighting < 8 && peak * 2.0f < 30000.0f) {
            peak *= 2.0f;
            ++info.weighting;
        }
    }
    const float f = gf * static_cast<float>(std::ldexp(1.0, info.weighting + info.exponent));
    const auto limit = static_cast<float>(std::ldexp(32767.0, info.exponent));
    const std::size_t n = samples * static_cast<std::size_t>(info.valuesPerSample);
    values_.resize(n);
    std::int32_t* out = values_.data();
    const float* re = re_.data();
    const float* im = im_.data();
    // Round half away from zero; written so the loops vectorise.
    const auto quantise = [limit](float v) {
        v = std::min(limit, std::max(-limit, v));
        return static_cast<std::int32_t>(v + (v < 0.0f ? -0.5f : 0.5f));
    };
    if (dataType == 0) {
        for (std::size_t i = 0; i < samples; ++i)
            out[i] = quantise(std::sqrt(re[i] * re[i] + im[i] * im[i]) * f);
    } else if (info.valuesPerSample == 2) {
        for (std::size_t i = 0; i < samples; ++i) {
            out[2 * i] = quantise(re[i] * f);
            out[2 * i + 1] = quantise(im[i] * f);
        }
    } else {
        for (std::size_t i = 0; i < samples; ++i) out[i] = quantise(re[i] * f);
    }
    std::int32_t maxAbs = 0;
    for (std::size_t i = 0; i < n; ++i) maxAbs = std::max(maxAbs, out[i] < 0 ? -out[i] : out[i]);
    info.adcMax = static_cast<int>(
        std::min(32767.0, std::ldexp(static_cast<double>(maxAbs), -info.exponent)));
    return values_;
}

SonarMessage SimTraceBuilder::Build(const SimSubsystem& s, int channel, const SimPingPlace& place,
                                    TimeValue now, int mark) {
    SimTraceInfo info;
    const std::vector<std::int32_t>& values = Values(s, channel, place, info);
    const std::size_t packed = PackedBytes(values.size(), packing_);
    const bool compact = form_ == 84 || form_ == 85;
    const std::size_t headerBytes = compact ? 16 : (form_ == 82 ? 80 : kTraceHeaderSize);
    const auto type = static_cast<std::uint16_t>(form_);
    SonarMessage m = SonarMessage::AllocateUninitialised(headerBytes + packed);
    if (!m) return m;
    m.SetHeader(MessageHeader::Make(type, DirReply, static_cast<std::uint8_t>(s.number),
                                    static_cast<std::uint8_t>(channel),
                                    static_cast<std::int32_t>(headerBytes + packed)));
    auto p = m.Payload();
    std::memset(p.data(), 0, headerBytes);
    Pack(p.subspan(headerBytes), values, packing_, info.exponent);

    if (compact) {
        const std::uint32_t msToday =
            static_cast<std::uint32_t>((now.seconds % 86400 + 86400) % 86400) * 1000u +
            static_cast<std::uint32_t>(now.ms);
        const auto w0 = (static_cast<std::uint32_t>(place.ping) & 0xFFFFu) |
                        (static_cast<std::uint32_t>(info.startSample) & 0xFFFFu) << 16;
        const auto w1 = (static_cast<std::uint32_t>(info.adcMax) & 0xFFFFu) |
                        (static_cast<std::uint32_t>(info.weighting) & 0xFFu) << 16 |
                        (static_cast<std::uint32_t>(info.format) & 7u) << 24 |
                        static_cast<std::uint32_t>(packing_) << 27;
        std::uint32_t w3 = msToday & 0xFFFFu;
        if (form_ == 84) w3 |= (static_cast<std::uint32_t>(info.gainCode) & 0xFFu) << 16;
        PutLE<std::uint32_t>(p, 0, w0);
        PutLE<std::uint32_t>(p, 4, w1);
        PutLE<std::uint32_t>(p, 8, static_cast<std::uint32_t>(info.intervalNs));
        PutLE<std::uint32_t>(p, 12, w3);
    } else if (form_ == 82) {
        FillSideScanHeader(p, s, channel, place, now, mark, info);
    } else {
        FillTraceHeader(p, s, channel, place, now, mark, info);
    }
    return m;
}

void SimTraceBuilder::FillTraceHeader(std::span<std::uint8_t> p, const SimSubsystem& s, int channel,
                                      const SimPingPlace& place, TimeValue now, int mark,
                                      const SimTraceInfo& info) const {
    TraceHeaderView h(p.first(kTraceHeaderSize));
    const SimChannel& c = s.channels.at(static_cast<std::size_t>(std::clamp(channel, 0, 15)));
    const SimPulse& pulse = s.Pulse();
    const UtcCalendar cal = BreakDownUtc(now.seconds);
    const double floor = scene_.FloorDepth(place.alongTrack);
    const double heave = scene_.Heave(place.time);
    const bool sideScan = s.kind == SimSubsystemKind::SideScan;
    const double altitude = sideScan ? scene_.FishAltitude(place.alongTrack) : floor;
    const double bodyDepth = sideScan ? floor - altitude : 0.0;
    const auto samples = static_cast<std::uint32_t>(info.samples);

    h.SetInt(TraceField::TimeSince1970, now.seconds);
    h.SetInt(TraceField::StartDepth, static_cast<std::int32_t>(info.startSample));
    h.SetInt(TraceField::PingNumber, static_cast<std::int32_t>(place.ping));
    h.SetInt(TraceField::ChannelNumber, channel);
    h.SetInt(TraceField::MSB1, static_cast<std::int32_t>((samples >> 16) & 0x0Fu) << 8);
    h.SetInt(TraceField::TraceIDCode, 1);
    h.SetInt(TraceField::ValidityFlags, 32);
    h.SetInt(TraceField::DataFormat, info.format | (info.code << 8));
    h.SetInt(TraceField::Samples, static_cast<std::int32_t>(samples & 0xFFFFu));
    h.SetInt(TraceField::SampleIntervalNS, info.intervalNs);
    h.SetInt(TraceField::ADCGain, info.adcGain);
    h.SetInt(TraceField::PulsePower, s.pulsePower[static_cast<std::size_t>(channel % 16)] / 10);
    h.SetInt(TraceField::StartFreq, std::min(32767, pulse.startHz / 10));
    h.SetInt(TraceField::EndFreq, std::min(32767, pulse.endHz / 10));
    h.SetInt(TraceField::SweepLengthMS, pulse.lengthUs / 1000);
    h.SetInt(TraceField::PressurePSI,
             static_cast<std::int32_t>((bodyDepth * 1.4503 + 14.696) * 1000));
    h.SetInt(TraceField::DepthMM, static_cast<std::int32_t>(bodyDepth * 1000));
    h.SetInt(TraceField::PulseID, static_cast<std::int32_t>(s.pulseIndex));
    h.SetInt(TraceField::Altitude, static_cast<std::int32_t>(altitude * 1000));
    h.SetFloat(TraceField::SoundSpeed, 1500.0f);
    h.SetInt(TraceField::Year, cal.year);
    h.SetInt(TraceField::Day, cal.dayOfYear);
    h.SetInt(TraceField::Hour, cal.hour);
    h.SetInt(TraceField::Minute, cal.minute);
    h.SetInt(TraceField::Second, cal.second);
    h.SetInt(TraceField::TimeBasis, 3);
    h.SetInt(TraceField::WeightingFactor, info.weighting);
    h.SetInt(TraceField::NumOfPulses, s.transducers > 1 && s.inputChannels > 2 ? 2 : 1);
    h.SetInt(TraceField::Heading,
             static_cast<std::int32_t>(scene_.HeadingDegrees(place.alongTrack) * 100));
    h.SetInt(TraceField::Pitch, Clamp16(scene_.PitchDegrees(place.time) * 32768.0 / 180.0));
    h.SetInt(TraceField::Roll, Clamp16(scene_.RollDegrees(place.time) * 32768.0 / 180.0));
    h.SetInt(TraceField::Temperature,
             static_cast<std::int32_t>(scene_.WaterTemperature(place.time) * 10));
    h.SetInt(TraceField::HeaveCompensationSamples,
             Clamp16(heave * 2.0 / kSimSoundSpeed * 1e9 / std::max(1, info.intervalNs)));
    h.SetInt(TraceField::TriggerSource, s.trigger);
    h.SetInt(TraceField::MarkNumber, mark);
    h.SetInt(TraceField::MillisecondsToday, (now.seconds % 86400 + 86400) % 86400 * 1000 + now.ms);
    h.SetInt(TraceField::ADCMax, info.adcMax);
    h.SetInt(TraceField::PacketNumber, static_cast<std::int32_t>(place.ping & 0x7FFF));
    h.SetInt(TraceField::ADCDecimationPre, c.window.frameDecimator);
    h.SetInt(TraceField::ADCDecimationPost, c.window.pixelDecimator);
    h.SetInt(TraceField::WaterTemperature,
             static_cast<std::int32_t>(scene_.WaterTemperature(place.time) * 10));
    std::memcpy(p.data() + InfoOf(TraceField::SoftwareVersionWord0).offset, "SIM100", 6);
}

void SimTraceBuilder::FillSideScanHeader(std::span<std::uint8_t> p, const SimSubsystem& s,
                                         int channel, const SimPingPlace& place, TimeValue now,
                                         int mark, const SimTraceInfo& info) const {
    const UtcCalendar cal = BreakDownUtc(now.seconds);
    const SimPulse& pulse = s.Pulse();
    const double heave = scene_.Heave(place.time);
    PutLE<std::uint16_t>(p, 0, static_cast<std::uint16_t>(s.number));
    PutLE<std::uint16_t>(p, 2, static_cast<std::uint16_t>(channel));
    PutLE<std::int32_t>(p, 4, static_cast<std::int32_t>(place.ping));
    PutLE<std::int16_t>(p, 8, static_cast<std::int16_t>(place.ping & 0x7FFF));
    PutLE<std::int16_t>(p, 10, static_cast<std::int16_t>(s.trigger));
    PutLE<std::uint32_t>(p, 12, static_cast<std::uint32_t>(info.samples));
    PutLE<std::int32_t>(p, 16, info.intervalNs);
    PutLE<std::int32_t>(p, 20, static_cast<std::int32_t>(info.startSample));
    PutLE<std::int16_t>(p, 24, static_cast<std::int16_t>(info.weighting));
    PutLE<std::int16_t>(p, 26, static_cast<std::int16_t>(info.adcGain));
    PutLE<std::int16_t>(p, 28, static_cast<std::int16_t>(info.adcMax));
    PutLE<std::int16_t>(p, 30, static_cast<std::int16_t>(pulse.lengthUs / 1000));
    PutLE<std::int16_t>(p, 32, static_cast<std::int16_t>(s.pulseIndex));
    PutLE<std::int16_t>(p, 34, static_cast<std::int16_t>(mark));
    PutLE<std::uint16_t>(p, 36, static_cast<std::uint16_t>(info.format | (info.code << 8)));
    PutLE<std::uint8_t>(p, 38, 1);
    PutLE<std::int32_t>(p, 40, (now.seconds % 86400 + 86400) % 86400 * 1000 + now.ms);
    PutLE<std::int16_t>(p, 44, static_cast<std::int16_t>(cal.year));
    PutLE<std::int16_t>(p, 46, static_cast<std::int16_t>(cal.dayOfYear));
    PutLE<std::int16_t>(p, 48, static_cast<std::int16_t>(cal.hour));
    PutLE<std::int16_t>(p, 50, static_cast<std::int16_t>(cal.minute));
    PutLE<std::int16_t>(p, 52, static_cast<std::int16_t>(cal.second));
    PutLE<std::int16_t>(p, 56, Clamp16(scene_.PitchDegrees(place.time) * 32768.0 / 180.0));
    PutLE<std::int16_t>(p, 58, Clamp16(scene_.RollDegrees(place.time) * 32768.0 / 180.0));
    PutLE<std::int16_t>(p, 60,
                        Clamp16(heave * 2.0 / kSimSoundSpeed * 1e9 / std::max(1, info.intervalNs)));
}

}  // namespace halvo

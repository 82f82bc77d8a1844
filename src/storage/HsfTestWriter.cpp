#include "storage/HsfTestWriter.h"

#include <cstdio>
#include <cstring>
#include <memory>

#include "core/MessageTypes.h"
#include "core/TraceHeader.h"

namespace halvo {

SonarMessage HsfTestWriter::MakeTrace(const TraceSpec& spec) {
    const DataFormatInfo f = DataFormatOf(spec.format);
    const std::size_t values =
        std::size_t{spec.samples} * static_cast<std::size_t>(f.valuesPerSample);
    const std::size_t bytes = values * static_cast<std::size_t>(f.bytesPerValue);
    SonarMessage m = SonarMessage::Build(MsgTrace, spec.direction, spec.subsystem, spec.channel,
                                         static_cast<std::int32_t>(kTraceHeaderSize + bytes));
    if (!m) return m;
    auto payload = m.Payload();
    TraceHeaderView th(payload);
    th.SetInt(TraceField::TimeSince1970, spec.timeSince1970);
    th.SetInt(TraceField::PingNumber, spec.ping);
    th.SetInt(TraceField::ChannelNumber, spec.channel);
    th.SetInt(TraceField::DataFormat, spec.format);
    th.SetInt(TraceField::Samples, static_cast<std::int16_t>(spec.samples));
    th.SetInt(TraceField::SampleIntervalNS, spec.sampleIntervalNs);
    th.SetInt(TraceField::GroupCoordX, spec.groupCoordX);
    th.SetInt(TraceField::GroupCoordY, spec.groupCoordY);
    th.SetInt(TraceField::NMEACourse, spec.course);
    th.SetInt(TraceField::MillisecondsToday, spec.millisecondsToday);
    std::uint8_t* s = payload.data() + kTraceHeaderSize;
    for (std::size_t i = 0; i < values; ++i) {
        const auto v =
            static_cast<std::int32_t>((i * 37 + static_cast<std::size_t>(spec.ping)) % 2000) - 1000;
        if (f.isFloat) {
            StoreLE<float>(s + i * 4, static_cast<float>(v));
        } else {
            StoreLE<std::int16_t>(s + i * 2, static_cast<std::int16_t>(v));
        }
    }
    return m;
}

SonarMessage HsfTestWriter::MakeMessage(std::uint16_t type, std::uint8_t direction,
                                        std::uint8_t subsystem, std::uint8_t channel,
                                        std::span<const std::uint8_t> payload) {
    SonarMessage m = SonarMessage::Build(type, direction, subsystem, channel,
                                         static_cast<std::int32_t>(payload.size()));
    if (m && !payload.empty()) std::memcpy(m.Payload().data(), payload.data(), payload.size());
    return m;
}

HsfTestWriter& HsfTestWriter::Add(const SonarMessage& message) {
    return Raw(message.Wire());
}

HsfTestWriter& HsfTestWriter::Raw(std::span<const std::uint8_t> bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    return *this;
}

HsfTestWriter& HsfTestWriter::Header(std::uint16_t marker, std::uint16_t type, std::uint32_t size) {
    std::uint8_t h[kMessageHeaderSize] = {};
    StoreLE(h, marker);
    h[2] = kMessageVersion;
    StoreLE(h + 4, type);
    StoreLE(h + 12, size);
    return Raw(h);
}

HsfTestWriter& HsfTestWriter::Legacy(const SonarMessage& trace) {
    return Raw(trace.Payload());
}

bool HsfTestWriter::Save(const std::string& path) const {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> f(std::fopen(path.c_str(), "wb"), &std::fclose);
    if (!f) return false;
    if (!bytes_.empty() && std::fwrite(bytes_.data(), 1, bytes_.size(), f.get()) != bytes_.size()) {
        return false;
    }
    return std::fflush(f.get()) == 0;
}

}  // namespace halvo

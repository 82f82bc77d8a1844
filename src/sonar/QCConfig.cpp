#include "sonar/QCConfig.h"

#include <span>

#include "app/IniFile.h"
#include "core/ByteOrder.h"
#include "sonar/SonarConfig.h"

namespace halvo {

std::array<std::uint8_t, QCConfig::kPayloadBytes> QCConfig::Payload() const {
    std::array<std::uint8_t, kPayloadBytes> out{};
    const std::span<std::uint8_t> s(out);
    PutLE<std::uint16_t>(s, 0, source);
    PutLE<std::uint16_t>(s, 2, subsampleMethod);
    PutLE<std::uint16_t>(s, 4, longTrackSubsampling);
    PutLE<std::uint16_t>(s, 6, crossTrackSubsampling);
    PutLE<std::uint16_t>(s, 8, blendingMask);
    return out;
}

QCConfig QCConfig::Load(IniFile& ini, int d) {
    const QCConfig def;
    QCConfig q;
    ini.Open(SonarSection(d));
    // Read only to be dropped: QC always starts disabled.
    (void)ini.ReadInt("QCSource", def.source);
    q.source = SourceDisabled;
    // Words on the wire are 16 bits; a larger value in the file keeps its low bits.
    q.subsampleMethod = static_cast<std::uint16_t>(ini.ReadInt("QCSubsampleMethod", 0));
    q.longTrackSubsampling = static_cast<std::uint16_t>(ini.ReadInt("QCLongTrackSubSampling", 1));
    q.crossTrackSubsampling = static_cast<std::uint16_t>(ini.ReadInt("QCCrossTrackSubSampling", 1));
    q.blendingMask = static_cast<std::uint16_t>(ini.ReadInt("QCBlendingMask", 0));
    return q;
}

void QCConfig::Save(IniFile& ini, int d) const {
    ini.Open(SonarSection(d));
    ini.WriteInt("QCSource", source);
    ini.WriteInt("QCSubsampleMethod", subsampleMethod);
    ini.WriteInt("QCLongTrackSubSampling", longTrackSubsampling);
    ini.WriteInt("QCCrossTrackSubSampling", crossTrackSubsampling);
    ini.WriteInt("QCBlendingMask", blendingMask);
}

}  // namespace halvo

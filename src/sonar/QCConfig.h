#pragma once
// Quality-control copy settings of one subsystem: the payload of message 87 and the change
// count behind it. Kept apart from SonarConfig and read from the same SBSonar<d> section.

#include <array>
#include <cstdint>

namespace halvo {

class IniFile;

struct QCConfig {
    static constexpr std::size_t kPayloadBytes = 10;

    enum Source : std::uint16_t { SourceDisabled = 0, SourceNetwork = 1, SourceDisk = 2 };
    enum Subsample : std::uint16_t { SubsampleMax = 0, SubsampleAverage = 1, SubsampleNone = 2 };

    std::uint16_t source = SourceDisabled;    // QCSource: read and thrown away
    std::uint16_t subsampleMethod = 0;        // QCSubsampleMethod
    std::uint16_t longTrackSubsampling = 1;   // QCLongTrackSubSampling, 1 to 1000
    std::uint16_t crossTrackSubsampling = 1;  // QCCrossTrackSubSampling, 1 to 1000
    std::uint16_t blendingMask = 0;           // QCBlendingMask
    std::int32_t changeCount = 0;

    // The five words as message 87 carries them.
    std::array<std::uint8_t, kPayloadBytes> Payload() const;

    // Reads the QC keys of section SBSonar<d>. The source always comes up disabled, so no run
    // starts copying quality-control data by itself.
    static QCConfig Load(IniFile& ini, int d);
    void Save(IniFile& ini, int d) const;

    // The values alone; the change count is not a setting.
    bool SameValues(const QCConfig& o) const {
        return source == o.source && subsampleMethod == o.subsampleMethod &&
               longTrackSubsampling == o.longTrackSubsampling &&
               crossTrackSubsampling == o.crossTrackSubsampling && blendingMask == o.blendingMask;
    }
};

}  // namespace halvo

#pragma once
// Settings of one display's processing, section `DisplayProcessing%d`. A plain record: the chain
// and the views work on whole copies taken through DisplayProcessingSet.

#include <cstdint>
#include <string>

namespace halvo {

class IniFile;

struct DisplayProcessingConfig {
    static constexpr std::size_t kPalChars = 59;

    std::int32_t TVG = 0;        // dB per 100 m of sediment
    std::int32_t TVGLimit = 10;  // most dB TVG may add; the loader's default is 60
    std::int32_t Gain = 40;      // dB; the loader's default is 0
    std::int32_t SSGain = 0;     // dB added on side 1
    float RefGain0 = 0.0f;       // dB below 16-bit full scale
    std::int32_t autoGainRequest = 0;
    std::int32_t autoGainAcknowledge = 0;
    std::int32_t Channel = -1;  // the loader's default is the display index
    std::int32_t bytePath = 0;  // nothing sets it: the raw copy is taken before the gain
    float TVGStart = 0.0f;      // user units; the sign names the tracked side
    float TrackRange = 0.0f;
    float TrackThreshold = 0.0f;  // percent of full scale
    std::int32_t TrackEnabled = 1;
    std::int32_t Holdoff = 0;  // user units
    double Zoom = 1.0;
    std::int32_t TraceZoomFactor = 1;
    std::int32_t ZoomAverage = 2;
    std::int32_t HeaveTimeConst = 0;  // traces
    std::int32_t HeaveSource = 0;     // 0 none, 1 smoothed bottom, 2 header
    float sampleRate = 25000.0f;      // Hz, follows the traces
    std::int32_t MedianFilter = 0;
    float DirectPath0 = 0.0f;
    float DirectPathn = 0.0f;
    std::int32_t DirectPathTraces = 0;
    std::int32_t DirectPathFreeze = 0;
    std::int32_t DirectPathEnable = 0;
    std::int32_t DCFilter = 0;
    std::int32_t ClampAtZero = 0;
    std::int32_t DualChannel = 0;
    std::string Pal;  // up to kPalChars
    std::int32_t PalInvert = 0;
    std::int32_t EventMarkWidth = 20;
    std::int32_t MaxDepth = 0;
    float ReflectionCoefDBGain = 0.0f;
    float RCTimeConst = 0.0f;
    std::int32_t MPXOptions = 0;
    std::int32_t generalStamp = -1;  // `General` change count at the last bump
    std::int32_t revision = 0;

    // Reads every key of the open section with the loader's defaults; `MPXOptions` is read and
    // then reset to 0.
    void Load(IniFile& ini, int displayIndex);
    // Writes every key but `TrackEnabled`.
    void Save(IniFile& ini) const;

    friend bool operator==(const DisplayProcessingConfig&,
                           const DisplayProcessingConfig&) = default;
};

}  // namespace halvo

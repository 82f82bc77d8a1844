#pragma once
// The stages of the display line, each a plain function over the line it is given, so that each
// can be tested on a hand-made line. HalvoDisplayChannelProcessor strings them together.
//
// Every conversion of a float to an integer truncates toward zero; values that would not fit
// (including NaN from corrupt float samples) are defined here rather than left to the hardware.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace halvo {

// The samples of one trace: the bytes behind the header and how to read them.
struct TraceSamples {
    std::span<const std::uint8_t> bytes;
    int format = 0;  // `Data Format`
    int bytesPerValue = 2;
    int valuesPerSample = 1;
    bool isFloat = false;

    static TraceSamples Of(std::span<const std::uint8_t> bytes, int format);
    bool IsComplex() const { return valuesPerSample == 2; }
    // Whole samples present in the bytes.
    std::size_t Available() const;
    // Value j as stored (16-bit signed or float); 0 beyond the bytes.
    float Value(std::size_t j) const;
    // Magnitude of complex sample i, or the signed value of real sample i.
    float Sample(std::size_t i) const;
};

// Samples of a trace of n bytes: n / bytes per value / values per sample, held to 1 .. 500000.
int LineSampleCount(const TraceSamples& s, std::size_t n);
constexpr int kMaxLineSamples = 500000;

// Largest magnitude (formats 1 and 9) or absolute value (every other format) over the trace.
// Format 7 is walked as plain floats, so its parts count separately.
double AutoGainPeak(const TraceSamples& s);

struct ScaleParams {
    int weighting = 0;          // `Weighting Factor`
    float gainDb = 0.0f;        // `Gain`, plus `SSGain` on side 1
    float refGain0 = 0.0f;      // dB below 16-bit full scale
    bool rawAfterGain = false;  // the byte-path switch
};
// Stage 1 and 2: fills line (float, 255 full scale, times the gain) and raw (bytes of the value
// before the gain, clamped). Both must hold `count` entries; samples beyond the bytes count as
// 0. Returns the display gain, 255 * G / ref.
float ScaleAndGain(const TraceSamples& s, const ScaleParams& p, std::span<float> line,
                   std::span<std::uint8_t> raw);

// Stage 3: subtracts a running mean of each sample of the window [a, a + avg.size()) over traces.
void SubtractDirectPath(std::span<float> line, std::span<float> avg, int a, int traces,
                        bool freeze);

// Stage 4: high pass by an odd moving mean of `DCFilter` samples (at most 255).
void ApplyDCFilter(std::span<float> line, int dcFilter);
// Stage 5: running median of `MedianFilter` samples (at most 127), odd. With scratch, short
// windows take a faster road to the same result; scratch is only working room.
void ApplyMedianFilter(std::span<float> line, int medianFilter,
                       std::vector<float>* scratch = nullptr);

struct TvgParams {
    float r = 1.0f;      // amplitude ratio of one sample
    float step = 0.0f;   // dB of one sample
    float limit = 0.0f;  // `TVGLimit`
    float start = 0.0f;  // sample after which the gain grows
    bool clampAtZero = false;
};
// The ratio and step of `TVG` dB per 100 m at the sediment speed and sample rate.
TvgParams TvgRatio(int tvg, int sedimentSoundSpeed, float rate);
// Stage 7: line times the growing gain into width bytes; bytes past the line are zero.
void ApplyTvg(std::span<const float> line, std::span<std::uint8_t> dst, const TvgParams& p);

// Stage 8: shifts a byte line by d (negative toward larger indices), zeroing what is vacated.
// Nothing happens for d of 0 or of the line's width or more.
void ShiftLine(std::span<std::uint8_t> line, int d);

// The bottom echo's peak in sample units, searched from sample p of a trace of n samples.
float ReflectionPeak(const TraceSamples& s, int p, int n, float rate);

// Byte of a clamped value: NaN and values below 0 give 0, above 255 give 255.
inline std::uint8_t ClampByte(float v) {
    if (!(v >= 0.0f)) return 0;
    if (v > 255.0f) return 255;
    return static_cast<std::uint8_t>(static_cast<int>(v));
}

}  // namespace halvo

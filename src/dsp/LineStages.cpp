#include "dsp/LineStages.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/ByteOrder.h"
#include "core/TraceHeader.h"
#include "display/DisplayUnits.h"

namespace halvo {

namespace {

// A double held to float range, so that a wild setting or exponent gives infinity-free floats.
float SatFloat(double v) {
    constexpr double kMax = 3.4e38;
    if (v > kMax) return static_cast<float>(kMax);
    if (v < -kMax) return static_cast<float>(-kMax);
    return static_cast<float>(v);
}

// Low 8 bits of trunc(v) for v of 0 or above. Values at or beyond 2^31 (and NaN) give 0, as the
// truncating conversion of the processor does: such a value has no low bits left.
inline std::uint8_t Low8(float v) {
    return v >= 0.0f && v < 2147483648.0f ? static_cast<std::uint8_t>(static_cast<std::int32_t>(v))
                                          : std::uint8_t{0};
}

// The TVG byte of one value: 255 above, absolute value or 0 below zero, then truncated.
inline std::uint8_t TvgByte(float v, bool clampAtZero) {
    if (v > 255.0f) {
        v = 255.0f;
    } else if (v < 0.0f) {
        v = clampAtZero ? 0.0f : -v;
    }
    return Low8(v);
}

}  // namespace

TraceSamples TraceSamples::Of(std::span<const std::uint8_t> bytes, int format) {
    const DataFormatInfo info = DataFormatOf(format);
    TraceSamples s;
    s.bytes = bytes;
    s.format = format;
    s.bytesPerValue = info.bytesPerValue;
    s.valuesPerSample = info.valuesPerSample;
    s.isFloat = info.isFloat;
    return s;
}

std::size_t TraceSamples::Available() const {
    return bytes.size() / static_cast<std::size_t>(bytesPerValue * valuesPerSample);
}

float TraceSamples::Value(std::size_t j) const {
    const std::size_t bpv = static_cast<std::size_t>(bytesPerValue);
    if (j >= bytes.size() / bpv) return 0.0f;
    const std::uint8_t* p = bytes.data() + j * bpv;
    return isFloat ? LoadLE<float>(p) : static_cast<float>(LoadLE<std::int16_t>(p));
}

float TraceSamples::Sample(std::size_t i) const {
    if (!IsComplex()) return Value(i);
    const float re = Value(2 * i);
    const float im = Value(2 * i + 1);
    return std::sqrt(re * re + im * im);
}

int LineSampleCount(const TraceSamples& s, std::size_t n) {
    const std::size_t count =
        n / static_cast<std::size_t>(s.bytesPerValue) / static_cast<std::size_t>(s.valuesPerSample);
    if (count < 1) return 1;
    if (count >= static_cast<std::size_t>(kMaxLineSamples)) return kMaxLineSamples;
    return static_cast<int>(count);
}

double AutoGainPeak(const TraceSamples& s) {
    double peak = 0.0;
    if (s.format == 1 || s.format == 9) {
        const std::size_t pairs = s.bytes.size() / 4;
        for (std::size_t i = 0; i < pairs; ++i) {
            const double re = s.Value(2 * i);
            const double im = s.Value(2 * i + 1);
            peak = std::max(peak, std::sqrt(re * re + im * im));
        }
        return peak;
    }
    const std::size_t values = s.bytes.size() / static_cast<std::size_t>(s.bytesPerValue);
    for (std::size_t j = 0; j < values; ++j) {
        const double v = std::fabs(static_cast<double>(s.Value(j)));
        if (v > peak) peak = v;
    }
    return peak;
}

float ScaleAndGain(const TraceSamples& s, const ScaleParams& p, std::span<float> line,
                   std::span<std::uint8_t> raw) {
    const float ref = SatFloat(32767.0 * std::pow(10.0, -static_cast<double>(p.refGain0) / 20.0));
    const float G = SatFloat(std::pow(10.0, static_cast<double>(p.gainDb) / 20.0));
    const float S = SatFloat(std::pow(2.0, -p.weighting) / ref * 255.0);
    const std::size_t count = std::min(line.size(), raw.size());
    const std::size_t have = std::min(count, s.Available());
    const std::uint8_t* b = s.bytes.data();
    float* out = line.data();
    std::uint8_t* r = raw.data();
    const bool after = p.rawAfterGain;
    // One loop per layout, so each stays simple enough for the compiler to vectorise.
    if (s.IsComplex() && !s.isFloat) {
        for (std::size_t i = 0; i < have; ++i) {
            const float re = LoadLE<std::int16_t>(b + 4 * i);
            const float im = LoadLE<std::int16_t>(b + 4 * i + 2);
            const float v = std::sqrt(re * re + im * im) * S;
            out[i] = v * G;
            r[i] = ClampByte(after ? v * G : v);
        }
    } else if (s.IsComplex()) {
        for (std::size_t i = 0; i < have; ++i) {
            const float re = LoadLE<float>(b + 8 * i);
            const float im = LoadLE<float>(b + 8 * i + 4);
            const float v = std::sqrt(re * re + im * im) * S;
            out[i] = v * G;
            r[i] = ClampByte(after ? v * G : v);
        }
    } else if (s.isFloat) {
        for (std::size_t i = 0; i < have; ++i) {
            const float v = LoadLE<float>(b + 4 * i) * S;
            out[i] = v * G;
            r[i] = ClampByte(after ? v * G : v);
        }
    } else {
        for (std::size_t i = 0; i < have; ++i) {
            const float v = static_cast<float>(LoadLE<std::int16_t>(b + 2 * i)) * S;
            out[i] = v * G;
            r[i] = ClampByte(after ? v * G : v);
        }
    }
    // A trace shorter than its sample count reads as silence behind its last sample.
    std::fill(out + have, out + count, 0.0f);
    std::fill(r + have, r + count, std::uint8_t{0});
    return SatFloat(255.0 * G / ref);
}

void SubtractDirectPath(std::span<float> line, std::span<float> avg, int a, int traces,
                        bool freeze) {
    if (avg.empty() || traces <= 0 || a < 0) return;
    const float alpha = static_cast<float>(2.0 / (static_cast<double>(traces) + 1.0));
    const float keep = 1.0f - alpha;
    const std::size_t start = static_cast<std::size_t>(a);
    if (start >= line.size()) return;
    const std::size_t n = std::min(avg.size(), line.size() - start);
    float* x = line.data() + start;
    float* m = avg.data();
    if (freeze) {
        for (std::size_t j = 0; j < n; ++j) x[j] -= m[j];
        return;
    }
    for (std::size_t j = 0; j < n; ++j) {
        m[j] = keep * m[j] + alpha * x[j];
        x[j] -= m[j];
    }
}

void ApplyDCFilter(std::span<float> line, int dcFilter) {
    const int N = static_cast<int>(line.size());
    int k = std::min(dcFilter, 255);
    k = std::min(k, N - 3);
    if (k <= 1) return;
    if (k % 2 == 0) ++k;
    float* x = line.data();
    float ring[256];
    float sum = 0.0f;
    for (int j = 0; j < k; ++j) {
        ring[j] = x[j];
        sum += x[j];
    }
    const int half = k / 2;
    const float inv = 1.0f / static_cast<float>(k);
    int oldest = 0;
    for (int i = half; i <= N - half - 2; ++i) {
        x[i] = x[i] - sum * inv;
        sum -= ring[oldest];
        const float next = x[i + half + 1];
        sum += next;
        ring[oldest] = next;
        oldest = oldest + 1 == k ? 0 : oldest + 1;
    }
    for (int i = N - half - 1; i <= N - 1; ++i) x[i] = x[i - 1];
    for (int i = 0; i < half; ++i) x[i] = x[half];
}

namespace {

// Descending sorted window of at most 127 values; among equal values the newest sits last.
struct SortedWindow {
    float v[128];
    int n = 0;

    // First position whose value is below x (after every value >= x).
    int InsertPoint(float x) const {
        int lo = 0, hi = n;
        while (lo < hi) {
            const int mid = (lo + hi) / 2;
            if (v[mid] < x) {
                hi = mid;
            } else {
                lo = mid + 1;
            }
        }
        return lo;
    }
    void Insert(float x) {
        const int at = InsertPoint(x);
        std::memmove(v + at + 1, v + at, sizeof(float) * static_cast<std::size_t>(n - at));
        v[at] = x;
        ++n;
    }
    // Removes the first entry equal to x. A value that equals nothing (NaN from a corrupt trace)
    // removes the entry with the same bits, else the last one, so the window keeps its length.
    void Remove(float x) {
        int lo = 0, hi = n;
        while (lo < hi) {
            const int mid = (lo + hi) / 2;
            if (v[mid] > x) {
                lo = mid + 1;
            } else {
                hi = mid;
            }
        }
        int at = lo;
        if (at >= n || !(v[at] == x)) {
            at = n - 1;
            for (int j = 0; j < n; ++j) {
                if (std::memcmp(&v[j], &x, sizeof(float)) == 0) {
                    at = j;
                    break;
                }
            }
        }
        std::memmove(v + at, v + at + 1, sizeof(float) * static_cast<std::size_t>(n - at - 1));
        --n;
    }
};

}  // namespace

void ApplyMedianFilter(std::span<float> line, int medianFilter) {
    const int N = static_cast<int>(line.size());
    int m = std::min(medianFilter, 127);
    if (m > N - 3 || m <= 1) return;
    if (m % 2 == 0) ++m;
    float* x = line.data();
    SortedWindow w;
    float ring[256];
    for (int j = 0; j < m; ++j) {
        ring[j] = x[j];
        w.Insert(x[j]);
    }
    const int half = m / 2;
    int oldest = 0;
    for (int i = half; i <= N - half - 2; ++i) {
        x[i] = w.v[half];
        w.Remove(ring[oldest]);
        const float next = x[i + half + 1];
        w.Insert(next);
        ring[oldest] = next;
        oldest = oldest + 1 == m ? 0 : oldest + 1;
    }
    for (int i = N - half - 1; i <= N - 1; ++i) x[i] = x[i - 1];
    for (int i = 0; i < half; ++i) x[i] = x[half];
}

TvgParams TvgRatio(int tvg, int sedimentSoundSpeed, float rate) {
    TvgParams p;
    const double exponent = static_cast<double>(tvg) * sedimentSoundSpeed /
                            (static_cast<double>(rate) * 20.0 * 100.0 * 2.0);
    p.r = SatFloat(std::pow(10.0, exponent));
    p.step = SatFloat(std::fabs(20.0 * std::log10(static_cast<double>(p.r))));
    return p;
}

void ApplyTvg(std::span<const float> line, std::span<std::uint8_t> dst, const TvgParams& p) {
    const std::size_t count = std::min(line.size(), dst.size());
    const float* x = line.data();
    std::uint8_t* d = dst.data();
    const bool clamp = p.clampAtZero;
    // The gain is 1 up to the start, grows while the limit lasts, then stays: three loops, of
    // which only the middle one carries the gain from sample to sample.
    std::size_t first = 0;
    if (!(p.start == p.start)) {
        first = count;
    } else if (p.start >= 0.0f) {
        const double f = std::floor(static_cast<double>(p.start)) + 1.0;
        first = f >= static_cast<double>(count) ? count : static_cast<std::size_t>(f);
    }
    std::size_t i = 0;
    for (; i < first; ++i) d[i] = TvgByte(x[i], clamp);
    float g = 1.0f;
    float remaining = p.limit;
    for (; i < count; ++i) {
        d[i] = TvgByte(x[i] * g, clamp);
        if (!(remaining >= 0.0f)) {
            ++i;
            break;
        }
        g = g * p.r;
        remaining -= p.step;
    }
    for (; i < count; ++i) d[i] = TvgByte(x[i] * g, clamp);
    std::fill(d + count, d + dst.size(), std::uint8_t{0});
}

void ShiftLine(std::span<std::uint8_t> line, int d) {
    const std::int64_t w = static_cast<std::int64_t>(line.size());
    const std::int64_t dd = d;
    const std::int64_t ad = dd < 0 ? -dd : dd;
    if (dd == 0 || ad >= w) return;
    const std::size_t shift = static_cast<std::size_t>(ad);
    const std::size_t keep = static_cast<std::size_t>(w - ad);
    std::uint8_t* p = line.data();
    if (dd < 0) {
        std::memmove(p + shift, p, keep);
        std::memset(p, 0, shift);
    } else {
        std::memmove(p, p + shift, keep);
        std::memset(p + keep, 0, shift);
    }
}

float ReflectionPeak(const TraceSamples& s, int p, int n, float rate) {
    float peak = 0.0f;
    if (p < 0 || p >= n) return peak;
    if (s.IsComplex()) {
        const std::int64_t end =
            std::min<std::int64_t>(static_cast<std::int64_t>(p) + TruncCount(0.01 * rate), n);
        for (std::int64_t i = p; i < end; ++i) {
            const float m = s.Sample(static_cast<std::size_t>(i));
            peak = std::max(peak, m);
            if (m < 0.1 * peak) break;
        }
        return peak;
    }
    for (int i = p; i < n; ++i) {
        const float m = std::fabs(s.Sample(static_cast<std::size_t>(i)));
        if (m < peak) break;
        peak = m;
    }
    return peak;
}

}  // namespace halvo

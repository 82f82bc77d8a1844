#include "dsp/LineStages.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>

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

// The scale loop of one sample layout. Restrict pointers and a clamp without branches let the
// compiler vectorise it; the clamp gives exactly what ClampByte gives, NaN included.
template <class Read>
void ScaleLoop(const std::uint8_t* __restrict x, float* __restrict out,
               std::uint8_t* __restrict raw, std::size_t n, float S, float G, bool rawAfterGain,
               Read read) {
    const float rawGain = rawAfterGain ? G : 1.0f;
    for (std::size_t i = 0; i < n; ++i) {
        const float v = read(x, i) * S;
        out[i] = v * G;
        float c = v * rawGain;
        c = c > 0.0f ? c : 0.0f;
        c = c < 255.0f ? c : 255.0f;
        raw[i] = static_cast<std::uint8_t>(static_cast<int>(c));
    }
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
    if (s.IsComplex() && !s.isFloat) {
        ScaleLoop(b, out, r, have, S, G, p.rawAfterGain, [](const std::uint8_t* x, std::size_t i) {
            const float re = LoadLE<std::int16_t>(x + 4 * i);
            const float im = LoadLE<std::int16_t>(x + 4 * i + 2);
            return std::sqrt(re * re + im * im);
        });
    } else if (s.IsComplex()) {
        ScaleLoop(b, out, r, have, S, G, p.rawAfterGain, [](const std::uint8_t* x, std::size_t i) {
            const float re = LoadLE<float>(x + 8 * i);
            const float im = LoadLE<float>(x + 8 * i + 4);
            return std::sqrt(re * re + im * im);
        });
    } else if (s.isFloat) {
        ScaleLoop(b, out, r, have, S, G, p.rawAfterGain,
                  [](const std::uint8_t* x, std::size_t i) { return LoadLE<float>(x + 4 * i); });
    } else {
        ScaleLoop(b, out, r, have, S, G, p.rawAfterGain, [](const std::uint8_t* x, std::size_t i) {
            return static_cast<float>(LoadLE<std::int16_t>(x + 2 * i));
        });
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

// Descending sorted window of at most 127 values, padded to P; among equal values the newest
// sits last. Positions are found by counting comparisons over the whole padded length, and a
// replacement rewrites the window in one pass of selects into a second buffer: both vectorise
// and neither mispredicts, which is what decides the speed of this stage. The padding and one
// guard slot on either side hold -infinity, which no count of "above" includes.
template <int P>
class SortedWindow {
  public:
    SortedWindow() {
        constexpr float kLow = -std::numeric_limits<float>::infinity();
        std::fill(std::begin(a_), std::end(a_), kLow);
        std::fill(std::begin(b_), std::end(b_), kLow);
    }
    float At(int i) const { return cur_[1 + i]; }

    void Insert(float x) {
        float* v = cur_ + 1;
        const int q = std::min(Count(v, x, true), n_);
        for (int j = n_; j > q; --j) v[j] = v[j - 1];
        v[q] = x;
        ++n_;
    }

    // Removes the first entry equal to `out` and inserts `in` after every value >= it.
    [[gnu::always_inline]] void Replace(float out, float in) {
        const float* v = cur_ + 1;
        int r = 0;
        int q = 0;
        for (int j = 0; j < P; ++j) {
            r += v[j] > out ? 1 : 0;
            q += v[j] >= in ? 1 : 0;
        }
        if (r >= n_ || !(v[r] == out)) r = FindBits(v, out);
        q = std::min(q, n_);
        // Entries from lo to hi - 1 move by one toward the removed slot.
        const bool left = q > r;
        if (left) --q;
        Move(v, next_ + 1, left ? r : q + 1, left ? q : r + 1, left ? 1 : -1);
        next_[1 + q] = in;
        std::swap(cur_, next_);
    }

  private:
    // d[j] = v[j + step] for lo <= j < hi, else v[j], over the whole padded length.
    [[gnu::always_inline]] static void Move(const float* __restrict v, float* __restrict d, int lo,
                                            int hi, int step) {
        // Written as a bit blend: a select of two loads would stop the vectoriser.
        const unsigned width = static_cast<unsigned>(hi - lo);
        for (int j = 0; j < P; ++j) {
            const std::uint32_t stay = std::bit_cast<std::uint32_t>(v[j]);
            const std::uint32_t moved = std::bit_cast<std::uint32_t>(v[j + step]);
            const std::uint32_t mask =
                0u - static_cast<std::uint32_t>(static_cast<unsigned>(j - lo) < width);
            d[j] = std::bit_cast<float>((stay & ~mask) | (moved & mask));
        }
    }
    static int Count(const float* v, float x, bool orEqual) {
        int c = 0;
        if (orEqual) {
            for (int j = 0; j < P; ++j) c += v[j] >= x ? 1 : 0;
        } else {
            for (int j = 0; j < P; ++j) c += v[j] > x ? 1 : 0;
        }
        return c;
    }
    // A value that equals nothing (NaN from a corrupt trace) is found by its bits, else the last
    // entry goes, so the window keeps its length whatever the input.
    int FindBits(const float* v, float x) const {
        for (int j = 0; j < n_; ++j) {
            if (std::memcmp(&v[j], &x, sizeof(float)) == 0) return j;
        }
        return n_ - 1;
    }

    float a_[P + 2];
    float b_[P + 2];
    float* cur_ = a_;
    float* next_ = b_;
    int n_ = 0;
};

template <int P>
[[gnu::always_inline]] inline void MedianPass(float* x, int N, int m) {
    SortedWindow<P> w;
    float ring[256];
    for (int j = 0; j < m; ++j) {
        ring[j] = x[j];
        w.Insert(x[j]);
    }
    const int half = m / 2;
    int oldest = 0;
    for (int i = half; i <= N - half - 2; ++i) {
        x[i] = w.At(half);
        const float next = x[i + half + 1];
        w.Replace(ring[oldest], next);
        ring[oldest] = next;
        oldest = oldest + 1 == m ? 0 : oldest + 1;
    }
}

// Short windows (up to 15) take another road to the same medians: eight neighbouring outputs
// at a time, each lane sorting its own window of original samples through one fixed sorting
// network (Batcher's odd-even merge for 16). The sorted window above reads back what it wrote a
// moment before at a different offset, and the processor stalls on that; lanes do not. The
// median of a window does not depend on how it is found, so both roads give the same line.
struct Comparator {
    std::uint8_t a;
    std::uint8_t b;
};

constexpr int kNetInputs = 16;
constexpr int kNetSize = 63;

constexpr std::array<Comparator, kNetSize> BuildNetwork() {
    std::array<Comparator, kNetSize> net{};
    int c = 0;
    for (int p = 1; p < kNetInputs; p *= 2) {
        for (int k = p; k >= 1; k /= 2) {
            for (int j = k % p; j + k < kNetInputs; j += 2 * k) {
                for (int i = 0; i < k && i + j + k < kNetInputs; ++i) {
                    if ((i + j) / (2 * p) == (i + j + k) / (2 * p)) {
                        net[static_cast<std::size_t>(c++)] = {static_cast<std::uint8_t>(i + j),
                                                              static_cast<std::uint8_t>(i + j + k)};
                    }
                }
            }
        }
    }
    return net;
}
constexpr std::array<Comparator, kNetSize> kNetwork = BuildNetwork();

// Eight lanes as one value: GCC lowers it to two SSE registers, or one AVX2 register in the AVX2
// build of the same body.
using Lanes = float __attribute__((vector_size(32)));
constexpr int kLanes = 8;

// Medians of the windows [i + l - half, i + l + half] of `in` for the eight lanes l.
[[gnu::always_inline]] inline void MedianLanes(const float* in, float* out, int i, int m) {
    const int half = m / 2;
    Lanes w[kNetInputs];
    for (int t = 0; t < m; ++t) __builtin_memcpy(&w[t], in + i - half + t, sizeof(Lanes));
    const Lanes low = Lanes{} - std::numeric_limits<float>::infinity();
    for (int t = m; t < kNetInputs; ++t) w[t] = low;
        // Fully unrolled, the network's indices are constants and the lanes stay in registers.
#pragma GCC unroll 64
    for (const Comparator& c : kNetwork) {
        const Lanes a = w[c.a];
        const Lanes b = w[c.b];
        w[c.a] = a < b ? a : b;
        w[c.b] = a < b ? b : a;
    }
    // Ascending: the padding sorts to the front, so the median sits behind it.
    __builtin_memcpy(out + i, &w[kNetInputs - m + half], sizeof(Lanes));
}

// One output the plain way, for the few at the end that do not fill eight lanes.
inline float MedianOne(const float* in, int i, int m) {
    const int half = m / 2;
    float v[kNetInputs];
    int n = 0;
    for (int t = 0; t < m; ++t) {
        const float x = in[i - half + t];
        int j = n++;
        for (; j > 0 && x < v[j - 1]; --j) v[j] = v[j - 1];
        v[j] = x;
    }
    return v[half];
}

[[gnu::always_inline]] inline void MedianShort(const float* in, float* x, int N, int m) {
    const int half = m / 2;
    const int last = N - half - 2;
    int i = half;
    for (; i + kLanes - 1 <= last; i += kLanes) MedianLanes(in, x, i, m);
    for (; i <= last; ++i) x[i] = MedianOne(in, i, m);
}

// One body, compiled twice: with AVX2 the lanes and the window's counts take half the steps.
[[gnu::always_inline]] inline void MedianAny(const float* in, float* x, int N, int m) {
    if (m <= kNetInputs - 1 && in) {
        MedianShort(in, x, N, m);
    } else if (m <= 16) {
        MedianPass<16>(x, N, m);
    } else if (m <= 32) {
        MedianPass<32>(x, N, m);
    } else if (m <= 64) {
        MedianPass<64>(x, N, m);
    } else {
        MedianPass<128>(x, N, m);
    }
}

__attribute__((target("avx2"))) void MedianAvx2(const float* in, float* x, int N, int m) {
    MedianAny(in, x, N, m);
}
void MedianPlain(const float* in, float* x, int N, int m) {
    MedianAny(in, x, N, m);
}

}  // namespace

void ApplyMedianFilter(std::span<float> line, int medianFilter, std::vector<float>* scratch) {
    const int N = static_cast<int>(line.size());
    int m = std::min(medianFilter, 127);
    if (m > N - 3 || m <= 1) return;
    if (m % 2 == 0) ++m;
    float* x = line.data();
    // The lanes read original samples while the outputs overwrite the line: they need a copy.
    const float* in = nullptr;
    if (scratch && m < kNetInputs) {
        scratch->assign(line.begin(), line.end());
        in = scratch->data();
    }
    static const bool avx2 = __builtin_cpu_supports("avx2");
    if (avx2) {
        MedianAvx2(in, x, N, m);
    } else {
        MedianPlain(in, x, N, m);
    }
    const int half = m / 2;
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

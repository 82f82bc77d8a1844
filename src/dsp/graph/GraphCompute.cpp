#include "dsp/graph/GraphCompute.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <numbers>

#include "core/ByteOrder.h"
#include "dsp/DSPLibIF.h"
#include "dsp/graph/GraphTaker.h"

namespace halvo {

GraphTrace GraphTrace::From(const GraphSlot& slot) {
    GraphTrace t;
    t.values = slot.values;
    t.format = slot.format;
    t.interval = slot.interval;
    t.startDepth = slot.startDepth;
    t.adcGain = slot.adcGain;
    t.scale = slot.scale;
    t.ping = slot.ping;
    return t;
}

int GraphTrace::Samples() const {
    const int n = static_cast<int>(values.size());
    return Complex() ? n / 2 : n;
}

double GraphUnits::FromIndex(double index, std::uint32_t intervalNs) const {
    switch (userUnits) {
        case 0:
            return index * intervalNs / 1000000.0 * (waterSoundSpeed / 2) / 1000.0;
        case 1:
            return index * intervalNs / 1000000.0;
        default:
            return index;
    }
}

GraphCompute::GraphCompute() = default;
GraphCompute::~GraphCompute() = default;

// Made on first use and kept: its transform plans live as long as the page.
DSPLibIF& GraphCompute::Dsp() {
    if (!dsp_) dsp_ = CreateDSPLib();
    return *dsp_;
}

void GraphCompute::RemoveMean(GraphTrace& trace) {
    std::vector<float>& v = trace.values;
    if (v.empty()) return;
    if (trace.Complex()) {
        const std::size_t pairs = v.size() / 2;
        if (pairs == 0) return;
        double re = 0.0, im = 0.0;
        for (std::size_t i = 0; i < pairs; ++i) {
            re += v[2 * i];
            im += v[2 * i + 1];
        }
        re /= static_cast<double>(pairs);
        im /= static_cast<double>(pairs);
        for (std::size_t i = 0; i < pairs; ++i) {
            v[2 * i] = static_cast<float>(v[2 * i] - re);
            v[2 * i + 1] = static_cast<float>(v[2 * i + 1] - im);
        }
        return;
    }
    double sum = 0.0;
    for (float x : v) sum += x;
    const double mean = sum / static_cast<double>(v.size());
    for (float& x : v) x = static_cast<float>(x - mean);
}

GraphCurve GraphCompute::TimeCurve(const GraphTrace& trace, int type, int slot, double xFracFirst,
                                   double xFracLast, const GraphUnits& units) {
    GraphCurve curve;
    const int n = trace.Samples();
    if (n <= 0) return curve;
    curve.y.resize(static_cast<std::size_t>(n));
    const float k = trace.scale;
    if (!trace.Complex()) {
        for (int i = 0; i < n; ++i) curve.y[static_cast<std::size_t>(i)] = trace.values[i] * k;
    } else {
        float c = 1.0f, d = 0.0f;
        if (slot == 0 && (type == Phase0 || type == Phase90 || type == RelativeAngle)) {
            long long ref = static_cast<long long>((xFracFirst + xFracLast) * 0.5 * n);
            if (ref >= n) ref = n / 2;
            if (ref < 0) ref = 0;
            const float re = trace.values[static_cast<std::size_t>(2 * ref)];
            const float im = trace.values[static_cast<std::size_t>(2 * ref + 1)];
            const float m = std::hypot(re, im);
            c = m != 0.0f ? re / m : 0.0f;
            d = m != 0.0f ? im / m : 0.0f;
        }
        constexpr double kDeg = 180.0 / std::numbers::pi;
        for (int i = 0; i < n; ++i) {
            const float re = trace.values[static_cast<std::size_t>(2 * i)];
            const float im = trace.values[static_cast<std::size_t>(2 * i + 1)];
            float y = 0.0f;
            switch (type) {
                case Real:
                    y = re * k;
                    break;
                case Imag:
                    y = im * k;
                    break;
                case Angle:
                    y = static_cast<float>(std::atan2(im, re) * kDeg);
                    break;
                case Phase0:
                    y = (re * c + im * d) * k;
                    break;
                case Phase90:
                    y = (im * c - re * d) * k;
                    break;
                case RelativeAngle:
                    y = static_cast<float>(std::atan2(im * c - re * d, re * c + im * d) * kDeg);
                    break;
                default:
                    y = std::hypot(re, im) * k;
                    break;
            }
            curve.y[static_cast<std::size_t>(i)] = y;
        }
    }
    curve.xFirst = units.FromIndex(trace.startDepth, trace.interval);
    curve.xLast = units.FromIndex(static_cast<double>(trace.startDepth) + n - 1, trace.interval);
    return curve;
}

int GraphCompute::TransformLength(int span) {
    int log2 = kMinLog2;
    while (log2 < kMaxLog2 && (1 << log2) <= span) ++log2;
    return 1 << log2;
}

int GraphCompute::FillGate(const GraphTrace& trace, int gateFirst, int gateLast, bool norm,
                           float& scale, int& length) {
    if (trace.startDepth > 0) {
        gateFirst -= trace.startDepth;
        gateLast -= trace.startDepth;
    }
    const long long span = static_cast<long long>(gateLast) - gateFirst;
    length = TransformLength(static_cast<int>(std::clamp<long long>(span, 0, 1 << kMaxLog2)));
    const int count = static_cast<int>(std::clamp<long long>(span, 0, length));
    float gain = 1.0f;
    scale = 1.0f;
    if (count > 0) {
        const float s = norm ? 1.0f / static_cast<float>(count) : 1.0f;
        scale = 0.5f * std::sqrt(static_cast<float>(count) / s);
        gain = 2.0f * s;
    }
    gain *= trace.scale;
    work_.assign(static_cast<std::size_t>(length), {0.0f, 0.0f});
    const int n = trace.Samples();
    for (int j = 0; j < count; ++j) {
        const long long p = static_cast<long long>(gateFirst) + j;
        // Index 0 never enters, as the page has always done.
        if (p <= 0 || p >= n) continue;
        const std::size_t at = static_cast<std::size_t>(p);
        work_[static_cast<std::size_t>(j)] =
            trace.Complex()
                ? std::complex<float>(trace.values[2 * at] * gain, trace.values[2 * at + 1] * gain)
                : std::complex<float>(trace.values[at] * gain, 0.0f);
    }
    return count;
}

GraphCompute::Spectrum GraphCompute::SpectrumOf(const GraphTrace& trace, int gateFirst,
                                                int gateLast, bool norm, int window) {
    Spectrum out;
    int length = 0;
    const int count = FillGate(trace, gateFirst, gateLast, norm, out.spectralScale, length);
    out.length = length;
    // The window runs over the m values written, i counting values (0, 2, 4 ...) of each pair.
    const int m = 2 * count;
    if (window >= Hann && window <= Blackman && m > 2) {
        const double twoPi = 2.0 * std::numbers::pi;
        for (int j = 0; j < count; ++j) {
            const double x = static_cast<double>(2 * j) / (m - 2);
            double w = 1.0;
            if (window == Hann) w = 0.5 * (1.0 - std::cos(twoPi * x));
            if (window == Hamming) w = 0.54 - 0.46 * std::cos(twoPi * x);
            if (window == Blackman)
                w = 0.42 - 0.5 * std::cos(twoPi * x) + 0.08 * std::cos(2.0 * twoPi * x);
            work_[static_cast<std::size_t>(j)] *= static_cast<float>(w);
        }
    }
    DSPLibIF& dsp = Dsp();
    dsp.FftForwardComplex32(work_.data(), work_.data(), length);
    out.curve.y.resize(static_cast<std::size_t>(length));
    dsp.ComplexMagnitude(work_.data(), out.curve.y.data(), length);
    out.curve.xFirst = 0.0;
    out.curve.xLast = trace.interval != 0 ? 1e9 / trace.interval : 0.0;
    return out;
}

std::optional<GraphCurve> GraphCompute::CrossCorrelation(const GraphTrace& a, const GraphTrace& b,
                                                         int gateFirst, int gateLast, bool norm,
                                                         const GraphUnits& units) {
    if (a.values.size() != b.values.size() || a.values.empty()) return std::nullopt;
    float scale = 1.0f;
    int length = 0;
    FillGate(a, gateFirst, gateLast, norm, scale, length);
    DSPLibIF& dsp = Dsp();
    dsp.FftForwardComplex32(work_.data(), work_.data(), length);
    work2_ = work_;
    FillGate(b, gateFirst, gateLast, norm, scale, length);
    dsp.FftForwardComplex32(work_.data(), work_.data(), length);
    // The second spectrum times the conjugate of the first: the peak sits at the lag by which
    // the second channel trails the first.
    dsp.ComplexConjugateMultiply32(work_.data(), work2_.data(), work_.data(), length);
    dsp.FftBackwardComplex32(work_.data(), work_.data(), length);
    GraphCurve curve;
    curve.y.resize(static_cast<std::size_t>(length));
    dsp.ComplexMagnitude(work_.data(), curve.y.data(), length);
    curve.xFirst = units.FromIndex(0, a.interval);
    curve.xLast = units.FromIndex(length - 1, a.interval);
    return curve;
}

GraphCompute::Saved GraphCompute::Save(const GraphTrace& trace, const std::string& name,
                                       bool gatedOnly, double a, double b) {
    Saved out;
    out.saveFile = name;
    if (name.empty() || trace.values.empty()) return out;
    bool numbered = false;
    std::string base = name;
    if (name.find('.') != std::string::npos) {
        out.file = name;
    } else {
        while (!base.empty() && base.back() >= '0' && base.back() <= '9') base.pop_back();
        for (int k = 0; k <= 999 && !numbered; ++k) {
            char file[160];
            std::snprintf(file, sizeof file, "%s%03d.dat", base.c_str(), k);
            std::error_code ec;
            if (std::filesystem::exists(file, ec) || ec) continue;
            out.file = file;
            std::snprintf(file, sizeof file, "%s%03d", base.c_str(), k);
            out.saveFile = file;
            numbered = true;
        }
        if (!numbered) return out;
    }
    std::ofstream f(out.file, std::ios::binary | std::ios::trunc);
    if (!f) {
        out.saveFile = name;
        return out;
    }
    std::uint8_t head[12];
    StoreLE<std::int32_t>(head, static_cast<std::int32_t>(trace.interval));
    StoreLE<std::int32_t>(head + 4, trace.format);
    StoreLE<std::int32_t>(head + 8, trace.adcGain);
    f.write(reinterpret_cast<const char*>(head), sizeof head);
    const long long bytes = static_cast<long long>(trace.values.size()) * 4;
    long long from = 0, to = bytes;
    if (gatedOnly) {
        const long long step = trace.Complex() ? 8 : 4;
        from = static_cast<long long>(a * bytes + 0.5);
        to = static_cast<long long>(b * bytes + 0.5);
        from = std::clamp(from - from % step, 0LL, bytes);
        to = std::clamp(to - to % step, 0LL, bytes);
        if (to < from) to = from;
    }
    std::vector<std::uint8_t> body(static_cast<std::size_t>(to - from));
    for (long long at = from; at < to; at += 4) {
        StoreLE<float>(body.data() + (at - from), trace.values[static_cast<std::size_t>(at / 4)]);
    }
    f.write(reinterpret_cast<const char*>(body.data()), static_cast<std::streamsize>(body.size()));
    f.close();
    out.written = static_cast<bool>(f);
    if (!out.written) out.saveFile = name;
    return out;
}

}  // namespace halvo

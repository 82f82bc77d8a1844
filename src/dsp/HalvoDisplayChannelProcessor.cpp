#include "dsp/HalvoDisplayChannelProcessor.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "app/GeneralValues.h"
#include "core/TraceHeader.h"
#include "display/DisplayProcessingSet.h"
#include "display/DisplayUnits.h"
#include "dsp/DisplayLineOutput.h"

namespace halvo {

namespace {

float SatFloat(double v) {
    constexpr double kMax = 3.4e38;
    return static_cast<float>(v > kMax ? kMax : (v < -kMax ? -kMax : v));
}

}  // namespace

HalvoDisplayChannelProcessor::HalvoDisplayChannelProcessor(int displayIndex,
                                                           DisplayProcessingSet& set,
                                                           DisplayLineOutput& output,
                                                           std::atomic<float>* reflectionOut)
    : index_(displayIndex), set_(set), output_(output), reflectionOut_(reflectionOut) {}

const DisplayProcessingConfig& HalvoDisplayChannelProcessor::Refresh() {
    set_.Snapshot(index_, snap_);
    return snap_;
}

int HalvoDisplayChannelProcessor::Samples(double userValue) const {
    return ToSamples(userValue, snap_.sampleRate, *general_);
}

void HalvoDisplayChannelProcessor::ProcessLine(int side, std::span<std::uint8_t> header,
                                               std::span<const std::uint8_t> samples,
                                               const GeneralValues& general) {
    if (header.size() < kTraceHeaderSize) return;
    general_ = &general;
    const int s = side == 0 ? 0 : 1;
    const int sideBit = 1 << s;

    // 1. A side that comes again means its partner never arrived: start over.
    side_ = s;
    if (element_ && (sideMask_ & sideBit) != 0) {
        element_.reset();
        sideMask_ = 0;
    }

    // 2. Ping selection of a multi-pulse sequence.
    Refresh();
    TraceHeaderView h(header);
    if ((snap_.MPXOptions & 0x70) != 0) {
        const std::uint32_t m = static_cast<std::uint32_t>(snap_.MPXOptions >> 4) & 7u;
        const std::uint32_t r = static_cast<std::uint32_t>(h.GetInt(TraceField::PingNumber)) % m;
        if (((1u << r) & static_cast<std::uint32_t>(snap_.MPXOptions) & 15u) == 0) return;
    }

    // 3. The sample rate follows the traces of side 0.
    if (s == 0) {
        std::int32_t interval = h.GetInt(TraceField::SampleIntervalNS);
        if (interval == 0) {
            interval = 1000;
            h.SetInt(TraceField::SampleIntervalNS, interval);
        }
        const float rate = static_cast<float>(1000000000 / interval);
        if (rate != snap_.sampleRate) {
            {
                auto rec = set_.Lock(index_);
                rec->sampleRate = rate;
                rec.Bump();
            }
            Refresh();
        }
    }

    // 4. and 5. Auto gain, then scale and gain.
    const int format = h.GetInt(TraceField::DataFormat);
    const int weighting = h.GetInt(TraceField::WeightingFactor);
    const TraceSamples x = TraceSamples::Of(samples, format);
    AutoGain(s, x, weighting);
    const std::size_t count = static_cast<std::size_t>(LineSampleCount(x, samples.size()));
    if (line_.size() != count) {
        line_.resize(count);
        raw_.resize(count);
    }
    ScaleParams sp;
    sp.weighting = weighting;
    sp.gainDb = static_cast<float>(snap_.Gain) + (s == 1 ? static_cast<float>(snap_.SSGain) : 0.f);
    sp.refGain0 = snap_.RefGain0;
    sp.rawAfterGain = snap_.bytePath != 0;
    const float displayGain = ScaleAndGain(x, sp, line_, raw_);
    if (line_.size() < 2) return;

    // 6. and 7. Direct path, DC and median filters.
    DirectPath();
    ApplyDCFilter(line_, snap_.DCFilter);
    ApplyMedianFilter(line_, snap_.MedianFilter, &medianScratch_);

    // 8. The element this side goes into.
    const int n = static_cast<int>(line_.size());
    const bool dual = snap_.DualChannel == 1;
    int width = n;
    int offset = dual && s == 1 ? n : 0;
    int size = dual ? 2 * n : n;
    if (element_ && element_->size != size) {
        if (dual) {
            size = element_->size;
            offset = s == 1 ? size / 2 : 0;
            if (n > size / 2) width = size / 2;
        } else {
            element_.reset();
            sideMask_ = 0;
        }
    }
    if (!element_) {
        try {
            element_ = std::make_unique<SonarDataCacheElement>(size);
        } catch (const std::bad_alloc&) {
            return;
        }
    }
    width = std::max(0, std::min(width, element_->size - offset));
    sideMask_ |= sideBit;
    SonarDataCacheElement& e = *element_;

    // 9. Side 0 dates the element.
    if (s == 0) {
        const int adcGain = h.GetInt(TraceField::ADCGain);
        e.gain = adcGain != 0 ? displayGain / static_cast<float>(adcGain) : displayGain;
        std::memcpy(e.header.data(), header.data(), kTraceHeaderSize);
        e.startDepth = h.GetInt(TraceField::StartDepth);
        e.displayIndex = std::clamp(index_, 0, 9);
    }

    // 10. and 11. Bottom tracking on the tracked side, then TVG.
    const int trackedSide = snap_.TVGStart >= 0.0f ? 0 : 1;
    if (s == trackedSide) TrackBottom(e);
    TvgParams tvg = TvgRatio(snap_.TVG, general.SedimentSoundSpeed, snap_.sampleRate);
    tvg.limit = static_cast<float>(snap_.TVGLimit);
    tvg.start =
        static_cast<float>(Samples(std::fabs(snap_.TVGStart))) - static_cast<float>(e.startDepth);
    tvg.clampAtZero = snap_.ClampAtZero != 0;
    const std::span<std::uint8_t> pixels(e.pixels.data() + offset, static_cast<std::size_t>(width));
    ApplyTvg(line_, pixels, tvg);

    // 12. The raw line always lands at the start: in dual mode side 1 overwrites side 0 there.
    std::memcpy(e.rawPixels.data(), raw_.data(), static_cast<std::size_t>(width));

    // 13. Heave.
    int d = 0;
    if (HeaveShift(ConstTraceHeaderView(header), d)) {
        ShiftLine(pixels, d);
        ShiftLine({e.rawPixels.data() + offset, static_cast<std::size_t>(width)}, d);
    }

    // 14. and 15.
    if (s == trackedSide) {
        e.bottomSample = Samples(snap_.TVGStart);
        e.heaveSamples = h.GetInt(TraceField::HeaveCompensationSamples);
    }
    if (s == 0) Reflection(e, x, weighting);

    // 16.
    if (snap_.DualChannel == 0 || sideMask_ == 3) Complete(width, n);
}

void HalvoDisplayChannelProcessor::Complete(int width, int n) {
    SonarDataCacheElement& e = *element_;
    if (snap_.DualChannel == 1) {
        std::reverse(e.pixels.begin(), e.pixels.begin() + width);
        if (n > 1) {
            // The centre line: white, black | black, white.
            const auto put = [&e](int at, std::uint8_t v) {
                if (at >= 0 && at < e.size) e.pixels[static_cast<std::size_t>(at)] = v;
            };
            put(width - 2, 255);
            put(width + 1, 255);
            put(width - 1, 0);
            put(width, 0);
        }
    }
    e.dualChannel = snap_.DualChannel;
    output_.Deliver(std::move(element_));
    element_.reset();
    sideMask_ = 0;
}

void HalvoDisplayChannelProcessor::AutoGain(int side, const TraceSamples& samples, int weighting) {
    if (snap_.autoGainRequest != snap_.autoGainAcknowledge) {
        autoGainMask_ = 3;
        auto rec = set_.Lock(index_);
        rec->autoGainAcknowledge += 1;
        rec->RefGain0 = 400.0f;
        rec.Bump();
    }
    const int bit = 1 << side;
    if ((autoGainMask_ & bit) == 0) return;
    autoGainMask_ &= ~bit;
    double peak = AutoGainPeak(samples) * std::pow(2.0, -weighting);
    if (peak == 0.0) peak = 1.0;
    const double level = -20.0 * std::log10(peak / 32767.0);
    auto rec = set_.Lock(index_);
    if (level < rec->RefGain0) {
        rec->RefGain0 = SatFloat(level);
        rec.Bump();
    }
}

void HalvoDisplayChannelProcessor::DirectPath() {
    if (!(snap_.DirectPathn > snap_.DirectPath0) || snap_.DirectPathEnable == 0) return;
    const int a = Samples(snap_.DirectPath0);
    const std::int64_t length =
        std::max<std::int64_t>(0, static_cast<std::int64_t>(Samples(snap_.DirectPathn)) - a);
    if (length != directPathSize_) {
        // A new window is a new average. No trace is longer than kMaxLineSamples, so no more of
        // the window than that is ever used.
        directPathSize_ = length;
        directPath_.assign(
            static_cast<std::size_t>(std::min<std::int64_t>(length, kMaxLineSamples)), 0.0f);
    }
    if (length == 0 || snap_.DirectPathTraces <= 0 || a < 0) return;
    SubtractDirectPath(line_, directPath_, a, snap_.DirectPathTraces, snap_.DirectPathFreeze != 0);
}

void HalvoDisplayChannelProcessor::TrackBottom(SonarDataCacheElement& element) {
    // Only meaningful inside the line procedure, which supplies the units.
    if (!general_) return;
    const std::int64_t n = static_cast<std::int64_t>(line_.size());
    const std::int64_t start = element.startDepth;
    const float holdoff = static_cast<float>(Samples(snap_.Holdoff) - start);
    const std::int64_t c = Samples(std::fabs(snap_.TVGStart)) - start;
    const std::int64_t range = Samples(snap_.TrackRange);
    const float threshold = snap_.TrackThreshold / 100.0f * 255.0f;
    if (snap_.TrackEnabled == 0 || range <= 2 || !(threshold > 0.0f)) return;

    const std::int64_t lo = std::clamp<std::int64_t>(c - range, 0, n);
    const std::int64_t hi = std::max<std::int64_t>(std::min<std::int64_t>(c + range, n - 1), 0);
    bool found = false;
    std::int64_t idx = 0;
    for (std::int64_t i = lo; i < hi; ++i) {
        if (line_[static_cast<std::size_t>(i)] >= threshold) {
            found = true;
            idx = i;
            break;
        }
    }
    if (holdoff > static_cast<float>(idx)) idx = TruncCount(holdoff);
    if (found && idx != c) {
        double value = FromSamples(static_cast<double>(start + idx), snap_.sampleRate, *general_);
        if (side_ == 1) value = -value;
        const float stored = SatFloat(value);
        {
            // The tracker's result is written back without a bump: it is not a settings change.
            auto rec = set_.Lock(index_);
            rec->TVGStart = stored;
        }
        snap_.TVGStart = stored;
    }

    if (snap_.HeaveSource != 1) return;
    const int b = Samples(std::fabs(snap_.TVGStart));
    smoothed_ = b;
    const int t = snap_.HeaveTimeConst;
    if (t < 1 || t > kHeaveRing - 1) return;
    if (ringCount_ <= 0 || ringWindow_ != t) {
        ringCount_ = 0;
        ringWindow_ = t;
        ringSum_ = 0;
    }
    const std::size_t slot = static_cast<std::size_t>(ringCount_ % ringWindow_);
    if (ringCount_ >= ringWindow_) ringSum_ -= ring_[slot];
    ringSum_ += b;
    ring_[slot] = b;
    ++ringCount_;
    if (ringCount_ > ringWindow_) smoothed_ = static_cast<int>(ringSum_ / ringWindow_);
}

bool HalvoDisplayChannelProcessor::HeaveShift(const ConstTraceHeaderView& h, int& d) const {
    if (snap_.HeaveSource == 2) {
        d = -h.GetInt(TraceField::HeaveCompensationSamples);
        return true;
    }
    if (snap_.HeaveSource == 1 && ringWindow_ >= 1 && ringWindow_ <= kHeaveRing - 1) {
        const float t = static_cast<float>(Samples(snap_.TVGStart));
        if (t == static_cast<float>(smoothed_)) return false;
        d = TruncCount(static_cast<double>(t - static_cast<float>(smoothed_)));
        return true;
    }
    return false;
}

void HalvoDisplayChannelProcessor::Reflection(SonarDataCacheElement& e, const TraceSamples& samples,
                                              int weighting) {
    const std::int64_t n = static_cast<std::int64_t>(line_.size());
    const std::int64_t bottom = e.bottomSample;
    const std::int64_t start = e.startDepth;
    if (bottom < start || bottom >= start + n) {
        e.reflection = 0.0f;
        return;
    }
    const int p = static_cast<int>(bottom - start);
    const float peak = ReflectionPeak(samples, p, static_cast<int>(n), snap_.sampleRate);
    const double value = peak <= 0.0f ? -1000.0
                                      : 20.0 * std::log10(peak * std::pow(2.0, -weighting)) -
                                            snap_.ReflectionCoefDBGain;
    if (snap_.RCTimeConst > 0.0f) {
        const double a = std::pow(0.37, 1.0 / snap_.RCTimeConst);
        reflectionState_ = SatFloat((1.0 - a) * value + a * reflectionState_);
    } else {
        reflectionState_ = SatFloat(value);
    }
    e.reflection = reflectionState_;
    if (index_ == 0 && reflectionOut_) reflectionOut_->store(reflectionState_);
}

}  // namespace halvo

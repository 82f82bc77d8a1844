#include "dsp/MultiPulseEqualiser.h"

#include <algorithm>
#include <cmath>

#include "core/ByteOrder.h"

namespace halvo {

double MultiPulseEqualiser::Segment::Median() const {
    if (count == 0) return 0.0;
    std::array<double, kHistory> sorted{};
    std::copy(ring.begin(), ring.begin() + count, sorted.begin());
    std::sort(sorted.begin(), sorted.begin() + count);
    return sorted[static_cast<std::size_t>(count / 2)];
}

void MultiPulseEqualiser::Segment::Add(double energy) {
    ring[static_cast<std::size_t>(next)] = energy;
    next = (next + 1) % kHistory;
    count = std::min(count + 1, kHistory);
}

void MultiPulseEqualiser::Reset(int pulses, std::size_t samples) {
    pulses_ = pulses;
    samples_ = samples;
    history_ = {};
}

bool MultiPulseEqualiser::Apply(const ConstTraceHeaderView& header,
                                std::span<const std::uint8_t> samples, int group,
                                std::vector<std::int16_t>& out) {
    if (!header.valid() || header.GetInt(TraceField::DataFormat) != 0) return false;
    int pulses = header.GetInt(TraceField::NumOfPulses);
    if (pulses == 0) pulses = 3;
    if (pulses < 2 || pulses > kMaxPulses) return false;
    const std::size_t n = samples.size() / 2;
    if (n == 0) return false;
    if (pulses != pulses_ || n != samples_) Reset(pulses, n);
    const std::size_t g = group == 1 ? 1 : 0;
    const auto phase =
        static_cast<std::size_t>(static_cast<std::uint32_t>(header.GetInt(TraceField::PingNumber)) %
                                 static_cast<std::uint32_t>(pulses));

    // Energy of each of six equal segments; the segment bounds split the trace evenly.
    auto bound = [n](int k) { return n * static_cast<std::size_t>(k) / kSegments; };
    const std::uint8_t* x = samples.data();
    Phase& own = history_[g][phase];
    for (int k = 0; k < kSegments; ++k) {
        double energy = 0.0;
        for (std::size_t i = bound(k); i < bound(k + 1); ++i) {
            const double v = LoadLE<std::int16_t>(x + 2 * i);
            energy += v * v;
        }
        own[static_cast<std::size_t>(k)].Add(energy);
    }

    // Correction of each segment against the loudest phase's median.
    std::array<double, kSegments> correction{};
    for (int k = 0; k < kSegments; ++k) {
        const auto ks = static_cast<std::size_t>(k);
        double largest = 0.0;
        for (int p = 0; p < pulses; ++p) {
            largest = std::max(largest, history_[g][static_cast<std::size_t>(p)][ks].Median());
        }
        const double mine = own[ks].Median();
        double c = 1.0;
        if (mine > 0.0) {
            c = std::sqrt(largest / mine);
        } else if (largest > 0.0) {
            c = kMaxCorrection;
        }
        correction[ks] = std::min(c, kMaxCorrection);
    }

    // Linear between segment centres, flat before the first and after the last.
    out.resize(n);
    const double seg = static_cast<double>(n) / kSegments;
    for (std::size_t i = 0; i < n; ++i) {
        const double pos = (static_cast<double>(i) + 0.5) / seg - 0.5;
        double c;
        if (pos <= 0.0) {
            c = correction[0];
        } else if (pos >= kSegments - 1) {
            c = correction[kSegments - 1];
        } else {
            const auto k = static_cast<std::size_t>(pos);
            const double f = pos - static_cast<double>(k);
            c = correction[k] + (correction[k + 1] - correction[k]) * f;
        }
        const double v = LoadLE<std::int16_t>(x + 2 * i) * c / kHeadroom;
        out[i] = static_cast<std::int16_t>(v);
    }
    return true;
}

}  // namespace halvo

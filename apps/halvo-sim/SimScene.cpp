#include "halvo-sim/SimScene.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace halvo {

namespace {
constexpr std::size_t kNoiseSize = 1u << 16;
constexpr std::size_t kNoiseMask = kNoiseSize - 1;
constexpr std::size_t kSineSize = 1024;
constexpr double kTwoPi = 2.0 * std::numbers::pi;

// Wreck-like block on the port side and a line of rocks to starboard, repeating along the line.
constexpr double kWreckEvery = 1200.0, kWreckFrom = 300.0, kWreckLength = 25.0;
constexpr double kWreckNear = 45.0, kWreckFar = 57.0, kWreckHeight = 4.0;
constexpr double kRocksEvery = 900.0, kRocksFrom = 100.0, kRocksTo = 500.0;
constexpr double kRockSpacing = 15.0, kRockLength = 2.0, kRockWidth = 2.0, kRockHeight = 1.2;
}  // namespace

std::uint32_t SimHash(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    std::uint64_t h = 0x9E3779B97F4A7C15ull;
    for (std::uint32_t v : {a, b, c, d}) {
        h ^= v + 0x9E3779B97F4A7C15ull + (h << 6) + (h >> 2);
        h *= 0xBF58476D1CE4E5B9ull;
        h ^= h >> 31;
    }
    return static_cast<std::uint32_t>(h ^ (h >> 32));
}

SimPingPlace SimPingPlace::OfPing(std::int64_t ping) {
    SimPingPlace p;
    p.ping = ping;
    p.alongTrack = static_cast<double>(ping) * kSimStepPerPing;
    p.time = p.alongTrack / kSimSurveySpeed;
    return p;
}

SimScene::SimScene(std::uint32_t seed)
    : seed_(seed), noiseRe_(kNoiseSize), noiseIm_(kNoiseSize), sine_(kSineSize) {
    std::mt19937 rng(seed);
    std::normal_distribution<float> normal(0.0f, 1.0f);
    for (std::size_t i = 0; i < kNoiseSize; ++i) {
        noiseRe_[i] = normal(rng);
        noiseIm_[i] = normal(rng);
    }
    for (std::size_t i = 0; i < kSineSize; ++i)
        sine_[i] = static_cast<float>(std::sin(kTwoPi * static_cast<double>(i) / kSineSize));
}

double SimScene::FloorDepth(double s) const {
    return 40.0 + 8.0 * std::sin(kTwoPi * s / 900.0) + 3.0 * std::sin(kTwoPi * s / 230.0 + 1.0);
}

double SimScene::Heave(double t) const {
    return 0.6 * std::sin(kTwoPi * t / 8.0) + 0.25 * std::sin(kTwoPi * t / 5.3 + 0.7);
}

double SimScene::FishAltitude(double s) const {
    return 15.0 + 2.0 * std::sin(kTwoPi * s / 400.0);
}

double SimScene::PitchDegrees(double t) const {
    return 1.5 * std::sin(kTwoPi * t / 7.1);
}

double SimScene::RollDegrees(double t) const {
    return 3.0 * std::sin(kTwoPi * t / 9.3 + 0.4);
}

double SimScene::HeadingDegrees(double s) const {
    return 45.0 + 1.5 * std::sin(kTwoPi * s / 300.0);
}

double SimScene::WaterTemperature(double t) const {
    return 9.5 + 0.3 * std::sin(kTwoPi * t / 3600.0);
}

std::vector<SimScene::Layer> SimScene::Layers(double s) const {
    return {{3.0 + 0.8 * std::sin(kTwoPi * s / 500.0), 0.45},
            {7.5 + 1.5 * std::sin(kTwoPi * s / 700.0 + 0.5), 0.35},
            {12.0 + 2.0 * std::sin(kTwoPi * s / 1100.0 + 1.3), 0.30},
            {20.0 + 3.0 * std::sin(kTwoPi * s / 1500.0 + 2.1), 0.30}};
}

void SimScene::Render(const SimPingPlace& place, const SimRenderRequest& req, std::span<float> re,
                      std::span<float> im) const {
    const std::size_t n = std::min({req.samples, re.size(), im.size()});
    re = re.first(n);
    im = im.first(n);
    if (req.sideScan) {
        RenderSideScan(place, req, re, im);
    } else {
        RenderSubBottom(place, req, re, im);
    }
}

void SimScene::AddWavelet(std::span<float> re, std::span<float> im, const SimRenderRequest& req,
                          double at, double amplitude, double freq, double sigma) const {
    // A compressed chirp: a Gaussian envelope under a carrier, placed at two-way time `at`.
    const double first = (at - 4.0 * sigma) / req.interval - static_cast<double>(req.start);
    const double last = (at + 4.0 * sigma) / req.interval - static_cast<double>(req.start);
    const auto n = static_cast<std::int64_t>(re.size());
    const std::int64_t i0 = std::max<std::int64_t>(0, static_cast<std::int64_t>(std::ceil(first)));
    const std::int64_t i1 = std::min<std::int64_t>(n - 1, static_cast<std::int64_t>(last));
    for (std::int64_t i = i0; i <= i1; ++i) {
        const double tau = static_cast<double>(req.start + i) * req.interval - at;
        const double env = amplitude * std::exp(-tau * tau / (2.0 * sigma * sigma));
        const double phase = kTwoPi * freq * tau;
        re[static_cast<std::size_t>(i)] += static_cast<float>(env * std::cos(phase));
        im[static_cast<std::size_t>(i)] += static_cast<float>(env * std::sin(phase));
    }
}

void SimScene::RenderSubBottom(const SimPingPlace& place, const SimRenderRequest& req,
                               std::span<float> re, std::span<float> im) const {
    const std::size_t n = re.size();
    const std::size_t o = SimHash(seed_, req.noiseKey, static_cast<std::uint32_t>(place.ping), 1);
    constexpr float kNoise = 40.0f;
    for (std::size_t i = 0; i < n; ++i) {
        re[i] = kNoise * noiseRe_[(o + i) & kNoiseMask];
        im[i] = kNoise * noiseIm_[(o + i) & kNoiseMask];
    }
    const double sigmaF = std::max(200.0, req.bandwidthHz / 4.0);
    const double sigmaT = 1.0 / (kTwoPi * sigmaF);
    const double depth = FloorDepth(place.alongTrack) - Heave(place.time);
    const double floorTime = 2.0 * depth / kSimSoundSpeed;

    // The outgoing pulse leaks into the first samples.
    AddWavelet(re, im, req, 0.0, 20000.0, req.centreHz, 2.0 * sigmaT);
    // The floor, and its first multiple.
    AddWavelet(re, im, req, floorTime, 14000.0, req.centreHz, sigmaT);
    AddWavelet(re, im, req, 2.0 * floorTime, 3000.0, req.centreHz, sigmaT);

    // Layers: a Gaussian spectrum under an attenuation linear in frequency keeps its shape,
    // loses amplitude and moves its centre down by beta * sigma^2.
    constexpr double kSedimentSpeed = 1600.0;
    for (const Layer& layer : Layers(place.alongTrack)) {
        const double beta =
            kAttenuationDbPerMKHz * 2.0 * layer.depth * std::numbers::ln10 / 20.0 / 1000.0;  // /Hz
        const double f0 = std::max(200.0, req.centreHz - beta * sigmaF * sigmaF);
        const double gainLoss =
            std::exp(-beta * req.centreHz + 0.5 * beta * beta * sigmaF * sigmaF);
        const double at = floorTime + 2.0 * layer.depth / kSedimentSpeed;
        AddWavelet(re, im, req, at, 14000.0 * layer.strength * gainLoss, f0, sigmaT);
    }

    // Scattering under the floor, dying away over a few metres.
    const double tailStart = floorTime / req.interval - static_cast<double>(req.start);
    const double decay = std::exp(-req.interval / (2.0 * 4.0 / kSedimentSpeed));
    const std::size_t o2 = o * 7 + 12345;
    if (tailStart < static_cast<double>(n)) {
        std::size_t i = tailStart < 0 ? 0 : static_cast<std::size_t>(tailStart);
        double a = 1500.0 * std::pow(decay, std::max(0.0, static_cast<double>(i) - tailStart));
        for (; i < n && a > 2.0; ++i, a *= decay) {
            re[i] += static_cast<float>(a) * noiseRe_[(o2 + i) & kNoiseMask];
            im[i] += static_cast<float>(a) * noiseIm_[(o2 + i) & kNoiseMask];
        }
    }
}

void SimScene::ScaleRange(std::span<float> re, std::span<float> im, const SimRenderRequest& req,
                          double altitude, double groundFrom, double groundTo, float factor) const {
    const auto index = [&](double y) {
        const double r = std::sqrt(y * y + altitude * altitude);
        return 2.0 * r / kSimSoundSpeed / req.interval - static_cast<double>(req.start);
    };
    const double a = std::max(0.0, index(groundFrom));
    const double b = std::min(static_cast<double>(re.size()), index(groundTo));
    for (auto i = static_cast<std::size_t>(a); static_cast<double>(i) < b; ++i) {
        re[i] *= factor;
        im[i] *= factor;
    }
}

void SimScene::RenderSideScan(const SimPingPlace& place, const SimRenderRequest& req,
                              std::span<float> re, std::span<float> im) const {
    const std::size_t n = re.size();
    const double s = place.alongTrack + (req.aft ? -0.5 : 0.0);
    const double alt = FishAltitude(s);
    const std::size_t o = SimHash(seed_, req.noiseKey, static_cast<std::uint32_t>(place.ping), 2);
    const std::size_t o2 = o * 5 + 777;
    // Higher frequencies die away sooner with range.
    const double kappa = req.centreHz > 200000 ? 0.012 : 0.003;
    const auto dr = static_cast<float>(req.interval * kSimSoundSpeed / 2.0);
    const bool rippled = std::sin(kTwoPi * s / 300.0) > -0.2;
    const float ripple = rippled ? 0.35f : 0.08f;
    const float rippleK = static_cast<float>(kSineSize) / 2.5f;  // 2.5 m ripple wavelength
    const auto ripplePhase = static_cast<std::uint32_t>(s * 37.0);
    constexpr float kWater = 25.0f;
    const float strength = req.side == 0 ? 9000.0f : 8500.0f;
    const auto a = static_cast<float>(alt);
    const float a2 = a * a;
    const float* nr = noiseRe_.data();
    const float* ni = noiseIm_.data();
    const float* sine = sine_.data();
    // Absorption changes slowly: one factor per block keeps the inner loop free of exp().
    constexpr std::size_t kBlock = 64;
    for (std::size_t b = 0; b < n; b += kBlock) {
        const std::size_t e = std::min(n, b + kBlock);
        const double rMid =
            (static_cast<double>(req.start) + static_cast<double>(b + e) / 2.0) * dr;
        const auto k = static_cast<float>(strength * std::exp(-kappa * rMid));
        for (std::size_t i = b; i < e; ++i) {
            const float r = static_cast<float>(req.start + static_cast<std::int64_t>(i)) * dr;
            const float r2 = std::max(r * r, 1e-6f);
            const float y = std::sqrt(std::max(r2 - a2, 0.0f));
            const float tex =
                1.0f +
                ripple *
                    sine[(static_cast<std::uint32_t>(y * rippleK) + ripplePhase) & (kSineSize - 1)];
            const float amp = r2 >= a2 ? k * (a2 / r2) * tex : 0.0f;
            re[i] = amp * nr[(o + i) & kNoiseMask] + kWater * nr[(o2 + i) & kNoiseMask];
            im[i] = amp * ni[(o + i) & kNoiseMask] + kWater * ni[(o2 + i) & kNoiseMask];
        }
    }
    // The first bottom return under the body is bright.
    ScaleRange(re, im, req, alt, 0.0, 1.5, 2.5f);

    if (req.side == 0) {
        const double w = std::fmod(s, kWreckEvery);
        if (w >= kWreckFrom && w < kWreckFrom + kWreckLength && alt > kWreckHeight) {
            const double shadowEnd = kWreckFar * alt / (alt - kWreckHeight);
            ScaleRange(re, im, req, alt, kWreckNear, kWreckNear + 2.0, 4.0f);
            ScaleRange(re, im, req, alt, kWreckNear + 2.0, kWreckFar, 1.6f);
            ScaleRange(re, im, req, alt, kWreckFar, shadowEnd, 0.05f);
        }
    } else {
        const double w = std::fmod(s, kRocksEvery);
        if (w >= kRocksFrom && w < kRocksTo &&
            std::fmod(w - kRocksFrom, kRockSpacing) < kRockLength && alt > kRockHeight) {
            const double y = 25.0 + 0.08 * (w - kRocksFrom);
            const double shadowEnd = (y + kRockWidth) * alt / (alt - kRockHeight);
            ScaleRange(re, im, req, alt, y, y + kRockWidth, 3.0f);
            ScaleRange(re, im, req, alt, y + kRockWidth, shadowEnd, 0.08f);
        }
    }
}

}  // namespace halvo

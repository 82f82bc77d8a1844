#pragma once
// The world the simulated sonar looks at: a sea floor whose depth varies slowly, swell on top,
// sub-bottom layers whose echoes lose their high frequencies with depth, and a side-scan swath
// with ripples, a wreck-like block and a line of rocks, each with its shadow. Everything is a
// function of the along-track distance and the seed, so one ping always looks the same.

#include <cstdint>
#include <span>
#include <vector>

namespace halvo {

// Where a ping is: each ping moves the vessel a fixed step along the line, so that the same
// ping number gives the same picture whatever the ping rate or the link did.
struct SimPingPlace {
    std::int64_t ping = 0;
    double alongTrack = 0;  // metres
    double time = 0;        // seconds of survey time (alongTrack / speed)
    static SimPingPlace OfPing(std::int64_t ping);
};

constexpr double kSimStepPerPing = 0.25;  // metres along the line per ping
constexpr double kSimSurveySpeed = 1.0;   // metres per second of survey time
constexpr double kSimSoundSpeed = 1500.0;

// One channel's trace request. Samples are taken at start + i, every `interval` seconds of
// two-way time.
struct SimRenderRequest {
    bool sideScan = false;
    int side = 0;  // side-scan: 0 port, 1 starboard
    bool aft = false;
    double centreHz = 7000;
    double bandwidthHz = 10000;
    double interval = 40e-6;
    std::int64_t start = 0;
    std::size_t samples = 0;
    std::uint32_t noiseKey = 0;  // picks this trace's stretch of the noise tables
};

class SimScene {
  public:
    explicit SimScene(std::uint32_t seed);

    // Depth of the sea floor below the transducer, metres, without swell.
    double FloorDepth(double alongTrack) const;
    // Vertical motion of the vessel from the swell, metres, up positive.
    double Heave(double time) const;
    // Height of the towed side-scan body above the floor, metres.
    double FishAltitude(double alongTrack) const;
    double PitchDegrees(double time) const;
    double RollDegrees(double time) const;
    double HeadingDegrees(double alongTrack) const;
    double WaterTemperature(double time) const;

    // Layer depths below the floor, metres, and their reflection strengths.
    struct Layer {
        double depth;
        double strength;
    };
    std::vector<Layer> Layers(double alongTrack) const;
    // Sediment attenuation, dB per metre per kHz (two-way path taken by the renderer).
    static constexpr double kAttenuationDbPerMKHz = 0.35;

    // Complex samples of one trace in full-scale units (16-bit ADC counts), before gain.
    void Render(const SimPingPlace& place, const SimRenderRequest& req, std::span<float> re,
                std::span<float> im) const;

    std::uint32_t seed() const { return seed_; }

  private:
    void RenderSubBottom(const SimPingPlace& place, const SimRenderRequest& req,
                         std::span<float> re, std::span<float> im) const;
    void RenderSideScan(const SimPingPlace& place, const SimRenderRequest& req, std::span<float> re,
                        std::span<float> im) const;
    void AddWavelet(std::span<float> re, std::span<float> im, const SimRenderRequest& req,
                    double at, double amplitude, double freq, double sigma) const;
    void ScaleRange(std::span<float> re, std::span<float> im, const SimRenderRequest& req,
                    double altitude, double groundFrom, double groundTo, float factor) const;

    std::uint32_t seed_;
    std::vector<float> noiseRe_;
    std::vector<float> noiseIm_;
    std::vector<float> sine_;
};

// A 32-bit mix of a few numbers, for noise offsets that depend only on what they name.
std::uint32_t SimHash(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d);

}  // namespace halvo

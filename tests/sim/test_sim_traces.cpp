// Traces in every form and packing normalise to the scene's samples, and the scene holds what
// it promises: layers that lose their high frequencies, and shadows behind targets.

#include <gtest/gtest.h>

#include <cmath>

#include "core/ByteOrder.h"
#include "core/MessageTypes.h"
#include "core/Normalise.h"
#include "core/PackedSamples.h"
#include "core/TraceHeader.h"
#include "halvo-sim/SimTraceBuilder.h"
#include "sim/SimTestClient.h"
#include "sim/SimTestServer.h"

namespace halvo::test {
namespace {

using namespace std::chrono_literals;

struct FormCase {
    int form;
    int packing;
    int dataType;
    SimConfig config;
    bool agc;
};

std::string Name(const testing::TestParamInfo<FormCase>& i) {
    return "form" + std::to_string(i.param.form) + "_code" + std::to_string(i.param.packing) +
           "_type" + std::to_string(i.param.dataType) + (i.param.agc ? "_agc" : "") +
           (i.param.config == SimConfig::R90 ? "_ss" : "_sb");
}

class SimTraceForms : public testing::TestWithParam<FormCase> {};

// Largest error a packed word may add to its values: the dropped low bits of its shift.
std::int64_t Tolerance(std::span<const std::int32_t> group, int code) {
    const PackingCodeInfo info = PackingCodeOf(code);
    if (info.layout == PackLayout::None) return 0;
    const int bits = info.layout == PackLayout::A ? 10 : (info.layout == PackLayout::B ? 7 : 4);
    const std::int64_t fieldMax = info.isSigned ? (1 << (bits - 1)) - 1 : (1 << bits) - 1;
    std::int64_t peak = 0;
    for (std::int32_t v : group) peak = std::max<std::int64_t>(peak, std::abs(std::int64_t{v}));
    // Layout A shifts in steps of two, so its shift may be twice as coarse as needed.
    const std::int64_t step = info.layout == PackLayout::A ? 4 : 2;
    return step * peak / fieldMax + 1;
}

TEST_P(SimTraceForms, NormaliseToTheScenesSamples) {
    const FormCase k = GetParam();
    SimOptions o = TestOptions();
    o.config = k.config;
    o.form = k.form;
    o.packing = k.packing;
    o.sensors = false;
    o.rateMultiplier = 25;
    RunningSim sim(o);
    ASSERT_TRUE(sim.started);
    const std::uint8_t sub = static_cast<std::uint8_t>(sim.server->state().Subsystem(0).number);
    SimTestClient cmd(sim.server->commandPort());
    SimTestClient data(sim.server->dataPort());
    ASSERT_TRUE(cmd.SendWord(MsgChannelDataType, DirSet, sub, 0, k.dataType));
    ASSERT_TRUE(cmd.SendWord(MsgChannelAGC, DirSet, sub, 0, k.agc ? 1 : 0));
    // Quiet enough that AGC has to lift it.
    if (k.agc) {
        ASSERT_TRUE(cmd.SendWord(MsgChannelGain, DirSet, sub, 0, 200));
    }
    SonarMessage window = SonarMessage::Build(MsgWindow, DirSet, sub, 0, 16);
    PutLE<std::uint16_t>(window.Payload(), 0, 1);
    PutLE<std::uint16_t>(window.Payload(), 2, 2);
    PutLE<std::int32_t>(window.Payload(), 4, 200);
    PutLE<std::int32_t>(window.Payload(), 8, 3000);
    ASSERT_TRUE(cmd.Send(window));
    ASSERT_TRUE(cmd.SendWord(MsgSonarOn, DirSet, sub, 0, 1));

    auto trace = data.ReadUntil(
        [&](const SonarMessage& m) { return m.type() == k.form && m.channel() == 0; }, 3s);
    ASSERT_TRUE(trace.has_value());
    SonarMessage normal = Normalise(*trace, [] { return std::int64_t{1700000000}; });
    const SonarMessage& n = normal ? normal : *trace;
    ASSERT_EQ(n.type(), MsgTrace);
    ConstTraceHeaderView h(n.Payload());
    ASSERT_TRUE(h.valid());

    // The reference: the same ping rendered plainly (or with the same float code).
    const SimSubsystem state = sim.server->state().Subsystem(0);
    SimTraceBuilder reference(sim.server->scene(), 80, k.packing >= 7 ? k.packing : 0);
    SimTraceInfo info;
    const std::int64_t ping = h.GetInt(TraceField::PingNumber);
    const auto expected = reference.Values(state, 0, SimPingPlace::OfPing(ping), info);

    EXPECT_EQ(h.GetInt(TraceField::DataFormat), info.format);
    EXPECT_EQ(h.GetInt(TraceField::SampleIntervalNS), info.intervalNs);
    EXPECT_EQ(h.GetInt(TraceField::StartDepth), info.startSample);
    EXPECT_EQ(h.GetInt(TraceField::WeightingFactor), info.weighting);
    EXPECT_EQ(h.GetInt(TraceField::ADCMax), info.adcMax);
    EXPECT_GE(static_cast<std::size_t>(h.GetInt(TraceField::Samples)), info.samples);
    EXPECT_EQ(info.weighting > 0, k.agc);

    const auto samples = n.Payload().subspan(kTraceHeaderSize);
    const bool floats = k.packing >= 7;
    const std::size_t width = floats ? 4 : 2;
    ASSERT_GE(samples.size() / width, expected.size());
    const bool isSigned = k.dataType != 0;
    std::size_t bad = 0;
    const std::size_t g =
        static_cast<std::size_t>(std::max(1, SamplesPerWord(PackingCodeOf(k.packing).layout)));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        double got;
        if (floats) {
            got = std::ldexp(GetLE<float>(samples, 4 * i), info.exponent);
        } else {
            got = isSigned ? GetLE<std::int16_t>(samples, 2 * i)
                           : GetLE<std::uint16_t>(samples, 2 * i);
        }
        const std::size_t from = i / g * g;
        const auto group = std::span(expected).subspan(from, std::min(g, expected.size() - from));
        if (std::fabs(got - expected[i]) > static_cast<double>(Tolerance(group, k.packing))) ++bad;
    }
    EXPECT_EQ(bad, 0u) << "of " << expected.size() << " values";
}

INSTANTIATE_TEST_SUITE_P(
    AllForms, SimTraceForms,
    testing::Values(
        FormCase{80, 0, 1, SimConfig::SB, false}, FormCase{80, 1, 0, SimConfig::SB, false},
        FormCase{80, 2, 1, SimConfig::SB, false}, FormCase{80, 3, 0, SimConfig::SB, false},
        FormCase{80, 4, 2, SimConfig::SB, false}, FormCase{80, 5, 0, SimConfig::SB, false},
        FormCase{80, 6, 1, SimConfig::SB, false}, FormCase{80, 7, 0, SimConfig::SB, false},
        FormCase{80, 8, 1, SimConfig::SB, false}, FormCase{80, 9, 0, SimConfig::SB, false},
        FormCase{80, 10, 2, SimConfig::SB, false}, FormCase{80, 11, 0, SimConfig::SB, false},
        FormCase{80, 12, 1, SimConfig::SB, false}, FormCase{80, 0, 0, SimConfig::R90, true},
        FormCase{82, 0, 0, SimConfig::R90, false}, FormCase{82, 4, 1, SimConfig::R90, false},
        FormCase{82, 5, 0, SimConfig::SB, false}, FormCase{84, 0, 1, SimConfig::SB, false},
        FormCase{84, 3, 0, SimConfig::SB, false}, FormCase{84, 2, 1, SimConfig::SB, false},
        FormCase{84, 6, 2, SimConfig::SB, true}, FormCase{85, 0, 0, SimConfig::R90, false},
        FormCase{85, 1, 0, SimConfig::R90, false}, FormCase{85, 4, 1, SimConfig::R90, true}),
    Name);

// The first subsystem of a fresh sonar of the given kind, plain samples.
SimSubsystem FirstSubsystem(SimConfig config, std::size_t pulse = 0) {
    FixedWallClock wall(0);
    SimDeviceClock clock(wall);
    SimSonarState st(config, clock);
    SimSubsystem s = st.Subsystem(0);
    s.pulseIndex = pulse;
    s.channels[0].dataType = 0;
    return s;
}

double PeakNear(std::span<const std::int32_t> v, double seconds, double interval) {
    const auto centre = static_cast<std::int64_t>(seconds / interval);
    std::int32_t peak = 0;
    for (std::int64_t i = centre - 4; i <= centre + 4; ++i)
        if (i >= 0 && i < static_cast<std::int64_t>(v.size()))
            peak = std::max(peak, v[static_cast<std::size_t>(i)]);
    return peak;
}

TEST(SimScene, DeepLayersLoseMoreAtHigherFrequencies) {
    const SimScene scene(7);
    const SimPingPlace place = SimPingPlace::OfPing(40);
    const double floorTime =
        2.0 * (scene.FloorDepth(place.alongTrack) - scene.Heave(place.time)) / 1500.0;
    const double deepest = scene.Layers(place.alongTrack).back().depth;
    std::vector<double> ratio;
    for (std::size_t pulse : {3u, 4u}) {  // 0.5-7.2 kHz, then 4-12 kHz
        SimTraceBuilder b(scene, 80, 0);
        SimTraceInfo info;
        const SimSubsystem s = FirstSubsystem(SimConfig::SB, pulse);
        const auto v = b.Values(s, 0, place, info);
        const double dt = info.intervalNs * 1e-9;
        ratio.push_back(PeakNear(v, floorTime + 2.0 * deepest / 1600.0, dt) /
                        PeakNear(v, floorTime, dt));
    }
    EXPECT_GT(ratio[0], 0.02);
    EXPECT_LT(ratio[1], ratio[0] * 0.5);
}

TEST(SimScene, SameSeedSamePingGivesTheSameTrace) {
    const SimScene a(3), b(3), c(4);
    const SimSubsystem s = FirstSubsystem(SimConfig::SB);
    SimTraceBuilder ba(a, 80, 0), bb(b, 80, 0), bc(c, 80, 0);
    SimTraceInfo info;
    const auto va = ba.Values(s, 0, SimPingPlace::OfPing(9), info);
    EXPECT_EQ(va, bb.Values(s, 0, SimPingPlace::OfPing(9), info));
    EXPECT_NE(va, bc.Values(s, 0, SimPingPlace::OfPing(9), info));
    EXPECT_NE(va, ba.Values(s, 0, SimPingPlace::OfPing(10), info));
}

TEST(SimScene, TheWreckCastsAShadow) {
    const SimSubsystem s = FirstSubsystem(SimConfig::R90);
    const SimScene scene(1);
    SimTraceBuilder b(scene, 80, 0);
    auto meanOver = [&](std::int64_t ping, double y0, double y1) {
        SimTraceInfo info;
        const SimPingPlace place = SimPingPlace::OfPing(ping);
        const auto v = b.Values(s, 0, place, info);
        const double alt = scene.FishAltitude(place.alongTrack);
        const double dt = info.intervalNs * 1e-9;
        double sum = 0;
        int count = 0;
        for (double y = y0; y < y1; y += 0.25) {
            const auto i = static_cast<std::size_t>(2.0 * std::hypot(y, alt) / 1500.0 / dt);
            if (i < v.size()) sum += v[i], ++count;
        }
        return count ? sum / count : 0.0;
    };
    const double inShadow = meanOver(1250, 60.0, 75.0);  // 312 m along the line, behind the block
    const double open = meanOver(800, 60.0, 75.0);       // 200 m: open sea floor
    EXPECT_LT(inShadow, 0.3 * open);
}

}  // namespace
}  // namespace halvo::test

// The line procedure on whole traces: tracking, heave, reflection, dual layout, dispatch, summed
// channels, auto gain, ping selection, sound speed, the playback wait and the multi-pulse
// equaliser.

#include <gtest/gtest.h>

#include <tuple>

#include <algorithm>
#include <cmath>

#include "ChainRig.h"
#include "dsp/MultiPulseEqualiser.h"
#include "dsp/SummedChannelAccumulator.h"
#include "platform/FakeTickSource.h"

namespace halvo::test {
namespace {

// Envelope samples, full scale from `step` on.
std::vector<std::int16_t> Step(int step, int n = 64) {
    std::vector<std::int16_t> v(static_cast<std::size_t>(n), 0);
    for (int i = std::max(step, 0); i < n; ++i) v[static_cast<std::size_t>(i)] = 32767;
    return v;
}

int FirstLit(const SonarDataCacheElement& e) {
    return static_cast<int>(std::find(e.pixels.begin(), e.pixels.end(), 255) - e.pixels.begin());
}

TEST(ChannelProcessor, TrackerHonoursWindowThresholdAndHoldoff) {
    struct {
        const char* what;
        int holdoff;
        float range;
        int step;
        float expect;
    } cases[] = {
        {"bottom found in the window", 0, 10, 30, 30},
        {"hold-off after the bottom wins", 33, 10, 30, 33},
        {"hold-off beyond the window wins", 50, 10, 30, 50},
        {"nothing above threshold leaves it", 0, 10, 99, 25},
        {"bottom at the window's start moves it", 0, 10, 15, 15},
        {"a range of 2 samples is off", 0, 2, 24, 25},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ChainRig rig;
        rig.Configure(0, 0, [&](DisplayProcessingConfig& r) {
            r.TVGStart = 25, r.TrackRange = c.range, r.TrackThreshold = 50, r.Holdoff = c.holdoff;
        });
        const int revision = rig.set.Lock(0)->revision;
        auto lines = rig.Send({}, Step(c.step));
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(rig.set.Lock(0)->TVGStart, c.expect);
        EXPECT_EQ(lines[0]->bottomSample, static_cast<int>(c.expect));
        // The tracker writes without a bump (the traces' rate is the record's 25 kHz already).
        EXPECT_EQ(rig.set.Lock(0)->revision, revision);
    }
}

TEST(ChannelProcessor, HeaveFromHeaderShiftsBothLines) {
    const std::pair<int, int> cases[] = {{3, 8}, {-2, 3}, {0, 5}, {16, 5}, {-16, 5}, {15, 20}};
    for (const auto& [heave, at] : cases) {
        SCOPED_TRACE(heave);
        ChainRig rig;
        rig.Configure(0, 0, [](DisplayProcessingConfig& r) { r.HeaveSource = 2; });
        std::vector<std::int16_t> v(16, 0);
        v[5] = 32767;
        auto lines = rig.Send({.heave = heave}, v);
        ASSERT_EQ(lines.size(), 1u);
        const auto& e = *lines[0];
        const auto peak = std::max_element(e.pixels.begin(), e.pixels.end()) - e.pixels.begin();
        EXPECT_EQ(peak, at < 16 ? at : 0);
        EXPECT_EQ(std::count(e.pixels.begin(), e.pixels.end(), 255), at < 16 ? 1 : 0);
        EXPECT_EQ(e.rawPixels, e.pixels);
        EXPECT_EQ(e.heaveSamples, heave);
    }
}

TEST(ChannelProcessor, HeaveFromSmoothedBottomFollowsTheAverage) {
    ChainRig rig;
    rig.Configure(0, 0, [](DisplayProcessingConfig& r) {
        r.TVGStart = 30, r.TrackRange = 15, r.TrackThreshold = 50, r.HeaveSource = 1,
        r.HeaveTimeConst = 2;
    });
    std::vector<int> firstLit;
    for (int step : {30, 30, 40}) {
        auto lines = rig.Send({}, Step(step));
        ASSERT_EQ(lines.size(), 1u);
        firstLit.push_back(FirstLit(*lines[0]));
    }
    // Two pings fill the window of 2; the third averages 30 and 40 and moves 40 to 35.
    EXPECT_EQ(firstLit, (std::vector<int>{30, 30, 35}));
    EXPECT_EQ(rig.processor.Channel(0).SmoothedBottom(), 35);
}

TEST(ChannelProcessor, ReflectionFiltersWithTheTimeConstant) {
    ChainRig rig;
    rig.Configure(0, 0, [](DisplayProcessingConfig& r) {
        r.TVGStart = 30, r.TrackEnabled = 0, r.RCTimeConst = 1, r.ReflectionCoefDBGain = 10;
    });
    std::vector<std::int16_t> v(64, 0);
    v[30] = 1000, v[31] = 2000, v[32] = 500;
    float states[2];
    for (float& s : states) {
        auto lines = rig.Send({.format = 2}, v);
        ASSERT_EQ(lines.size(), 1u);
        s = lines[0]->reflection;
    }
    const double value = 20.0 * std::log10(2000.0) - 10.0;
    EXPECT_NEAR(states[0], 0.63 * value, 1e-3);
    EXPECT_NEAR(states[1], 0.63 * value + 0.37 * 0.63 * value, 1e-3);
    EXPECT_EQ(rig.processor.LatestReflection(), states[1]);
    // A bottom outside the trace gives 0 and leaves the filter alone.
    EXPECT_EQ(rig.Send({.format = 2, .startDepth = 40}, v).at(0)->reflection, 0.0f);
    EXPECT_EQ(rig.processor.Channel(0).ReflectionState(), states[1]);
}

TEST(ChannelProcessor, DualLayoutMirrorsSideZeroAndDrawsTheCentre) {
    ChainRig rig;
    rig.Configure(0, 0, [](DisplayProcessingConfig& r) { r.DualChannel = 1; });
    rig.Configure(1, 0);
    rig.Configure(2, 1);
    std::vector<std::int16_t> a(8), b(8);
    for (std::size_t i = 0; i < 8; ++i) {
        a[i] = static_cast<std::int16_t>(1000 * (i + 1));
        b[i] = static_cast<std::int16_t>(3000 * (i + 1));
    }
    SonarMessage m0 = MakeTrace({}, a), m1 = MakeTrace({.channel = 1}, b);
    rig.Deliver(m0);
    EXPECT_EQ(rig.processor.Channel(0).SideMask(), 1);
    rig.Deliver(m1);
    auto lines = rig.TakeLines();
    ASSERT_EQ(lines.size(), 3u);
    std::vector<int> order;
    for (const auto& e : lines) order.push_back(e->displayIndex);
    ASSERT_EQ(order, (std::vector<int>{1, 0, 2}));  // single 0, then the dual line, single 1
    const SonarDataCacheElement& dual = *lines[1];
    const SonarDataCacheElement& single0 = *lines[0];
    const SonarDataCacheElement& single1 = *lines[2];
    EXPECT_EQ(dual.size, 16);
    EXPECT_EQ(dual.dualChannel, 1);
    std::vector<std::uint8_t> want(single0.pixels.rbegin(), single0.pixels.rend());
    want.insert(want.end(), single1.pixels.begin(), single1.pixels.end());
    want[6] = 255, want[7] = 0, want[8] = 0, want[9] = 255;
    EXPECT_EQ(dual.pixels, want);
    // The raw line of side 1 overwrote side 0's at the start; the second half stays empty.
    std::vector<std::uint8_t> raw = single1.rawPixels;
    raw.resize(16, 0);
    EXPECT_EQ(dual.rawPixels, raw);
}

TEST(ChannelProcessor, LostPartnerCostsOneLine) {
    ChainRig rig;
    rig.Configure(0, 0, [](DisplayProcessingConfig& r) { r.DualChannel = 1; });
    for (int ping : {1, 2}) EXPECT_TRUE(rig.Send({.ping = ping}, Step(4, 8)).empty());
    auto lines = rig.Send({.ping = 2, .channel = 1}, Step(4, 8));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0]->Header().GetInt(TraceField::PingNumber), 2);
}

TEST(ChannelProcessor, DispatchBySonarQcAndTwiceInARow) {
    ChainRig rig({{7, 4}, {9, 10}});
    rig.Configure(0, 5);   // sonar 0, channel byte 1
    rig.Configure(1, 53);  // QC of sonar 0, byte 1
    rig.Configure(2, 57);  // QC of sonar 1 (52 + 2 + 1... byte 3 is ignored)
    EXPECT_EQ(rig.Send({.channel = 1}, Step(4, 8)).size(), 2u);  // the same trace twice
    auto lines = rig.Send({.channel = 1, .direction = DirQC}, Step(4, 8));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0]->displayIndex, 1);
    EXPECT_TRUE(rig.Send({.channel = 3, .direction = DirQC}, Step(4, 8)).empty());
    // No sonar: once, by `Channel Number`; nothing from a source that is not data.
    const TraceBuild unknown{.channel = 3, .subsystem = 99};
    EXPECT_TRUE(rig.Send(unknown, Step(4, 8), SourceSonarData).empty());
    EXPECT_TRUE(rig.Send(unknown, Step(4, 8), SourceLocal).empty());
}

TEST(SummedChannel, WeightsByExponentAndCountAndRescales) {
    const std::tuple<std::int16_t, std::int16_t, int, int, int, int> cases[] = {
        {32760, 32760, 0, 0, 0, 32760},
        {16380, 16380, 0, 0, 1, 32760},
        {32760, 32760, 1, 1, 1, 32760},
        {100, -100, 0, 0, 0, 0},
        {32767, 32767, 0, 0, -1, 16383}};
    for (const auto& [a, b, wa, wb, w2, sum] : cases) {
        SCOPED_TRACE(a);
        SummedChannelAccumulator acc;
        SonarMessage m0 = MakeTrace({.weighting = wa}, {a});
        SonarMessage m1 = MakeTrace({.channel = 1, .weighting = wb}, {b});
        EXPECT_EQ(acc.Offer(m0, 0, 3), nullptr);
        EXPECT_EQ(acc.Offer(m0, 2, 3), nullptr);  // not in the mask
        SonarMessage* out = acc.Offer(m1, 1, 3);
        ASSERT_NE(out, nullptr);
        const auto p = out->Payload();
        EXPECT_EQ(ConstTraceHeaderView(p).GetInt(TraceField::WeightingFactor), w2);
        EXPECT_EQ(LoadLE<std::int16_t>(p.data() + kTraceHeaderSize), sum);
    }
    // A new ping starts the sum again.
    SummedChannelAccumulator acc;
    SonarMessage m0 = MakeTrace({}, {1}), m1 = MakeTrace({.ping = 2, .channel = 1}, {1});
    acc.Offer(m0, 0, 3);
    EXPECT_EQ(acc.Offer(m1, 1, 3), nullptr);
    EXPECT_EQ(acc.Seen(), 2u);
}

TEST(ChannelProcessor, SummedChannelReachesItsDisplay) {
    ChainRig rig;
    rig.general.Modify([](GeneralValues& g) { g.SummedChannel1 = 0b101; });
    rig.Configure(0, 51);
    EXPECT_TRUE(rig.Send({}, Step(4, 8)).empty());
    auto lines = rig.Send({.channel = 2}, Step(4, 8));
    ASSERT_EQ(lines.size(), 1u);
    // 32767 + 32767 halved is 32767, one over 32760: stored as 16383 with exponent -1, which
    // scales back to 32766 and truncates to 254.
    EXPECT_EQ(lines[0]->pixels[5], 254);
}

TEST(ChannelProcessor, SampleRateAutoGainAndPingSelection) {
    ChainRig rig;
    rig.Configure(0, 0, [](DisplayProcessingConfig& r) { r.autoGainRequest = 1; });
    SonarMessage m = MakeTrace({.intervalNs = 0}, std::vector<std::int16_t>(8, 3276));
    rig.Deliver(m);
    EXPECT_EQ(ConstTraceHeaderView(m.Payload()).GetInt(TraceField::SampleIntervalNS), 1000);
    {
        auto r = rig.set.Lock(0);
        EXPECT_EQ(r->sampleRate, 1.0e6f);
        EXPECT_EQ(r->autoGainAcknowledge, 1);
        EXPECT_NEAR(r->RefGain0, -20.0 * std::log10(3276.0 / 32767.0), 1e-4);
        r->MPXOptions = 0x21;  // every second ping, phase 0
        r.Bump();
    }
    rig.TakeLines();
    std::vector<int> pings;
    for (int ping = 4; ping <= 7; ++ping) {
        for (auto& e : rig.Send({.ping = ping, .intervalNs = 0}, Step(4, 8))) {
            pings.push_back(e->Header().GetInt(TraceField::PingNumber));
        }
    }
    EXPECT_EQ(pings, (std::vector<int>{4, 6}));
}

TEST(ChannelProcessor, SoundSpeedReportsSetTheWaterSpeed) {
    ChainRig rig;
    auto report = [&](std::uint32_t flags, std::int32_t raw) {
        SonarMessage m = SonarMessage::Build(MsgPressure, DirReply, 101, 0, 76);
        StoreLE<std::uint32_t>(m.Payload().data() + 24, flags);
        StoreLE<std::int32_t>(m.Payload().data() + 32, raw);
        rig.Deliver(m, SourceSonarData);
        return rig.general.Snapshot().WaterSoundSpeed;
    };
    EXPECT_EQ(report(0x10, 1480000), 1500);  // source not chosen
    rig.general.Modify([](GeneralValues& g) { g.SoundSpeedSource = 1; });
    EXPECT_EQ(report(0x01, 1480000), 1500);  // no sound speed flag
    const int before = rig.general.ChangeCount();
    EXPECT_EQ(report(0x10, 1480000), 1480);
    EXPECT_EQ(rig.general.ChangeCount(), before + 1);
    // A raw value within 1 of the setting waits for 51 differing reports.
    for (int i = 0; i < 50; ++i) report(0x10, 1481);
    EXPECT_EQ(rig.general.Snapshot().WaterSoundSpeed, 1480);
    EXPECT_EQ(report(0x10, 1481), 1);
}

TEST(ChannelProcessor, HostileTracesAndSettingsStayDefined) {
    // Random headers, bytes and settings (run under the sanitizers in CI): every line that comes
    // out has both byte lines of its stated size.
    std::uint32_t seed = 2024;
    auto next = [&seed] { return seed = seed * 1664525u + 1013904223u; };
    auto any = [&next] { return static_cast<int>(next()); };
    auto upTo = [&next](int n) { return static_cast<int>(next() % static_cast<unsigned>(n)); };
    auto s16 = [&next] { return static_cast<std::int16_t>(next()); };
    const float wild[] = {0, -1, 1e30f, -1e30f, NAN, INFINITY, 3.5f, 127, 600};
    using C = DisplayProcessingConfig;
    ChainRig rig;
    for (int round = 0; round < 300; ++round) {
        rig.Configure(0, 0, [&](C& r) {
            for (float C::*f : {&C::RefGain0, &C::TVGStart, &C::TrackRange, &C::TrackThreshold,
                                &C::DirectPath0, &C::DirectPathn, &C::RCTimeConst}) {
                r.*f = wild[upTo(9)];
            }
            r.Gain = upTo(801) - 400, r.TVG = any(), r.TVGLimit = upTo(2000), r.Holdoff = any();
            r.HeaveSource = upTo(3), r.HeaveTimeConst = upTo(600), r.MedianFilter = upTo(200);
            r.DCFilter = upTo(300), r.DirectPathEnable = 1, r.DirectPathTraces = upTo(5) - 1;
            r.DualChannel = upTo(3), r.MPXOptions = upTo(128);
        });
        rig.general.Modify(
            [&](GeneralValues& g) { g.UserUnits = upTo(3), g.WaterSoundSpeed = upTo(3000) - 10; });
        TraceBuild b{.format = upTo(12), .ping = any(), .channel = upTo(2)};
        b.intervalNs = any(), b.startDepth = any(), b.weighting = s16(), b.heave = s16();
        std::vector<std::int16_t> v(next() % 300);
        for (auto& x : v) x = s16();
        for (const auto& e : rig.Send(b, v)) {
            ASSERT_EQ(e->pixels.size(), static_cast<std::size_t>(e->size));
            ASSERT_EQ(e->rawPixels.size(), static_cast<std::size_t>(e->size));
        }
    }
}

class CountingPrinter : public LinePrinterIF {
  public:
    void OfferLine(const SonarDataCacheElement&) override { ++lines; }
    int lines = 0;
};

TEST(DisplayLineOutput, PlaybackWaitsOnTheClockLiveDrops) {
    FakeTickSource clock;
    ChainRig rig;
    rig.onSleep = [&] { clock.AdvanceTick(100); };
    CountingPrinter printer;
    rig.output.AddPrinter(&printer);
    auto deliver = [&] { return rig.output.Deliver(std::make_unique<SonarDataCacheElement>(4)); };
    for (std::uint32_t i = 0; i < DisplayQueue::kCapacity; ++i) ASSERT_TRUE(deliver());
    // Live: no wait at all.
    EXPECT_FALSE(deliver());
    EXPECT_EQ(clock.TickCount(), 0u);
    // Playback: 50 waits of 100 ms, then the line is dropped.
    rig.playback = true;
    EXPECT_FALSE(deliver());
    EXPECT_EQ(clock.TickCount(), 5000u);
    // A reader that frees a slot after 300 ms lets the line through.
    int sleeps = 0;
    rig.onSleep = [&] {
        clock.AdvanceTick(100);
        DisplayQueueEntry e;
        if (++sleeps == 3) rig.set.Queue().Take(e);
    };
    EXPECT_TRUE(deliver());
    EXPECT_EQ(clock.TickCount(), 5300u);
    // Closing: the program no longer runs, so nothing waits.
    rig.coordinator.Running().Clear();
    EXPECT_FALSE(deliver());
    EXPECT_EQ(clock.TickCount(), 5300u);
    EXPECT_EQ(printer.lines, 204);
    EXPECT_EQ(rig.output.Dropped(), 3u);
}

SonarMessage PulseTrace(int format, int pulses, int ping, const std::vector<std::int16_t>& v) {
    SonarMessage m = MakeTrace({.format = format, .ping = ping}, v);
    TraceHeaderView(m.Payload()).SetInt(TraceField::NumOfPulses, pulses);
    return m;
}

bool Equalise(MultiPulseEqualiser& eq, const SonarMessage& m, std::vector<std::int16_t>& out) {
    const auto p = m.Payload();
    return eq.Apply(ConstTraceHeaderView(p), p.subspan(kTraceHeaderSize), 0, out);
}

std::vector<std::int16_t> Flat(std::int16_t level, std::size_t n = 60) {
    return std::vector<std::int16_t>(n, level);
}

TEST(MultiPulseEqualiser, TakesOnlyEnvelopesOfTwoToFourPulses) {
    const std::tuple<int, int, bool> cases[] = {{0, 2, true},  {0, 4, true},  {0, 0, true},
                                                {0, 1, false}, {0, 5, false}, {2, 2, false}};
    for (const auto& [format, pulses, applies] : cases) {
        SCOPED_TRACE(testing::Message() << format << " " << pulses);
        MultiPulseEqualiser eq;
        std::vector<std::int16_t> out = {42};
        EXPECT_EQ(Equalise(eq, PulseTrace(format, pulses, 1, Flat(100, 12)), out), applies);
        EXPECT_EQ(out.size(), applies ? 12u : 1u);
    }
    MultiPulseEqualiser eq;
    std::vector<std::int16_t> out;
    EXPECT_FALSE(Equalise(eq, PulseTrace(0, 2, 1, {}), out));
}

TEST(MultiPulseEqualiser, LiftsTheQuietPhaseTowardTheLoudOne) {
    MultiPulseEqualiser eq;
    std::vector<std::int16_t> out;
    // Phase 0 at 1000, phase 1 at 900 (needs 1.111) and, later, at 500 (needs 2, held at 1.3).
    const SonarMessage loud = PulseTrace(0, 2, 0, Flat(1000));
    ASSERT_TRUE(Equalise(eq, loud, out));
    EXPECT_EQ(out[0], static_cast<std::int16_t>(1000 / 1.31));
    ASSERT_TRUE(Equalise(eq, PulseTrace(0, 2, 1, Flat(900)), out));
    EXPECT_EQ(out[30], static_cast<std::int16_t>(900 * (1000.0 / 900.0) / 1.31));
    MultiPulseEqualiser eq2;
    Equalise(eq2, loud, out);
    Equalise(eq2, PulseTrace(0, 2, 1, Flat(500)), out);
    EXPECT_EQ(out[59], static_cast<std::int16_t>(500 * 1.3 / 1.31));
}

TEST(MultiPulseEqualiser, InterpolatesBetweenSegmentCentres) {
    MultiPulseEqualiser eq;
    std::vector<std::int16_t> out;
    std::vector<std::int16_t> half = Flat(1000);
    std::fill(half.begin(), half.begin() + 30, 909);  // 1.1 below
    Equalise(eq, PulseTrace(0, 2, 0, Flat(1000)), out);
    Equalise(eq, PulseTrace(0, 2, 1, half), out);
    // Segments of 10 samples have centres at 5, 15, 25 (1.1) and 35 (1.0); the middle of sample
    // 29, at 29.5, lies 0.45 of the way from 25 to 35.
    const double c = 1000.0 / 909.0;
    EXPECT_EQ(out[20], static_cast<std::int16_t>(909 * c / 1.31));
    EXPECT_EQ(out[29], static_cast<std::int16_t>(909 * (c + (1.0 - c) * 0.45) / 1.31));
    EXPECT_EQ(out[40], static_cast<std::int16_t>(1000 / 1.31));
}

TEST(MultiPulseEqualiser, ChangeOfPulsesOrLengthForgets) {
    MultiPulseEqualiser eq;
    std::vector<std::int16_t> out;
    const SonarMessage quiet = PulseTrace(0, 3, 1, Flat(900));
    Equalise(eq, PulseTrace(0, 2, 0, Flat(1000)), out);
    Equalise(eq, quiet, out);  // three pulses now: the loud phase of two is forgotten
    EXPECT_EQ(out[0], static_cast<std::int16_t>(900 / 1.31));
    Equalise(eq, PulseTrace(0, 3, 0, Flat(2000, 30)), out);
    Equalise(eq, quiet, out);
    EXPECT_EQ(out[0], static_cast<std::int16_t>(900 / 1.31));
}

}  // namespace
}  // namespace halvo::test

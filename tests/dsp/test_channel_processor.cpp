// The line procedure on whole traces: tracking, heave, reflection, dual layout, dispatch, summed
// channels, auto gain, ping selection, sound speed and the playback wait.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "ChainRig.h"
#include "dsp/SummedChannelAccumulator.h"
#include "platform/FakeTickSource.h"

namespace halvo::test {
namespace {

// 64 envelope samples, full scale from `step` on.
std::vector<std::int16_t> Step(int step, int n = 64) {
    std::vector<std::int16_t> v(static_cast<std::size_t>(n), 0);
    for (int i = std::max(step, 0); i < n; ++i) v[static_cast<std::size_t>(i)] = 32767;
    return v;
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
        ChainRig rig;
        rig.Configure(0, 0, [&](DisplayProcessingConfig& r) {
            r.TVGStart = 25;
            r.TrackRange = c.range;
            r.TrackThreshold = 50;
            r.Holdoff = c.holdoff;
        });
        const int revision = rig.set.Lock(0)->revision;
        SonarMessage m = MakeTrace({}, Step(c.step));
        rig.Deliver(m);
        auto lines = rig.Lines();
        ASSERT_EQ(lines.size(), 1u) << c.what;
        EXPECT_EQ(rig.set.Lock(0)->TVGStart, c.expect) << c.what;
        EXPECT_EQ(lines[0]->bottomSample, static_cast<int>(c.expect)) << c.what;
        // The tracker writes without a bump (the traces' rate is the record's 25 kHz already).
        EXPECT_EQ(rig.set.Lock(0)->revision, revision) << c.what;
    }
}

TEST(ChannelProcessor, HeaveFromHeaderShiftsBothLines) {
    struct {
        int heave;
        int at;
    } cases[] = {{3, 8}, {-2, 3}, {0, 5}, {16, 5}, {-16, 5}, {15, 20}};
    for (const auto& c : cases) {
        ChainRig rig;
        rig.Configure(0, 0, [](DisplayProcessingConfig& r) { r.HeaveSource = 2; });
        std::vector<std::int16_t> v(16, 0);
        v[5] = 32767;
        TraceBuild b;
        b.heave = c.heave;
        SonarMessage m = MakeTrace(b, v);
        rig.Deliver(m);
        auto lines = rig.Lines();
        ASSERT_EQ(lines.size(), 1u);
        const auto& e = *lines[0];
        const auto peak = std::max_element(e.pixels.begin(), e.pixels.end()) - e.pixels.begin();
        EXPECT_EQ(peak, c.at < 16 ? c.at : 0) << "heave " << c.heave;
        EXPECT_EQ(std::count(e.pixels.begin(), e.pixels.end(), 255), c.at < 16 ? 1 : 0);
        EXPECT_EQ(e.rawPixels, e.pixels);
        EXPECT_EQ(e.heaveSamples, c.heave);
    }
}

TEST(ChannelProcessor, HeaveFromSmoothedBottomFollowsTheAverage) {
    ChainRig rig;
    rig.Configure(0, 0, [](DisplayProcessingConfig& r) {
        r.TVGStart = 30;
        r.TrackRange = 15;
        r.TrackThreshold = 50;
        r.HeaveSource = 1;
        r.HeaveTimeConst = 2;
    });
    int firstLit[3] = {};
    const int steps[3] = {30, 30, 40};
    for (int p = 0; p < 3; ++p) {
        SonarMessage m = MakeTrace({}, Step(steps[p]));
        rig.Deliver(m);
        auto lines = rig.Lines();
        ASSERT_EQ(lines.size(), 1u);
        firstLit[p] =
            static_cast<int>(std::find(lines[0]->pixels.begin(), lines[0]->pixels.end(), 255) -
                             lines[0]->pixels.begin());
    }
    // Two pings fill the window of 2; the third averages 30 and 40 and moves 40 to 35.
    EXPECT_EQ(firstLit[0], 30);
    EXPECT_EQ(firstLit[1], 30);
    EXPECT_EQ(firstLit[2], 35);
    EXPECT_EQ(rig.processor.Channel(0).SmoothedBottom(), 35);
}

TEST(ChannelProcessor, ReflectionFiltersWithTheTimeConstant) {
    ChainRig rig;
    rig.Configure(0, 0, [](DisplayProcessingConfig& r) {
        r.TVGStart = 30;
        r.TrackEnabled = 0;
        r.RCTimeConst = 1;
        r.ReflectionCoefDBGain = 10;
    });
    std::vector<std::int16_t> v(64, 0);
    v[30] = 1000;
    v[31] = 2000;
    v[32] = 500;
    TraceBuild b;
    b.format = 2;
    float states[2];
    for (float& s : states) {
        SonarMessage m = MakeTrace(b, v);
        rig.Deliver(m);
        auto lines = rig.Lines();
        ASSERT_EQ(lines.size(), 1u);
        s = lines[0]->reflection;
    }
    const double value = 20.0 * std::log10(2000.0) - 10.0;
    EXPECT_NEAR(states[0], 0.63 * value, 1e-3);
    EXPECT_NEAR(states[1], 0.63 * value + 0.37 * 0.63 * value, 1e-3);
    EXPECT_EQ(rig.processor.LatestReflection(), states[1]);

    // A bottom outside the trace gives 0 and leaves the filter alone.
    b.startDepth = 40;
    SonarMessage m = MakeTrace(b, v);
    rig.Deliver(m);
    EXPECT_EQ(rig.Lines().at(0)->reflection, 0.0f);
    EXPECT_EQ(rig.processor.Channel(0).ReflectionState(), states[1]);
}

TEST(ChannelProcessor, DualLayoutMirrorsSideZeroAndDrawsTheCentre) {
    ChainRig rig;
    rig.Configure(0, 0, [](DisplayProcessingConfig& r) { r.DualChannel = 1; });
    rig.Configure(1, 0);
    rig.Configure(2, 1);
    std::vector<std::int16_t> a(8), b(8);
    for (int i = 0; i < 8; ++i) {
        a[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(1000 * (i + 1));
        b[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(3000 * (i + 1));
    }
    TraceBuild side0, side1;
    side1.channel = 1;
    SonarMessage m0 = MakeTrace(side0, a);
    SonarMessage m1 = MakeTrace(side1, b);
    rig.Deliver(m0);
    EXPECT_EQ(rig.processor.Channel(0).SideMask(), 1);
    rig.Deliver(m1);
    auto lines = rig.Lines();
    ASSERT_EQ(lines.size(), 3u);  // single 0, dual 0+1, single 1 in display order of arrival
    const SonarDataCacheElement* dual = nullptr;
    const SonarDataCacheElement* single[2] = {};
    for (const auto& e : lines) {
        if (e->displayIndex == 0) dual = e.get();
        if (e->displayIndex == 1) single[0] = e.get();
        if (e->displayIndex == 2) single[1] = e.get();
    }
    ASSERT_TRUE(dual && single[0] && single[1]);
    EXPECT_EQ(dual->size, 16);
    EXPECT_EQ(dual->dualChannel, 1);
    std::vector<std::uint8_t> want(single[0]->pixels.rbegin(), single[0]->pixels.rend());
    want.insert(want.end(), single[1]->pixels.begin(), single[1]->pixels.end());
    want[6] = 255;
    want[7] = 0;
    want[8] = 0;
    want[9] = 255;
    EXPECT_EQ(dual->pixels, want);
    // The raw line of side 1 overwrote side 0's at the start; the second half stays empty.
    EXPECT_TRUE(std::equal(single[1]->rawPixels.begin(), single[1]->rawPixels.end(),
                           dual->rawPixels.begin()));
    EXPECT_TRUE(std::all_of(dual->rawPixels.begin() + 8, dual->rawPixels.end(),
                            [](std::uint8_t v) { return v == 0; }));
}

TEST(ChannelProcessor, LostPartnerCostsOneLine) {
    ChainRig rig;
    rig.Configure(0, 0, [](DisplayProcessingConfig& r) { r.DualChannel = 1; });
    for (int ping : {1, 2}) {
        TraceBuild b;
        b.ping = ping;
        SonarMessage m = MakeTrace(b, Step(4, 8));
        rig.Deliver(m);
    }
    EXPECT_TRUE(rig.Lines().empty());
    TraceBuild b;
    b.ping = 2;
    b.channel = 1;
    SonarMessage m = MakeTrace(b, Step(4, 8));
    rig.Deliver(m);
    auto lines = rig.Lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0]->Header().GetInt(TraceField::PingNumber), 2);
}

TEST(ChannelProcessor, DispatchBySonarQcAndTwiceInARow) {
    ChainRig rig({{7, 4}, {9, 10}});
    rig.Configure(0, 5);   // sonar 0, channel byte 1
    rig.Configure(1, 53);  // QC of sonar 0, byte 1
    rig.Configure(2, 57);  // QC of sonar 1 (52 + 2 + 1... byte 3 is ignored)
    TraceBuild b;
    b.channel = 1;
    SonarMessage plain = MakeTrace(b, Step(4, 8));
    rig.Deliver(plain);
    EXPECT_EQ(rig.Lines().size(), 2u);  // the same trace twice
    b.direction = DirQC;
    SonarMessage qc = MakeTrace(b, Step(4, 8));
    rig.Deliver(qc);
    auto lines = rig.Lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0]->displayIndex, 1);
    b.channel = 3;
    SonarMessage ignored = MakeTrace(b, Step(4, 8));
    rig.Deliver(ignored);
    b.direction = DirReply;
    b.subsystem = 99;  // no sonar: once, by `Channel Number`
    SonarMessage unknown = MakeTrace(b, Step(4, 8));
    rig.Deliver(unknown, SourceSonarData);
    EXPECT_TRUE(rig.Lines().empty());
    rig.Deliver(unknown, SourceLocal);  // not a data source
    EXPECT_TRUE(rig.Lines().empty());
}

TEST(SummedChannel, WeightsByExponentAndCountAndRescales) {
    struct {
        int a, b, wa, wb, w2, out;
    } cases[] = {{32760, 32760, 0, 0, 0, 32760},
                 {16380, 16380, 0, 0, 1, 32760},
                 {32760, 32760, 1, 1, 1, 32760},
                 {100, -100, 0, 0, 0, 0},
                 {32767, 32767, 0, 0, -1, 16383}};
    for (const auto& c : cases) {
        SummedChannelAccumulator acc;
        TraceBuild b;
        b.weighting = c.wa;
        SonarMessage m0 = MakeTrace(b, {static_cast<std::int16_t>(c.a)});
        b.channel = 1;
        b.weighting = c.wb;
        SonarMessage m1 = MakeTrace(b, {static_cast<std::int16_t>(c.b)});
        EXPECT_EQ(acc.Offer(m0, 0, 3), nullptr);
        EXPECT_EQ(acc.Offer(m0, 2, 3), nullptr);  // not in the mask
        SonarMessage* out = acc.Offer(m1, 1, 3);
        ASSERT_NE(out, nullptr);
        const auto p = out->Payload();
        EXPECT_EQ(ConstTraceHeaderView(p).GetInt(TraceField::WeightingFactor), c.w2) << c.a;
        EXPECT_EQ(LoadLE<std::int16_t>(p.data() + kTraceHeaderSize), c.out) << c.a;
    }
    // A new ping starts the sum again.
    SummedChannelAccumulator acc;
    TraceBuild b;
    SonarMessage m0 = MakeTrace(b, {1});
    b.ping = 2;
    b.channel = 1;
    SonarMessage m1 = MakeTrace(b, {1});
    acc.Offer(m0, 0, 3);
    EXPECT_EQ(acc.Offer(m1, 1, 3), nullptr);
    EXPECT_EQ(acc.Seen(), 2u);
}

TEST(ChannelProcessor, SummedChannelReachesItsDisplay) {
    ChainRig rig;
    rig.general.Modify([](GeneralValues& g) { g.SummedChannel1 = 0b101; });
    rig.Configure(0, 51);
    for (int ch : {0, 2}) {
        TraceBuild b;
        b.channel = ch;
        SonarMessage m = MakeTrace(b, Step(4, 8));
        rig.Deliver(m);
    }
    auto lines = rig.Lines();
    ASSERT_EQ(lines.size(), 1u);
    // 32767 + 32767 halved is 32767, one over 32760: stored as 16383 with exponent -1, which
    // scales back to 32766 and truncates to 254.
    EXPECT_EQ(lines[0]->pixels[5], 254);
}

TEST(ChannelProcessor, SampleRateAutoGainAndPingSelection) {
    ChainRig rig;
    rig.Configure(0, 0, [](DisplayProcessingConfig& r) { r.autoGainRequest = 1; });
    TraceBuild b;
    b.intervalNs = 0;
    SonarMessage m = MakeTrace(b, std::vector<std::int16_t>(8, 3276));
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
    rig.Lines();
    std::vector<int> pings;
    for (int ping = 4; ping <= 7; ++ping) {
        b.ping = ping;
        SonarMessage t = MakeTrace(b, Step(4, 8));
        rig.Deliver(t);
        for (auto& e : rig.Lines()) pings.push_back(e->Header().GetInt(TraceField::PingNumber));
    }
    EXPECT_EQ(pings, (std::vector<int>{4, 6}));
}

TEST(ChannelProcessor, SoundSpeedReportsSetTheWaterSpeed) {
    ChainRig rig;
    auto report = [&](std::uint32_t flags, std::int32_t raw) {
        std::vector<std::uint8_t> p(76, 0);
        StoreLE<std::uint32_t>(p.data() + 24, flags);
        StoreLE<std::int32_t>(p.data() + 32, raw);
        SonarMessage m = SonarMessage::Build(MsgPressure, DirReply, 101, 0, 76);
        std::copy(p.begin(), p.end(), m.Payload().begin());
        rig.Deliver(m, SourceSonarData);
    };
    report(0x10, 1480000);
    EXPECT_EQ(rig.general.Snapshot().WaterSoundSpeed, 1500);  // source not chosen
    rig.general.Modify([](GeneralValues& g) { g.SoundSpeedSource = 1; });
    report(0x01, 1480000);
    EXPECT_EQ(rig.general.Snapshot().WaterSoundSpeed, 1500);  // no sound speed flag
    const int before = rig.general.ChangeCount();
    report(0x10, 1480000);
    EXPECT_EQ(rig.general.Snapshot().WaterSoundSpeed, 1480);
    EXPECT_EQ(rig.general.ChangeCount(), before + 1);
    // A raw value within 1 of the setting waits for 51 differing reports.
    for (int i = 0; i < 50; ++i) report(0x10, 1481);
    EXPECT_EQ(rig.general.Snapshot().WaterSoundSpeed, 1480);
    report(0x10, 1481);
    EXPECT_EQ(rig.general.Snapshot().WaterSoundSpeed, 1);
}

TEST(ChannelProcessor, HostileTracesAndSettingsStayDefined) {
    // Random headers, bytes and settings (run under the sanitizers in CI): every line that comes
    // out has both byte lines of its stated size.
    std::uint32_t seed = 2024;
    auto next = [&seed] {
        seed = seed * 1664525u + 1013904223u;
        return seed;
    };
    auto wild = [&next] {
        const float choices[] = {0, -1, 1e30f, -1e30f, NAN, INFINITY, 3.5f, 127, 600};
        return choices[next() % 9];
    };
    ChainRig rig;
    for (int round = 0; round < 300; ++round) {
        rig.Configure(0, 0, [&](DisplayProcessingConfig& r) {
            r.Gain = static_cast<int>(next() % 801) - 400;
            r.TVG = static_cast<int>(next());
            r.TVGLimit = static_cast<int>(next() % 2000);
            r.RefGain0 = wild();
            r.TVGStart = wild();
            r.TrackRange = wild();
            r.TrackThreshold = wild();
            r.Holdoff = static_cast<int>(next());
            r.HeaveSource = static_cast<int>(next() % 3);
            r.HeaveTimeConst = static_cast<int>(next() % 600);
            r.MedianFilter = static_cast<int>(next() % 200);
            r.DCFilter = static_cast<int>(next() % 300);
            r.DirectPathEnable = 1;
            r.DirectPath0 = wild();
            r.DirectPathn = wild();
            r.DirectPathTraces = static_cast<int>(next() % 5) - 1;
            r.RCTimeConst = wild();
            r.DualChannel = static_cast<int>(next() % 3);
            r.MPXOptions = static_cast<int>(next() % 128);
        });
        rig.general.Modify([&](GeneralValues& g) {
            g.UserUnits = static_cast<int>(next() % 3);
            g.WaterSoundSpeed = static_cast<int>(next() % 3000) - 10;
        });
        TraceBuild b;
        b.format = static_cast<int>(next() % 12);
        b.ping = static_cast<int>(next());
        b.channel = static_cast<int>(next() % 2);
        b.intervalNs = static_cast<int>(next());
        b.startDepth = static_cast<int>(next());
        b.weighting = static_cast<std::int16_t>(next());
        b.heave = static_cast<std::int16_t>(next());
        std::vector<std::int16_t> v(next() % 300);
        for (auto& x : v) x = static_cast<std::int16_t>(next());
        SonarMessage m = MakeTrace(b, v);
        rig.Deliver(m);
        for (const auto& e : rig.Lines()) {
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
    for (std::uint32_t i = 0; i < DisplayQueue::kCapacity; ++i) {
        ASSERT_TRUE(rig.output.Deliver(std::make_unique<SonarDataCacheElement>(4)));
    }
    // Live: no wait at all.
    EXPECT_FALSE(rig.output.Deliver(std::make_unique<SonarDataCacheElement>(4)));
    EXPECT_EQ(clock.TickCount(), 0u);
    // Playback: 50 waits of 100 ms, then the line is dropped.
    rig.playback = true;
    EXPECT_FALSE(rig.output.Deliver(std::make_unique<SonarDataCacheElement>(4)));
    EXPECT_EQ(clock.TickCount(), 5000u);
    // A reader that frees a slot after 300 ms lets the line through.
    int sleeps = 0;
    rig.onSleep = [&] {
        clock.AdvanceTick(100);
        DisplayQueueEntry e;
        if (++sleeps == 3) rig.set.Queue().Take(e);
    };
    EXPECT_TRUE(rig.output.Deliver(std::make_unique<SonarDataCacheElement>(4)));
    EXPECT_EQ(clock.TickCount(), 5300u);
    // Closing: the program no longer runs, so nothing waits.
    rig.coordinator.Running().Clear();
    EXPECT_FALSE(rig.output.Deliver(std::make_unique<SonarDataCacheElement>(4)));
    EXPECT_EQ(clock.TickCount(), 5300u);
    EXPECT_EQ(printer.lines, 204);
    EXPECT_EQ(rig.output.Dropped(), 3u);
}

}  // namespace
}  // namespace halvo::test

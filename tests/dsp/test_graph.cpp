// The graph page's computation against values worked by hand: the time plot types, the windows
// and the scaling of the spectrum, the correlation of a shifted trace, the numbered save files,
// the statistics captions and the slot hand-over from the bus. And `halvo-hsf graph` over a
// recording, which is how the page's numbers are checked from outside.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <numbers>

#include "HsfTool.h"
#include "app/TempWorkDir.h"
#include "core/ByteOrder.h"
#include "core/MessageTypes.h"
#include "core/TraceHeader.h"
#include "display/PlotModel.h"
#include "dsp/SonarChannelMap.h"
#include "dsp/graph/GraphCompute.h"
#include "dsp/graph/GraphSession.h"
#include "dsp/graph/GraphTaker.h"
#include "storage/HsfTestWriter.h"

namespace halvo {
namespace {

GraphTrace Real(std::vector<float> v, std::uint32_t interval = 1000) {
    GraphTrace t;
    t.values = std::move(v);
    t.interval = interval;
    return t;
}

TEST(GraphTimePlot, TypesOfAComplexTraceAndTheReferenceOfSlotZero) {
    GraphTrace t;
    t.format = 1;
    t.interval = 20000;
    t.startDepth = 10;
    // Samples (3,4), (0,2), (-1,0): the middle one is the reference at the full view.
    t.values = {3, 4, 0, 2, -1, 0};
    const GraphUnits samples{2, 1500};
    auto y = [&](int type, int slot) {
        return GraphCompute::TimeCurve(t, type, slot, 0.0, 1.0, samples).y;
    };
    EXPECT_EQ(y(0, 0), (std::vector<float>{5, 2, 1}));
    EXPECT_EQ(y(1, 0), (std::vector<float>{3, 0, -1}));
    EXPECT_EQ(y(2, 0), (std::vector<float>{4, 2, 0}));
    EXPECT_NEAR(y(3, 0)[0], 53.130, 1e-3);
    EXPECT_NEAR(y(3, 0)[2], 180.0, 1e-4);
    // Reference (0,2): c = 0, d = 1. Phase0 = im, Phase90 = -re, relative angle from +90 deg.
    EXPECT_EQ(y(4, 0), (std::vector<float>{4, 2, 0}));
    EXPECT_EQ(y(5, 0), (std::vector<float>{-3, 0, 1}));
    EXPECT_NEAR(y(6, 0)[1], 0.0, 1e-4);
    EXPECT_NEAR(y(6, 0)[0], 53.130 - 90.0, 1e-3);
    // Slot 1 keeps c = 1, d = 0: Phase0 is the real part.
    EXPECT_EQ(y(4, 1), (std::vector<float>{3, 0, -1}));
    // A zero reference gives zero for both.
    GraphTrace z = t;
    z.values = {3, 4, 0, 0, -1, 0};
    EXPECT_EQ(GraphCompute::TimeCurve(z, 4, 0, 0.0, 1.0, samples).y, (std::vector<float>{0, 0, 0}));

    // x ranges in each unit: 20 us samples from start depth 10 to 12.
    const GraphCurve m = GraphCompute::TimeCurve(t, 0, 0, 0, 1, {0, 1501});
    EXPECT_NEAR(m.xFirst, 10 * 0.02 * 750 / 1000.0, 1e-9);  // 1501 / 2 halves as an integer
    EXPECT_NEAR(m.xLast, 12 * 0.02 * 750 / 1000.0, 1e-9);
    const GraphCurve ms = GraphCompute::TimeCurve(t, 0, 0, 0, 1, {1, 1500});
    EXPECT_NEAR(ms.xLast, 0.24, 1e-9);
    EXPECT_EQ(GraphCompute::TimeCurve(t, 0, 0, 0, 1, samples).xLast, 12);

    GraphTrace mean = t;
    GraphCompute::RemoveMean(mean);
    EXPECT_NEAR(mean.values[0], 3 - 2.0 / 3, 1e-6);
    EXPECT_NEAR(mean.values[1], 4 - 2.0, 1e-6);
}

TEST(GraphSpectrum, LengthsScalingAndWindowsAtTheDcBin) {
    EXPECT_EQ(GraphCompute::TransformLength(100), 512);
    EXPECT_EQ(GraphCompute::TransformLength(513), 1024);
    EXPECT_EQ(GraphCompute::TransformLength(1000000), 32768);

    GraphCompute g;
    // A constant 3 over a gate of 100 samples from sample 1: the DC bin is the gain times the
    // sum of the window. Hann sums to (N-1)/2, Hamming to 0.54N - 0.46, Blackman to 0.42(N-1).
    const GraphTrace t = Real(std::vector<float>(400, 3.0f), 2000);
    const double n = 100;
    const auto dc = [&](bool norm, int window) {
        return g.SpectrumOf(t, 1, 101, norm, window).curve.y[0];
    };
    EXPECT_NEAR(dc(true, 0), 3 * n * 2 / n, 1e-3);
    EXPECT_NEAR(dc(false, 0), 3 * n * 2, 1e-2);  // "Norm" off keeps the gain at 2
    EXPECT_NEAR(dc(true, 1), 3 * (n - 1) / 2 * 2 / n, 1e-3);
    EXPECT_NEAR(dc(true, 2), 3 * (0.54 * n - 0.46) * 2 / n, 1e-3);
    EXPECT_NEAR(dc(true, 3), 3 * 0.42 * (n - 1) * 2 / n, 1e-3);
    const auto s = g.SpectrumOf(t, 1, 101, true, 0);
    EXPECT_EQ(s.length, 512);
    EXPECT_NEAR(s.spectralScale, 0.5f * n, 1e-3);
    EXPECT_DOUBLE_EQ(s.curve.xLast, 1e9 / 2000);
    // Sample 0 never enters: a gate from 0 holds one value less.
    EXPECT_NEAR(g.SpectrumOf(t, 0, 100, true, 0).curve.y[0], 3 * 99 * 2 / n, 1e-3);
    // An empty gate: gain 1, nothing copied; a gate past the trace: zeros.
    const auto empty = g.SpectrumOf(t, 50, 50, true, 0);
    EXPECT_EQ(empty.spectralScale, 1.0f);
    EXPECT_EQ(empty.curve.y[0], 0.0f);
    EXPECT_EQ(g.SpectrumOf(t, 500, 600, true, 0).curve.y[0], 0.0f);

    // A cosine of bin 64 in a 512-point gate peaks at bin 64.
    std::vector<float> wave(1024);
    for (int i = 0; i < 1024; ++i) wave[i] = std::cos(2 * std::numbers::pi * 64 * (i - 1) / 512.0);
    const auto sine = g.SpectrumOf(Real(wave), 1, 513, true, 1);
    EXPECT_EQ(sine.length, 1024);  // a span of 512: the power of two above it
    const auto peak = std::max_element(sine.curve.y.begin(), sine.curve.y.begin() + 512);
    EXPECT_EQ(peak - sine.curve.y.begin(), 128);  // bin 64 of 512 is bin 128 of 1024
}

TEST(GraphCorrelation, PeakAtTheLagAndNothingForUnequalLengths) {
    GraphCompute g;
    std::vector<float> a(600, 0.0f), b(600, 0.0f);
    for (int i = 0; i < 600; ++i)
        a[i] = static_cast<float>(std::sin(i * 0.37) * std::exp(-std::abs(i - 200) / 30.0));
    constexpr int kLag = 7;
    for (int i = kLag; i < 600; ++i) b[i] = a[i - kLag];
    const auto c = g.CrossCorrelation(Real(a), Real(b), 1, 400, true, {2, 1500});
    ASSERT_TRUE(c);
    const auto peak = std::max_element(c->y.begin(), c->y.end());
    EXPECT_EQ(peak - c->y.begin(), kLag);
    EXPECT_EQ(c->xLast, 511);
    b.resize(599);
    EXPECT_FALSE(g.CrossCorrelation(Real(a), Real(b), 1, 400, true, {2, 1500}));
}

class GraphFiles : public test::TempWorkDir {};

TEST_F(GraphFiles, NumberedSavesGatedPartsAndAllNamesTaken) {
    GraphTrace t = Real({1, 2, 3, 4, 5, 6, 7, 8}, 40000);
    t.format = 0;
    t.adcGain = 6;
    auto s = GraphCompute::Save(t, "trace12", false, 0, 1);
    ASSERT_TRUE(s.written);
    EXPECT_EQ(s.file, "trace000.dat");
    EXPECT_EQ(s.saveFile, "trace000");
    s = GraphCompute::Save(t, s.saveFile, true, 0.25, 0.75);
    EXPECT_EQ(s.file, "trace001.dat");
    std::ifstream in("trace001.dat", std::ios::binary);
    std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)), {});
    ASSERT_EQ(bytes.size(), 12u + 16u);  // values 2..5: bytes 8 to 24
    EXPECT_EQ(GetLE<std::int32_t>(bytes, 0), 40000);
    EXPECT_EQ(GetLE<std::int32_t>(bytes, 8), 6);
    EXPECT_EQ(GetLE<float>(bytes, 12), 3.0f);
    // A name with a dot is used as it stands; an unwritable folder saves nothing.
    EXPECT_TRUE(GraphCompute::Save(t, "plain.bin", false, 0, 1).written);
    const auto bad = GraphCompute::Save(t, "no/such/folder/x", false, 0, 1);
    EXPECT_FALSE(bad.written);
    EXPECT_EQ(bad.saveFile, "no/such/folder/x");
    for (int k = 0; k < 1000; ++k) {
        char name[32];
        std::snprintf(name, sizeof name, "full%03d.dat", k);
        std::ofstream(name).put('x');
    }
    const auto full = GraphCompute::Save(t, "full", false, 0, 1);
    EXPECT_FALSE(full.written);
    EXPECT_FALSE(std::filesystem::exists("full1000.dat"));
}

TEST(PlotModelTest, StatisticsCaptionsAndTheFrequencyRmsRule) {
    PlotModel time(false);
    time.State().options = kPlotMean | kPlotRms | kPlotStdDev | kPlotSampleSize | kPlotMaxVal;
    time.SetCurve(0, {1, 2, 3, 4});
    EXPECT_EQ(time.Caption(), " AVG 2.5  RMS 2.739  SDEV 1.12  N 4  MAX 4.00 ");
    time.State().xFracFirst = 0.5;  // the visible half: 3 and 4
    EXPECT_EQ(time.Figures()->n, 2);
    EXPECT_DOUBLE_EQ(time.Figures()->avg, 3.5);

    PlotModel freq(true);
    freq.State().options = kPlotRms | kPlotPsd;
    freq.SetXRange(0, 4);
    freq.SetSpectralScale(0.5f);
    freq.SetCurve(0, {1, 1, 1, 1});
    // sqrt(4 * 4 / 4) * 0.5 and 4 / 4 * 0.25
    EXPECT_EQ(freq.Caption(), " RMS 1.000  PSD 0.25 ");
    freq.State().options = kPlotDbScale | kPlotAutoScale;
    freq.SetCurve(0, {10, 100, 0});
    EXPECT_FLOAT_EQ(freq.State().yMin, 20.0f);
    EXPECT_FLOAT_EQ(freq.State().yMax, 40.0f);
    EXPECT_FALSE(freq.Shown(0.0f));

    const PlotState back = PlotState::FromText(time.State().ToText());
    EXPECT_EQ(back, time.State());
    EXPECT_EQ(PlotState::FromText("Options=x XFirst=0.9 XLast=0.1").xFracLast, 1.0);
}

SonarMessage Trace(int ping, int channel, std::vector<std::int16_t> samples, int format = 0) {
    TraceSpec spec;
    spec.ping = ping;
    spec.channel = static_cast<std::uint8_t>(channel);
    spec.format = static_cast<std::int16_t>(format);
    spec.samples = static_cast<std::uint16_t>(format == 1 ? samples.size() / 2 : samples.size());
    SonarMessage m = HsfTestWriter::MakeTrace(spec);
    auto p = m.Payload();
    for (std::size_t i = 0; i < samples.size(); ++i)
        PutLE<std::int16_t>(p, kTraceHeaderSize + 2 * i, samples[i]);
    return m;
}

TEST(GraphTakerTest, SlotsHandOverByCountersAndRefuseWhatThePageNeverShows) {
    const FixedSonarChannelMap sonars({{0, 0}, {1, 4}});
    GraphTaker taker(&sonars);
    taker.SetChannels(1, -1);
    SonarMessage first = Trace(1, 1, {1, 2, 3});
    SonarMessage second = Trace(2, 1, {4, 5, 6});
    taker.DeliverMessage(&first, SourceSonarData, 0);
    taker.DeliverMessage(&second, SourceSonarData, 0);  // dropped: the page has not taken the first
    ASSERT_TRUE(taker.Slot(0).Waiting());
    EXPECT_EQ(taker.Slot(0).ping, 1u);
    EXPECT_EQ(taker.Slot(0).values, (std::vector<float>{1, 2, 3}));
    taker.Slot(0).Taken();
    taker.SetPause(true);
    taker.DeliverMessage(&second, SourceSonarData, 0);
    EXPECT_FALSE(taker.Slot(0).Waiting());
    taker.SetPause(false);
    // Sonar 1's channel byte 0 is its first channel, 4; the quality-check copy of sonar 1 is 54.
    SonarMessage other = Trace(3, 0, {1});
    other.set_subsystem(1);
    EXPECT_EQ(GraphTaker::ChannelOf(other, &sonars), 4);
    other.set_direction(DirQC);
    EXPECT_EQ(GraphTaker::ChannelOf(other, &sonars), 54);
    other.set_channel(2);
    EXPECT_EQ(GraphTaker::ChannelOf(other, &sonars), -1);
    other.set_subsystem(9);
    EXPECT_EQ(GraphTaker::ChannelOf(other, &sonars), -1);
    // Format 9 is shown as complex.
    SonarMessage complex = Trace(4, 1, {3, 4}, 9);
    taker.DeliverMessage(&complex, SourceSonarData, 0);
    EXPECT_EQ(taker.Slot(0).format, 1);
}

TEST_F(GraphFiles, CommandPrintsThePagesNumbersForARecording) {
    HsfTestWriter file;
    std::vector<std::int16_t> wave(2000), shifted(2000, 0), shorter(1999, 0);
    for (int i = 0; i < 2000; ++i)
        wave[i] =
            static_cast<std::int16_t>(1000 * std::cos(2 * std::numbers::pi * 32 * i / 1024.0));
    for (int i = 5; i < 2000; ++i) shifted[i] = wave[i - 5];
    file.Add(Trace(1, 0, wave));
    file.Add(Trace(1, 1, shifted));
    file.Add(Trace(2, 0, wave));
    file.Add(Trace(2, 1, shorter));
    ASSERT_TRUE(file.Save("g.hsf"));
    std::ofstream("g.Hni")
        << "[Graph0]\nChannel=0\nChannel2=1\nRemoveMean=0\n[General]\nUserUnits=2\n";

    auto run = test::RunHsf("graph g.hsf --settings g.Hni --gate 1 1025 --json");
    ASSERT_EQ(run.status, 0);
    ASSERT_GE(run.lines.size(), 2u);
    const auto& j = run.lines.back();
    ASSERT_EQ(j["time"].size(), 1u) << "a second channel of another length is not drawn";
    const auto& line0 = run.lines[1];
    ASSERT_EQ(line0["time"].size(), 2u);
    EXPECT_EQ(line0["time"][0]["y"].size(), 2000u);
    const auto& spec = line0["spectrum"][0];
    EXPECT_EQ(spec["length"], 2048);
    std::vector<float> y = spec["y"];
    EXPECT_EQ(std::max_element(y.begin(), y.begin() + 1024) - y.begin(), 64);
    EXPECT_EQ(line0["stats"]["time"]["N"], 2000);

    run = test::RunHsf("graph g.hsf --settings g.Hni --gate 1 1025 --xcorr --json");
    ASSERT_EQ(run.status, 0);
    ASSERT_TRUE(run.lines[1].contains("correlation"));
    std::vector<float> c = run.lines[1]["correlation"]["y"];
    EXPECT_EQ(std::max_element(c.begin(), c.end()) - c.begin(), 5);
    EXPECT_FALSE(run.lines.back().contains("correlation"));
}

}  // namespace
}  // namespace halvo

// Per-trace cost of the display line procedure on 16,384-sample analytic traces with every stage
// on, and of each stage alone, so the figure can be split into where the time goes.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "app/GeneralSettings.h"
#include "app/SystemCoordinator.h"
#include "core/ByteOrder.h"
#include "core/TraceHeader.h"
#include "display/DisplayProcessingSet.h"
#include "dsp/DisplayLineOutput.h"
#include "dsp/HalvoDisplayChannelProcessor.h"
#include "dsp/LineStages.h"

namespace halvo {
namespace {

constexpr int kSamples = 16384;

// Header and analytic samples: noise, a direct arrival near the start, a bottom echo at 6000
// that decays into the sediment.
std::vector<std::uint8_t> MakeTrace(int ping) {
    std::vector<std::uint8_t> t(kTraceHeaderSize + 4 * kSamples, 0);
    TraceHeaderView h(t);
    h.SetInt(TraceField::DataFormat, 1);
    h.SetInt(TraceField::PingNumber, ping);
    h.SetInt(TraceField::SampleIntervalNS, 40000);
    h.SetInt(TraceField::HeaveCompensationSamples, 3);
    std::uint32_t seed = 12345u + static_cast<std::uint32_t>(ping);
    auto noise = [&seed] {
        seed = seed * 1664525u + 1013904223u;
        return static_cast<int>((seed >> 16) % 401) - 200;
    };
    for (int i = 0; i < kSamples; ++i) {
        double a = noise();
        if (i >= 20 && i < 60) a += 12000;
        if (i >= 6000) a += 20000 * std::exp(-(i - 6000) / 2500.0);
        const double phase = 0.3 * i;
        const auto re = static_cast<std::int16_t>(a * std::cos(phase));
        const auto im = static_cast<std::int16_t>(a * std::sin(phase) + noise());
        StoreLE<std::int16_t>(t.data() + kTraceHeaderSize + 4 * i, re);
        StoreLE<std::int16_t>(t.data() + kTraceHeaderSize + 4 * i + 2, im);
    }
    return t;
}

void BM_LineProcedureAllStages(benchmark::State& state) {
    SystemCoordinator coordinator;
    coordinator.Running().Raise();
    GeneralSettings general(coordinator);
    general.Modify([](GeneralValues& g) { g.UserUnits = 2; });
    DisplayProcessingSet set(coordinator, general);
    DisplayLineOutput output(set.Queue(), [] { return false; }, coordinator.Running(), {});
    HalvoDisplayChannelProcessor channel(0, set, output, nullptr);
    {
        auto r = set.Lock(0);
        r->Gain = 6;
        r->Channel = 0;
        r->TVG = 200;
        r->TVGLimit = 40;
        r->TVGStart = 6000;
        r->TrackRange = 200;
        r->TrackThreshold = 30;
        r->HeaveSource = 1;
        r->HeaveTimeConst = 8;
        r->DCFilter = 31;
        r->MedianFilter = 15;
        r->DirectPathEnable = 1;
        r->DirectPath0 = 0;
        r->DirectPathn = 200;
        r->DirectPathTraces = 10;
        r.Bump();
    }
    std::vector<std::vector<std::uint8_t>> traces;
    for (int p = 0; p < 8; ++p) traces.push_back(MakeTrace(p));
    const GeneralValues g = general.Snapshot();
    std::size_t k = 0;
    DisplayQueueEntry entry;
    for (auto _ : state) {
        auto& t = traces[k++ % traces.size()];
        std::span<std::uint8_t> all(t);
        channel.ProcessLine(0, all.first(kTraceHeaderSize), all.subspan(kTraceHeaderSize), g);
        while (set.Queue().Take(entry)) entry.element.reset();
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["samples_per_s"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * kSamples, benchmark::Counter::kIsRate);
}
BENCHMARK(BM_LineProcedureAllStages)->Unit(benchmark::kMicrosecond);

// The stages alone, on the same kind of line.
struct StageData {
    std::vector<std::uint8_t> trace = MakeTrace(1);
    std::vector<float> line = std::vector<float>(kSamples);
    std::vector<std::uint8_t> raw = std::vector<std::uint8_t>(kSamples);
    TraceSamples samples() const {
        return TraceSamples::Of(std::span(trace).subspan(kTraceHeaderSize), 1);
    }
    StageData() { ScaleAndGain(samples(), {0, 6, 0, false}, line, raw); }
};

void BM_StageScaleAndGain(benchmark::State& state) {
    StageData d;
    for (auto _ : state) {
        benchmark::DoNotOptimize(ScaleAndGain(d.samples(), {0, 6, 0, false}, d.line, d.raw));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_StageScaleAndGain)->Unit(benchmark::kMicrosecond);

void BM_StageDCFilter31(benchmark::State& state) {
    StageData d;
    std::vector<float> x;
    for (auto _ : state) {
        x = d.line;
        ApplyDCFilter(x, 31);
        benchmark::DoNotOptimize(x.data());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_StageDCFilter31)->Unit(benchmark::kMicrosecond);

void BM_StageMedianFilter15(benchmark::State& state) {
    StageData d;
    std::vector<float> x, scratch;
    for (auto _ : state) {
        x = d.line;
        ApplyMedianFilter(x, 15, &scratch);
        benchmark::DoNotOptimize(x.data());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_StageMedianFilter15)->Unit(benchmark::kMicrosecond);

// The sorted window alone: the road of windows over 15 samples.
void BM_StageMedianFilter15SortedWindow(benchmark::State& state) {
    StageData d;
    std::vector<float> x;
    for (auto _ : state) {
        x = d.line;
        ApplyMedianFilter(x, 15);
        benchmark::DoNotOptimize(x.data());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_StageMedianFilter15SortedWindow)->Unit(benchmark::kMicrosecond);

void BM_StageMedianFilter31(benchmark::State& state) {
    StageData d;
    std::vector<float> x, scratch;
    for (auto _ : state) {
        x = d.line;
        ApplyMedianFilter(x, 31, &scratch);
        benchmark::DoNotOptimize(x.data());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_StageMedianFilter31)->Unit(benchmark::kMicrosecond);

void BM_StageTvg(benchmark::State& state) {
    StageData d;
    TvgParams p = TvgRatio(200, 1500, 25000.0f);
    p.limit = 40;
    p.start = 6000;
    std::vector<std::uint8_t> out(kSamples);
    for (auto _ : state) {
        ApplyTvg(d.line, out, p);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_StageTvg)->Unit(benchmark::kMicrosecond);

void BM_CopyLine(benchmark::State& state) {
    StageData d;
    std::vector<float> x;
    for (auto _ : state) {
        x = d.line;
        benchmark::DoNotOptimize(x.data());
    }
}
BENCHMARK(BM_CopyLine)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace halvo

BENCHMARK_MAIN();

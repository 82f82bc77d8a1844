// The graph page's work on the window thread: one 32,768-point spectrum with its window and
// magnitudes, and a whole timer pass of two graphs (two slots of 32,768 values each: mean removal,
// time curves, two spectra). The share of the window thread is the pass time over the sheet's
// 300 ms timer.

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "dsp/SonarChannelMap.h"
#include "dsp/graph/GraphSession.h"
#include "dsp/graph/GraphTaker.h"

namespace {

using namespace halvo;

constexpr int kPoints = 32768;

GraphTrace Wave() {
    GraphTrace t;
    t.values.resize(kPoints);
    for (int i = 0; i < kPoints; ++i) t.values[i] = static_cast<float>(std::sin(i * 0.05) * 1000);
    t.interval = 40000;
    return t;
}

void Spectrum32768(benchmark::State& state) {
    GraphCompute g;
    const GraphTrace t = Wave();
    for (auto _ : state) {
        auto s = g.SpectrumOf(t, 1, kPoints, true, GraphCompute::Hann);
        benchmark::DoNotOptimize(s.curve.y.data());
    }
    state.SetItemsProcessed(state.iterations());
}

void TimerPassTwoGraphs(benchmark::State& state) {
    const FixedSonarChannelMap sonars;
    GraphTaker taker(&sonars);
    GraphSession session;
    GraphValues v;
    v.Channel2 = 1;
    v.Window = GraphCompute::Hann;
    const GraphTrace t = Wave();
    for (auto _ : state) {
        state.PauseTiming();
        for (int s = 0; s < 2; ++s) {
            GraphSlot& slot = taker.Slot(s);
            slot.values = t.values;
            slot.interval = t.interval;
            slot.requested.fetch_add(1);
        }
        state.ResumeTiming();
        benchmark::DoNotOptimize(session.Step(taker, v, GraphUnits{}));
    }
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK(Spectrum32768)->Unit(benchmark::kMicrosecond);
BENCHMARK(TimerPassTwoGraphs)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();

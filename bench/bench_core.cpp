// Throughput of the message core: unpacking beside memcpy of the same output size, normalising
// whole traces, and the bus carrying small messages to observers that do nothing.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "core/MessageHub.h"
#include "core/MessageTypes.h"
#include "core/PackedSamples.h"

namespace halvo {
namespace {

constexpr std::size_t kValues = 16384;

std::vector<std::uint8_t> PackedFor(int code) {
    std::mt19937 rng(1);
    std::vector<std::int32_t> v(kValues);
    for (auto& x : v) x = std::uniform_int_distribution<int>(-2000, 2000)(rng);
    if (!PackingCodeOf(code).isSigned) {
        for (auto& x : v) x = x < 0 ? -x : x;
    }
    std::vector<std::uint8_t> out(PackedBytes(kValues, code));
    Pack(out, v, code, 4);
    return out;
}

void BM_Unpack(benchmark::State& state) {
    const int code = static_cast<int>(state.range(0));
    const auto packed = PackedFor(code);
    std::vector<std::uint8_t> out(kValues * UnpackedValueBytes(code));
    for (auto _ : state) {
        benchmark::DoNotOptimize(Unpack(out, packed, kValues, code));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * out.size()));
}
BENCHMARK(BM_Unpack)->DenseRange(0, 12);

void BM_Memcpy(benchmark::State& state) {
    const std::size_t bytes = kValues * static_cast<std::size_t>(state.range(0));
    std::vector<std::uint8_t> in(bytes, 1), out(bytes);
    for (auto _ : state) {
        std::memcpy(out.data(), in.data(), bytes);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}
BENCHMARK(BM_Memcpy)->Arg(2)->Arg(4);

std::int64_t Utc() {
    return 1700000000;
}

void BM_NormaliseCompact84(benchmark::State& state) {
    const auto packed = PackedFor(1);
    SonarMessage m = SonarMessage::Build(MsgCompactTrace, DirReply, 0, 0,
                                         static_cast<std::int32_t>(16 + packed.size()));
    PutLE<std::uint32_t>(m.Payload(), 4, 1u << 27);
    std::memcpy(m.Payload().data() + 16, packed.data(), packed.size());
    for (auto _ : state) benchmark::DoNotOptimize(Normalise(m, Utc));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_NormaliseCompact84);

void BM_NormaliseSideScan82(benchmark::State& state) {
    SonarMessage m = SonarMessage::Build(MsgSideScanTrace, DirReply, 20, 0, 80 + 2 * kValues);
    PutLE<std::int32_t>(m.Payload(), 12, static_cast<std::int32_t>(kValues));
    for (auto _ : state) benchmark::DoNotOptimize(Normalise(m, Utc));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_NormaliseSideScan82);

// One producer thread posts small messages as fast as the bus takes them; three observers that
// do nothing sit on the bus. Items per second is messages through the bus.
void BM_BusThroughput(benchmark::State& state) {
    struct Nothing : MessageObserver {
        std::atomic<std::int64_t>* count;
        void DeliverMessage(SonarMessage* m, int, std::uint32_t) override {
            if (m) count->fetch_add(1, std::memory_order_relaxed);
        }
    };
    RunFlag run;
    run.Raise();
    MessageHub hub(run);
    std::atomic<std::int64_t> delivered{0};
    Nothing a, b, c;
    a.count = &delivered;
    b.count = c.count = new std::atomic<std::int64_t>(0);
    hub.DataBus().Attach(&a);
    hub.DataBus().Attach(&b);
    hub.DataBus().Attach(&c);
    hub.Start(200);
    std::int64_t posted = 0;
    for (auto _ : state) {
        const std::int64_t batch = 100000;
        for (std::int64_t i = 0; i < batch; ++i) {
            SonarMessage m = SonarMessage::Build(MsgAltitude, DirReply, 101, 0, 16);
            while (hub.DataBus().Post(m, SourceSonarData) != 0) std::this_thread::yield();
        }
        posted += batch;
        while (delivered.load() < posted) std::this_thread::yield();
    }
    state.SetItemsProcessed(posted);
    delete b.count;
}
BENCHMARK(BM_BusThroughput)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace halvo

BENCHMARK_MAIN();

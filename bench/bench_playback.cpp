// Playback pacing against the real bus and the real clock: at rate 10000 the idle tick's cap of
// 400 records holds delivery to at most 8000 records a second. The bus queue is sized so that
// back-pressure (three quarters of capacity) stays out of the way of a 400-record burst.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include "app/SystemCoordinator.h"
#include "core/AcquireFilter.h"
#include "core/MessageProcessor.h"
#include "core/MessageTypes.h"
#include "platform/MonotonicTickSource.h"
#include "storage/HsfTestWriter.h"
#include "storage/StorageControl.h"
#include "storage/StorageDataProcessor.h"

namespace {

using namespace halvo;

class Counter : public MessageObserver {
  public:
    void DeliverMessage(SonarMessage* m, int source, std::uint32_t) override {
        if (m && source == SourcePlayback) count.fetch_add(1, std::memory_order_relaxed);
    }
    std::atomic<std::uint64_t> count{0};
};

void BM_PlaybackPacing(benchmark::State& state) {
    const int rate = static_cast<int>(state.range(0));
    std::string dir = (std::filesystem::temp_directory_path() / "halvo-bench-XXXXXX").string();
    if (!::mkdtemp(dir.data())) {
        state.SkipWithError("no temp dir");
        return;
    }
    // Enough records that the file outlasts the measurement.
    HsfTestWriter w;
    for (int i = 0; i < 60000; ++i) {
        TraceSpec s;
        s.ping = i + 1;
        s.channel = static_cast<std::uint8_t>(i % 2);
        s.samples = 64;
        w.Add(HsfTestWriter::MakeTrace(s));
    }
    w.Save(dir + "/line.hsf");

    for (auto _ : state) {
        RunFlag run;
        run.Raise();
        AcquireFilter filter;
        auto owned = std::make_unique<MessageProcessor>("bench-data", run, filter,
                                                        [] { return std::int64_t{1700000000}; });
        MessageProcessor& bus = *owned;
        SystemCoordinator coordinator;
        coordinator.SetActiveProfile(dir + "/Defaults.Hni");
        StorageControl control(coordinator);
        MonotonicTickSource ticks;
        StorageDataProcessor processor(bus, control, ticks);
        Counter counter;
        control.SetProcessorStarter([&] { processor.Start(); });
        bus.Start(1000);
        bus.Attach(&counter);

        StorageSettings s = control.getSettings();
        s.playbackDir = dir;
        s.playbackFile = "line.hsf";
        s.playbackRate = rate;
        s.mode = ModePlayback;
        control.setSettings(s);
        // Let the first burst pass, then measure a whole number of seconds.
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        const auto c0 = counter.count.load();
        const auto t0 = std::chrono::steady_clock::now();
        std::this_thread::sleep_for(std::chrono::seconds(4));
        const auto c1 = counter.count.load();
        const double secs =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        state.counters["records_per_s"] = static_cast<double>(c1 - c0) / secs;
        state.counters["state"] = control.getStatus().state;
        run.Clear();
        owned.reset();  // joins the bus thread before the observers go
    }
    std::filesystem::remove_all(dir);
}

BENCHMARK(BM_PlaybackPacing)->Arg(10000)->Arg(1000)->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace

BENCHMARK_MAIN();

// The GUI thread's cost of live waterfalls: bursts of 25 lines (100 lines per second, drained
// every 250 ms) into four displays of 1000 pixel rows, painted offscreen; and the frame time of
// a full redraw of a 1920 x 1000 waterfall.

#include <benchmark/benchmark.h>
#include <time.h>

#include <QApplication>
#include <memory>
#include <vector>

#include "app/GeneralSettings.h"
#include "app/SystemCoordinator.h"
#include "display/DisplayProcessingSet.h"
#include "display/SonarDataCacheElement.h"
#include "gui/sheets/OperatorPrompts.h"
#include "gui/views/CWaterfallDoc.h"
#include "gui/views/CWaterfallView.h"
#include "gui/views/WaterfallDocSet.h"
#include "platform/MonotonicTickSource.h"

namespace halvo {
namespace {

constexpr int kDisplays = 4;
constexpr int kLinesPerBurst = 25;  // 100 lines per second, one drain each 250 ms
constexpr double kBurstSeconds = 0.25;
constexpr int kSamples = 4000;

struct Quiet final : OperatorPrompts {
    void Notify(std::string_view, std::string_view) override {}
    bool AskYesNo(std::string_view, std::string_view) override { return false; }
};

QApplication& App() {
    static int argc = 1;
    static char name[] = "bench";
    static char* argv[] = {name, nullptr};
    static QApplication* app = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return new QApplication(argc, argv);
    }();
    return *app;
}

double ThreadSeconds() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + t.tv_nsec * 1e-9;
}

struct Rig {
    SystemCoordinator coordinator;
    GeneralSettings general{coordinator};
    DisplayProcessingSet displays{coordinator, general};
    MonotonicTickSource ticks;
    Quiet prompts;
    DisplayViewContext ctx{displays, general, coordinator, ticks, prompts, {}, {}, {}};
    WaterfallDocSet set{coordinator};
    CWaterfallDoc doc{set};
    std::vector<std::unique_ptr<CWaterfallView>> views;
    std::vector<SonarDataCacheElement> lines;

    Rig(int count, int width, double zoom) {
        App();
        for (int d = 0; d < count; ++d) {
            {
                auto r = displays.Lock(d);
                r->Channel = d;
                r->Zoom = zoom;
                r.Bump();
            }
            auto v = std::make_unique<CWaterfallView>(ctx, doc, d);
            v->resize(width, 1000);
            v->show();
            views.push_back(std::move(v));
        }
        for (int i = 0; i < 64; ++i) {
            SonarDataCacheElement e(kSamples);
            for (int s = 0; s < kSamples; ++s)
                e.pixels[s] = static_cast<std::uint8_t>((s * 3 + i) & 255);
            lines.push_back(std::move(e));
        }
        Settle();
    }
    void Settle() {
        for (int i = 0; i < 200; ++i) {
            QApplication::processEvents();
            bool busy = false;
            for (auto& v : views) busy = busy || v->RedrawTimerActive();
            if (!busy) break;
            for (auto& v : views) v->TimerTick();
        }
    }
};

void BM_LiveLinesFourDisplays(benchmark::State& state) {
    Rig rig(kDisplays, 1500, 0.25);
    int next = 0;
    double cpu = 0;
    for (auto _ : state) {
        const double t0 = ThreadSeconds();
        for (int i = 0; i < kLinesPerBurst; ++i) {
            for (int d = 0; d < kDisplays; ++d) {
                SonarDataCacheElement& e = rig.lines[static_cast<std::size_t>(next++ % 64)];
                e.displayIndex = d;
                rig.doc.OnDisplayNotice(DisplayDocumentIF::kStoreElement,
                                        std::make_shared<const SonarDataCacheElement>(e));
            }
        }
        rig.doc.OnDisplayNotice(DisplayDocumentIF::kUpdateViews, {});
        QApplication::processEvents();  // the paints of the new columns
        cpu += ThreadSeconds() - t0;
    }
    const double perBurst = cpu / static_cast<double>(state.iterations());
    state.counters["gui_cpu_ms_per_burst"] = perBurst * 1e3;
    state.counters["gui_share_pct"] = 100.0 * perBurst / kBurstSeconds;
}
BENCHMARK(BM_LiveLinesFourDisplays)->Unit(benchmark::kMillisecond)->MinTime(3.0);

void BM_FullRedraw1920x1000(benchmark::State& state) {
    Rig rig(1, 1920, 0.25);
    for (int i = 0; i < 200; ++i) {
        SonarDataCacheElement& e = rig.lines[static_cast<std::size_t>(i % 64)];
        e.displayIndex = 0;
        rig.doc.OnDisplayNotice(DisplayDocumentIF::kStoreElement,
                                std::make_shared<const SonarDataCacheElement>(e));
    }
    rig.doc.OnDisplayNotice(DisplayDocumentIF::kUpdateViews, {});
    rig.Settle();
    CWaterfallView& view = *rig.views.front();
    for (auto _ : state) {
        view.Invalidate();
        for (int i = 0; i < 1000 && view.RedrawTimerActive(); ++i) view.TimerTick();
        view.viewport()->repaint();
    }
    state.counters["image_width"] = view.Plot().ImageWidth();
    state.counters["image_height"] = view.Plot().ImageHeight();
}
BENCHMARK(BM_FullRedraw1920x1000)->Unit(benchmark::kMillisecond)->MinTime(2.0);

}  // namespace
}  // namespace halvo

BENCHMARK_MAIN();

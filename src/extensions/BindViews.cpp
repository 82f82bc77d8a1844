#include "extensions/BindViews.h"

#include <cstring>

#include "app/Notifier.h"
#include "app/OverallConfig.h"
#include "extensions/ExtensionView.h"

namespace halvo {

namespace {
constexpr const char* kPlotView = "PlotView";
constexpr const char* kLegendView = "XYPlotView";
constexpr const char* kWaterfallView = "CWaterfallView";
constexpr int kFirstChannel = 9;
constexpr int kSecondChannel = 8;

bool Is(const ExtensionView* v, const char* kind) {
    return v != nullptr && std::strcmp(v->ViewKind(), kind) == 0;
}
}  // namespace

int BindViews(const ViewBinding& binding, WaterfallExtension& extension, const char* caption) {
    if (binding.overall == nullptr) return -1;
    OverallConfig::Values v = binding.overall->Snapshot();
    // The major windows are those up to the first without a split. One alone gives index 1:
    // the extension wants a window after it, of its own.
    int count = 0;
    while (count < OverallConfig::kDisplays && v.numSplits[count] != 0) ++count;
    const int last = count > 1 ? count - 1 : count;
    const auto tell = [&](const char* text) {
        if (binding.notices != nullptr) binding.notices->Notify(caption, text);
    };
    if (last == 0 || last >= OverallConfig::kDisplays) {
        tell("There is a problem with the Halvo Ini File.  To Few or Too Many Major Windows");
        return -1;
    }
    if (v.numSplits[last] < 3 || v.hasPlot[last] == 0) {
        // Written at exit, so the next start has the window this one lacked.
        v.numSplits[last] = 3;
        v.hasPlot[last] = 1;
        binding.overall->Update(v);
        tell("You Must Restart Before Running Sediment Classification Extensions");
        return -1;
    }
    if (!binding.firstDocumentViews) return -1;
    const std::optional<std::vector<ExtensionView*>> views = binding.firstDocumentViews();
    if (!views || views->empty()) return -1;
    int m = -1;
    bool found = false;
    for (const ExtensionView* view : *views) {
        if (!Is(view, kPlotView)) continue;
        m = found ? std::max(m, view->DisplayIndex()) : view->DisplayIndex();
        found = true;
    }
    if (!found || m < 0) return -1;
    for (ExtensionView* view : *views) {
        const int d = view == nullptr ? -1 : view->DisplayIndex();
        if ((Is(view, kLegendView) || Is(view, kPlotView)) && d == m)
            view->AttachExtension(&extension);
        if (Is(view, kWaterfallView) && (d == m || d == m + 1)) view->AttachExtension(&extension);
    }
    if (binding.prepareDisplay) {
        binding.prepareDisplay(m, kFirstChannel);
        binding.prepareDisplay(m + 1, kSecondChannel);
    }
    return m;
}

}  // namespace halvo

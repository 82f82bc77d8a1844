// An extension finding its views: the display of the last plot strip of the first document,
// its two plot views and the waterfalls of that display and the next, and the channels those
// displays must show.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "app/OverallConfig.h"
#include "app/SystemCoordinator.h"
#include "extensions/BindViews.h"
#include "extensions/ExtensionView.h"
#include "extensions/WaterfallExtension.h"

namespace halvo {
namespace {

struct View final : ExtensionView {
    View(const char* k, int d) : kind(k), display(d) {}
    const char* ViewKind() const override { return kind; }
    int DisplayIndex() const override { return display; }
    void AttachExtension(WaterfallExtension* e) override { attached = e; }
    const char* kind;
    int display;
    WaterfallExtension* attached = nullptr;
};

TEST(BindViews, ThePlotStripsLastDisplayAndItsNeighbourAreTheExtensions) {
    SystemCoordinator coordinator;
    OverallConfig overall(coordinator);
    OverallConfig::Values v = overall.Snapshot();
    v.numSplits = {4, 3, 0};
    v.hasPlot = {1, 1, 0};
    overall.Update(v);

    std::vector<View> views{{"PlotView", 0},       {"XYPlotView", 0},     {"CWaterfallView", 0},
                            {"PlotView", 3},       {"XYPlotView", 3},     {"CWaterfallView", 3},
                            {"CWaterfallView", 4}, {"CWaterfallView", 5}, {"ScopeView", 3}};
    std::vector<std::pair<int, int>> prepared;
    ViewBinding binding;
    binding.overall = &overall;
    binding.firstDocumentViews = [&]() -> std::optional<std::vector<ExtensionView*>> {
        std::vector<ExtensionView*> out;
        for (View& view : views) out.push_back(&view);
        return out;
    };
    binding.prepareDisplay = [&](int d, int c) { prepared.emplace_back(d, c); };
    WaterfallExtension hook;
    EXPECT_EQ(BindViews(binding, hook, "Sediment Classification"), 3);
    std::string bound;
    for (const View& view : views) {
        if (view.attached == &hook)
            bound += std::string(view.kind) + std::to_string(view.display) + " ";
    }
    EXPECT_EQ(bound, "PlotView3 XYPlotView3 CWaterfallView3 CWaterfallView4 ");
    EXPECT_EQ(prepared, (std::vector<std::pair<int, int>>{{3, 9}, {4, 8}}));

    // No plot strip, or no document: unbound, and nothing said.
    views = {{"CWaterfallView", 0}};
    EXPECT_EQ(BindViews(binding, hook, "Sediment Classification"), -1);
    binding.firstDocumentViews = [] { return std::nullopt; };
    EXPECT_EQ(BindViews(binding, hook, "Sediment Classification"), -1);
}

}  // namespace
}  // namespace halvo

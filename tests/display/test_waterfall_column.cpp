// The waterfall's column rules: zoom, repeated columns, decimation, placement by depth, fills,
// inversion, marks, indicators, the height cap, new lines, redraw slices, cursor and drag.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "display/DisplayUnits.h"
#include "display/SonarDataCache.h"
#include "display/WaterfallImage.h"
#include "display/WaterfallPlot.h"
#include "display/WaterfallRig.h"
#include "display/WaterfallZoomDrag.h"

namespace halvo {
namespace {

using test::FlatLine;
using test::MakeLine;

// One column of one line, through the same entry the views use.
std::vector<std::uint8_t> Column(const SonarDataCacheElement* line,
                                 const DisplayProcessingConfig& cfg, const GeneralValues& g,
                                 int height, ColumnOverlay* overlay = nullptr) {
    std::vector<std::uint8_t> out(static_cast<std::size_t>(height) + 4, 7);
    ColumnContext ctx{&cfg, &g, NormaliseZoom(cfg.Zoom), 0, height, 0};
    const ColumnOverlay o = RenderWaterfallColumn(line, ctx, ColumnSpan{out.data(), 1});
    if (overlay) *overlay = o;
    return out;
}

TEST(WaterfallZoom, SettingsBecomeWholeZoomsOrDecimations) {
    const struct {
        double in, out;
    } cases[] = {{0.3, 0.25},      {2.7, 2.0}, {1.0, 1.0}, {0.5, 0.5},
                 {0.7, 0.5},       {0.2, 0.2}, {63.9, 63}, {70.5, 70.5},
                 {0.0005, 0.0005}, {0.0, 0.0}, {NAN, 1.0}, {INFINITY, 1.0}};
    for (const auto& c : cases) EXPECT_DOUBLE_EQ(NormaliseZoom(c.in), c.out) << c.in;
}

TEST(WaterfallColumn, ZoomRepeatsOrDecimatesByMode) {
    const SonarDataCacheElement line = MakeLine({10, 200, 40, 60, 90, 30});
    const struct {
        double zoom;
        int mode;
        std::vector<int> values;  // line values expected from the top
    } cases[] = {
        {0.5, 0, {10, 40, 90}},   // every second sample
        {0.5, 1, {105, 50, 60}},  // integer means of pairs
        {0.5, 2, {200, 60, 90}},  // the largest of each pair
        {0.25, 2, {200}},         // groups that lie wholly in the line
        {2.0, 2, {10, 10, 200, 200, 40, 40, 60, 60, 90, 90, 30, 30}},
        {2.7, 0, {10, 10, 200, 200, 40, 40, 60, 60, 90, 90, 30, 30}},  // 2
    };
    GeneralValues g = test::TestGeneral();
    for (const auto& c : cases) {
        DisplayProcessingConfig cfg;
        cfg.Zoom = c.zoom;
        cfg.ZoomAverage = c.mode;
        const auto col = Column(&line, cfg, g, 16);
        for (std::size_t i = 0; i < c.values.size(); ++i)
            EXPECT_EQ(col[i], 255 - c.values[i]) << c.zoom << "/" << c.mode << " row " << i;
        // The rest of a single display is the second no-data level, and nothing past h.
        EXPECT_EQ(col[c.values.size()], 202) << c.zoom << "/" << c.mode;
        EXPECT_EQ(col[15], 202);
        EXPECT_EQ(col[16], 7);
    }
}

TEST(WaterfallColumn, InversionFillsAndMarks) {
    const GeneralValues g = test::TestGeneral();
    const SonarDataCacheElement zero = MakeLine({0, 255});
    for (int invert : {0, 1}) {
        DisplayProcessingConfig cfg;
        cfg.PalInvert = invert;
        const auto col = Column(&zero, cfg, g, 4);
        EXPECT_EQ(col[0], invert ? 0 : 255);
        EXPECT_EQ(col[1], invert ? 255 : 0);
    }
    // No line: the whole column is no data, the first level on a dual display.
    for (int dual : {0, 1}) {
        DisplayProcessingConfig cfg;
        cfg.DualChannel = dual;
        const auto col = Column(nullptr, cfg, g, 8);
        for (int i = 0; i < 8; ++i) EXPECT_EQ(col[i], dual ? 201 : 202);
    }
    // A marked line gets a dashed tick of `EventMarkWidth` pixels, held to the column.
    const SonarDataCacheElement marked = MakeLine(std::vector<std::uint8_t>(40, 100), 0, 3);
    for (int width : {12, 100}) {
        DisplayProcessingConfig cfg;
        cfg.EventMarkWidth = width;
        const auto col = Column(&marked, cfg, g, 30);
        for (int i = 0; i < std::min(width, 30); ++i) EXPECT_EQ(col[i], i % 8 < 4 ? 255 : 0) << i;
        if (width < 30) {
            EXPECT_EQ(col[width], 155);
        }
        EXPECT_EQ(col[30], 7);
    }
}

TEST(WaterfallColumn, IndicatorsSitAboveTheBottomByTheirOffset) {
    GeneralValues g = test::TestGeneral();
    g.BottomTrackIndicatorOffset = 1.0f;  // 1 m: 33 samples at 25 kHz
    DisplayProcessingConfig cfg;
    cfg.sampleRate = 25000;
    SonarDataCacheElement line = FlatLine(400, 10);
    line.bottomSample = 120;
    line.heaveSamples = 5;
    line.startDepth = 20;
    ColumnOverlay o;
    Column(&line, cfg, g, 300, &o);
    EXPECT_EQ(o.bottomRow, 100 - 33);
    EXPECT_EQ(o.heaveRow, ColumnOverlay::kNoRow);  // only with a heave source
    cfg.HeaveSource = 1;
    cfg.Zoom = 2;
    Column(&line, cfg, g, 300, &o);
    EXPECT_EQ(o.bottomRow, 200 - 66);
    EXPECT_EQ(o.heaveRow, 210 - 66);
    g.BottomTrackIndicatorOffset = 0;
    Column(&line, cfg, g, 300, &o);
    EXPECT_EQ(o.bottomRow, ColumnOverlay::kNoRow);
}

class PlotRig : public ::testing::Test {
  protected:
    void SetUp() override {
        cfg.sampleRate = 25000;
        plot.SetCache(&cache);
    }
    void Apply() { plot.Adopt(cfg, g); }
    DisplayProcessingConfig cfg;
    GeneralValues g = test::TestGeneral();
    SonarDataCache cache{40};
    WaterfallPlot plot{2};
};

TEST_F(PlotRig, MaxDepthPlacesTheLineByTowDepth) {
    cfg.MaxDepth = 100;
    // 20 m below the surface at 750 m/s one way: 666 samples.
    const SonarDataCacheElement line = MakeLine(std::vector<std::uint8_t>(500, 50), 20000);
    ColumnOverlay overlay;
    const auto col = Column(&line, cfg, g, 1400, &overlay);
    EXPECT_EQ(col[0], 201);
    EXPECT_EQ(col[665], 201);
    EXPECT_EQ(col[666], 205);
    EXPECT_EQ(col[1165], 205);
    EXPECT_EQ(col[1166], 202);
    EXPECT_EQ(overlay.firstSample, -666);
    // Deeper than the column: all of it is the gap.
    const auto deep = Column(&line, cfg, g, 600);
    for (int i = 0; i < 600; ++i) ASSERT_EQ(deep[i], 201) << i;
    // Dual lines are never placed by depth.
    cfg.DualChannel = 1;
    EXPECT_EQ(Column(&line, cfg, g, 10)[0], 205);
    // The plot takes the line length from `MaxDepth` and starts it at the surface.
    cfg.DualChannel = 0;
    Apply();
    cache.Add(line);
    plot.SetImageRect(0, 0, 4, 100);
    WaterfallImage image(4, 100);
    ASSERT_TRUE(plot.DrawColumn(0, image));
    EXPECT_EQ(plot.LineLength(), ToSamples(100, 25000, g));
    EXPECT_EQ(plot.StartDepth(), 0);
    EXPECT_EQ(plot.LastMaxDepth(), 100);
}

TEST_F(PlotRig, TraceZoomFactorRepeatsEachLine) {
    cfg.TraceZoomFactor = 3;
    Apply();
    for (int i = 0; i < 4; ++i) cache.Add(FlatLine(8, static_cast<std::uint8_t>(10 * (i + 1))));
    plot.SetImageRect(0, 0, 12, 8);
    WaterfallImage image(12, 8);
    const WaterfallPlot::NewLines step = plot.TakeNewLines();
    EXPECT_EQ(step.lines, 4);
    EXPECT_EQ(step.shiftColumns, 12);
    EXPECT_FALSE(step.copy);
    plot.DrawNewColumns(step, image);
    // The newest line (value 40) takes the three right-most columns.
    for (int x = 0; x < 12; ++x) {
        const int age = (11 - x) / 3;
        EXPECT_EQ(image.Index(x, 0), 255 - 10 * (4 - age)) << x;
    }
    EXPECT_EQ(plot.TakeNewLines().lines, 0);
    cache.Add(FlatLine(8, 90));
    const WaterfallPlot::NewLines next = plot.TakeNewLines();
    EXPECT_EQ(next.shiftColumns, 3);
    EXPECT_TRUE(next.copy);
    image.ScrollLeft(next.shiftColumns);
    plot.DrawNewColumns(next, image);
    EXPECT_EQ(image.Index(11, 0), 255 - 90);
    EXPECT_EQ(image.Index(8, 0), 255 - 40);
}

TEST_F(PlotRig, OnlyTheTop2048RowsAreDrawnAndNothingBeforeAWindow) {
    Apply();
    cache.Add(FlatLine(5000, 0));
    EXPECT_EQ(plot.TakeNewLines().lines, 0);  // no window yet: the total stays
    EXPECT_EQ(plot.DrawnTotal(), 0);
    plot.SetImageRect(0, 0, 1, 3000);
    EXPECT_EQ(plot.ColumnHeight(), 2048);
    struct Tall : WaterfallColumnTarget {
        std::vector<std::uint8_t> px = std::vector<std::uint8_t>(3000, 9);
        ColumnSpan Column(int) override { return {px.data(), 1}; }
    } tall;
    plot.DrawNewColumns(plot.TakeNewLines(), tall);
    EXPECT_EQ(tall.px[2047], 255);
    EXPECT_EQ(tall.px[2048], 9);
}

TEST_F(PlotRig, RedrawRunsInSlicesAndFollowsNewLines) {
    Apply();
    for (int i = 0; i < 20; ++i) cache.Add(FlatLine(4, static_cast<std::uint8_t>(i)));
    plot.SetImageRect(0, 0, 10, 4);
    WaterfallImage image(10, 4);
    plot.DrawNewColumns(plot.TakeNewLines(), image);
    plot.BeginRedraw();
    int budget = 4;
    EXPECT_FALSE(plot.RedrawSlice(image, [&] { return --budget > 0; }));
    EXPECT_EQ(plot.NextRedrawColumn(), 4);
    cache.Add(FlatLine(4, 99));
    plot.TakeNewLines();
    EXPECT_EQ(plot.NextRedrawColumn(), 5);
    EXPECT_TRUE(plot.RedrawSlice(image, [] { return true; }));
    EXPECT_EQ(image.Index(0, 0), 255 - 11);  // nine lines newer than it at the right
    EXPECT_FALSE(plot.Redrawing());
}

TEST_F(PlotRig, AdoptingSettingsSetsLabelScaleAndZoom) {
    cfg.Channel = 4;
    cfg.DualChannel = 1;
    cfg.Zoom = 0.3;
    const WaterfallPlot::Adoption a = plot.Adopt(cfg, g);
    EXPECT_TRUE(a.zoomChanged);
    EXPECT_DOUBLE_EQ(plot.Zoom(), 0.25);
    EXPECT_EQ(plot.AxisLabel(), "METERS D2:C4-5");
    EXPECT_DOUBLE_EQ(plot.Axis().Scale(), 1500.0 / 50000.0);
    EXPECT_FALSE(plot.Adopt(cfg, g).zoomChanged);
    cfg.DualChannel = 0;
    g.UserUnits = 2;
    plot.Adopt(cfg, g);
    EXPECT_EQ(plot.AxisLabel(), "SAMPLES D2:C4");
}

TEST_F(PlotRig, CursorReadoutAndZoomDrag) {
    Apply();
    SonarDataCacheElement line = FlatLine(400, 1);
    line.startDepth = 30;
    cache.Add(line);
    plot.SetImageRect(0, 0, 50, 200);
    EXPECT_EQ(plot.Cursor(50, 10, 0, 0, false).text, "No Data At Cursor");  // right of the image
    EXPECT_EQ(plot.Cursor(10, 10, 0, 0, false).text, "No Data At Cursor");  // older than the cache
    const WaterfallPlot::Readout r = plot.Cursor(49, 20, 5, 0x180, false);
    EXPECT_EQ(r.sample, 55);
    EXPECT_EQ(r.text, "Sample 55 | Depth  1.6 |  Press Left Mouse Button for More");
    EXPECT_EQ(plot.Cursor(49, 20, 5, 0, true).text, "");

    WaterfallZoomDrag drag;
    EXPECT_FALSE(drag.Press(plot, 60, 10));  // outside the image
    ASSERT_TRUE(drag.Press(plot, 20, 30));
    auto small = drag.Release(plot, 23, 27);  // 3 pixels: the whole image
    ASSERT_TRUE(small);
    EXPECT_TRUE(small->whole);
    EXPECT_EQ(small->lastColumn, 49);
    EXPECT_EQ(small->imageHeight, 200);
    EXPECT_FALSE(drag.Dragging());
    ASSERT_TRUE(drag.Press(plot, 40, 30));
    auto big = drag.Release(plot, 20, 90);
    ASSERT_TRUE(big);
    EXPECT_FALSE(big->whole);
    EXPECT_EQ(big->firstColumn, 9);
    EXPECT_EQ(big->lastColumn, 29);
    EXPECT_EQ(big->firstSample, 30);
    EXPECT_EQ(big->lastSample, 90);
    EXPECT_FALSE(drag.Release(plot, 0, 0));
}

TEST(WaterfallAxis, LabelsAndTheirInverse) {
    WaterfallAxis single;
    single.SetGeometry(1000, 100, false);
    single.SetScale(0.03);
    WaterfallAxis dual;
    dual.SetGeometry(1000, 100, true);
    dual.SetScale(0.03);
    EXPECT_DOUBLE_EQ(single.LabelOf(0), 3.0);
    EXPECT_EQ(single.SampleOf(single.LabelOf(250) + 1e-9), 250);
    EXPECT_EQ(single.SampleOf(1.0), WaterfallAxis::kAboveLine);
    EXPECT_EQ(single.SampleOf(40.0), WaterfallAxis::kBelowLine);
    EXPECT_DOUBLE_EQ(dual.LabelOf(700), (200 + 100) * 0.03);
    EXPECT_DOUBLE_EQ(dual.LabelOf(300), (200 - 100) * 0.03);
    EXPECT_EQ(dual.SampleOf(dual.LabelOf(700) + 1e-9), 700);
    EXPECT_EQ(dual.SampleOf(dual.LabelOf(300) - 1e-9, true), 300);
    EXPECT_EQ(single.LabelFormat(), "%-5.2f");
    single.SetScale(1e-6);
    EXPECT_EQ(single.LabelFormat(), "%-7.2e");
}

}  // namespace
}  // namespace halvo

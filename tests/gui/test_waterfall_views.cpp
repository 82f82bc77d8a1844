// The waterfall windows over real display records and caches, without a System: a line that
// arrives by the 0x40A notice becomes the plot's column in the ring, the redraw obeys the
// display timer's guard, the frame's pane sizes, the scope's gestures and the display pages.

#include <QCheckBox>

#include "GuiTestApp.h"
#include "app/GeneralSettings.h"
#include "display/DisplayProcessingSet.h"
#include "display/SonarDataCacheElement.h"
#include "display/WaterfallColumn.h"
#include "extensions/WaterfallExtension.h"
#include "gui/views/CChildFrameWaterfall.h"
#include "gui/views/CSplitterWndSonar.h"
#include "gui/views/CWaterfallDoc.h"
#include "gui/views/CWaterfallView.h"
#include "gui/views/CfgDisplay.h"
#include "gui/views/ScopeView.h"
#include "gui/views/SetupDisplay.h"
#include "gui/views/WaterfallDocSet.h"
#include "platform/FakeTickSource.h"

namespace halvo {
namespace {

class WaterfallViews : public ::testing::Test {
  protected:
    WaterfallViews() { test::GuiApp(); }

    SonarDataCacheElement Line(int ping, int size, int display = 0) {
        SonarDataCacheElement e(size);
        e.displayIndex = display;
        for (int i = 0; i < size; ++i)
            e.pixels[i] = static_cast<std::uint8_t>((i * 7 + ping) & 255);
        return e;
    }
    void Deliver(const SonarDataCacheElement& e) {
        doc_.OnDisplayNotice(DisplayDocumentIF::kStoreElement,
                             std::make_shared<const SonarDataCacheElement>(e));
    }
    void Edit(const std::function<void(DisplayProcessingConfig&)>& change) {
        auto r = displays_.Lock(0);
        change(*r);
        r.Bump();
    }

    SystemCoordinator coordinator_;
    GeneralSettings general_{coordinator_};
    DisplayProcessingSet displays_{coordinator_, general_};
    FakeTickSource ticks_;
    test::ScriptedOperator operator_;
    EnableTable enables_;
    SheetContext sheet_{coordinator_, operator_, enables_};
    DisplayViewContext ctx_{displays_, general_, coordinator_, ticks_, operator_, {}, {}, {}};
    WaterfallDocSet set_{coordinator_};
    CWaterfallDoc doc_{set_};
};

TEST_F(WaterfallViews, NoticeStoresLinesByDisplayAndUpdatesViewsOnce) {
    struct Counter : WaterfallDocView {
        int updates = 0;
        void OnDocumentUpdate() override { ++updates; }
    } counter;
    doc_.AddView(&counter);
    const SonarDataCacheElement a = Line(1, 8, 3), outside = Line(2, 8, 10);
    Deliver(a);
    Deliver(outside);  // no cache for display 10: not kept, no crash
    EXPECT_EQ(counter.updates, 0);
    doc_.OnDisplayNotice(DisplayDocumentIF::kUpdateViews, {});
    EXPECT_EQ(counter.updates, 1);
    ASSERT_NE(doc_.ExistingCache(3), nullptr);
    EXPECT_EQ(doc_.ExistingCache(3)->Total(), 1);
    EXPECT_EQ(doc_.GetCache(10), nullptr);
    EXPECT_EQ(doc_.GetCache(-1), nullptr);
    // A new capacity reaches the cache that exists and raises the revision.
    set_.SetDocument(0, &doc_);
    set_.SetCacheSize(3, 50);
    EXPECT_EQ(doc_.ExistingCache(3)->Capacity(), 50);
    EXPECT_EQ(doc_.ExistingCache(3)->Get(0), nullptr);
    EXPECT_EQ(set_.Revision(3), 1);
    doc_.RemoveView(&counter);
}

TEST_F(WaterfallViews, NewLinesBecomeThePlotsColumnsInTheRing) {
    Edit([](DisplayProcessingConfig& c) {
        c.Channel = 0;
        c.TraceZoomFactor = 2;
        c.Zoom = 2.7;  // draws at 2
    });
    CWaterfallView view(ctx_, doc_, 0);
    view.resize(240, 120);
    view.show();
    ASSERT_TRUE(test::PumpUntil([&] { return view.Plot().ImageWidth() > 0; }, 2000));
    std::vector<SonarDataCacheElement> lines;
    for (int p = 0; p < 3; ++p) lines.push_back(Line(p, 40));
    for (const auto& l : lines) Deliver(l);
    doc_.OnDisplayNotice(DisplayDocumentIF::kUpdateViews, {});

    const WaterfallRing& ring = view.Ring();
    const int h = ring.Height();
    ASSERT_EQ(h, view.Plot().ColumnHeight());
    const DisplayProcessingConfig cfg = view.Plot().Config();
    const GeneralValues g = general_.Snapshot();
    std::vector<std::uint8_t> expected(static_cast<std::size_t>(h));
    for (int age = 0; age < 3; ++age) {
        RenderWaterfallColumn(&lines[2 - age], {&cfg, &g, 2.0, 0, h, 0}, {expected.data(), 1});
        for (int r = 0; r < 2; ++r) {
            for (int y = 0; y < h; ++y) {
                ASSERT_EQ(ring.IndexAt(2 * age + r, y), expected[y]) << age << " " << y;
                const PaletteColour c = view.Plot().Colours()[expected[y]];
                ASSERT_EQ(ring.ColourAt(2 * age + r, y), qRgb(c.red, c.green, c.blue));
            }
        }
    }
    // One more line moves everything by two columns: the old newest is now column 2.
    const SonarDataCacheElement next = Line(9, 40);
    Deliver(next);
    doc_.OnDisplayNotice(DisplayDocumentIF::kUpdateViews, {});
    RenderWaterfallColumn(&lines[2], {&cfg, &g, 2.0, 0, h, 0}, {expected.data(), 1});
    for (int y = 0; y < h; ++y) ASSERT_EQ(ring.IndexAt(2, y), expected[y]);

    // The redraw runs only while the display timer's guard is free.
    view.Invalidate();
    coordinator_.EnterDisplayTimer();
    view.TimerTick();
    EXPECT_EQ(view.Plot().NextRedrawColumn(), 0);
    coordinator_.LeaveDisplayTimer();
    view.TimerTick();  // the fake tick never moves: one slice finishes it
    EXPECT_EQ(view.Plot().NextRedrawColumn(), view.Plot().ImageWidth());
    EXPECT_FALSE(view.RedrawTimerActive());
    EXPECT_EQ(coordinator_.DisplayTimerDepth(), 0);
}

TEST_F(WaterfallViews, CursorReadoutAndZoomDrag) {
    Edit([](DisplayProcessingConfig& c) { c.Channel = 0; });
    CWaterfallView view(ctx_, doc_, 0);
    view.resize(200, 100);
    view.show();
    ASSERT_TRUE(test::PumpUntil([&] { return view.Plot().ImageWidth() > 0; }, 2000));
    QWidget* vp = view.viewport();
    const int right = view.Plot().Right();
    QTest::mouseMove(vp, QPoint(right - 1, 10));
    EXPECT_EQ(view.StatusText(), "No Data At Cursor");
    const SonarDataCacheElement l = Line(1, 300);
    Deliver(l);
    doc_.OnDisplayNotice(DisplayDocumentIF::kUpdateViews, {});
    // The line's length widened the ruler and brought the scroll bar.
    QApplication::processEvents();
    const int newRight = view.Plot().Right();
    QTest::mouseMove(vp, QPoint(newRight - 1, 12));
    EXPECT_TRUE(view.StatusText().endsWith(" Press Left Mouse Button for More"))
        << view.StatusText().toStdString();
    // An extension takes the press before the zoom drag, adds to the readout, and marks every
    // column it is shown, in the view's own coordinates.
    struct Marker final : WaterfallExtension {
        int clicks = 0;
        int OnPlotClick(int, int sample, ExtensionView& v, int) override {
            clicks += v.DisplayIndex() == 0 && std::string(v.ViewKind()) == "CWaterfallView";
            return sample >= 0 ? 1 : 0;
        }
        std::optional<std::string> StatusText(int age, int, ExtensionView&, int) override {
            return " | layer " + std::to_string(age);
        }
        void DrawTraceOverlay(DrawingContext& dc, int, int, int x, int top, int, int) override {
            dc.Pixel(x, top + 1, {255, 0, 0});
        }
    } marker;
    view.SetExtension(&marker);
    QTest::mouseMove(vp, QPoint(newRight - 1, 13));
    EXPECT_TRUE(view.StatusText().endsWith(" | layer 0")) << view.StatusText().toStdString();
    QTest::mousePress(vp, Qt::LeftButton, {}, QPoint(40, 10));
    QTest::mouseRelease(vp, Qt::LeftButton, {}, QPoint(45, 60));
    EXPECT_EQ(marker.clicks, 1);
    EXPECT_FALSE(view.LastSelection());  // taken by the extension: no zoom drag
    Deliver(Line(2, 300));
    doc_.OnDisplayNotice(DisplayDocumentIF::kUpdateViews, {});
    EXPECT_EQ(view.Ring().ColourAt(0, 1), qRgb(255, 0, 0));
    EXPECT_NE(view.Ring().ColourAt(0, 2), qRgb(255, 0, 0));
    view.SetExtension(nullptr);
    // A 3-pixel drag selects everything; a real one selects its rectangle.
    QTest::mousePress(vp, Qt::LeftButton, {}, QPoint(50, 20));
    QTest::mouseRelease(vp, Qt::LeftButton, {}, QPoint(53, 22));
    ASSERT_TRUE(view.LastSelection());
    EXPECT_TRUE(view.LastSelection()->whole);
    QTest::mousePress(vp, Qt::LeftButton, {}, QPoint(40, 10));
    QTest::mouseMove(vp, QPoint(80, 60));
    QTest::mouseRelease(vp, Qt::LeftButton, {}, QPoint(80, 60));
    ASSERT_TRUE(view.LastSelection());
    EXPECT_FALSE(view.LastSelection()->whole);
    EXPECT_EQ(view.LastSelection()->firstColumn, newRight - 1 - 80);
    EXPECT_EQ(view.LastSelection()->firstSample, 10);
    EXPECT_EQ(view.LastSelection()->lastSample, 60);
}

TEST_F(WaterfallViews, FrameSizesFromStoredPixelsOrDefaults) {
    using F = CChildFrameWaterfall;
    F::Layout l;
    l.rows = 3;
    l.firstRow = 2;
    l.firstColumn = 2;
    const int none[10] = {-1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
    F::Sizes s = F::ComputeSizes(l, none, none, 1000, 600);
    EXPECT_EQ(s.left, 900);
    EXPECT_EQ(s.right, 100);
    EXPECT_EQ(s.rows, (std::vector<int>{200, 200, 200}));
    const int rows[10] = {-1, -1, 300, 2, -1, -1, -1, -1, -1, -1};
    const int cols[10] = {-1, -1, 700, 3, -1, -1, -1, -1, -1, -1};
    s = F::ComputeSizes(l, rows, cols, 1000, 600);
    EXPECT_EQ(s.left, 700);
    EXPECT_EQ(s.right, 10);                              // at least 10
    EXPECT_EQ(s.rows, (std::vector<int>{300, 5, 200}));  // at least 5
    // Rows beyond the stored lists count as not stored.
    l.firstRow = 9;
    EXPECT_EQ(F::ComputeSizes(l, rows, cols, 1000, 600).rows, (std::vector<int>{200, 200, 200}));

    l = {};
    F empty(ctx_, doc_, l);  // NumSplits 0: no panes
    EXPECT_EQ(empty.Splitter(), nullptr);
    l.rows = 1;
    l.hasPlot = true;  // the plot row alone
    F plotOnly(ctx_, doc_, l);
    EXPECT_EQ(plotOnly.WaterfallRows(), 0);
    l.rows = 3;
    l.firstDisplay = 4;
    F frame(ctx_, doc_, l);
    ASSERT_EQ(frame.WaterfallRows(), 2);
    EXPECT_EQ(frame.Waterfall(0)->Display(), 4);
    EXPECT_EQ(frame.Scope(1)->Display(), 5);

    // With no stored heights the rows, the plot row too, share the height at every size the
    // window takes, not only the first (here too small for the views' least heights).
    frame.ApplySizes(none, none);
    frame.resize(400, 120);
    frame.show();
    QApplication::processEvents();
    for (const QSize size : {QSize(800, 900), QSize(800, 600)}) {
        frame.resize(size);
        QApplication::processEvents();
        const std::vector<int> heights = frame.Splitter()->RowHeights();
        ASSERT_EQ(heights.size(), 3u);
        EXPECT_LE(*std::max_element(heights.begin(), heights.end()) -
                      *std::min_element(heights.begin(), heights.end()),
                  1)
            << size.height();
        EXPECT_GT(heights[0], size.height() / 3 - 20) << size.height();
    }
}

TEST_F(WaterfallViews, ScopeGesturesEditTheTracker) {
    Edit([](DisplayProcessingConfig& c) {
        c.Channel = 0;
        c.TrackRange = 7;
        c.TrackThreshold = 40;
    });
    ScopeView scope(ctx_, doc_, 0);
    scope.resize(100, 200);
    scope.show();
    // The background grey fills the client width less two columns.
    general_.Modify([](GeneralValues& g) { g.ScopeBackgroundLevel = 90; });
    QPixmap shot(scope.size());
    shot.fill(Qt::magenta);
    scope.render(&shot);
    const QImage image = shot.toImage();
    EXPECT_EQ(QColor(image.pixel(97, 100)), QColor(90, 90, 90));
    EXPECT_EQ(QColor(image.pixel(98, 100)), scope.palette().window().color());
    QTest::mouseMove(&scope, QPoint(10, 10));
    EXPECT_TRUE(scope.StatusText().endsWith(" : Value NONE")) << scope.StatusText().toStdString();
    // Flat and wide: the tracker goes off.
    QTest::mousePress(&scope, Qt::LeftButton, {}, QPoint(10, 50));
    QTest::mouseRelease(&scope, Qt::LeftButton, {}, QPoint(40, 55));
    EXPECT_EQ(displays_.Lock(0)->TrackRange, 0.0f);
    EXPECT_EQ(displays_.Lock(0)->TrackThreshold, 0.0f);
    // Down by 20: the window from half of it (samples, as `UserUnits` 2 says).
    general_.Modify([](GeneralValues& g) { g.UserUnits = 2; });
    QTest::mousePress(&scope, Qt::LeftButton, {}, QPoint(50, 50));
    QTest::mouseRelease(&scope, Qt::LeftButton, {}, QPoint(50, 70));
    EXPECT_EQ(displays_.Lock(0)->TrackRange, 10.0f);
    // The update repaints at most once a second.
    ASSERT_TRUE(test::PumpUntil([&] { return scope.Paints() > 0; }, 2000));
    ticks_.SetTick(5000);
    scope.OnDocumentUpdate();
    const int asked = scope.Invalidations();
    ticks_.SetTick(5000);
    QApplication::processEvents();
    scope.OnDocumentUpdate();
    ticks_.SetTick(5500);
    scope.OnDocumentUpdate();
    EXPECT_EQ(scope.Invalidations(), asked);
    ticks_.SetTick(6100);
    scope.OnDocumentUpdate();
    EXPECT_EQ(scope.Invalidations(), asked + 1);
}

TEST_F(WaterfallViews, DisplayPagesHoldRangesAndStep) {
    CfgDisplay page(sheet_, displays_, 0, [] { return nullptr; });
    page.Exchange(DoIOHandler::kShow);
    const int before = displays_.Lock(0)->revision;
    page.Field("Gain")->setText("5000");
    page.Exchange(DoIOHandler::kRead);
    EXPECT_EQ(displays_.Lock(0)->Gain, 400);
    EXPECT_EQ(page.Field("Gain")->text(), "400");
    EXPECT_GT(displays_.Lock(0)->revision, before);
    page.AutoGain();
    EXPECT_EQ(displays_.Lock(0)->autoGainRequest, 1);

    struct Step {
        double from;
        bool up;
        double to;
    };
    for (const Step& s : {Step{1, false, 0.5}, Step{0.5, false, 1.0 / 3}, Step{0.25, true, 1.0 / 3},
                          Step{0.5, true, 1}, Step{1, true, 2}, Step{2.7, false, 1},
                          Step{100, true, 100}, Step{0.3, true, 0.5}}) {
        EXPECT_DOUBLE_EQ(CfgDisplay::ZoomStep(s.from, s.up), s.to) << s.from << " " << s.up;
    }
    Edit([](DisplayProcessingConfig& c) {
        c.TrackThreshold = 100;
        c.TVGStart = 0.5f;
    });
    page.SpinThreshold(true);
    EXPECT_EQ(displays_.Lock(0)->TrackThreshold, 100.0f);
    Edit([](DisplayProcessingConfig& c) { c.TrackThreshold = 50.3f; });
    page.SpinThreshold(true);
    EXPECT_FLOAT_EQ(displays_.Lock(0)->TrackThreshold, 51.3f);
    page.SpinThreshold(false);
    page.SpinThreshold(false);
    EXPECT_FLOAT_EQ(displays_.Lock(0)->TrackThreshold, 49.3f);
    page.SpinTVGStart(false);
    EXPECT_FLOAT_EQ(displays_.Lock(0)->TVGStart, -0.5f);
    page.ShowChannel(5);
    EXPECT_EQ(displays_.Lock(0)->Channel, 5);
    EXPECT_EQ(page.ChannelList()->currentText(), "5");

    set_.SetDocument(0, &doc_);
    doc_.GetCache(0);
    SetupDisplay advanced(sheet_, displays_, set_, 0);
    advanced.Exchange(DoIOHandler::kShow);
    EXPECT_EQ(advanced.List("DualChannel")->currentText(), "Subbottom (Single Channel)");
    advanced.Field("TraceZoomFactor")->setText("0");
    advanced.Field("CacheSize")->setText("60");
    advanced.List("ZoomAverage")->setCurrentIndex(0);
    advanced.Check("PalInvert")->setChecked(true);
    advanced.Exchange(DoIOHandler::kRead);
    EXPECT_EQ(displays_.Lock(0)->TraceZoomFactor, 1);
    EXPECT_EQ(displays_.Lock(0)->ZoomAverage, 0);
    EXPECT_EQ(displays_.Lock(0)->PalInvert, 1);
    EXPECT_EQ(doc_.ExistingCache(0)->Capacity(), 60);
    advanced.SetFileChooser([] { return std::optional<std::string>("sea.hsp"); });
    advanced.ChoosePalette();
    EXPECT_EQ(displays_.Lock(0)->Pal, "sea.hsp");
    EXPECT_EQ(advanced.Field("Pal")->text(), "sea.hsp");
}

}  // namespace
}  // namespace halvo

#pragma once
// One display frame: a splitter of rows, each a waterfall on the left and its scope on the
// right, with a row of plots on top when the layout asks for one (the strip chart over the
// waterfalls, the motion plot over the scopes), and a status line for the cursor readouts. Row and
// column sizes come from the layout's stored pixels, else 90 percent for the waterfall and equal
// rows.

#include <QWidget>
#include <span>
#include <vector>

#include "gui/views/DisplayViewContext.h"

class QLabel;

namespace halvo {

class CSplitterWndSonar;
class CWaterfallDoc;
class CWaterfallView;
class PlotView;
class ScopeView;
class XYPlotView;

class CChildFrameWaterfall final : public QWidget {
  public:
    static constexpr int kMinColumn = 10;
    static constexpr int kMinRow = 5;

    struct Layout {
        int rows = 0;          // `NumSplits` of the frame
        bool hasPlot = false;  // `HasPlot` of the frame
        int firstDisplay = 0;  // display of the top waterfall row (and of the plot row)
        int firstRow = 0;      // index of the frame's first row in `PixelsRows`
        int firstColumn = 0;   // index of its first column in `PixelsColumns`
    };

    struct Sizes {
        int left = 0;
        int right = 0;
        std::vector<int> rows;
    };
    // Pane sizes for a client of w by h from the stored lists (negative: not stored).
    static Sizes ComputeSizes(const Layout& layout, std::span<const int> rows,
                              std::span<const int> columns, int w, int h);

    CChildFrameWaterfall(DisplayViewContext& context, CWaterfallDoc& document, const Layout& layout,
                         QWidget* parent = nullptr);

    const Layout& FrameLayout() const { return layout_; }
    // The displays this frame's waterfall rows show.
    int WaterfallRows() const { return static_cast<int>(waterfalls_.size()); }
    CWaterfallView* Waterfall(int row) const;
    ScopeView* Scope(int row) const;
    CSplitterWndSonar* Splitter() const { return splitter_; }
    // The plot row's views; null without one.
    PlotView* Plot() const { return plot_; }
    XYPlotView* XYPlot() const { return xyPlot_; }
    QLabel* StatusLine() const { return status_; }

    // Stored sizes: applied now and, while the frame has no size yet, again at the first resize.
    void ApplySizes(std::span<const int> rows, std::span<const int> columns);
    // Appends the current row heights and column widths.
    void CollectSizes(std::vector<int>& rows, std::vector<int>& columns) const;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void Apply();

    Layout layout_;
    CSplitterWndSonar* splitter_ = nullptr;
    QLabel* status_ = nullptr;
    std::vector<CWaterfallView*> waterfalls_;
    std::vector<ScopeView*> scopes_;
    PlotView* plot_ = nullptr;
    XYPlotView* xyPlot_ = nullptr;
    std::vector<int> storedRows_;
    std::vector<int> storedColumns_;
    bool moved_ = false;  // the operator moved a divider since sizes were applied
};

}  // namespace halvo

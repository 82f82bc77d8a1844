#include "gui/views/CChildFrameWaterfall.h"

#include <QLabel>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>

#include "gui/views/CSplitterWndSonar.h"
#include "gui/views/CWaterfallDoc.h"
#include "gui/views/CWaterfallView.h"
#include "gui/views/PlotView.h"
#include "gui/views/ScopeView.h"
#include "gui/views/XYPlotView.h"

namespace halvo {

namespace {

int Stored(std::span<const int> list, int index) {
    return index >= 0 && static_cast<std::size_t>(index) < list.size()
               ? list[static_cast<std::size_t>(index)]
               : -1;
}

}  // namespace

CChildFrameWaterfall::Sizes CChildFrameWaterfall::ComputeSizes(const Layout& layout,
                                                               std::span<const int> rows,
                                                               std::span<const int> columns, int w,
                                                               int h) {
    Sizes s;
    const int ninety = static_cast<int>(static_cast<long long>(w) * 90 / 100);
    const int left = Stored(columns, layout.firstColumn);
    s.left = std::max(kMinColumn, left < 0 ? ninety : left);
    const int right = Stored(columns, layout.firstColumn + 1);
    s.right = std::max(kMinColumn, right < 0 ? w - ninety : right);
    for (int r = 0; r < std::max(0, layout.rows); ++r) {
        const int stored = Stored(rows, layout.firstRow + r);
        s.rows.push_back(std::max(kMinRow, stored < 0 ? h / layout.rows : stored));
    }
    return s;
}

CChildFrameWaterfall::CChildFrameWaterfall(DisplayViewContext& context, CWaterfallDoc& document,
                                           const Layout& layout, QWidget* parent)
    : QWidget(parent), layout_(layout) {
    auto* box = new QVBoxLayout(this);
    box->setContentsMargins(0, 0, 0, 0);
    box->setSpacing(0);
    status_ = new QLabel(this);
    status_->setTextInteractionFlags(Qt::NoTextInteraction);
    if (layout_.rows > 0) {
        splitter_ = new CSplitterWndSonar(layout_.rows, this);
        box->addWidget(splitter_, 1);
        // Once the operator drags a divider the layout is theirs, until sizes are applied again.
        splitter_->SetMovedHandler([this] { moved_ = true; });
        const int first = layout_.hasPlot ? 1 : 0;
        const auto show = [this](const QString& text) { status_->setText(text); };
        if (layout_.hasPlot) {
            // The strip chart over the waterfall column, the motion plot over the scope column.
            plot_ = new PlotView(context, document, layout_.firstDisplay);
            xyPlot_ = new XYPlotView(context, document, layout_.firstDisplay);
            plot_->SetStatusHandler(show);
            xyPlot_->SetStatusHandler(show);
            splitter_->SetPane(0, 0, plot_);
            splitter_->SetPane(0, 1, xyPlot_);
        }
        for (int row = first; row < layout_.rows; ++row) {
            const int display = layout_.firstDisplay + row - first;
            auto* waterfall = new CWaterfallView(context, document, display);
            auto* scope = new ScopeView(context, document, display);
            scope->SetScrollSource([waterfall] { return waterfall->verticalScrollBar()->value(); });
            waterfall->SetStatusHandler(show);
            scope->SetStatusHandler(show);
            splitter_->SetPane(row, 0, waterfall);
            splitter_->SetPane(row, 1, scope);
            waterfalls_.push_back(waterfall);
            scopes_.push_back(scope);
        }
    }
    box->addWidget(status_, 0);
}

CWaterfallView* CChildFrameWaterfall::Waterfall(int row) const {
    return row >= 0 && row < WaterfallRows() ? waterfalls_[static_cast<std::size_t>(row)] : nullptr;
}

ScopeView* CChildFrameWaterfall::Scope(int row) const {
    return row >= 0 && row < WaterfallRows() ? scopes_[static_cast<std::size_t>(row)] : nullptr;
}

void CChildFrameWaterfall::ApplySizes(std::span<const int> rows, std::span<const int> columns) {
    storedRows_.assign(rows.begin(), rows.end());
    storedColumns_.assign(columns.begin(), columns.end());
    moved_ = false;
    Apply();
}

void CChildFrameWaterfall::Apply() {
    if (splitter_ == nullptr || splitter_->width() <= 0 || splitter_->height() <= 0) return;
    const Sizes s =
        ComputeSizes(layout_, storedRows_, storedColumns_, splitter_->width(), splitter_->height());
    splitter_->SetSizes(s.rows, s.left, s.right);
}

// The sizes are worked out again at every layout: rows without a stored height keep sharing the
// client height (h / r) as the window grows, instead of a splitter handing the growth to whichever
// pane stretches most (which left the plot row a sliver when the first size was small).
void CChildFrameWaterfall::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (!moved_) Apply();
}

void CChildFrameWaterfall::CollectSizes(std::vector<int>& rows, std::vector<int>& columns) const {
    if (splitter_ == nullptr) return;
    for (int h : splitter_->RowHeights()) rows.push_back(h);
    for (int w : splitter_->ColumnWidths()) columns.push_back(w);
}

}  // namespace halvo

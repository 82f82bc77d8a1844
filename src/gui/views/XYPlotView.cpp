#include "gui/views/XYPlotView.h"

#include <QPainter>
#include <algorithm>

#include "app/GeneralSettings.h"
#include "extensions/WaterfallExtension.h"
#include "gui/extensions/QPainterContext.h"

namespace halvo {

namespace {
constexpr int kGridLines = 4;
}

void XYPlotView::paintEvent(QPaintEvent*) {
    QPainter p(this);
    if (extension_ != nullptr) {
        QPainterContext dc(p, width(), height());
        extension_->DrawLegend(dc, *this);
        return;
    }
    p.fillRect(rect(), QColor(150, 150, 150));
    const GeneralValues g = ctx_.general.Snapshot();
    const int label = std::max(0, std::min(g.LabelWidth, width() / 2));
    const QRect grid(label, 0, std::max(1, width() - label), height());
    QFont font = p.font();
    font.setPixelSize(std::clamp(height() / 6, 8, 12));
    p.setFont(font);
    p.setPen(QColor(90, 90, 90));
    for (int i = 0; i <= kGridLines; ++i) {
        const int x = grid.left() + (grid.width() - 1) * i / kGridLines;
        const int y = grid.top() + (grid.height() - 1) * i / kGridLines;
        p.drawLine(x, grid.top(), x, grid.bottom());
        p.drawLine(grid.left(), y, grid.right(), y);
    }
    p.setPen(Qt::black);
    if (label > 0) {
        p.drawText(QRect(0, 0, label, height() / 2), Qt::AlignCenter,
                   QString::asprintf("X %d", display_));
        p.drawText(QRect(0, height() / 2, label, height() / 2), Qt::AlignCenter,
                   QString::asprintf("/ %d", kGridLines));
    }
    // The strip inside the grid's middle half, on its own white ground, so the grid stays seen.
    PaintStrip(p, grid.adjusted(grid.width() / 8, grid.height() / 4, -grid.width() / 8,
                                -grid.height() / 4));
}

}  // namespace halvo

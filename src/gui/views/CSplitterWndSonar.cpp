#include "gui/views/CSplitterWndSonar.h"

#include <QWidget>

namespace halvo {

CSplitterWndSonar::CSplitterWndSonar(int rows, QWidget* parent) : QSplitter(Qt::Vertical, parent) {
    setObjectName(QString::number(kFirstPaneId, 16));
    setChildrenCollapsible(false);
    setFrameShape(QFrame::Panel);
    setFrameShadow(QFrame::Raised);
    for (int r = 0; r < rows; ++r) {
        auto* row = new QSplitter(Qt::Horizontal, this);
        row->setChildrenCollapsible(false);
        for (int c = 0; c < 2; ++c) row->addWidget(new QWidget(row));
        connect(row, &QSplitter::splitterMoved, this, [this, row] {
            SyncColumns(row);
            if (moved_) moved_();
        });
        rows_.push_back(row);
    }
    connect(this, &QSplitter::splitterMoved, this, [this] {
        if (moved_) moved_();
    });
}

void CSplitterWndSonar::SetPane(int row, int column, QWidget* pane) {
    if (row < 0 || row >= Rows() || column < 0 || column > 1 || pane == nullptr) return;
    QSplitter* s = rows_[static_cast<std::size_t>(row)];
    const QList<int> sizes = s->sizes();
    QWidget* old = s->replaceWidget(column, pane);
    if (old != nullptr) old->deleteLater();
    s->setSizes(sizes);
}

QWidget* CSplitterWndSonar::Pane(int row, int column) const {
    if (row < 0 || row >= Rows() || column < 0 || column > 1) return nullptr;
    return rows_[static_cast<std::size_t>(row)]->widget(column);
}

void CSplitterWndSonar::SetSizes(const std::vector<int>& rowHeights, int left, int right) {
    QList<int> heights(rowHeights.begin(), rowHeights.end());
    setSizes(heights);
    syncing_ = true;
    for (QSplitter* s : rows_) s->setSizes({left, right});
    syncing_ = false;
}

std::vector<int> CSplitterWndSonar::RowHeights() const {
    const QList<int> s = sizes();
    return std::vector<int>(s.begin(), s.end());
}

std::vector<int> CSplitterWndSonar::ColumnWidths() const {
    if (rows_.empty()) return {};
    const QList<int> s = rows_.front()->sizes();
    return std::vector<int>(s.begin(), s.end());
}

void CSplitterWndSonar::SyncColumns(QSplitter* from) {
    if (syncing_) return;
    syncing_ = true;
    const QList<int> s = from->sizes();
    for (QSplitter* r : rows_) {
        if (r != from) r->setSizes(s);
    }
    syncing_ = false;
}

}  // namespace halvo

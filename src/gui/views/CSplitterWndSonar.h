#pragma once
// The static splitter of a display frame: rows of two panes each, the left column wide and the
// right narrow. Qt splits one way only, so this is a vertical splitter of row splitters whose
// column sizes move together: dragging the column edge in one row moves it in all.

#include <QSplitter>
#include <functional>
#include <vector>

namespace halvo {

class CSplitterWndSonar final : public QSplitter {
  public:
    // The identifier a frame's splitter always had; kept for whoever looks panes up by it.
    static constexpr int kFirstPaneId = 0xE900;

    CSplitterWndSonar(int rows, QWidget* parent = nullptr);

    int Rows() const { return static_cast<int>(rows_.size()); }
    // Puts a pane in row r, column c (0 or 1); the splitter takes it.
    void SetPane(int row, int column, QWidget* pane);
    QWidget* Pane(int row, int column) const;

    // Row heights and the two column widths, in pixels.
    void SetSizes(const std::vector<int>& rowHeights, int left, int right);
    std::vector<int> RowHeights() const;
    std::vector<int> ColumnWidths() const;
    // Called when the operator drags a row or column divider.
    void SetMovedHandler(std::function<void()> moved) { moved_ = std::move(moved); }

  private:
    void SyncColumns(QSplitter* from);

    std::vector<QSplitter*> rows_;
    bool syncing_ = false;
    std::function<void()> moved_;
};

}  // namespace halvo

#include "gui/views/WaterfallRing.h"

#include <QPainter>
#include <algorithm>
#include <cstring>

namespace halvo {

namespace {

QRgb ToQRgb(const PaletteColour& c) {
    return qRgb(c.red, c.green, c.blue);
}

}  // namespace

void WaterfallRing::Reset(int width, int height, std::uint8_t noData) {
    const int w = std::max(0, width);
    const int h = std::clamp(height, 0, kMaxColumnHeight);
    indices_ = QImage(w, h, QImage::Format_Indexed8);
    colours_ = QImage(w, h, QImage::Format_RGB32);
    overlays_.assign(static_cast<std::size_t>(w), ColumnOverlay{});
    newest_ = w > 0 ? w - 1 : 0;
    if (w == 0 || h == 0) return;
    indices_.fill(noData);
    colours_.fill(table_[noData]);
}

void WaterfallRing::SetColours(const Palette& palette, const GeneralValues& general) {
    QList<QRgb> table;
    table.reserve(Palette::kEntries);
    for (int i = 0; i < Palette::kEntries; ++i) {
        table_[static_cast<std::size_t>(i)] = ToQRgb(palette[i]);
        table.push_back(table_[static_cast<std::size_t>(i)]);
    }
    indices_.setColorTable(table);
    bottomColour_ = ToQRgb(ColourOfSetting(general.RGBBottomTrackIndicator));
    heaveColour_ = ToQRgb(ColourOfSetting(general.RGBHeaveIndicator));
    for (int x = 0; x < Width(); ++x) Colour(x);
}

void WaterfallRing::Shift(int columns) {
    const int w = Width();
    if (w == 0 || columns <= 0) return;
    newest_ = (newest_ + columns % w) % w;
}

int WaterfallRing::RingX(int column) const {
    const int w = Width();
    if (w == 0) return 0;
    const int c = column % w;
    return (newest_ - c + w) % w;
}

ColumnSpan WaterfallRing::Column(int column) {
    // The plot never asks beyond the image; a column outside it goes to scratch.
    if (column < 0 || column >= Width() || Height() == 0) return {scratch_.data(), 1};
    return {indices_.bits() + RingX(column), indices_.bytesPerLine()};
}

void WaterfallRing::Drawn(int column, int age, const ColumnOverlay& overlay) {
    if (column < 0 || column >= Width()) return;
    const int x = RingX(column);
    overlays_[static_cast<std::size_t>(x)] = overlay;
    Colour(x);
    if (hook_) hook_(column, age, overlay, colours_, x);
}

// One ring column from indices to colours, then the two-pixel indicators.
void WaterfallRing::Colour(int x) {
    const int h = Height();
    if (h == 0) return;
    const std::uint8_t* in = indices_.constBits() + x;
    const qsizetype inStride = indices_.bytesPerLine();
    auto* out = reinterpret_cast<QRgb*>(colours_.bits()) + x;
    const qsizetype outStride = colours_.bytesPerLine() / static_cast<qsizetype>(sizeof(QRgb));
    for (int y = 0; y < h; ++y) out[y * outStride] = table_[in[y * inStride]];
    const ColumnOverlay& o = overlays_[static_cast<std::size_t>(x)];
    const auto mark = [&](int row, QRgb colour) {
        if (row == ColumnOverlay::kNoRow) return;
        for (int r = row; r < row + 2; ++r) {
            if (r >= 0 && r < h) out[r * outStride] = colour;
        }
    };
    mark(o.bottomRow, bottomColour_);
    mark(o.heaveRow, heaveColour_);
}

void WaterfallRing::Paint(QPainter& painter, const QRect& image, const QRect& exposed) const {
    const int w = Width();
    const int h = Height();
    if (w == 0 || h == 0) return;
    // Screen x s of the image shows ring x (newest + 1 + s) mod w: the ring's older part, from
    // just after the newest column to the end, then its start up to the newest.
    const QRect area = QRect(image.left(), image.top(), w, h).intersected(exposed);
    if (area.isEmpty()) return;
    const int split = w - 1 - newest_;  // screen columns taken from the older part
    const int s0 = area.left() - image.left();
    const int s1 = area.right() - image.left() + 1;
    const int y0 = area.top() - image.top();
    const int rows = area.height();
    if (s0 < split) {
        const int end = std::min(s1, split);
        painter.drawImage(QPoint(image.left() + s0, area.top()), colours_,
                          QRect(newest_ + 1 + s0, y0, end - s0, rows));
    }
    if (s1 > split) {
        const int begin = std::max(s0, split);
        painter.drawImage(QPoint(image.left() + begin, area.top()), colours_,
                          QRect(begin - split, y0, s1 - begin, rows));
    }
}

std::uint8_t WaterfallRing::IndexAt(int column, int row) const {
    if (column < 0 || column >= Width() || row < 0 || row >= Height()) return 0;
    return indices_.constScanLine(row)[RingX(column)];
}

QRgb WaterfallRing::ColourAt(int column, int row) const {
    if (column < 0 || column >= Width() || row < 0 || row >= Height()) return 0;
    return reinterpret_cast<const QRgb*>(colours_.constScanLine(row))[RingX(column)];
}

}  // namespace halvo

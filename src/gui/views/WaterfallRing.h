#pragma once
// The pixels of one waterfall view: an 8-bit indexed image used as a ring, so that a new line
// costs one column and never a copy of the image, and beside it the same ring in 32-bit colour
// with the indicators on top, so that painting is a plain blit. Column 0 is the newest; the
// ring's offset says where it stands.

#include <QImage>
#include <QRect>
#include <cstdint>
#include <functional>
#include <vector>

#include "app/GeneralValues.h"
#include "display/Palette.h"
#include "display/WaterfallPlot.h"

class QPainter;

namespace halvo {

class WaterfallRing final : public WaterfallColumnTarget {
  public:
    // After a column is coloured: the extension's draw-column turn, on the colour image, whose
    // column ringX holds it.
    using DrawnHook = std::function<void(int column, int age, const ColumnOverlay& overlay,
                                         QImage& image, int ringX)>;

    // A new empty ring of width by height (height at most kMaxColumnHeight), every pixel the
    // no-data index.
    void Reset(int width, int height, std::uint8_t noData);
    // A new colour table and indicator colours: the colour ring is made again from the indices.
    void SetColours(const Palette& palette, const GeneralValues& general);
    // Moves the ring by n new columns; the columns that come free keep their old pixels until
    // they are drawn.
    void Shift(int columns);

    ColumnSpan Column(int column) override;
    void Drawn(int column, int age, const ColumnOverlay& overlay) override;

    // Draws the part of the image that falls in `exposed`, the newest column at the right edge of
    // `image` (client coordinates).
    void Paint(QPainter& painter, const QRect& image, const QRect& exposed) const;

    void SetDrawnHook(DrawnHook hook) { hook_ = std::move(hook); }

    int Width() const { return indices_.width(); }
    int Height() const { return indices_.height(); }
    // Ring x of column c (0 newest).
    int RingX(int column) const;
    std::uint8_t IndexAt(int column, int row) const;
    QRgb ColourAt(int column, int row) const;
    const QImage& Indices() const { return indices_; }

  private:
    void Colour(int x);

    QImage indices_;
    QImage colours_;
    std::vector<ColumnOverlay> overlays_;
    std::vector<QRgb> table_ = std::vector<QRgb>(256, 0);
    QRgb bottomColour_ = 0;
    QRgb heaveColour_ = 0;
    int newest_ = 0;  // ring x of column 0
    std::vector<std::uint8_t> scratch_ = std::vector<std::uint8_t>(kMaxColumnHeight);
    DrawnHook hook_;
};

}  // namespace halvo

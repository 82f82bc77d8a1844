#pragma once
// A waterfall image without a window: 8-bit palette indices, row-major, the newest column at
// the right, with the indicators of each column kept beside it. The file tool draws into it, and
// tests read it back; the GUI keeps its own ring image and uses the plot the same way.

#include <cstdint>
#include <vector>

#include "display/WaterfallPlot.h"

namespace halvo {

class WaterfallImage final : public WaterfallColumnTarget {
  public:
    WaterfallImage(int width, int height);

    // Moves everything left by n columns, as a live view does before drawing new lines. The
    // columns that come free keep their old bytes until they are drawn.
    void ScrollLeft(int n);

    ColumnSpan Column(int column) override;
    void Drawn(int column, int age, const ColumnOverlay& overlay) override;

    int Width() const { return width_; }
    int Height() const { return height_; }
    std::uint8_t Index(int x, int y) const {
        return pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                       static_cast<std::size_t>(x)];
    }
    const std::vector<std::uint8_t>& Indices() const { return pixels_; }
    const ColumnOverlay& Overlay(int x) const { return overlays_[static_cast<std::size_t>(x)]; }

    // The picture in 8-bit red, green, blue, row by row: palette colours, then the bottom and
    // heave indicators (two pixels each) in the colours of `General`.
    std::vector<std::uint8_t> Rgb(const Palette& palette, const GeneralValues& general) const;

  private:
    int width_;
    int height_;
    std::vector<std::uint8_t> pixels_;
    std::vector<ColumnOverlay> overlays_;
};

// The indicator rows of one column drawn into an RGB column: pixel i at rgb[i * stride], three
// bytes each. Rows outside 0 to height-1 are left out.
void DrawIndicators(const ColumnOverlay& overlay, const GeneralValues& general, std::uint8_t* rgb,
                    std::ptrdiff_t stride, int height);

}  // namespace halvo

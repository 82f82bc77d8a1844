#include "display/WaterfallImage.h"

#include <algorithm>
#include <cstring>

namespace halvo {

namespace {

void Paint(std::uint8_t* rgb, std::ptrdiff_t stride, int height, int row, PaletteColour c) {
    for (int r = row; r < row + 2; ++r) {
        if (r < 0 || r >= height) continue;
        std::uint8_t* p = rgb + r * stride;
        p[0] = c.red;
        p[1] = c.green;
        p[2] = c.blue;
    }
}

}  // namespace

void DrawIndicators(const ColumnOverlay& overlay, const GeneralValues& general, std::uint8_t* rgb,
                    std::ptrdiff_t stride, int height) {
    if (overlay.bottomRow != ColumnOverlay::kNoRow) {
        Paint(rgb, stride, height, overlay.bottomRow,
              ColourOfSetting(general.RGBBottomTrackIndicator));
    }
    if (overlay.heaveRow != ColumnOverlay::kNoRow) {
        Paint(rgb, stride, height, overlay.heaveRow, ColourOfSetting(general.RGBHeaveIndicator));
    }
}

WaterfallImage::WaterfallImage(int width, int height)
    : width_(std::max(0, width)),
      height_(std::clamp(height, 0, kMaxColumnHeight)),
      pixels_(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), 0),
      overlays_(static_cast<std::size_t>(width_)) {}

void WaterfallImage::ScrollLeft(int n) {
    if (n <= 0) return;
    if (n >= width_) return;
    const auto w = static_cast<std::size_t>(width_);
    const auto shift = static_cast<std::size_t>(n);
    for (int y = 0; y < height_; ++y) {
        std::uint8_t* row = pixels_.data() + static_cast<std::size_t>(y) * w;
        std::memmove(row, row + shift, w - shift);
    }
    std::move(overlays_.begin() + n, overlays_.end(), overlays_.begin());
}

ColumnSpan WaterfallImage::Column(int column) {
    const int x = width_ - 1 - column;
    return ColumnSpan{pixels_.data() + x, width_};
}

void WaterfallImage::Drawn(int column, int /*age*/, const ColumnOverlay& overlay) {
    overlays_[static_cast<std::size_t>(width_ - 1 - column)] = overlay;
}

std::vector<std::uint8_t> WaterfallImage::Rgb(const Palette& palette,
                                              const GeneralValues& general) const {
    std::vector<std::uint8_t> rgb(pixels_.size() * 3);
    for (std::size_t i = 0; i < pixels_.size(); ++i) {
        const PaletteColour& c = palette[pixels_[i]];
        rgb[3 * i] = c.red;
        rgb[3 * i + 1] = c.green;
        rgb[3 * i + 2] = c.blue;
    }
    const std::ptrdiff_t stride = std::ptrdiff_t{width_} * 3;
    for (int x = 0; x < width_; ++x) {
        DrawIndicators(overlays_[static_cast<std::size_t>(x)], general, rgb.data() + 3 * x, stride,
                       height_);
    }
    return rgb;
}

}  // namespace halvo

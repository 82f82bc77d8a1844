#include "display/WaterfallZoomDrag.h"

#include <algorithm>
#include <cstdlib>

#include "display/WaterfallPlot.h"

namespace halvo {

bool WaterfallZoomDrag::Press(const WaterfallPlot& plot, int x, int y) {
    const bool inside = x >= plot.Left() && x < plot.Right() && y >= plot.Top() &&
                        y < plot.Top() + plot.ImageHeight();
    if (!inside) return false;
    anchorX_ = x;
    anchorY_ = y;
    return true;
}

std::optional<WaterfallZoomDrag::Band> WaterfallZoomDrag::BandTo(int x, int y) const {
    if (!Dragging()) return std::nullopt;
    return Band{std::min(anchorX_, x), std::min(anchorY_, y), std::max(anchorX_, x),
                std::max(anchorY_, y)};
}

std::optional<ZoomSelection> WaterfallZoomDrag::Release(const WaterfallPlot& plot, int x, int y) {
    if (!Dragging()) return std::nullopt;
    ZoomSelection s;
    s.imageHeight = plot.ImageHeight();
    if (std::abs(x - anchorX_) < kMinMove && std::abs(y - anchorY_) < kMinMove) {
        s.whole = true;
        s.firstColumn = 0;
        s.lastColumn = std::max(0, plot.ImageWidth() - 1);
        s.firstSample = 0;
        s.lastSample = plot.LineLength();
    } else {
        const int right = plot.Right() - 1;
        s.firstColumn = right - std::max(anchorX_, x);
        s.lastColumn = right - std::min(anchorX_, x);
        s.firstSample = plot.SampleAt(std::min(anchorY_, y));
        s.lastSample = plot.SampleAt(std::max(anchorY_, y));
    }
    Clear();
    return s;
}

}  // namespace halvo

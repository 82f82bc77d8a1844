#include "display/WaterfallPlot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "display/DisplayUnits.h"
#include "display/SonarDataCache.h"
#include "display/SonarDataCacheElement.h"

namespace halvo {

WaterfallPlot::WaterfallPlot(int displayIndex) : displayIndex_(displayIndex) {
    // The palette is read when the plot is made, and again whenever `Pal` changes.
    palette_.LoadFile(config_.Pal);
    paletteName_ = config_.Pal;
    paletteRead_ = true;
}

WaterfallPlot::Adoption WaterfallPlot::Adopt(const DisplayProcessingConfig& config,
                                             const GeneralValues& general) {
    Adoption result;
    if (!paletteRead_ || config.Pal != paletteName_) {
        palette_.LoadFile(config.Pal);
        paletteName_ = config.Pal;
        paletteRead_ = true;
        result.paletteLoaded = true;
    }
    config_ = config;
    general_ = general;
    repaintWanted_ = true;
    result.zoomChanged = SetZoom(config.Zoom);
    axisLabel_ = WaterfallAxis::Title(displayIndex_, config_, general_);
    axis_.SetScale(FromSamples(1.0, config_.sampleRate, general_));
    return result;
}

bool WaterfallPlot::SetZoom(double zoom) {
    const double z = NormaliseZoom(zoom);
    if (z == zoom_) return false;
    zoom_ = z;
    return true;
}

void WaterfallPlot::SetImageRect(int left, int top, int right, int bottom) {
    left_ = left;
    top_ = top;
    right_ = right;
    bottom_ = bottom;
    if (right > left && bottom > top) hasWindow_ = true;
}

int WaterfallPlot::ColumnHeight() const {
    return std::min(ImageHeight(), kMaxColumnHeight);
}

int WaterfallPlot::TraceZoomFactor() const {
    // The page allows 1 to 10; anything else from a hand-edited file is held to that.
    return std::clamp(config_.TraceZoomFactor, 1, 10);
}

WaterfallPlot::NewLines WaterfallPlot::TakeNewLines() {
    NewLines step;
    if (!hasWindow_ || cache_ == nullptr) return step;
    const std::int64_t n = cache_->Total() - drawnTotal_;
    if (n <= 0) return step;
    // More lines than columns: the image is replaced whole, the rest are never seen.
    const std::int64_t columns = n * TraceZoomFactor();
    step.lines = static_cast<int>(std::min<std::int64_t>(n, ImageWidth() + 1));
    step.shiftColumns = static_cast<int>(std::min<std::int64_t>(columns, ImageWidth()));
    step.copy = columns < ImageWidth();
    // A redraw under way follows the image it is drawing into.
    if (nextColumn_ >= 0 && nextColumn_ < ImageWidth()) {
        nextColumn_ = static_cast<int>(std::min<std::int64_t>(nextColumn_ + columns, ImageWidth()));
    }
    drawnTotal_ = cache_->Total();
    return step;
}

void WaterfallPlot::DrawNewColumns(const NewLines& step, WaterfallColumnTarget& target) {
    const int factor = TraceZoomFactor();
    for (int i = 0; i < step.lines; ++i) {
        for (int r = 0; r < factor; ++r) {
            if (!DrawColumn(factor * i + r, target)) return;
        }
    }
}

void WaterfallPlot::TakeGeometry(const SonarDataCacheElement* line) {
    if (config_.MaxDepth > 0 && config_.DualChannel == 0) {
        if (config_.MaxDepth != lastMaxDepth_ || config_.sampleRate != lastRate_) {
            lastMaxDepth_ = config_.MaxDepth;
            lastRate_ = config_.sampleRate;
            lineLength_ = std::max(0, ToSamples(config_.MaxDepth, config_.sampleRate, general_));
            startDepth_ = 0;
            dual_ = false;
            repaintWanted_ = true;
        }
    } else if (line != nullptr) {
        const bool dual = line->dualChannel != 0;
        if (dual != dual_ || line->startDepth != startDepth_ || line->size != lineLength_ ||
            lastMaxDepth_ != kNoMaxDepth) {
            dual_ = dual;
            startDepth_ = line->startDepth;
            lineLength_ = std::max(0, line->size);
            lastMaxDepth_ = kNoMaxDepth;
            repaintWanted_ = true;
        }
    }
    axis_.SetGeometry(lineLength_, startDepth_, dual_);
}

ColumnContext WaterfallPlot::Context() const {
    ColumnContext ctx;
    ctx.config = &config_;
    ctx.general = &general_;
    ctx.zoom = zoom_;
    ctx.scroll = scroll_;
    ctx.height = ColumnHeight();
    ctx.imageTop = top_;
    return ctx;
}

bool WaterfallPlot::DrawColumn(int column, WaterfallColumnTarget& target) {
    if (column < 0 || column >= ImageWidth()) return false;
    const int age = column / TraceZoomFactor();
    const SonarDataCacheElement* line = cache_ != nullptr ? cache_->Get(age) : nullptr;
    if (column == 0) TakeGeometry(line);
    const ColumnOverlay overlay = RenderWaterfallColumn(line, Context(), target.Column(column));
    target.Drawn(column, age, overlay);
    return true;
}

bool WaterfallPlot::RedrawSlice(WaterfallColumnTarget& target,
                                const std::function<bool()>& keepGoing) {
    if (nextColumn_ < 0) return true;
    while (nextColumn_ < ImageWidth()) {
        DrawColumn(nextColumn_, target);
        ++nextColumn_;
        if (!keepGoing()) break;
    }
    return nextColumn_ >= ImageWidth();
}

bool WaterfallPlot::TakeRepaintWanted() {
    const bool wanted = repaintWanted_;
    repaintWanted_ = false;
    return wanted;
}

int WaterfallPlot::AgeAt(int x) const {
    return (right_ - 1 - x) / TraceZoomFactor();
}

int WaterfallPlot::SampleAt(int y) const {
    if (!(zoom_ > 0.0)) return scroll_;
    return TruncCount(static_cast<double>(y) / zoom_ + scroll_);
}

WaterfallPlot::Readout WaterfallPlot::Cursor(int x, int y, int scrollPixels,
                                             std::uint32_t statusFlags, bool leftButtonDown) const {
    Readout r;
    const int column = right_ - 1 - x;
    if (column >= 0 && cache_ != nullptr && zoom_ > 0.0) {
        r.age = column / TraceZoomFactor();
        r.line = cache_->Get(r.age);
    }
    if (r.line == nullptr) {
        r.text = "No Data At Cursor";
        return r;
    }
    std::int64_t s = TruncCount((static_cast<double>(y) + scrollPixels) / zoom_);
    if (!(config_.MaxDepth > 0 && config_.DualChannel == 0)) {
        if (r.line->dualChannel == 1) s -= r.line->size / 2;
        s += s >= 0 ? r.line->startDepth : -r.line->startDepth;
    }
    r.sample = TruncCount(static_cast<double>(s));
    char part[64];
    if (statusFlags & kCursorSampleBit) {
        std::snprintf(part, sizeof part, "Sample %d | ", r.sample);
        r.text += part;
    }
    if (statusFlags & kCursorDepthBit) {
        const double depth = FromSamples(std::fabs(double(r.sample)), config_.sampleRate, general_);
        std::snprintf(part, sizeof part, "Depth %4.1f | ", depth);
        r.text += part;
    }
    if (!leftButtonDown) r.text += " Press Left Mouse Button for More";
    return r;
}

}  // namespace halvo

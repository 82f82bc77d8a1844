#include "display/WaterfallColumn.h"

#include <algorithm>
#include <cmath>

#include "app/GeneralValues.h"
#include "display/DisplayProcessingConfig.h"
#include "display/DisplayUnits.h"
#include "display/SonarDataCacheElement.h"

namespace halvo {

namespace {

std::uint8_t GreyLevel(std::int32_t level) {
    return static_cast<std::uint8_t>(std::clamp(level, 0, 255));
}

bool SingleWithMaxDepth(const DisplayProcessingConfig& config) {
    return config.MaxDepth > 0 && config.DualChannel == 0;
}

// Writes into the column without ever passing its height.
class ColumnWriter {
  public:
    ColumnWriter(ColumnSpan out, int height) : out_(out), height_(height) {}
    bool Full() const { return row_ >= height_; }
    int Row() const { return row_; }
    void Put(std::uint8_t index, std::int64_t count = 1) {
        for (; count > 0 && row_ < height_; --count, ++row_) out_.data[row_ * out_.stride] = index;
    }
    void Set(int row, std::uint8_t index) { out_.data[row * out_.stride] = index; }

  private:
    ColumnSpan out_;
    int height_;
    int row_ = 0;
};

void DrawSamples(const SonarDataCacheElement& line, const ColumnContext& ctx, int start, int end,
                 ColumnWriter& w) {
    const DisplayProcessingConfig& config = *ctx.config;
    const bool invert = config.PalInvert != 0;
    const std::uint8_t* v = line.pixels.data();
    if (ctx.zoom > 1.0) {
        const std::int64_t rep = TruncCount(ctx.zoom);
        for (int s = start; s < end && !w.Full(); ++s) w.Put(PaletteIndex(v[s], invert), rep);
        return;
    }
    const int d = std::max(1, TruncCount(1.0 / ctx.zoom));
    switch (config.ZoomAverage) {
        case 0:
            for (std::int64_t s = start; s < end && !w.Full(); s += d) {
                w.Put(PaletteIndex(v[s], invert));
            }
            break;
        case 1:
            for (std::int64_t s = start; s + d <= end && !w.Full(); s += d) {
                std::int64_t sum = 0;
                for (std::int64_t k = s; k < s + d; ++k) sum += v[k];
                w.Put(PaletteIndex(static_cast<int>(sum / d), invert));
            }
            break;
        default:
            // The largest value, which is the strongest echo: inversion follows decimation.
            for (std::int64_t s = start; s + d <= end && !w.Full(); s += d) {
                std::uint8_t most = 0;
                for (std::int64_t k = s; k < s + d; ++k) most = std::max(most, v[k]);
                w.Put(PaletteIndex(most, invert));
            }
            break;
    }
}

void PlaceIndicators(const SonarDataCacheElement& line, const ColumnContext& ctx, int delta,
                     ColumnOverlay& overlay) {
    const DisplayProcessingConfig& config = *ctx.config;
    const GeneralValues& general = *ctx.general;
    if (!(general.BottomTrackIndicatorOffset > 0.0f)) return;
    int o = TruncCount(ToSamples(general.BottomTrackIndicatorOffset, config.sampleRate, general) *
                       ctx.zoom);
    std::int64_t b = line.bottomSample;
    std::int64_t v = b + line.heaveSamples;
    if (b >= 0) {
        b -= line.startDepth;
        v -= line.startDepth;
    } else {
        b += line.startDepth;
        v += line.startDepth;
    }
    if (delta > 0) {
        b += delta;
        v += delta;
    } else if (line.dualChannel == 1) {
        const int half = line.size / 2;
        if (b >= 0) o = -o;
        b = half - b;
        v = half - v;
    }
    const std::int64_t z = TruncCount(ctx.zoom);
    b = (b - ctx.scroll) * z;
    v = (v - ctx.scroll) * z;
    const auto place = [&](std::int64_t row) {
        if (row >= 0 && row < ctx.height && ctx.imageTop - o + row > 0) {
            return static_cast<int>(row - o);
        }
        return ColumnOverlay::kNoRow;
    };
    overlay.bottomRow = place(b);
    if (config.HeaveSource > 0) overlay.heaveRow = place(v);
}

}  // namespace

double NormaliseZoom(double z) {
    if (!std::isfinite(z)) return 1.0;
    if (z >= 64.0) return z;
    if (z >= 1.0) return std::trunc(z);
    if (z <= 0.001) return z;
    return 1.0 / std::ceil(1.0 / z - 0.25);
}

int DepthPlacement(const SonarDataCacheElement& line, const DisplayProcessingConfig& config,
                   const GeneralValues& general) {
    if (!SingleWithMaxDepth(config)) return 0;
    const double metres = line.Header().GetInt(TraceField::DepthMM) / 1000.0;
    const std::int64_t samples =
        std::int64_t{TruncCount(metres / (general.WaterSoundSpeed * 0.5) * config.sampleRate)} +
        line.startDepth;
    return TruncCount(static_cast<double>(samples));
}

ColumnOverlay RenderWaterfallColumn(const SonarDataCacheElement* line, const ColumnContext& ctx,
                                    ColumnSpan out) {
    const DisplayProcessingConfig& config = *ctx.config;
    const GeneralValues& general = *ctx.general;
    const int h = std::clamp(ctx.height, 0, kMaxColumnHeight);
    ColumnWriter w(out, h);
    ColumnOverlay overlay;
    overlay.firstSample = ctx.scroll;
    const std::uint8_t rest =
        GreyLevel(config.DualChannel != 0 ? general.NoDataGreyLevel : general.NoDataGreyLevel2);
    // A zoom of 0 or below shows no samples at all: nothing can be placed.
    const bool drawable =
        line != nullptr && ctx.zoom > 0.0 && static_cast<int>(line->pixels.size()) >= line->size;
    if (drawable) {
        const double zoom = ctx.zoom;
        const int delta = DepthPlacement(*line, config, general);
        std::int64_t start = std::int64_t{ctx.scroll} - delta;
        double gap = 0;
        if (start < 0) {
            gap = static_cast<double>(-start);
            if (gap * zoom >= h) gap = TruncCount(h / zoom);
            start = 0;
        }
        std::int64_t end = line->size;
        if ((static_cast<double>(end - start) + gap) * zoom >= h) {
            end = std::min<std::int64_t>(TruncCount(h / zoom - gap + static_cast<double>(start)),
                                         line->size);
        }
        w.Put(GreyLevel(general.NoDataGreyLevel), TruncCount(gap * zoom));
        if (start < end) DrawSamples(*line, ctx, static_cast<int>(start), static_cast<int>(end), w);
        w.Put(rest, h);
        if (line->Header().GetInt(TraceField::MarkNumber) != 0) {
            const int width = std::clamp(config.EventMarkWidth, 0, h);
            for (int i = 0; i < width; ++i) w.Set(i, i % 8 < 4 ? 255 : 0);
        }
        if (delta > 0) overlay.firstSample = TruncCount(static_cast<double>(ctx.scroll) - delta);
        PlaceIndicators(*line, ctx, delta, overlay);
    } else {
        w.Put(rest, h);
    }
    return overlay;
}

}  // namespace halvo

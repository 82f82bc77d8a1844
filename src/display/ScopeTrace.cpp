#include "display/ScopeTrace.h"

#include <algorithm>

#include "app/GeneralValues.h"
#include "display/DisplayProcessingConfig.h"
#include "display/DisplayUnits.h"
#include "display/SonarDataCacheElement.h"

namespace halvo {

float ScopeSoundSpeed(std::int32_t waterSoundSpeed) {
    const auto c = static_cast<float>(waterSoundSpeed);
    return c <= 500.0f || c > 3000.0f ? 1500.0f : c;
}

int ScopeOffset(const SonarDataCacheElement& line, const DisplayProcessingConfig& config,
                const GeneralValues& general) {
    if (!(config.MaxDepth > 0 && config.DualChannel == 0)) return 0;
    const double c = ScopeSoundSpeed(general.WaterSoundSpeed);
    const double metres = line.Header().GetInt(TraceField::DepthMM) / 1000.0;
    const std::int64_t samples =
        std::int64_t{TruncCount(metres / (c * 0.5) * config.sampleRate)} + line.startDepth;
    return TruncCount(static_cast<double>(samples));
}

ScopeTraceShape ScopeTrace::Shape(const SonarDataCacheElement& line, int offset, double zoom,
                                  const ScopeArea& area) {
    ScopeTraceShape shape;
    if (!(zoom > 0.0)) return shape;
    const int size = std::min<int>(line.size, static_cast<int>(line.pixels.size()));
    const std::int64_t bottom = std::int64_t{area.scrollPixels} + area.pageHeight;
    const std::int64_t first = std::max(0, TruncCount(area.scrollPixels / zoom));
    const auto xOf = [&](std::int64_t j) {
        if (j < 0 || j >= size) return 0;
        return line.pixels[static_cast<std::size_t>(j)] * area.clientWidth / 255;
    };
    int least = 100000, greatest = 0;
    std::int64_t rowY = TruncCount(zoom * static_cast<double>(first));
    for (std::int64_t i = first; i < first + kMaxSamples; ++i) {
        const std::int64_t j = i - offset;
        if (j >= size) break;
        const std::int64_t y = TruncCount(zoom * static_cast<double>(i));
        if (y > bottom) break;
        const int x = xOf(j);
        if (zoom >= 0.5) {
            shape.points.push_back({x, static_cast<int>(y)});
            continue;
        }
        if (y != rowY) {
            // The row is drawn at the new row's height; the sample that opened it starts afresh.
            if (least <= greatest) {
                shape.spans.push_back(
                    {static_cast<int>(y), least, greatest == least ? greatest + 1 : greatest});
            }
            least = 100000;
            greatest = 0;
            rowY = y;
            continue;
        }
        least = std::min(least, x);
        greatest = std::max(greatest, x);
    }
    return shape;
}

ScopeMarkers ScopeTrace::Markers(const SonarDataCacheElement& line,
                                 const DisplayProcessingConfig& config,
                                 const GeneralValues& general, int offset, double zoom,
                                 int clientWidth) {
    ScopeMarkers m;
    m.thresholdX = TruncCount(clientWidth * static_cast<double>(config.TrackThreshold) / 100.0);
    double t = ToSamples(config.TVGStart, config.sampleRate, general);
    if (line.dualChannel == 1) {
        const double half = line.size / 2;
        t = t > 0 ? half - t + line.startDepth : half - t - line.startDepth;
    } else {
        t = t + offset - line.startDepth;
    }
    if (t < 0) t = 0;
    m.tvgY = TruncCount(t * zoom);
    const int r = TruncCount(ToSamples(config.TrackRange, config.sampleRate, general) * zoom);
    m.rangeHalf = r > 1 ? r : 0;
    return m;
}

}  // namespace halvo

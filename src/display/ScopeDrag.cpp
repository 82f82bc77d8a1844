#include "display/ScopeDrag.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "app/GeneralValues.h"
#include "display/DisplayProcessingConfig.h"
#include "display/DisplayUnits.h"
#include "display/ScopeTrace.h"
#include "display/SonarDataCacheElement.h"
#include "display/WaterfallAxis.h"
#include "display/WaterfallColumn.h"

namespace halvo {

namespace {

// The zoom the record asks for, as the waterfall uses it; a zoom that places nothing counts
// as 1 so that a drag never divides by zero.
double DragZoom(const DisplayProcessingConfig& config) {
    const double z = NormaliseZoom(config.Zoom);
    return z > 0.0 ? z : 1.0;
}

}  // namespace

void ScopeEdit::ApplyTo(DisplayProcessingConfig& config) const {
    switch (kind) {
        case Kind::TrackerOff:
            config.TrackRange = 0.0f;
            config.TrackThreshold = 0.0f;
            break;
        case Kind::TrackRange:
            config.TrackRange = trackRange;
            break;
        case Kind::Click:
            config.TrackThreshold = trackThreshold;
            if (tvgStart) config.TVGStart = *tvgStart;
            break;
    }
}

std::optional<ScopeEdit> ScopeDrag::Release(int x, int y, const ScopeClient& client,
                                            int scrollPixels, const SonarDataCacheElement* line,
                                            const DisplayProcessingConfig& config,
                                            const GeneralValues& general) {
    if (!anchor_) return std::nullopt;
    const std::int64_t dx = std::llabs(std::int64_t{x} - anchor_->x);
    const std::int64_t dy = std::llabs(std::int64_t{y} - anchor_->y);
    anchor_.reset();
    ScopeEdit edit;
    const double zoom = DragZoom(config);
    if (dx > 3 * dy) {
        edit.kind = ScopeEdit::Kind::TrackerOff;
        return edit;
    }
    if (dy > 4) {
        edit.kind = ScopeEdit::Kind::TrackRange;
        const int samples = TruncCount(static_cast<double>(dy) * 0.5 / zoom);
        edit.trackRange = static_cast<float>(FromSamples(samples, config.sampleRate, general));
        return edit;
    }
    edit.kind = ScopeEdit::Kind::Click;
    const int width = client.right - client.left;
    edit.trackThreshold = width != 0 ? static_cast<float>((x - client.left) * 100.0 / width) : 0.0f;
    if (line != nullptr) {
        const double v = (static_cast<double>(y) + scrollPixels) / zoom;
        double delta = -line->startDepth;
        if (config.MaxDepth > 0 && config.DualChannel == 0) {
            const double c = ScopeSoundSpeed(general.WaterSoundSpeed);
            const double metres = line->Header().GetInt(TraceField::DepthMM) / 1000.0;
            delta = TruncCount(metres / (c * 0.5) * config.sampleRate);
        }
        double w;
        if (line->dualChannel == 1) {
            w = line->size / 2 - v;
            w += w > 0 ? line->startDepth : -line->startDepth;
        } else {
            w = v - delta;
        }
        edit.tvgStart = static_cast<float>(FromSamples(TruncCount(w), config.sampleRate, general));
    }
    return edit;
}

std::string ScopeDrag::Readout(int x, int y, int clientWidth, int scrollPixels, double zoom,
                               const SonarDataCacheElement* line,
                               const DisplayProcessingConfig& config,
                               const GeneralValues& general) {
    const double pct = clientWidth - 2 != 0 ? x * 100.0 / (clientWidth - 2) : 0.0;
    char value[48];
    if (line == nullptr) {
        std::snprintf(value, sizeof value, " : Value NONE");
    } else {
        const double v = pct * 2.56 / line->gain;
        if (line->Header().GetInt(TraceField::DataFormat) == 2) {
            std::snprintf(value, sizeof value, " Value %2.0f", v);
        } else {
            std::snprintf(value, sizeof value, " Value %7.2f DB", 20.0 * std::log10(v));
        }
    }
    const double z = zoom > 0.0 ? zoom : 1.0;
    std::int64_t s = TruncCount((static_cast<double>(y) + scrollPixels) / z);
    if (line != nullptr && !(config.MaxDepth > 0 && config.DualChannel == 0)) {
        if (line->dualChannel == 1) s -= line->size / 2;
        s += s >= 0 ? line->startDepth : -line->startDepth;
    }
    const int sample = TruncCount(static_cast<double>(s));
    const double depth = std::fabs(FromSamples(sample, config.sampleRate, general));
    char text[160];
    std::snprintf(text, sizeof text, "%5.1f %s | %4.2f%% | N %4d %s", depth,
                  UserUnitName(general.UserUnits), pct, sample, value);
    return text;
}

}  // namespace halvo

#include "display/WaterfallAxis.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "app/GeneralValues.h"
#include "display/DisplayProcessingConfig.h"
#include "display/DisplayUnits.h"

namespace halvo {

const char* UserUnitName(std::int32_t userUnits) {
    switch (userUnits) {
        case 1:
            return "MILLISECONDS";
        case 2:
            return "SAMPLES";
        default:
            return "METERS";
    }
}

std::string WaterfallAxis::Title(int display, const DisplayProcessingConfig& config,
                                 const GeneralValues& general) {
    char text[64];
    if (config.DualChannel != 0) {
        std::snprintf(text, sizeof text, " D%d:C%d-%d", display, config.Channel,
                      config.Channel ^ 1);
    } else {
        std::snprintf(text, sizeof text, " D%d:C%d", display, config.Channel);
    }
    return std::string(UserUnitName(general.UserUnits)) + text;
}

void WaterfallAxis::SetGeometry(int lineLength, int startDepth, bool dual) {
    lineLength_ = std::max(0, lineLength);
    startDepth_ = startDepth;
    dual_ = dual;
}

double WaterfallAxis::LabelOf(int sample) const {
    const double s = sample;
    if (!dual_) return (s + startDepth_) * scale_;
    const double half = lineLength_ / 2;
    if (s < half) return (half - s - startDepth_) * scale_;
    return (s - half + startDepth_) * scale_;
}

int WaterfallAxis::SampleOf(double label, bool left) const {
    if (!(scale_ != 0.0) || !std::isfinite(label / scale_)) return kAboveLine;
    const double units = label / scale_;
    const int half = lineLength_ / 2;
    double s;
    if (!dual_) {
        s = units - startDepth_;
    } else if (left) {
        s = half - startDepth_ - units;
        if (s >= half) return kBelowLine;  // the mirrored side ends at the centre line
    } else {
        s = units + half - startDepth_;
        if (s < half) return kAboveLine;
    }
    if (s < 0) return kAboveLine;
    if (s >= lineLength_) return kBelowLine;
    return TruncCount(s);
}

std::string WaterfallAxis::LabelFormat() const {
    const double a = std::fabs(LabelOf(0));
    const double b = std::fabs(LabelOf(lineLength_));
    const double c = dual_ ? std::fabs(LabelOf(lineLength_ / 2)) : 0.0;
    const double largest = std::max({a, b, c});
    const double step = std::fabs(scale_);
    if (!std::isfinite(largest) || largest >= 1e7 || (step > 0.0 && step < 1e-4)) return "%-7.2e";
    int digits = 1;
    for (double v = largest; v >= 10.0 && digits < 8; v /= 10.0) ++digits;
    // Enough decimals to tell neighbouring samples apart, at most three.
    int decimals = 0;
    for (double s = step; s > 0.0 && s < 1.0 && decimals < 3; s *= 10.0) ++decimals;
    const bool negative = LabelOf(0) < 0 || LabelOf(lineLength_) < 0;
    const int width = digits + (decimals > 0 ? decimals + 1 : 0) + (negative ? 1 : 0);
    char format[32];
    std::snprintf(format, sizeof format, "%%-%d.%df", width, decimals);
    return format;
}

std::string WaterfallAxis::FormatLabel(double label) const {
    const std::string format = LabelFormat();
    char text[64];
    // The format is one of the two shapes built above, each with a single double argument.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::snprintf(text, sizeof text, format.c_str(), label);
#pragma GCC diagnostic pop
    return text;
}

}  // namespace halvo

#include "display/PlotModel.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>

namespace halvo {

namespace {
const std::vector<float> kNone;

std::string Format(const char* format, double v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, format, v);
    return buf;
}
}  // namespace

std::string PlotState::ToText() const {
    char buf[160];
    std::snprintf(buf, sizeof buf, "Options=%u XZoom=%g YMin=%g YMax=%g XFirst=%g XLast=%g",
                  options, xZoom, yMin, yMax, xFracFirst, xFracLast);
    return buf;
}

PlotState PlotState::FromText(const std::string& text) {
    PlotState s;
    std::istringstream in(text);
    std::string item;
    while (in >> item) {
        const std::size_t eq = item.find('=');
        if (eq == std::string::npos) continue;
        const std::string key = item.substr(0, eq);
        const char* value = item.c_str() + eq + 1;
        char* end = nullptr;
        const double v = std::strtod(value, &end);
        if (end == value || !std::isfinite(v)) continue;
        if (key == "Options" && v >= 0 && v <= 0xFFFFFFFFu)
            s.options = static_cast<std::uint32_t>(v);
        if (key == "XZoom" && v > 0) s.xZoom = static_cast<float>(v);
        if (key == "YMin") s.yMin = static_cast<float>(v);
        if (key == "YMax") s.yMax = static_cast<float>(v);
        if (key == "XFirst") s.xFracFirst = std::clamp(v, 0.0, 1.0);
        if (key == "XLast") s.xFracLast = std::clamp(v, 0.0, 1.0);
    }
    if (s.xFracLast <= s.xFracFirst) {
        s.xFracFirst = 0.0;
        s.xFracLast = 1.0;
    }
    return s;
}

void PlotModel::SetCurves(int count) {
    curves_ = std::clamp(count, 1, kMaxCurves);
    for (int i = curves_; i < kMaxCurves; ++i) data_[i].clear();
}

void PlotModel::SetXRange(double first, double last) {
    xFirst_ = first;
    xLast_ = last;
}

void PlotModel::SetCurve(int index, std::vector<float> values) {
    if (index < 0 || index >= kMaxCurves) return;
    data_[index] = std::move(values);
    if (state_.options & kPlotAutoScale) Rescale();
}

const std::vector<float>& PlotModel::Curve(int index) const {
    return index >= 0 && index < curves_ ? data_[index] : kNone;
}

void PlotModel::Clear() {
    for (auto& d : data_) d.clear();
}

bool PlotModel::Empty() const {
    return data_[0].empty() && data_[1].empty();
}

std::optional<double> PlotModel::Shown(float value) const {
    if (!std::isfinite(value)) return std::nullopt;
    if (state_.options & kPlotDbScale) {
        if (value <= 0.0f) return std::nullopt;
        return 20.0 * std::log10(static_cast<double>(value));
    }
    return value;
}

void PlotModel::Rescale() {
    bool any = false;
    double lo = 0.0, hi = 0.0;
    for (int c = 0; c < curves_; ++c) {
        for (float v : data_[c]) {
            const auto s = Shown(v);
            if (!s) continue;
            if (!any) lo = hi = *s;
            lo = std::min(lo, *s);
            hi = std::max(hi, *s);
            any = true;
        }
    }
    if (!any) return;
    if (hi <= lo) hi = lo + 1.0;
    state_.yMin = static_cast<float>(lo);
    state_.yMax = static_cast<float>(hi);
}

void PlotModel::ExpandY() {
    const double mid = 0.5 * (state_.yMin + state_.yMax);
    const double half = state_.yMax - state_.yMin;
    state_.yMin = static_cast<float>(mid - half);
    state_.yMax = static_cast<float>(mid + half);
}

PlotStatistics PlotModel::Statistics() const {
    PlotStatistics s;
    const std::vector<float>& v = data_[0];
    if (v.empty()) return s;
    const double count = static_cast<double>(v.size());
    const std::size_t first =
        static_cast<std::size_t>(std::clamp(state_.xFracFirst * count, 0.0, count));
    const std::size_t last =
        static_cast<std::size_t>(std::clamp(state_.xFracLast * count, 0.0, count));
    bool seen = false;
    for (std::size_t i = first; i < last && i < v.size(); ++i) {
        const double x = v[i];
        if (!std::isfinite(x)) continue;
        ++s.n;
        s.sum += x;
        s.sumSquares += x * x;
        s.max = seen ? std::max(s.max, x) : x;
        seen = true;
    }
    return s;
}

std::optional<PlotFigures> PlotModel::Figures() const {
    const PlotStatistics s = Statistics();
    if (s.n <= 0) return std::nullopt;
    PlotFigures f;
    const double n = s.n;
    f.n = s.n;
    f.avg = s.sum / n;
    f.rms = frequency_ ? std::sqrt((xLast_ - xFirst_) * s.sumSquares / n) * spectralScale_
                       : std::sqrt(s.sumSquares / n);
    f.sdev = std::sqrt(std::max(0.0, s.sumSquares / n - f.avg * f.avg));
    f.psd = s.sumSquares / n * spectralScale_ * spectralScale_;
    f.max = s.max;
    return f;
}

std::string PlotModel::Caption(std::optional<std::pair<double, double>> cursor) const {
    std::string out;
    const std::uint32_t o = state_.options;
    if (const auto f = Figures()) {
        if (o & kPlotMean) out += Format(" AVG %3.1f ", f->avg);
        if (o & kPlotRms) out += Format(" RMS %5.3f ", f->rms);
        if (o & kPlotStdDev) out += Format(" SDEV %4.2f ", f->sdev);
        if (o & kPlotSampleSize) out += " N " + std::to_string(f->n) + " ";
        if (o & kPlotPsd) out += Format(" PSD %4.2f ", f->psd);
        if (o & kPlotMaxVal) out += Format(" MAX %4.2f ", f->max);
    }
    if ((o & kPlotCursor) && cursor) {
        char buf[80];
        std::snprintf(buf, sizeof buf, "Cursor = (%3.3f, %3.2f)", cursor->first, cursor->second);
        out += buf;
    }
    if (out.size() > kCaptionLimit) out.resize(kCaptionLimit);
    return out;
}

std::string PlotModel::RangeText() const {
    char buf[200];
    std::snprintf(buf, sizeof buf, "Y = (%f .. %f)", state_.yMin, state_.yMax);
    std::string out = buf;
    char x[120];
    std::snprintf(x, sizeof x, "%g .. %g", xFirst_ + (xLast_ - xFirst_) * state_.xFracFirst,
                  xFirst_ + (xLast_ - xFirst_) * state_.xFracLast);
    return out + "  X = " + x;
}

double PlotModel::YPixel(double shown, int height) const {
    const double span = static_cast<double>(state_.yMax) - state_.yMin;
    if (span <= 0.0 || height <= 1) return height / 2.0;
    return (height - 1) * (1.0 - (shown - state_.yMin) / span);
}

void PlotModel::Mapping(int height, float& scale, float& offset) const {
    const double span = static_cast<double>(state_.yMax) - state_.yMin;
    scale = span > 0.0 ? static_cast<float>((height - 1) / span) : 0.0f;
    offset = static_cast<float>(-state_.yMin * scale);
}

double PlotModel::XPixel(int i, int count, int width) const {
    if (count <= 1) return 0.0;
    const double frac = static_cast<double>(i) / (count - 1);
    const double visible = state_.xFracLast - state_.xFracFirst;
    if (visible <= 0.0) return 0.0;
    return (frac - state_.xFracFirst) / visible * (width - 1);
}

double PlotModel::XAt(int pixel, int width) const {
    const double visible = state_.xFracLast - state_.xFracFirst;
    const double frac =
        state_.xFracFirst + (width > 1 ? static_cast<double>(pixel) / (width - 1) : 0.0) * visible;
    return xFirst_ + (xLast_ - xFirst_) * frac;
}

int PlotModel::IndexAt(int pixel, int width, int count) const {
    if (count <= 0 || width <= 1) return -1;
    const double visible = state_.xFracLast - state_.xFracFirst;
    const double frac = state_.xFracFirst + static_cast<double>(pixel) / (width - 1) * visible;
    const long long i = std::llround(frac * (count - 1));
    return i >= 0 && i < count ? static_cast<int>(i) : -1;
}

}  // namespace halvo

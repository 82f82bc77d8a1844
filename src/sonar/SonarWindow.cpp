#include "sonar/SonarWindow.h"

#include <cmath>
#include <limits>
#include <span>

#include "app/OverallConfig.h"
#include "core/ByteOrder.h"
#include "sonar/SonarConfig.h"

namespace halvo {

namespace {

std::int32_t Clamp32(std::int64_t v) {
    if (v > std::numeric_limits<std::int32_t>::max())
        return std::numeric_limits<std::int32_t>::max();
    if (v < std::numeric_limits<std::int32_t>::min())
        return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(v);
}

// Window units to samples at rate r (samples per second). + 0.49 rather than + 0.5: a value
// that lands exactly half-way rounds down.
std::int64_t ToSamples(std::int32_t value, std::int32_t units, double r) {
    switch (units) {
        case 1:  // milliseconds
            return TruncToInt32(value * r / 1000.0 + 0.49);
        case 2:  // metres, two-way at 1500 m/s
            return TruncToInt32(value * r / 750.0 + 0.49);
        default:  // samples
            return value;
    }
}

std::int64_t UpToEven(std::int64_t v) {
    return (v % 2 != 0) ? v + 1 : v;
}

void Finish(SonarWindow& w, std::int64_t delay, std::int64_t width) {
    delay = UpToEven(delay);
    width = UpToEven(width);
    w.delay = Clamp32(delay);
    w.width = Clamp32(width);
    const std::int64_t last = 2 * width;
    w.last = last == 0 ? SonarWindow::kDefaultLastWord : Clamp32(last);
}

}  // namespace

std::int32_t TruncToInt32(double value) {
    if (std::isnan(value)) return 0;
    if (value >= 2147483647.0) return std::numeric_limits<std::int32_t>::max();
    if (value <= -2147483648.0) return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(value);
}

std::array<std::uint8_t, SonarWindow::kPayloadBytes> SonarWindow::Payload() const {
    std::array<std::uint8_t, kPayloadBytes> out{};
    const std::span<std::uint8_t> s(out);
    PutLE<std::uint16_t>(s, 0, frameDecimator);
    PutLE<std::uint16_t>(s, 2, pixelDecimator);
    PutLE<std::int32_t>(s, 4, delay);
    PutLE<std::int32_t>(s, 8, width);
    PutLE<std::int32_t>(s, 12, last);
    return out;
}

SonarWindow SonarWindow::Storage(const SonarConfig& config, std::int32_t adcRateReadBack) {
    SonarWindow w;
    const double r = adcRateReadBack / 1000.0;
    const std::int64_t delay = ToSamples(TruncToInt32(config.storageDelay), config.windowUnits, r);
    const std::int64_t width = ToSamples(TruncToInt32(config.storageDepth), config.windowUnits, r);
    Finish(w, delay, width);
    return w;
}

SonarWindow SonarWindow::Display(const SonarConfig& config, std::int32_t adcRateReadBack,
                                 int configType) {
    SonarWindow w;
    const std::int32_t pixel = config.pixelDecimator < 1 ? 1 : config.pixelDecimator;
    // The wire fields are 16 bits wide; larger decimators keep their low bits.
    w.frameDecimator = static_cast<std::uint16_t>(config.frameDecimator);
    w.pixelDecimator = static_cast<std::uint16_t>(pixel);
    const double r = adcRateReadBack / 1000.0;
    std::int64_t delay = ToSamples(TruncToInt32(config.delay), config.windowUnits, r);
    std::int64_t width = ToSamples(TruncToInt32(config.depth), config.windowUnits, r);
    // Only metres are divided: a window in milliseconds stays in undecimated samples. The
    // difference is deliberate and kept.
    if (config.windowUnits == SonarConfig::UnitsMeters) {
        delay /= pixel;
        width /= pixel;
    }
    Finish(w, delay, width);
    if (configType == OverallConfig::kConfigR90) {
        w.delay = 0;
        w.width = kR90Width;
    }
    return w;
}

}  // namespace halvo

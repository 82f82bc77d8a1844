// Window arithmetic: units to samples at the reported ADC rate, rounding up to even, and the
// metres-only division by the pixel decimator.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "app/OverallConfig.h"
#include "sonar/SonarConfig.h"
#include "sonar/SonarWindow.h"

namespace halvo {
namespace {

TEST(SonarWindow, DisplayAndStorageInEachUnitWithOddValues) {
    struct Case {
        const char* what;
        std::int32_t units;
        float delay, depth;
        std::int32_t pixel;
        std::int32_t adcRate;  // as the sonar reports it: samples per second x 1000
        std::int32_t wantDisplayDelay, wantDisplayWidth, wantStorageDelay, wantStorageWidth;
    };
    const Case cases[] = {
        // Samples pass as they are, truncated, then rounded up to even; no decimator division.
        {"samples", 0, 13.9f, 501.0f, 3, 25000000, 14, 502, 14, 502},
        {"samples negative odd", 0, -3.0f, 0.0f, 1, 1000, -2, 0, -2, 0},
        // 7 ms at 25000/s = 175 (+0.49) -> 176; 101 ms -> 2525.49 -> 2525 -> 2526. Not divided.
        {"milliseconds", 1, 7.0f, 101.0f, 4, 25000000, 176, 2526, 176, 2526},
        // Half-way rounds down: 1 ms at 2500/s is 2.5 (+0.49) -> 2; 3 ms is 7.5 -> 7 -> 8.
        {"milliseconds half-way", 1, 1.0f, 3.0f, 1, 2500000, 2, 8, 2, 8},
        // 9 m at 25000/s = 300 -> /7 = 42; 101 m = 3366.67 (+0.49) -> 3367 -> /7 = 481 -> 482.
        // Storage is never divided: 300 and 3367 -> 3368.
        {"metres", 2, 9.0f, 101.0f, 7, 25000000, 42, 482, 300, 3368},
        // A pixel decimator below 1 counts as 1.
        {"metres pixel 0", 2, 0.0f, 15.0f, 0, 1000000, 0, 20, 0, 20}};
    for (const Case& k : cases) {
        SCOPED_TRACE(k.what);
        SonarConfig c;
        c.windowUnits = k.units;
        c.delay = c.storageDelay = k.delay;
        c.depth = c.storageDepth = k.depth;
        c.pixelDecimator = k.pixel;
        c.frameDecimator = 5;
        const SonarWindow d = SonarWindow::Display(c, k.adcRate, OverallConfig::kConfigSBSS);
        EXPECT_EQ(d.delay, k.wantDisplayDelay);
        EXPECT_EQ(d.width, k.wantDisplayWidth);
        EXPECT_EQ(d.last, k.wantDisplayWidth == 0 ? 250000 : 2 * k.wantDisplayWidth);
        EXPECT_EQ(d.frameDecimator, 5);
        EXPECT_EQ(d.pixelDecimator, k.pixel < 1 ? 1 : k.pixel);
        const SonarWindow s = SonarWindow::Storage(c, k.adcRate);
        EXPECT_EQ(s.delay, k.wantStorageDelay);
        EXPECT_EQ(s.width, k.wantStorageWidth);
        EXPECT_EQ(s.frameDecimator, 1);
        EXPECT_EQ(s.pixelDecimator, 1);
    }
}

TEST(SonarWindow, PayloadLayoutAndHostileNumbers) {
    SonarConfig c;
    c.depth = std::numeric_limits<float>::infinity();
    c.delay = std::nanf("");
    c.windowUnits = SonarConfig::UnitsMilliseconds;
    const SonarWindow w = SonarWindow::Display(c, std::numeric_limits<std::int32_t>::max(), 0);
    EXPECT_EQ(w.delay, 0);
    EXPECT_EQ(w.width, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(w.last, std::numeric_limits<std::int32_t>::max());

    const SonarWindow p{0x1234, 0x0102, -6, 1000, 2000};
    const auto b = p.Payload();
    const std::array<std::uint8_t, 16> want{0x34, 0x12, 0x02, 0x01, 0xFA, 0xFF, 0xFF, 0xFF,
                                            0xE8, 0x03, 0,    0,    0xD0, 0x07, 0,    0};
    EXPECT_EQ(b, want);
    EXPECT_EQ(TruncToInt32(-2.9), -2);
    EXPECT_EQ(TruncToInt32(-1e20), std::numeric_limits<std::int32_t>::min());
}

}  // namespace
}  // namespace halvo

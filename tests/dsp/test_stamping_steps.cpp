// The arithmetic of the stamping steps against values worked out by hand, and the seawater
// density against the check values published with the UNESCO 1980 equation of state of seawater.

#include <gtest/gtest.h>

#include <cmath>

#include "core/SonarMessage.h"
#include "dsp/SeawaterDepth.h"
#include "dsp/TraceStampSteps.h"
#include "nav/NavigationSnapshot.h"

namespace halvo {
namespace {

using namespace stamping;
using F = TraceField;

TEST(StampingSteps, BiasIsRemovedAndTheAngleWrapsOnceAtPlusMinus180) {
    struct Case {
        std::int32_t raw;
        double bias, degrees;
    };
    const Case cases[] = {
        {-31856, 10.0, 175.0}, {31856, -10.0, -175.0},
        {32767, 0.0, 180.0},   {-32768, 0.0, 179.99},  // just below -180 wraps to just below +180
        {0, 30.0, -30.0},
    };
    for (const Case& c : cases) {
        EXPECT_NEAR(BiasedAngle(c.raw, c.bias) * 180.0 / 32767.0, c.degrees, 0.011) << c.raw;
    }
    EXPECT_EQ(BiasedAngle(0, 1e300), -2147483647 - 1);  // a wild bias saturates
    EXPECT_EQ(BiasedAngle(0, std::nan("")), 0);
}

TEST(StampingSteps, HeaveSamplesAreZeroBeyondTenThousand) {
    // One sample at 1500 m/s and 40 us is 0.03 m.
    EXPECT_NEAR(HeaveSamples(-0.3, 1500, 40000), -10.0, 1e-9);
    EXPECT_NEAR(HeaveSamples(299.97, 1500, 40000), 9999.0, 1e-6);
    EXPECT_EQ(HeaveSamples(300.03, 1500, 40000), 0.0);  // 10001 samples
    EXPECT_EQ(HeaveSamples(0.3, 1500, 0), 0.0);
    EXPECT_EQ(HeaveSamples(0.0, 0, 0), 0.0);  // 0/0
    EXPECT_EQ(HeaveMillimetres(1500, 40000, 11), 330);
}

TEST(StampingSteps, DayOfYearHasALeapDayInEveryFourthYearWithoutTheCenturyRule) {
    const std::int32_t cases[][4] = {
        {1, 1, 2024, 1},   {31, 12, 2024, 366}, {31, 12, 2023, 365}, {1, 3, 2023, 60},
        {29, 2, 1900, 60}, {1, 3, 1900, 61},    {1, 3, 2100, 61},    {5, 0, 2024, 5},
    };
    for (const auto& c : cases) EXPECT_EQ(DayOfYear(c[0], c[1], c[2]), c[3]) << c[2] << c[1];
    EXPECT_EQ(PressureField(1000, 2.0, 1.0), 3000);   // 1 PSI * 2 + 1
    EXPECT_EQ(PressureField(-1000, 1.0, 0.0), -999);  // -999.5 truncates toward zero
}

TEST(SeawaterDepth, MatchesThePublishedCheckValues) {
    // (S, T, bars, density kg/m^3), then (S, T, bars, secant bulk modulus bars).
    const double density[][4] = {
        {0, 5, 0, 999.96675},      {0, 5, 1000, 1044.12802},   {0, 25, 0, 997.04796},
        {0, 25, 1000, 1037.90204}, {35, 5, 0, 1027.67547},     {35, 5, 1000, 1069.48914},
        {35, 25, 0, 1023.34306},   {35, 25, 1000, 1062.53817},
    };
    for (const auto& c : density) EXPECT_NEAR(SeawaterDepth::Density(c[0], c[1], c[2]), c[3], 2e-5);
    const double modulus[][4] = {
        {0, 5, 0, 20337.80375},     {0, 5, 1000, 23643.52599}, {35, 5, 0, 22185.93358},
        {35, 5, 1000, 25577.49819}, {35, 25, 0, 23726.34949},
    };
    for (const auto& c : modulus) {
        EXPECT_NEAR(SeawaterDepth::SecantBulkModulus(c[0], c[1], c[2]), c[3], 2e-5);
    }
}

TEST(SeawaterDepth, DepthFromPressure) {
    // 14514.7 PSI is 1000 bars: (14500 * 100000 / 14.7) / 9.8 / rho at S 35 (check values).
    EXPECT_NEAR(SeawaterDepth::DepthMillimetres(14514700, 25.0, 0.0), 9472836, 1);
    EXPECT_NEAR(SeawaterDepth::DepthMillimetres(14514700, 5.0, 0.0), 9411269, 1);
    EXPECT_EQ(SeawaterDepth::DepthMillimetres(14514700, 80.0, 0.0),
              SeawaterDepth::DepthMillimetres(14514700, 50.0, 0.0));     // T held to 0..50
    EXPECT_EQ(SeawaterDepth::DepthMillimetres(14700, 10.0, 2.5), 2500);  // only the offset
    EXPECT_EQ(SeawaterDepth::DepthMillimetres(0, 10.0, 2.5), 0);
    EXPECT_EQ(SeawaterDepth::DepthMillimetres(14700, 10.0, -20000.0), -10000000);
    EXPECT_EQ(SeawaterDepth::DepthMillimetres(14700, 10.0, std::nan("")), 0);
}

TEST(StampingSteps, NavigationHemispheresAndLayback) {
    // 50 deg 30.5 min, 4 deg 15.25 min: seconds 181830 and 15315, group 30305000 and 2552500.
    const char letters[][2] = {{'N', 'E'}, {'S', 'W'}, {'s', 'w'}};
    for (const auto& l : letters) {
        NavigationSnapshot s;
        s.latDegrees = 50, s.latMinutes = 30.5f, s.latHemisphere = l[0];
        s.lonDegrees = 4, s.lonMinutes = 15.25f, s.lonHemisphere = l[1];
        SonarMessage m = SonarMessage::Build(80, 2, 0, 0, 240);
        TraceHeaderView th(m.Payload());
        StampNavigation(th, s);
        const int signY = l[0] == 'N' ? 1 : -1, signX = l[1] == 'W' ? -1 : 1;  // not "w"
        EXPECT_EQ(th.GetInt(F::SourceCoordY), signY * 181830) << l[0];
        EXPECT_EQ(th.GetInt(F::GroupCoordY), signY * 30305000) << l[0];
        EXPECT_EQ(th.GetInt(F::SourceCoordX), signX * 15315) << l[1];
        EXPECT_EQ(th.GetInt(F::GroupCoordX), signX * 2552500) << l[1];
    }
    // 10 m is 53.996 units; at 50.508 deg a longitude offset widens by 1 / cos: 84.90. The sum
    // is truncated, not the offset.
    const std::int32_t layback[][6] = {
        {0x10, 0, 1000, 0, 0, 0},  // no "Layback Enable": no offset
        {0x11, 0, 1000, 0, 0, -54},
        {0x11, 0, 1000, 90, 84, 0},
        {0x11, 1000, 0, 0, -85, 0},
    };
    for (const auto& c : layback) {
        SonarMessage m = SonarMessage::Build(80, 2, 0, 0, 240);
        TraceHeaderView th(m.Payload());
        th.SetInt(F::GroupCoordX, 2552500);
        th.SetInt(F::GroupCoordY, 30305000);
        th.SetInt(F::NMEAAntennaeO, c[1]);
        th.SetInt(F::NMEAAntennaeR, c[2]);
        th.SetInt(F::NMEACourse, c[3]);
        StampLayback(th, static_cast<std::int16_t>(c[0]));
        EXPECT_EQ(th.GetInt(F::SourceCoordX) - 2552500, c[4]) << c[3];
        EXPECT_EQ(th.GetInt(F::SourceCoordY) - 30305000, c[5]) << c[3];
    }
}

}  // namespace
}  // namespace halvo

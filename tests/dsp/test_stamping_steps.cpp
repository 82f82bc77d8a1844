// The arithmetic of each stamping step, against values worked out by hand, and the seawater
// density against the check values published with the UNESCO 1980 equation of state of seawater.

#include <gtest/gtest.h>

#include <cmath>

#include "core/SonarMessage.h"
#include "core/TraceHeader.h"
#include "dsp/SeawaterDepth.h"
#include "dsp/TraceStampSteps.h"
#include "nav/NavigationSnapshot.h"

namespace halvo {
namespace {

using namespace stamping;

TEST(StampingSteps, BiasIsRemovedAndTheAngleWrapsOnceAtPlusMinus180) {
    struct Case {
        std::int32_t raw;
        double bias;
        double degrees;  // expected, within one raw unit
    };
    const Case cases[] = {
        {-31856, 10.0, 175.0},   // -175 degrees less a bias of 10 is 175, not -185
        {31856, -10.0, -175.0},  // and the other way round
        {16383, 0.0, 90.0},      // no bias: unchanged
        {32767, 0.0, 180.0},     // exactly 180 stays
        {-32768, 0.0, 179.99},   // just below -180 wraps to just below +180
        {0, 30.0, -30.0},
    };
    for (const Case& c : cases) {
        const std::int32_t out = BiasedAngle(c.raw, c.bias);
        EXPECT_NEAR(out * 180.0 / 32767.0, c.degrees, 0.011) << c.raw << " bias " << c.bias;
    }
    // A bias typed far out of range cannot reach an undefined conversion.
    EXPECT_EQ(BiasedAngle(0, 1e300), -2147483647 - 1);
    EXPECT_EQ(BiasedAngle(0, std::nan("")), 0);
}

TEST(StampingSteps, HeaveSamplesAreZeroBeyondTenThousand) {
    // 1500 m/s and 40 us: one sample is 1500 * 0.5 * 40e-6 = 0.03 m.
    struct Case {
        double metres;
        double speed;
        std::uint32_t interval;
        double samples;
    };
    const Case cases[] = {
        {0.3, 1500, 40000, 10.0},      {-0.3, 1500, 40000, -10.0},
        {299.97, 1500, 40000, 9999.0}, {300.03, 1500, 40000, 0.0},  // 10001 samples
        {-300.03, 1500, 40000, 0.0},   {0.3, 1500, 0, 0.0},         // no interval
        {0.3, 0, 40000, 0.0},          {0.0, 0, 0, 0.0},            // 0/0
    };
    for (const Case& c : cases) {
        EXPECT_NEAR(HeaveSamples(c.metres, c.speed, c.interval), c.samples, 1e-6) << c.metres;
    }
    // The played file's heave: 10 samples of 0.03 m are 300 mm.
    EXPECT_EQ(HeaveMillimetres(1500, 40000, 10), 300);
    EXPECT_EQ(HeaveMillimetres(1500, 40000, -10), -300);
}

TEST(StampingSteps, DayOfYearCountsALeapDayInEveryFourthYearWithoutTheCenturyRule) {
    struct Case {
        std::int32_t day, month, year, expected;
    };
    const Case cases[] = {
        {1, 1, 2024, 1},  {31, 12, 2024, 366}, {31, 12, 2023, 365}, {1, 3, 2023, 60},
        {1, 3, 2024, 61}, {29, 2, 1900, 60},   {1, 3, 1900, 61},  // 1900 counts as a leap year
        {1, 3, 2100, 61}, {5, 0, 2024, 5},     {29, 2, 2024, 60},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(DayOfYear(c.day, c.month, c.year), c.expected)
            << c.day << "/" << c.month << "/" << c.year;
    }
}

TEST(StampingSteps, PressureFieldRoundsHalfUpThenTruncates) {
    EXPECT_EQ(PressureField(14514700, 1.0, 0.0), 14514700);
    EXPECT_EQ(PressureField(1000, 2.0, 1.0), 3000);   // 1 PSI * 2 + 1
    EXPECT_EQ(PressureField(-1000, 1.0, 0.0), -999);  // -999.5 truncates toward zero
    EXPECT_EQ(PressureField(1234, 1.0, 0.0005), 1235);
}

TEST(SeawaterDepth, DensityMatchesThePublishedCheckValues) {
    // UNESCO 1980 equation of state of seawater: (S, T, bars, density kg/m^3).
    struct Case {
        double s, t, p, rho;
    };
    const Case density[] = {
        {0, 5, 0, 999.96675},      {0, 5, 1000, 1044.12802},   {0, 25, 0, 997.04796},
        {0, 25, 1000, 1037.90204}, {35, 5, 0, 1027.67547},     {35, 5, 1000, 1069.48914},
        {35, 25, 0, 1023.34306},   {35, 25, 1000, 1062.53817},
    };
    for (const Case& c : density) {
        EXPECT_NEAR(SeawaterDepth::Density(c.s, c.t, c.p), c.rho, 2e-5)
            << c.s << " " << c.t << " " << c.p;
    }
    // (S, T, bars, secant bulk modulus in bars).
    const Case modulus[] = {
        {0, 5, 0, 20337.80375},     {0, 5, 1000, 23643.52599}, {35, 5, 0, 22185.93358},
        {35, 5, 1000, 25577.49819}, {35, 25, 0, 23726.34949},
    };
    for (const Case& c : modulus) {
        EXPECT_NEAR(SeawaterDepth::SecantBulkModulus(c.s, c.t, c.p), c.rho, 2e-5)
            << c.s << " " << c.t << " " << c.p;
    }
}

TEST(SeawaterDepth, DepthFromPressureUsesTheDensityAtSalinity35) {
    // 14514.7 PSI is 1000 bars above the atmosphere: depth = (14500 * 100000 / 14.7) / 9.8 / rho
    // with rho the check value at 35, 25 C (1062.53817) or 5 C (1069.48914).
    EXPECT_NEAR(SeawaterDepth::DepthMillimetres(14514700, 25.0, 0.0), 9472836, 1);
    EXPECT_NEAR(SeawaterDepth::DepthMillimetres(14514700, 5.0, 0.0), 9411269, 1);
    // The temperature is held to 0..50 C.
    EXPECT_EQ(SeawaterDepth::DepthMillimetres(14514700, 80.0, 0.0),
              SeawaterDepth::DepthMillimetres(14514700, 50.0, 0.0));
    EXPECT_EQ(SeawaterDepth::DepthMillimetres(14514700, -3.0, 0.0),
              SeawaterDepth::DepthMillimetres(14514700, 0.0, 0.0));
    // One atmosphere: no water above, only the mounting offset.
    EXPECT_EQ(SeawaterDepth::DepthMillimetres(14700, 10.0, 2.5), 2500);
    // No pressure at all: 0 whatever the offset.
    EXPECT_EQ(SeawaterDepth::DepthMillimetres(0, 10.0, 2.5), 0);
    EXPECT_EQ(SeawaterDepth::DepthMillimetres(-5000, 10.0, 2.5), 0);
    // Held to +-10000 m with the offset.
    EXPECT_EQ(SeawaterDepth::DepthMillimetres(14700, 10.0, 20000.0), 10000000);
    EXPECT_EQ(SeawaterDepth::DepthMillimetres(14700, 10.0, -20000.0), -10000000);
    EXPECT_EQ(SeawaterDepth::DepthMillimetres(14700, 10.0, std::nan("")), 0);
    EXPECT_EQ(SeawaterDepth::DepthMillimetres(2147483647, 10.0, 0.0), 10000000);
}

SonarMessage EmptyTrace() {
    return SonarMessage::Build(80, 2, 0, 0, static_cast<std::int32_t>(kTraceHeaderSize));
}

TEST(StampingSteps, NavigationHemisphereLetters) {
    // 50 deg 30.5 min, 4 deg 15.25 min: seconds 181830 and 15315, group 30305000 and 2552500.
    struct Case {
        char lat, lon;
        int signY, signX;
    };
    const Case cases[] = {
        {'N', 'E', 1, 1},  {'S', 'E', -1, 1}, {'s', 'E', -1, 1},
        {'N', 'W', 1, -1}, {'N', 'w', 1, 1},  // lower-case "w" is deliberately not honoured
        {0, 0, 1, 1},
    };
    for (const Case& c : cases) {
        NavigationSnapshot s;
        s.latDegrees = 50, s.latMinutes = 30.5f, s.latHemisphere = c.lat;
        s.lonDegrees = 4, s.lonMinutes = 15.25f, s.lonHemisphere = c.lon;
        SonarMessage m = EmptyTrace();
        TraceHeaderView th(m.Payload());
        StampNavigation(th, s);
        EXPECT_EQ(th.GetInt(TraceField::SourceCoordY), c.signY * 181830) << c.lat;
        EXPECT_EQ(th.GetInt(TraceField::GroupCoordY), c.signY * 30305000) << c.lat;
        EXPECT_EQ(th.GetInt(TraceField::SourceCoordX), c.signX * 15315) << c.lon;
        EXPECT_EQ(th.GetInt(TraceField::GroupCoordX), c.signX * 2552500) << c.lon;
        EXPECT_EQ(th.GetInt(TraceField::CoordUnits), 2);
    }
}

TEST(StampingSteps, NavigationTimeCourseAndSpeed) {
    NavigationSnapshot s;
    s.heading = 123.9f, s.course = 45.7f, s.speed = 5.55f;
    s.hour = 23, s.minute = 59, s.second = 59.9f;
    s.day = 29, s.month = 2, s.year = 2100;
    SonarMessage m = EmptyTrace();
    TraceHeaderView th(m.Payload());
    StampNavigation(th, s);
    EXPECT_EQ(th.GetInt(TraceField::Heading), 123);
    EXPECT_EQ(th.GetInt(TraceField::NMEACourse), 45);
    EXPECT_EQ(th.GetInt(TraceField::NMEASpeed), 55);
    EXPECT_EQ(th.GetInt(TraceField::NMEAHour), 23);
    EXPECT_EQ(th.GetInt(TraceField::NMEAMinute), 59);
    EXPECT_EQ(th.GetInt(TraceField::NMEASecond), 59);
    EXPECT_EQ(th.GetInt(TraceField::NMEADay), 60);
    EXPECT_EQ(th.GetInt(TraceField::NMEAYear), 2100);
}

TEST(StampingSteps, LaybackMovesTheSourceCoordinatesByTheAntennaOffset) {
    struct Case {
        std::int16_t flags, o, r, course;
        std::int32_t dx, dy;  // expected source minus group, 10000 * minutes
    };
    // 10 m is 53.996 units (10000 * minutes of arc). At latitude 50.508 deg a longitude offset
    // widens by 1 / cos(50.508 deg): 84.90 units. The sum is truncated, not the offset.
    const Case cases[] = {
        {0x10, 0, 1000, 0, 0, 0},    // no "Layback Enable": no offset
        {0x11, 0, 1000, 0, 0, -54},  // 10 m back heading north: south of the antenna
        {0x11, 0, 1000, 90, 84, 0},  // the formula's sign for a course of 90, as designed
        {0x11, 1000, 0, 0, -85, 0},  // 10 m to starboard: 2552415.10 truncates to -85
    };
    for (const Case& c : cases) {
        SonarMessage m = EmptyTrace();
        TraceHeaderView th(m.Payload());
        th.SetInt(TraceField::GroupCoordX, 2552500);
        th.SetInt(TraceField::GroupCoordY, 30305000);
        th.SetInt(TraceField::NMEAAntennaeO, c.o);
        th.SetInt(TraceField::NMEAAntennaeR, c.r);
        th.SetInt(TraceField::NMEACourse, c.course);
        StampLayback(th, c.flags);
        EXPECT_EQ(th.GetInt(TraceField::SourceCoordX) - 2552500, c.dx) << c.course;
        EXPECT_EQ(th.GetInt(TraceField::SourceCoordY) - 30305000, c.dy) << c.course;
    }
}

}  // namespace
}  // namespace halvo

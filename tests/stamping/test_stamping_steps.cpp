// The arithmetic of the stamping steps against values worked out by hand, the seawater density
// against the check values published with the UNESCO 1980 equation of state of seawater, and the
// position, time, speed and attitude texts built from a trace header.

#include <gtest/gtest.h>

#include <tuple>

#include <cmath>

#include "core/SonarMessage.h"
#include "nav/NavigationSnapshot.h"
#include "nav/NavigationText.h"
#include "stamping/SeawaterDepth.h"
#include "stamping/TraceStampSteps.h"

namespace halvo {
namespace {

using namespace stamping;
using F = TraceField;

// A bare trace header with chosen fields.
struct Header {
    Header& Set(F f, std::int32_t v) {
        TraceHeaderView(m.Payload()).SetInt(f, v);
        return *this;
    }
    ConstTraceHeaderView View() const { return ConstTraceHeaderView(m.Payload()); }
    std::int32_t Get(F f) const { return View().GetInt(f); }
    SonarMessage m = SonarMessage::Build(80, 2, 0, 0, 240);
};

TEST(StampingSteps, BiasIsRemovedAndTheAngleWrapsOnceAtPlusMinus180) {
    const std::tuple<std::int32_t, double, double> cases[] = {
        {-31856, 10.0, 175.0}, {31856, -10.0, -175.0},
        {32767, 0.0, 180.0},   {-32768, 0.0, 179.99},  // just below -180 wraps to just below +180
        {0, 30.0, -30.0},
    };
    for (const auto& [raw, bias, degrees] : cases) {
        EXPECT_NEAR(BiasedAngle(raw, bias) * 180.0 / 32767.0, degrees, 0.011) << raw;
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
        Header h;
        TraceHeaderView th(h.m.Payload());
        StampNavigation(th, s);
        const int signY = l[0] == 'N' ? 1 : -1, signX = l[1] == 'W' ? -1 : 1;  // not "w"
        EXPECT_EQ(h.Get(F::SourceCoordY), signY * 181830) << l[0];
        EXPECT_EQ(h.Get(F::GroupCoordY), signY * 30305000) << l[0];
        EXPECT_EQ(h.Get(F::SourceCoordX), signX * 15315) << l[1];
        EXPECT_EQ(h.Get(F::GroupCoordX), signX * 2552500) << l[1];
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
        Header h;
        h.Set(F::GroupCoordX, 2552500).Set(F::GroupCoordY, 30305000).Set(F::NMEAAntennaeO, c[1]);
        h.Set(F::NMEAAntennaeR, c[2]).Set(F::NMEACourse, c[3]);
        TraceHeaderView th(h.m.Payload());
        StampLayback(th, static_cast<std::int16_t>(c[0]));
        EXPECT_EQ(h.Get(F::SourceCoordX) - 2552500, c[4]) << c[3];
        EXPECT_EQ(h.Get(F::SourceCoordY) - 30305000, c[5]) << c[3];
    }
}

TEST(NavigationText, PositionAndItsAnnotationByCoordUnits) {
    Header h;
    h.Set(F::GroupCoordY, 30305000).Set(F::GroupCoordX, -2552500).Set(F::NMEAAntennaeR, 1000);
    EXPECT_EQ(PositionText(h.View(), 0), "50:30.5000 N 4:15.2500 W");
    // 10 m back heading north is 53.996 units south, truncated with the coordinate.
    EXPECT_EQ(PositionText(h.View(), 1), "50:30.4946 N 4:15.2500 W");
    const char* annotation[] = {"(No Nav)", "(X -2552 Y 30305)", "50:30.5000 N 4:15.2500 W",
                                "(X -255250 Y 3030500)", "(No Nav)"};
    for (int units = 0; units < 5; ++units) {
        h.Set(F::CoordUnits, units);
        EXPECT_EQ(PositionAnnotationText(h.View(), 0), annotation[units]);
    }
    Header south;
    south.Set(F::GroupCoordY, -6052500).Set(F::GroupCoordX, 108000000);
    EXPECT_EQ(PositionText(south.View(), 0), "10:05.2500 S 180:00.0000 E");
}

TEST(NavigationText, TimeWithALeapDayEveryFourthYear) {
    const std::tuple<std::int32_t, std::int32_t, const char*> cases[] = {
        {60, 2024, "(12:34:56 02/29/24)"},
        {60, 2023, "(12:34:56 03/01/23)"},
        {60, 1900, "(12:34:56 02/29/00)"},
        {366, 2024, "(12:34:56 12/31/24)"},
        {0, 0, "(01:02:03)"},  // no navigation year: the header's own time
    };
    for (const auto& [day, year, text] : cases) {
        Header h;
        h.Set(F::NMEAHour, 12).Set(F::NMEAMinute, 34).Set(F::NMEASecond, 56);
        h.Set(F::NMEADay, day).Set(F::NMEAYear, year);
        h.Set(F::Hour, 1).Set(F::Minute, 2).Set(F::Second, 3);
        EXPECT_EQ(TimeText(h.View()), text);
    }
    EXPECT_EQ(MonthDayOf(400, 2023).month, 12);  // past the year's end stays in December
}

TEST(NavigationText, SpeedCourseAndAttitude) {
    Header h;
    h.Set(F::NMEASpeed, 55).Set(F::NMEACourse, 270);
    EXPECT_EQ(SpeedCourseText(h.View()), "(5.5kt 270d)");
    h.Set(F::Pitch, 16384).Set(F::Roll, -8192).Set(F::HeaveCompensationSamples, 10);
    h.Set(F::Heading, 4500).Set(F::SampleIntervalNS, 40000);
    EXPECT_EQ(AttitudeText(h.View(), 1500), "No Pitch Roll");  // attitude bit not set
    h.Set(F::ValidityFlags, 0x20);
    EXPECT_EQ(AttitudeText(h.View(), 1500), "P 90.00 R -45.00 H  0.300 C 45.0");
    h.Set(F::SampleIntervalNS, 0);
    EXPECT_EQ(AttitudeText(h.View(), 1500), "No Pitch Roll");
}

}  // namespace
}  // namespace halvo

// The position, time, speed and attitude texts built from a trace header.

#include <gtest/gtest.h>

#include "core/SonarMessage.h"
#include "nav/NavigationText.h"

namespace halvo {
namespace {

using F = TraceField;

struct Header {
    Header& Set(F f, std::int32_t v) {
        TraceHeaderView(m.Payload()).SetInt(f, v);
        return *this;
    }
    ConstTraceHeaderView View() const { return ConstTraceHeaderView(m.Payload()); }
    SonarMessage m = SonarMessage::Build(80, 2, 0, 0, 240);
};

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
    struct Case {
        std::int32_t day, year;
        const char* text;
    };
    const Case cases[] = {
        {60, 2024, "(12:34:56 02/29/24)"},
        {60, 2023, "(12:34:56 03/01/23)"},
        {60, 1900, "(12:34:56 02/29/00)"},
        {366, 2024, "(12:34:56 12/31/24)"},
        {0, 0, "(01:02:03)"},  // no navigation year: the header's own time
    };
    for (const Case& c : cases) {
        Header h;
        h.Set(F::NMEAHour, 12).Set(F::NMEAMinute, 34).Set(F::NMEASecond, 56);
        h.Set(F::NMEADay, c.day).Set(F::NMEAYear, c.year);
        h.Set(F::Hour, 1).Set(F::Minute, 2).Set(F::Second, 3);
        EXPECT_EQ(TimeText(h.View()), c.text);
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

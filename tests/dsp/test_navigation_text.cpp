// The position, time, speed and attitude texts built from a trace header.

#include <gtest/gtest.h>

#include "core/SonarMessage.h"
#include "core/TraceHeader.h"
#include "nav/NavigationText.h"

namespace halvo {
namespace {

struct Header {
    Header() : m(SonarMessage::Build(80, 2, 0, 0, static_cast<std::int32_t>(kTraceHeaderSize))) {}
    Header& Set(TraceField f, std::int32_t v) {
        TraceHeaderView(m.Payload()).SetInt(f, v);
        return *this;
    }
    ConstTraceHeaderView View() const { return ConstTraceHeaderView(m.Payload()); }
    SonarMessage m;
};

TEST(NavigationText, PositionByHemisphereWithAndWithoutTheAntennaOffset) {
    struct Case {
        std::int32_t y, x;
        std::int16_t flags;
        std::int16_t back;  // NMEA AntennaeR, cm
        const char* text;
    };
    const Case cases[] = {
        {30305000, -2552500, 0, 0, "50:30.5000 N 4:15.2500 W"},
        {-6052500, 108000000, 0, 0, "10:05.2500 S 180:00.0000 E"},
        {0, 0, 0, 0, "0:00.0000 N 0:00.0000 E"},
        // 10 m back heading north is 53.996 units south; the sum is truncated.
        {30305000, -2552500, 1, 1000, "50:30.4946 N 4:15.2500 W"},
        {30305000, -2552500, 0, 1000, "50:30.5000 N 4:15.2500 W"},  // offsets not enabled
    };
    for (const Case& c : cases) {
        Header h;
        h.Set(TraceField::GroupCoordY, c.y).Set(TraceField::GroupCoordX, c.x);
        h.Set(TraceField::NMEAAntennaeR, c.back);
        EXPECT_EQ(PositionText(h.View(), c.flags), c.text);
    }
}

TEST(NavigationText, AnnotationGoesByCoordUnits) {
    struct Case {
        std::int32_t units;
        const char* text;
    };
    const Case cases[] = {
        {2, "50:30.5000 N 4:15.2500 W"},
        {1, "(X -2552 Y 30305)"},
        {3, "(X -255250 Y 3030500)"},
        {0, "(No Nav)"},
        {4, "(No Nav)"},
    };
    for (const Case& c : cases) {
        Header h;
        h.Set(TraceField::GroupCoordY, 30305000).Set(TraceField::GroupCoordX, -2552500);
        h.Set(TraceField::CoordUnits, c.units);
        EXPECT_EQ(PositionAnnotationText(h.View(), 0), c.text) << c.units;
    }
}

TEST(NavigationText, TimeFromDayOfYearWithALeapDayEveryFourthYear) {
    struct Case {
        std::int32_t day, year;
        const char* text;
    };
    const Case cases[] = {
        {60, 2024, "(12:34:56 02/29/24)"},
        {60, 2023, "(12:34:56 03/01/23)"},
        {60, 1900, "(12:34:56 02/29/00)"},
        {366, 2024, "(12:34:56 12/31/24)"},
        {1, 2025, "(12:34:56 01/01/25)"},
        {0, 0, "(01:02:03)"},  // no navigation year: the header's own time
    };
    for (const Case& c : cases) {
        Header h;
        h.Set(TraceField::NMEAHour, 12).Set(TraceField::NMEAMinute, 34);
        h.Set(TraceField::NMEASecond, 56).Set(TraceField::NMEADay, c.day);
        h.Set(TraceField::NMEAYear, c.year);
        h.Set(TraceField::Hour, 1).Set(TraceField::Minute, 2).Set(TraceField::Second, 3);
        EXPECT_EQ(TimeText(h.View()), c.text) << c.day << " " << c.year;
    }
    EXPECT_EQ(MonthDayOf(400, 2023).month, 12);
    EXPECT_EQ(MonthDayOf(400, 2023).day, 400 - 334);
    EXPECT_EQ(MonthDayOf(-3, 2023).month, 1);
}

TEST(NavigationText, SpeedCourseAndAttitude) {
    Header h;
    h.Set(TraceField::NMEASpeed, 55).Set(TraceField::NMEACourse, 270);
    EXPECT_EQ(SpeedCourseText(h.View()), "(5.5kt 270d)");

    h.Set(TraceField::Pitch, 16384).Set(TraceField::Roll, -8192);
    h.Set(TraceField::HeaveCompensationSamples, 10).Set(TraceField::Heading, 4500);
    h.Set(TraceField::SampleIntervalNS, 40000);
    EXPECT_EQ(AttitudeText(h.View(), 1500), "No Pitch Roll");  // attitude bit not set
    h.Set(TraceField::ValidityFlags, 0x20);
    // 10 samples of 40 us at 750 m/s one way: 0.3 m.
    EXPECT_EQ(AttitudeText(h.View(), 1500), "P 90.00 R -45.00 H  0.300 C 45.0");
    h.Set(TraceField::SampleIntervalNS, 0);
    EXPECT_EQ(AttitudeText(h.View(), 1500), "No Pitch Roll");
}

}  // namespace
}  // namespace halvo

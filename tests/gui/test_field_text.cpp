#include <gtest/gtest.h>

#include "gui/editors/FieldText.h"

namespace halvo::fieldtext {
namespace {

TEST(FieldTextScan, IntegerConversionsStopAtTheFirstCharacterThatDoesNotFit) {
    struct Case {
        const char* text;
        int base;
        bool ok;
        std::uint32_t value;
    } cases[] = {
        {"1F", 16, true, 31},     {"1F", 10, true, 1},         {"FF", 10, false, 0},
        {"0x1f", 16, true, 31},   {"0x", 16, true, 0},         {"  -5", 10, true, 0xFFFFFFFBu},
        {"+12abc", 10, true, 12}, {"17", 8, true, 15},         {"9", 8, false, 0},
        {"", 10, false, 0},       {"4294967296", 10, true, 0}, {"-", 10, false, 0},
    };
    for (const Case& c : cases) {
        Scanner s(c.text);
        std::uint32_t v = 7;
        EXPECT_EQ(s.Int(c.base, v), c.ok) << c.text;
        EXPECT_EQ(v, c.ok ? c.value : 7u) << c.text;
    }
}

TEST(FieldTextFormat, IntegersByFlagAndFixedWidthFloats) {
    EXPECT_EQ(FormatInt(255, kHex), "ff");
    EXPECT_EQ(FormatInt(8, kOctal), "10");
    EXPECT_EQ(FormatInt(0xFFFFFFFFu, kUnsigned), "4294967295");
    EXPECT_EQ(FormatInt(0xFFFFFFFFu, 0), "-1");
    EXPECT_EQ(IntFlags(kHex) & kUnsigned, kUnsigned);
    EXPECT_EQ(FormatFixed(3.14159, 2, 2), "3.14");
    EXPECT_EQ(FormatFixed(1.5, 8, 3), "   1.500");
    EXPECT_EQ(FormatFixed(-0.25, 0, 1), "-0.2");
    // Silly arguments are held, never passed on to a formatter.
    EXPECT_EQ(FormatFixed(1.0, -5, 99).size(), 14u);
}

TEST(FieldTextPosition, DegreesAndMinutesWithHemispheres) {
    EXPECT_EQ(FormatPosition(-12.5, Axis::Latitude, 1), "12:30.0000 S ");
    EXPECT_EQ(FormatPosition(4.25, Axis::Longitude, 2), "4:15.00000 E ");
    EXPECT_EQ(FormatPosition(-12.5, Axis::Latitude, 0), "  -12.500");
    // Minutes that round up to 60 carry into the degrees.
    EXPECT_EQ(FormatPosition(10.9999999, Axis::Latitude, 1), "11:00.0000 N ");

    EXPECT_DOUBLE_EQ(*ParsePosition("12:30.0000 S ", Axis::Latitude, 1), -12.5);
    EXPECT_DOUBLE_EQ(*ParsePosition("-3:06", Axis::Longitude, 2), -3.1);
    EXPECT_DOUBLE_EQ(*ParsePosition("3:06 w", Axis::Longitude, 2), -3.1);
    EXPECT_FALSE(ParsePosition("12:30 E", Axis::Latitude, 1));  // wrong axis
    EXPECT_FALSE(ParsePosition("91:00 N", Axis::Latitude, 1));
    EXPECT_FALSE(ParsePosition("10:75", Axis::Latitude, 1));  // minutes past 60
    EXPECT_FALSE(ParsePosition("x", Axis::Latitude, 0));

    double lat = 0, lon = 0;
    ASSERT_TRUE(ParsePositionPair("45:30.0 N 7:15.0 W", 1, lat, lon));
    EXPECT_DOUBLE_EQ(lat, 45.5);
    EXPECT_DOUBLE_EQ(lon, -7.25);
    ASSERT_TRUE(ParsePositionPair(FormatPositionPair(-33.125, 151.5, 2), 2, lat, lon));
    EXPECT_DOUBLE_EQ(lat, -33.125);
    EXPECT_DOUBLE_EQ(lon, 151.5);
    EXPECT_FALSE(ParsePositionPair("45:30.0 N", 1, lat, lon));
}

TEST(FieldTextDate, ShownAndReadAsMonthDayYear) {
    EXPECT_EQ(FormatDateTime(TimeValue{0, 0}), "01/01/1970 00:00:00.000");
    EXPECT_EQ(FormatDateTime(TimeValue{-1, 0}), "Invalid");
    EXPECT_EQ(FormatDateTime(TimeValue{5, 1000}), "Invalid");
    // 2024-02-29 12:34:56 UTC is 1709210096 seconds after 1970.
    const auto t = ParseDateTime("02/29/2024 12:34:56.789");
    ASSERT_TRUE(t);
    EXPECT_EQ(t->seconds, 1709210096);
    EXPECT_EQ(t->ms, 789);
    EXPECT_EQ(FormatDateTime(*t), "02/29/2024 12:34:56.789");
    EXPECT_EQ(ParseDateTime("2/29/2024 12:34:56")->ms, 0);
    for (const char* bad :
         {"02/30/2024 00:00:00.0", "13/01/2024 00:00:00.0", "02/28/2023 24:00:00.0",
          "01/01/1969 00:00:00.0", "01/01/2040 0:0:0.0", "Invalid", "01/01/2024"}) {
        EXPECT_FALSE(ParseDateTime(bad)) << bad;
    }
}

}  // namespace
}  // namespace halvo::fieldtext

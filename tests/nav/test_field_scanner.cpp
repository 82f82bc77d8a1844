#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "nav/FieldScanner.h"

namespace halvo {
namespace {

TEST(FieldScanner, NumbersLikeTheirConversions) {
    struct {
        std::string_view in;
        bool ok;
        double value;
        std::string_view rest;
    } reals[] = {
        {"5119.881", true, 5119.881, ""},
        {"  -1.5E2x", true, -150, "x"},
        {"+.5,", true, 0.5, ","},
        {"7.", true, 7, ""},
        {"1e", true, 1, "e"},
        {"1e+", true, 1, "e+"},
        {"", false, 0, ""},
        {".", false, 0, ""},
        {"-", false, 0, ""},
        {"N", false, 0, ""},
        {"nan", false, 0, ""},
        {"inf", false, 0, ""},
        {"1e999", false, 0, ""},
        {"0x10", true, 0, "x10"},
    };
    for (const auto& c : reals) {
        std::string_view in = c.in;
        double v = -1;
        EXPECT_EQ(ScanDouble(in, v), c.ok) << c.in;
        if (c.ok) {
            EXPECT_DOUBLE_EQ(v, c.value) << c.in;
            EXPECT_EQ(in, c.rest) << c.in;
        } else {
            EXPECT_EQ(in, c.in) << "a failed scan consumes nothing";
        }
    }
    struct {
        std::string_view in;
        int width;
        bool ok;
        int value;
        std::string_view rest;
    } ints[] = {
        {"094739", 2, true, 9, "4739"},  {"-05", 2, true, 0, "5"},
        {"+7", 2, true, 7, ""},          {" 12", 2, true, 12, ""},
        {"-", 2, false, 0, ""},          {"2147483647", 0, true, 2147483647, ""},
        {"2147483648", 0, false, 0, ""}, {"x1", 0, false, 0, ""},
        {"2018,", 4, true, 2018, ","},
    };
    for (const auto& c : ints) {
        std::string_view in = c.in;
        int v = -1;
        EXPECT_EQ(ScanInt(in, v, c.width), c.ok) << c.in;
        if (c.ok) {
            EXPECT_EQ(v, c.value) << c.in;
            EXPECT_EQ(in, c.rest) << c.in;
        }
    }
    // "%2i": a leading zero means octal, "0x" hex.
    struct {
        std::string_view in;
        int value;
        std::string_view rest;
    } autos[] = {{"12", 12, ""}, {"08", 0, "8"}, {"07", 7, ""}, {"0x1f", 0, "x1f"}};
    for (const auto& c : autos) {
        std::string_view in = c.in;
        int v = -1;
        ASSERT_TRUE(ScanAutoInt(in, v, 2)) << c.in;
        EXPECT_EQ(v, c.value) << c.in;
        EXPECT_EQ(in, c.rest) << c.in;
    }
    std::string_view hex = "0x1f";
    int v = 0;
    ASSERT_TRUE(ScanAutoInt(hex, v, 4));
    EXPECT_EQ(v, 31);
}

TEST(FieldScanner, ClockNeedsAllThreeParts) {
    int h = -1, m = -1;
    float s = -1;
    EXPECT_TRUE(ScanClock("235723.02", h, m, s));
    EXPECT_EQ(h, 23);
    EXPECT_EQ(m, 57);
    EXPECT_FLOAT_EQ(s, 23.02f);
    EXPECT_FALSE(ScanClock("2357", h, m, s));
    EXPECT_FALSE(ScanClock("", h, m, s));
    EXPECT_EQ(h, 23) << "a failed clock leaves the outputs alone";
}

TEST(FieldScanner, CursorFindsFieldsAndStopsAtTheStar) {
    auto all = [](std::string_view text, std::size_t from, bool escapes) {
        std::vector<std::string> out;
        FieldCursor c(text, from);
        std::string_view f;
        for (int guard = 0; guard < 50 && c.Next(f, escapes); ++guard) out.emplace_back(f);
        return out;
    };
    using V = std::vector<std::string>;
    EXPECT_EQ(all("$GPHDT,274.12,T*1F", 6, false), (V{"274.12", "T"}));
    EXPECT_EQ(all("$SDMTW,,C", 6, false), (V{"", "C"}));
    EXPECT_EQ(all("$GPGGA,1,,*56", 6, false), (V{"1", "", ""}));
    EXPECT_EQ(all("$GPGLL", 6, false), V{});
    EXPECT_EQ(all("$GPGLL*,1", 6, false), V{});
    EXPECT_EQ(all("$GPGLL,", 6, false), (V{""}));
    EXPECT_EQ(all("$GPEVT,A,x^2Cy,z^*", 6, true), (V{"A", "x^2Cy", "z^*"}));
    EXPECT_EQ(all("$GPEVT,A,x^2Cy,z^*", 6, false), (V{"A", "x^2Cy", "z^"}));
    EXPECT_EQ(all("$X,a^", 2, true), (V{"a^"}));
    EXPECT_EQ(SentenceBody("$GPHDT,1,T\r\n"), "$GPHDT,1,T");
    EXPECT_EQ(SentenceBody(std::string_view("$A\0B", 4)), "$A");
}

}  // namespace
}  // namespace halvo

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "nav/FieldScanner.h"

namespace halvo {
namespace {

TEST(FieldScanner, NumbersLikeTheirConversions) {
    const std::tuple<std::string_view, double, std::string_view> reals[] = {
        {"5119.881", 5119.881, ""},
        {"  -1.5E2x", -150, "x"},
        {"+.5,", 0.5, ","},
        {"7.", 7, ""},
        {"1e", 1, "e"},
        {"1e+", 1, "e+"},
        {"0x10", 0, "x10"}};
    for (const auto& [text, value, rest] : reals) {
        std::string_view in = text;
        double v = -1;
        ASSERT_TRUE(ScanDouble(in, v)) << text;
        EXPECT_DOUBLE_EQ(v, value) << text;
        EXPECT_EQ(in, rest) << text;
    }
    for (std::string_view text : {"", ".", "-", "N", "nan", "inf", "1e999"}) {
        std::string_view in = text;
        double v = -1;
        EXPECT_FALSE(ScanDouble(in, v)) << text;
        EXPECT_EQ(in, text) << "a failed scan consumes nothing";
    }
    // Fixed base, and "%2i" where a leading zero means octal and "0x" hex.
    const std::tuple<std::string_view, int, bool, bool, int, std::string_view> ints[] = {
        {"094739", 2, false, true, 9, "4739"},  {"-05", 2, false, true, 0, "5"},
        {"+7", 2, false, true, 7, ""},          {" 12", 2, false, true, 12, ""},
        {"-", 2, false, false, 0, ""},          {"2147483647", 0, false, true, 2147483647, ""},
        {"2147483648", 0, false, false, 0, ""}, {"x1", 0, false, false, 0, ""},
        {"2018,", 4, false, true, 2018, ","},   {"12", 2, true, true, 12, ""},
        {"08", 2, true, true, 0, "8"},          {"07", 2, true, true, 7, ""},
        {"0x1f", 2, true, true, 0, "x1f"},      {"0x1f", 4, true, true, 31, ""}};
    for (const auto& [text, width, autoBase, ok, value, rest] : ints) {
        SCOPED_TRACE(text);
        std::string_view in = text;
        int v = -1;
        EXPECT_EQ(autoBase ? ScanAutoInt(in, v, width) : ScanInt(in, v, width), ok);
        if (ok) {
            EXPECT_EQ(std::tie(v, in), std::tie(value, rest));
        }
    }
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

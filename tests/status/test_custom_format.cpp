// Custom status fields: the label's format rules and the reading of a field by offset.

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <string>

#include "core/ByteOrder.h"
#include "status/CustomFormat.h"

namespace halvo {
namespace {

struct FormatCase {
    const char* label;
    std::int32_t value;
    const char* expected;
};

TEST(CustomFormat, LabelsTurnValuesIntoText) {
    const std::int32_t halfBits = std::bit_cast<std::int32_t>(2.5f);
    const FormatCase cases[] = {
        {"1,0,1,0|SBW %", 12, "SBW 12"},
        {"1,0,1,0|%s", 7, "7s"},                       // the letter after "%" is text
        {"1,0,3,0|100%%", 5, "100%"},                  // "%%" is one percent sign
        {"0.5,1,6,2|%f deg", halfBits, "  2.25 deg"},  // bits as a float, gain and offset
        {"0.5,1,6,2|%F deg", halfBits, "  2.25 deg"},
        {"1,0,1,0|%x", 255, "FF"},
        {"9,9,1,0|%X", -1, "FFFFFFFF"},    // gain and offset play no part in hex
        {"2,3,1,1|v=%", 4, "v=11.0"},      // four-part head: value * gain + offset
        {"2,3,1|v=%", 4, "v=8.0"},         // three-part head: gain, width, digits, no offset
        {"1,0,25,-4|%", 3, "         3"},  // width held to 10, digits to 0
        {"rubbish|%", 5, " 5"},            // neither head: gain 1, width 2, digits 0
        {"1,0,1,0 no bar %", 5, ""},       // without a bar the text is empty
        {"1,0,1,0|a|b", 0, "a|b"},         // only the first bar splits
        {"1,0,1,0|%", 2147483647, "2147483647"},
        {"1,0,1,0|end %", -3, "end -3"},  // "%" at the very end
    };
    for (const FormatCase& c : cases) {
        EXPECT_EQ(FormatCustomField(c.label, c.value), c.expected) << c.label;
    }
}

TEST(CustomFormat, OutputIsCutToItsBuffer) {
    // Two numbers of over thirty digits each: the text stops at 39 characters.
    const std::string longText = FormatCustomField("1,1e30,10,10|%,%", 1);
    EXPECT_EQ(longText.size(), CustomFormat::kOutputBytes - 1);
    EXPECT_EQ(longText.substr(0, 7), "1000000");
    EXPECT_EQ(longText.find(','), std::string::npos);
}

TEST(CustomFormat, FieldOffsetsPickWidthAndStayInBounds) {
    std::array<std::uint8_t, 244> bytes{};
    PutLE<std::int32_t>(std::span(bytes), 168, 0x0001'FFFE);  // 16-bit -2 at 168, 1 at 170
    PutLE<std::int32_t>(std::span(bytes), 236, 123456);
    PutLE<std::int32_t>(std::span(bytes), 240, 77);
    const std::span<const std::uint8_t> all(bytes);
    const std::span<const std::uint8_t> header = all.first(240);

    struct Case {
        std::span<const std::uint8_t> bytes;
        int field;
        std::optional<std::int32_t> expected;
    };
    const Case cases[] = {{all, 169, -2},           // odd: 16 bits at the offset less 1, sign kept
                          {all, 168, 0x0001'FFFE},  // even: 32 bits
                          {all, 171, 1},
                          {all, 236, 123456},
                          {all, 239, 1},             // 16 bits at 238: the top half of 123456
                          {all, 240, std::nullopt},  // past the header
                          {all, -1, std::nullopt},
                          {header, 238, std::nullopt},  // 32 bits would run past the bytes given
                          {header, 239, 1}};
    for (const Case& c : cases) {
        EXPECT_EQ(ReadCustomField(c.bytes, c.field), c.expected) << c.field;
    }
}

}  // namespace
}  // namespace halvo

#pragma once
// The custom status fields: where a value is read from a trace header, and how the field's
// label turns it into text. The label is "gain,offset,width,digits|text" or
// "gain,width,digits|text"; in the text "%f"/"%F" shows the value's bits as a float, "%x"/"%X"
// in hexadecimal, "%%" a percent sign, and any other "%" the value itself.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace halvo {

struct CustomFormat {
    // The output of one field fits a buffer of this size, terminator included.
    static constexpr std::size_t kOutputBytes = 40;
    // The bar is looked for only this far into the label.
    static constexpr std::size_t kBarSearch = 100;
    static constexpr int kMaxWidth = 10;

    float gain = 1.0f;
    float offset = 0.0f;
    int width = 2;
    int digits = 0;
    std::string text;  // what follows the first bar; empty when there is none

    // Never fails: a head that fits neither form gives gain 1, offset 0, width 2, digits 0.
    static CustomFormat Parse(std::string_view label);

    // The value through the text's rules, cut to kOutputBytes - 1 characters.
    std::string Format(std::int32_t value) const;
};

// Label and value to text in one step.
std::string FormatCustomField(std::string_view label, std::int32_t value);

// The value at byte offset `field` of the bytes (a trace header, with whatever follows it): an
// even offset reads a signed 32-bit value there, an odd one a signed 16-bit value at the offset
// less 1. Nothing for an offset below 0 or at 240 and above, or a value that runs past the bytes.
std::optional<std::int32_t> ReadCustomField(std::span<const std::uint8_t> bytes, int field);

}  // namespace halvo

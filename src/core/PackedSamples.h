#pragma once
// Block floating point packing of trace samples. Each 32-bit word holds a group of samples and
// the shift they share. Codes 1 to 6 unpack to 16-bit values, 7 to 12 to 32-bit floats scaled by
// a block exponent that opens the packed data.

#include <cstddef>
#include <cstdint>
#include <span>

namespace halvo {

enum class PackLayout : std::uint8_t { None, A, B, C };

struct PackingCodeInfo {
    PackLayout layout = PackLayout::None;
    bool isSigned = false;
    bool floatOutput = false;
    bool known = false;  // codes above 12 unpack nothing
};

PackingCodeInfo PackingCodeOf(int code);

// Plain bytes over packed bytes: 1.0 for 0 and every code above 12.
double PackingRatio(int code);

// Samples per 32-bit word of a layout (0 for None).
int SamplesPerWord(PackLayout layout);

// Bytes of one unpacked value: 2 for codes 0 to 6, 4 for 7 to 12, 0 for unknown codes.
std::size_t UnpackedValueBytes(int code);

// Writes up to `count` values unpacked from `source` into `target`, little-endian. Code 0 is a
// plain copy of 16-bit values. Stops early when the packed data or the room runs out, so a short
// message never reads past its payload. Returns the number of values written.
std::size_t Unpack(std::span<std::uint8_t> target, std::span<const std::uint8_t> source,
                   std::size_t count, int code);

// The packing side, used by the simulator and by tests. For float codes the values are integers
// already multiplied by 2 to the power `exponent`, which is written first. Each word takes the
// smallest shift that lets its largest sample fit the field. Returns the bytes written, or 0
// when the target is too small or the code packs nothing.
std::size_t PackedBytes(std::size_t count, int code);
std::size_t Pack(std::span<std::uint8_t> target, std::span<const std::int32_t> values, int code,
                 std::int32_t exponent = 0);

}  // namespace halvo

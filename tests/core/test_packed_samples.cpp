#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "core/ByteOrder.h"
#include "core/PackedSamples.h"

namespace halvo {

namespace {

std::vector<std::uint8_t> Words(std::initializer_list<std::uint32_t> words) {
    std::vector<std::uint8_t> out(words.size() * 4);
    std::size_t i = 0;
    for (std::uint32_t w : words) StoreLE(out.data() + 4 * i++, w);
    return out;
}

std::vector<std::int32_t> Unpack16(const std::vector<std::uint8_t>& src, std::size_t count,
                                   int code, bool isSigned) {
    std::vector<std::uint8_t> out(count * 2);
    const std::size_t n = Unpack(out, src, count, code);
    std::vector<std::int32_t> v;
    for (std::size_t i = 0; i < n; ++i) {
        v.push_back(isSigned ? LoadLE<std::int16_t>(&out[2 * i])
                             : LoadLE<std::uint16_t>(&out[2 * i]));
    }
    return v;
}

std::uint32_t LayoutC(std::initializer_list<std::uint32_t> f, std::uint32_t shift) {
    std::uint32_t w = shift << 28, k = 0;
    for (std::uint32_t x : f) w |= x << (4 * k++);
    return w;
}

}  // namespace

TEST(PackedSamples, IntegerCodesAgainstHandComputedValues) {
    // Layout A, shift field 3 means shift 6.
    const std::uint32_t a = (3u << 30) | (1023u << 20) | (2u << 10) | 1u;
    EXPECT_EQ(Unpack16(Words({a}), 3, 1, false), (std::vector<std::int32_t>{64, 128, 65472}));
    // Signed A: 512 is -512 in 10 bits; shift field 1 is shift 2.
    const std::uint32_t as = (1u << 30) | (512u << 10) | 5u;
    EXPECT_EQ(Unpack16(Words({as}), 2, 2, true), (std::vector<std::int32_t>{20, -2048}));
    // Layout B, shift 15: unsigned 127 << 15 keeps only its low 16 bits; signed 127 is -1.
    const std::uint32_t b = (15u << 28) | 127u | (1u << 7);
    EXPECT_EQ(Unpack16(Words({b}), 2, 3, false), (std::vector<std::int32_t>{32768, 32768}));
    EXPECT_EQ(Unpack16(Words({b}), 2, 4, true), (std::vector<std::int32_t>{-32768, 32768 - 65536}));
    // Code 5 with shift 0 gives the raw nibbles 0..15.
    EXPECT_EQ(Unpack16(Words({LayoutC({0, 15, 7, 1, 2, 3, 4}, 0)}), 7, 5, false),
              (std::vector<std::int32_t>{0, 15, 7, 1, 2, 3, 4}));
    // Code 6 with field 15 and shift 3 gives -8.
    EXPECT_EQ(Unpack16(Words({LayoutC({15}, 3)}), 1, 6, true), (std::vector<std::int32_t>{-8}));
}

TEST(PackedSamples, TailWordAndShortSourceAreBounded) {
    // 8 values of layout C: two words, one sample of the second.
    const auto src = Words({LayoutC({1, 2, 3, 4, 5, 6, 7}, 0), LayoutC({9, 10, 11}, 1)});
    EXPECT_EQ(Unpack16(src, 8, 5, false), (std::vector<std::int32_t>{1, 2, 3, 4, 5, 6, 7, 18}));
    // Only one word there for ten values of layout A: three are written, nothing past the input.
    EXPECT_EQ(Unpack16(Words({1u | (2u << 10) | (3u << 20)}), 10, 1, false).size(), 3u);
    // Room for two values only.
    std::vector<std::uint8_t> small(4);
    EXPECT_EQ(Unpack(small, Words({LayoutC({1, 2, 3}, 0)}), 7, 5), 2u);
    // Codes above 12 unpack nothing; code 0 is a plain copy.
    std::vector<std::uint8_t> out(8);
    EXPECT_EQ(Unpack(out, Words({0xFFFFFFFF}), 2, 13), 0u);
    EXPECT_EQ(Unpack(out, Words({0x00020001}), 2, 0), 2u);
    EXPECT_EQ(LoadLE<std::uint16_t>(&out[2]), 2);
}

TEST(PackedSamples, FloatCodesScaleByTheBlockExponent) {
    auto src = Words({2u, LayoutC({4, 8, 12}, 0)});  // E = 2, then one word
    std::vector<std::uint8_t> out(12);
    ASSERT_EQ(Unpack(out, src, 3, 11), 3u);
    EXPECT_FLOAT_EQ(LoadLE<float>(&out[0]), 1.0f);
    EXPECT_FLOAT_EQ(LoadLE<float>(&out[4]), 2.0f);
    EXPECT_FLOAT_EQ(LoadLE<float>(&out[8]), 3.0f);
    // Signed float code with a negative exponent scales up.
    src = Words({static_cast<std::uint32_t>(-1), LayoutC({15}, 0)});
    ASSERT_EQ(Unpack(out, src, 1, 12), 1u);
    EXPECT_FLOAT_EQ(LoadLE<float>(&out[0]), -2.0f);
    // No exponent word at all: nothing.
    EXPECT_EQ(Unpack(out, std::vector<std::uint8_t>(3), 1, 12), 0u);
}

TEST(PackedSamples, PackThenUnpackReproducesRepresentableValuesForEveryCode) {
    std::mt19937 rng(7);
    for (int code = 1; code <= 12; ++code) {
        const PackingCodeInfo info = PackingCodeOf(code);
        const int bits = info.layout == PackLayout::A ? 10 : info.layout == PackLayout::B ? 7 : 4;
        const int shift = info.layout == PackLayout::A ? 4 : 9;
        // Long enough for the wide path and a scalar tail.
        std::vector<std::int32_t> values(23 + 56 * 7);
        for (auto& v : values) {
            const int lo = info.isSigned ? -(1 << (bits - 1)) : 0;
            const int hi = info.isSigned ? (1 << (bits - 1)) - 1 : (1 << bits) - 1;
            v = std::uniform_int_distribution<int>(lo, hi)(rng) * (1 << shift);
            if (!info.floatOutput && !info.isSigned) v &= 0xFFFF;
        }
        std::vector<std::uint8_t> packed(PackedBytes(values.size(), code));
        ASSERT_EQ(Pack(packed, values, code, 3), packed.size()) << code;
        std::vector<std::uint8_t> out(values.size() * 4);
        ASSERT_EQ(Unpack(out, packed, values.size(), code), values.size()) << code;
        for (std::size_t i = 0; i < values.size(); ++i) {
            const double got = info.floatOutput ? LoadLE<float>(&out[4 * i]) * 8.0
                               : info.isSigned  ? LoadLE<std::int16_t>(&out[2 * i])
                                                : LoadLE<std::uint16_t>(&out[2 * i]);
            const std::int32_t want = info.floatOutput || !info.isSigned
                                          ? values[i]
                                          : static_cast<std::int16_t>(values[i]);
            ASSERT_EQ(got, want) << "code " << code << " index " << i;
        }
    }
}

}  // namespace halvo

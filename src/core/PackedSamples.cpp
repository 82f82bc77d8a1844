#include "core/PackedSamples.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "core/ByteOrder.h"

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define HALVO_HAVE_AVX2_PATH 1
#endif

namespace halvo {

namespace {

struct LayoutShape {
    int bits;      // bits per sample
    int perWord;   // samples per word
    int maxShift;  // largest shift the field can say
};

LayoutShape ShapeOf(PackLayout layout) {
    switch (layout) {
        case PackLayout::A:
            return {10, 3, 6};
        case PackLayout::B:
            return {7, 4, 15};
        case PackLayout::C:
            return {4, 7, 15};
        default:
            return {0, 0, 0};
    }
}

template <PackLayout L>
inline int ShiftOf(std::uint32_t w) {
    if constexpr (L == PackLayout::A) {
        return static_cast<int>((w >> 30) & 3u) * 2;
    } else {
        return static_cast<int>((w >> 28) & 15u);
    }
}

template <PackLayout L, bool Signed>
inline std::int32_t FieldValue(std::uint32_t w, int index, int shift) {
    constexpr int bits = L == PackLayout::A ? 10 : (L == PackLayout::B ? 7 : 4);
    const std::uint32_t f = (w >> (index * bits)) & ((1u << bits) - 1u);
    if constexpr (Signed) {
        // Sign-extend from the field's own width, then shift (defined for negatives in C++20).
        const std::int32_t v = static_cast<std::int32_t>(f << (32 - bits)) >> (32 - bits);
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(v) << shift);
    } else {
        return static_cast<std::int32_t>(f << shift);
    }
}

// Unpacks `words` whole groups and then `tail` samples of one more word.
template <PackLayout L, bool Signed, bool Float>
std::size_t UnpackWords(std::uint8_t* out, const std::uint8_t* in, std::size_t words,
                        std::size_t tail, float scale) {
    constexpr int g = L == PackLayout::A ? 3 : (L == PackLayout::B ? 4 : 7);
    std::size_t n = 0;
    auto emit = [&](std::int32_t v) {
        if constexpr (Float) {
            StoreLE<float>(out + n * 4, static_cast<float>(v) * scale);
        } else {
            StoreLE<std::uint16_t>(out + n * 2, static_cast<std::uint16_t>(v));
        }
        ++n;
    };
    for (std::size_t i = 0; i < words; ++i) {
        const std::uint32_t w = LoadLE<std::uint32_t>(in + i * 4);
        const int s = ShiftOf<L>(w);
        for (int k = 0; k < g; ++k) emit(FieldValue<L, Signed>(w, k, s));
    }
    if (tail > 0) {
        const std::uint32_t w = LoadLE<std::uint32_t>(in + words * 4);
        const int s = ShiftOf<L>(w);
        for (std::size_t k = 0; k < tail; ++k) emit(FieldValue<L, Signed>(w, int(k), s));
    }
    return n;
}

template <PackLayout L>
std::size_t UnpackLayout(bool isSigned, bool isFloat, std::uint8_t* out, const std::uint8_t* in,
                         std::size_t words, std::size_t tail, float scale) {
    if (isFloat) {
        return isSigned ? UnpackWords<L, true, true>(out, in, words, tail, scale)
                        : UnpackWords<L, false, true>(out, in, words, tail, scale);
    }
    return isSigned ? UnpackWords<L, true, false>(out, in, words, tail, scale)
                    : UnpackWords<L, false, false>(out, in, words, tail, scale);
}

#ifdef HALVO_HAVE_AVX2_PATH
// Wide path: eight outputs at a time. Output j of a run comes from word j / g, field j % g; with
// g = 3, 4 or 7 and eight lanes the pattern repeats every 8 words, so a table per phase gives each
// lane its word and its field shift. Runs in super-blocks of 8 words (8 * g outputs) and leaves
// the rest to the scalar loop. Reads 16 words ahead at most, which the caller guarantees.
template <int Bits, int G>
struct Avx2Tables {
    alignas(32) std::int32_t lane[G][8];
    alignas(32) std::int32_t fieldShift[G][8];
    constexpr Avx2Tables() : lane(), fieldShift() {
        for (int r = 0; r < G; ++r) {
            for (int i = 0; i < 8; ++i) {
                lane[r][i] = (r + i) / G;
                fieldShift[r][i] = Bits * ((r + i) % G);
            }
        }
    }
};

template <int Bits, int G, bool LayoutA, bool Signed, bool Float>
__attribute__((target("avx2"))) std::size_t UnpackAvx2(std::uint8_t* out, const std::uint8_t* in,
                                                       std::size_t superBlocks, float scale) {
    static constexpr Avx2Tables<Bits, G> t;
    const __m256i mask = _mm256_set1_epi32((1 << Bits) - 1);
    const __m256i pick16 =
        _mm256_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, -1, -1, -1, -1, -1, -1, -1, -1, 0, 1, 4, 5, 8, 9,
                         12, 13, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m256 vscale = _mm256_set1_ps(scale);
    for (std::size_t sb = 0; sb < superBlocks; ++sb) {
        const std::uint8_t* words = in + sb * 32;
        std::uint8_t* o = out + sb * 8 * G * (Float ? 4 : 2);
#pragma GCC unroll 7
        for (int k = 0; k < G; ++k) {
            const int base = (8 * k) / G;
            const int r = (8 * k) % G;
            const __m256i loaded =
                _mm256_loadu_si256(reinterpret_cast<const __m256i*>(words + 4 * base));
            const __m256i w = _mm256_permutevar8x32_epi32(
                loaded, _mm256_load_si256(reinterpret_cast<const __m256i*>(t.lane[r])));
            const __m256i fs = _mm256_load_si256(reinterpret_cast<const __m256i*>(t.fieldShift[r]));
            __m256i f;
            if constexpr (Signed) {
                const __m256i up =
                    _mm256_sllv_epi32(w, _mm256_sub_epi32(_mm256_set1_epi32(32 - Bits), fs));
                f = _mm256_srai_epi32(up, 32 - Bits);
            } else {
                f = _mm256_and_si256(_mm256_srlv_epi32(w, fs), mask);
            }
            const __m256i s =
                LayoutA ? _mm256_slli_epi32(_mm256_srli_epi32(w, 30), 1) : _mm256_srli_epi32(w, 28);
            const __m256i v = _mm256_sllv_epi32(f, s);
            if constexpr (Float) {
                _mm256_storeu_ps(reinterpret_cast<float*>(o + 32 * k),
                                 _mm256_mul_ps(_mm256_cvtepi32_ps(v), vscale));
            } else {
                const __m256i packed =
                    _mm256_permute4x64_epi64(_mm256_shuffle_epi8(v, pick16), 0x08);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(o + 16 * k),
                                 _mm256_castsi256_si128(packed));
            }
        }
    }
    return superBlocks * 8;  // words consumed
}

template <int Bits, int G, bool LayoutA>
std::size_t UnpackAvx2Layout(bool isSigned, bool isFloat, std::uint8_t* out, const std::uint8_t* in,
                             std::size_t superBlocks, float scale) {
    if (isFloat) {
        return isSigned ? UnpackAvx2<Bits, G, LayoutA, true, true>(out, in, superBlocks, scale)
                        : UnpackAvx2<Bits, G, LayoutA, false, true>(out, in, superBlocks, scale);
    }
    return isSigned ? UnpackAvx2<Bits, G, LayoutA, true, false>(out, in, superBlocks, scale)
                    : UnpackAvx2<Bits, G, LayoutA, false, false>(out, in, superBlocks, scale);
}

bool HaveAvx2() {
    static const bool have = __builtin_cpu_supports("avx2");
    return have;
}
#endif

}  // namespace

PackingCodeInfo PackingCodeOf(int code) {
    PackingCodeInfo info;
    if (code < 0 || code > 12) return info;
    info.known = true;
    if (code == 0) return info;
    const int k = (code - 1) % 6;  // 0..5 within the 16-bit or the float half
    info.layout = k < 2 ? PackLayout::A : (k < 4 ? PackLayout::B : PackLayout::C);
    info.isSigned = (k % 2) == 1;
    info.floatOutput = code >= 7;
    return info;
}

double PackingRatio(int code) {
    switch (code) {
        case 1:
        case 2:
        case 7:
        case 8:
            return 1.5;
        case 3:
        case 4:
        case 9:
        case 10:
            return 2.0;
        case 5:
        case 6:
        case 11:
        case 12:
            return 3.5;
        default:
            return 1.0;
    }
}

int SamplesPerWord(PackLayout layout) {
    return ShapeOf(layout).perWord;
}

std::size_t UnpackedValueBytes(int code) {
    const PackingCodeInfo info = PackingCodeOf(code);
    if (!info.known) return 0;
    return info.floatOutput ? 4 : 2;
}

std::size_t Unpack(std::span<std::uint8_t> target, std::span<const std::uint8_t> source,
                   std::size_t count, int code) {
    const PackingCodeInfo info = PackingCodeOf(code);
    if (!info.known) return 0;
    const std::size_t outBytes = info.floatOutput ? 4 : 2;
    count = std::min(count, target.size() / outBytes);
    if (info.layout == PackLayout::None) {
        const std::size_t n = std::min(count, source.size() / 2);
        if (n > 0) std::memcpy(target.data(), source.data(), n * 2);
        return n;
    }

    float scale = 1.0f;
    if (info.floatOutput) {
        std::int32_t e = 0;
        if (!ReadLE(source, 0, e)) return 0;
        scale = static_cast<float>(std::ldexp(1.0, -static_cast<long>(e)));
        source = source.subspan(4);
    }
    const std::size_t g = static_cast<std::size_t>(SamplesPerWord(info.layout));
    const std::size_t available = source.size() / 4;
    std::size_t words = count / g;
    std::size_t tail = count % g;
    if (words > available) {
        words = available;
        tail = 0;
    } else if (tail > 0 && words == available) {
        tail = 0;
    }
    const std::uint8_t* in = source.data();
    std::uint8_t* out = target.data();
    std::size_t done = 0;
#ifdef HALVO_HAVE_AVX2_PATH
    // Wide loads read up to 16 words from a super-block's start: keep them inside the source.
    if (HaveAvx2() && available >= 16) {
        const std::size_t superBlocks = std::min(words / 8, (available - 16) / 8 + 1);
        if (superBlocks > 0) {
            const bool sg = info.isSigned, fl = info.floatOutput;
            const std::size_t used =
                info.layout == PackLayout::A
                    ? UnpackAvx2Layout<10, 3, true>(sg, fl, out, in, superBlocks, scale)
                : info.layout == PackLayout::B
                    ? UnpackAvx2Layout<7, 4, false>(sg, fl, out, in, superBlocks, scale)
                    : UnpackAvx2Layout<4, 7, false>(sg, fl, out, in, superBlocks, scale);
            words -= used;
            in += used * 4;
            out += used * g * outBytes;
            done = used * g;
        }
    }
#endif
    switch (info.layout) {
        case PackLayout::A:
            return done + UnpackLayout<PackLayout::A>(info.isSigned, info.floatOutput, out, in,
                                                      words, tail, scale);
        case PackLayout::B:
            return done + UnpackLayout<PackLayout::B>(info.isSigned, info.floatOutput, out, in,
                                                      words, tail, scale);
        default:
            return done + UnpackLayout<PackLayout::C>(info.isSigned, info.floatOutput, out, in,
                                                      words, tail, scale);
    }
}

std::size_t PackedBytes(std::size_t count, int code) {
    const PackingCodeInfo info = PackingCodeOf(code);
    if (!info.known) return 0;
    if (info.layout == PackLayout::None) return count * 2;
    const std::size_t g = static_cast<std::size_t>(SamplesPerWord(info.layout));
    return (info.floatOutput ? 4 : 0) + ((count + g - 1) / g) * 4;
}

std::size_t Pack(std::span<std::uint8_t> target, std::span<const std::int32_t> values, int code,
                 std::int32_t exponent) {
    const PackingCodeInfo info = PackingCodeOf(code);
    const std::size_t need = PackedBytes(values.size(), code);
    if (!info.known || target.size() < need) return 0;
    if (info.layout == PackLayout::None) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            StoreLE<std::uint16_t>(target.data() + i * 2, static_cast<std::uint16_t>(values[i]));
        }
        return need;
    }
    const LayoutShape shape = ShapeOf(info.layout);
    std::uint8_t* out = target.data();
    if (info.floatOutput) {
        StoreLE<std::int32_t>(out, exponent);
        out += 4;
    }
    const std::int64_t fieldMax =
        info.isSigned ? (1 << (shape.bits - 1)) - 1 : (1 << shape.bits) - 1;
    const std::int64_t fieldMin = info.isSigned ? -(1 << (shape.bits - 1)) : 0;
    for (std::size_t start = 0; start < values.size(); start += shape.perWord) {
        const std::size_t n = std::min<std::size_t>(shape.perWord, values.size() - start);
        // The shift follows from the widest sample at once: the bits it needs beyond the field.
        int need = 0;
        for (std::size_t k = 0; k < n; ++k) {
            const std::int64_t v = values[start + k];
            const std::uint64_t mag = static_cast<std::uint64_t>(info.isSigned && v < 0 ? ~v : v);
            const int width = info.isSigned || v >= 0 ? std::bit_width(mag) : 64;
            need = std::max(need, width - (info.isSigned ? shape.bits - 1 : shape.bits));
        }
        int shift = std::clamp(need, 0, shape.maxShift);
        if (info.layout == PackLayout::A) shift = std::min(shift + (shift & 1), shape.maxShift);
        std::uint32_t w = info.layout == PackLayout::A ? static_cast<std::uint32_t>(shift / 2) << 30
                                                       : static_cast<std::uint32_t>(shift) << 28;
        for (std::size_t k = 0; k < n; ++k) {
            std::int64_t v = static_cast<std::int64_t>(values[start + k]) >> shift;
            v = std::clamp(v, fieldMin, fieldMax);
            const std::uint32_t f = static_cast<std::uint32_t>(v) & ((1u << shape.bits) - 1u);
            w |= f << (k * static_cast<std::size_t>(shape.bits));
        }
        StoreLE<std::uint32_t>(out, w);
        out += 4;
    }
    return need;
}

}  // namespace halvo

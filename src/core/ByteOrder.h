#pragma once
// Little-endian field access over outside bytes. Every read and write is bounds-checked against
// the span it is given; nothing here casts packed structs over wire bytes.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

namespace halvo {

namespace detail {
template <class T>
T ByteSwap(T v) {
    static_assert(std::is_trivially_copyable_v<T>);
    unsigned char b[sizeof(T)];
    std::memcpy(b, &v, sizeof(T));
    for (std::size_t i = 0; i < sizeof(T) / 2; ++i) {
        unsigned char t = b[i];
        b[i] = b[sizeof(T) - 1 - i];
        b[sizeof(T) - 1 - i] = t;
    }
    std::memcpy(&v, b, sizeof(T));
    return v;
}
}  // namespace detail

// Unchecked load and store: only for callers that have already checked the range
// (hot loops over sample arrays whose length was validated once).
template <class T>
inline T LoadLE(const std::uint8_t* p) {
    static_assert(std::is_arithmetic_v<T>);
    T v;
    std::memcpy(&v, p, sizeof(T));
    if constexpr (std::endian::native == std::endian::big) v = detail::ByteSwap(v);
    return v;
}

template <class T>
inline void StoreLE(std::uint8_t* p, T v) {
    static_assert(std::is_arithmetic_v<T>);
    if constexpr (std::endian::native == std::endian::big) v = detail::ByteSwap(v);
    std::memcpy(p, &v, sizeof(T));
}

inline bool InRange(std::size_t total, std::size_t offset, std::size_t width) {
    return offset <= total && width <= total - offset;
}

// Checked read: false (and out untouched) when the field does not lie wholly inside bytes.
template <class T>
inline bool ReadLE(std::span<const std::uint8_t> bytes, std::size_t offset, T& out) {
    if (!InRange(bytes.size(), offset, sizeof(T))) return false;
    out = LoadLE<T>(bytes.data() + offset);
    return true;
}

// Checked read with a fallback for fields that may be missing.
template <class T>
inline T GetLE(std::span<const std::uint8_t> bytes, std::size_t offset, T fallback = T{}) {
    T v = fallback;
    ReadLE(bytes, offset, v);
    return v;
}

// Checked write: false (and nothing written) when the field does not fit.
template <class T>
inline bool PutLE(std::span<std::uint8_t> bytes, std::size_t offset, T value) {
    if (!InRange(bytes.size(), offset, sizeof(T))) return false;
    StoreLE<T>(bytes.data() + offset, value);
    return true;
}

}  // namespace halvo

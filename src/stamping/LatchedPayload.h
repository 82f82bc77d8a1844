#pragma once
// The newest payload block of one sensor message, with the tick it arrived at. The stamping step
// keeps one of these per source and reads its fields by payload offset.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "core/ByteOrder.h"

namespace halvo {

template <std::size_t N>
class LatchedPayload {
  public:
    // Takes N bytes from payload offset `from`. A short message gives what it holds and the rest
    // reads as zero: the stamping step does not refuse short sensor messages.
    void Take(std::span<const std::uint8_t> payload, std::size_t from, std::uint32_t tick) {
        bytes_.fill(0);
        if (payload.size() > from) {
            const std::size_t n = std::min(N, payload.size() - from);
            std::copy_n(payload.begin() + static_cast<std::ptrdiff_t>(from), n, bytes_.begin());
        }
        from_ = from;
        arrival_ = tick;
        seen_ = true;
    }
    // Starts an empty record, as a rebuilt message does.
    void Clear(std::size_t from, std::uint32_t tick) {
        bytes_.fill(0);
        from_ = from;
        arrival_ = tick;
        seen_ = true;
    }

    // Fresh: it arrived, and at most limitMs - 1 ms ago. A tick that ran backward is expired.
    bool Fresh(std::uint32_t now, std::uint32_t limitMs) const {
        return seen_ && now - arrival_ < limitMs;
    }

    template <class T>
    T Get(std::size_t payloadOffset) const {
        if (payloadOffset < from_) return T{};
        return GetLE<T>(std::span<const std::uint8_t>(bytes_), payloadOffset - from_);
    }
    template <class T>
    void Put(std::size_t payloadOffset, T value) {
        if (payloadOffset < from_) return;
        PutLE<T>(std::span<std::uint8_t>(bytes_), payloadOffset - from_, value);
    }

    std::span<const std::uint8_t> Bytes() const { return bytes_; }
    std::uint32_t Arrival() const { return arrival_; }
    bool Seen() const { return seen_; }

  private:
    std::array<std::uint8_t, N> bytes_{};
    std::size_t from_ = 0;
    std::uint32_t arrival_ = 0;
    bool seen_ = false;
};

}  // namespace halvo

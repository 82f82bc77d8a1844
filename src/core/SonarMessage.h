#pragma once
// One message: a 16-byte header and its payload in one heap block. The handle is move-only and
// owns the block; passing it on passes the block on. Every field access is bounds-checked.

#include <cstddef>
#include <cstdint>
#include <span>

#include "core/ByteOrder.h"

namespace halvo {

constexpr std::size_t kMessageHeaderSize = 16;
constexpr std::uint16_t kMessageMarker = 0x1601;
constexpr std::uint8_t kMessageVersion = 13;

// The 16 header bytes as plain values, for building, reading and validating outside bytes.
struct MessageHeader {
    std::uint16_t marker = 0;
    std::uint8_t version = 0;
    std::uint8_t session = 0;
    std::uint16_t type = 0;
    std::uint8_t direction = 0;
    std::uint8_t subsystem = 0;
    std::uint8_t channel = 0;
    std::uint8_t sequence = 0;
    std::uint16_t reserved = 0;
    std::int32_t size = 0;

    // A header as every builder makes it: zeroed, then marker and version, then the given fields.
    static MessageHeader Make(std::uint16_t type, std::uint8_t direction, std::uint8_t subsystem,
                              std::uint8_t channel, std::int32_t size);
    // False when fewer than 16 bytes are given.
    static bool Read(std::span<const std::uint8_t> bytes, MessageHeader& out);
    // False when fewer than 16 bytes of room are given.
    bool Write(std::span<std::uint8_t> bytes) const;

    bool HasMarker() const { return marker == kMessageMarker; }
};

class SonarMessage {
  public:
    SonarMessage() noexcept = default;
    SonarMessage(const SonarMessage&) = delete;
    SonarMessage& operator=(const SonarMessage&) = delete;
    SonarMessage(SonarMessage&& other) noexcept;
    SonarMessage& operator=(SonarMessage&& other) noexcept;
    ~SonarMessage();

    // A zeroed block of 16 + payloadCapacity bytes; empty when memory runs out.
    static SonarMessage Allocate(std::size_t payloadCapacity);
    // As Allocate, but the bytes are left as they are: for readers that fill the whole block.
    static SonarMessage AllocateUninitialised(std::size_t payloadCapacity);
    // A block with a built header and a zeroed payload of `size` bytes (negative counts as 0).
    static SonarMessage Build(std::uint16_t type, std::uint8_t direction, std::uint8_t subsystem,
                              std::uint8_t channel, std::int32_t size);
    // A block holding these bytes exactly (header and payload as they stand, nothing checked).
    static SonarMessage FromBytes(std::span<const std::uint8_t> bytes);
    // A copy of the header and of the payload bytes that lie inside the block.
    SonarMessage Clone() const;

    explicit operator bool() const noexcept { return block_ != nullptr; }
    bool empty() const noexcept { return block_ == nullptr; }

    // The whole block: header, payload and any room behind it.
    std::span<std::uint8_t> Block() noexcept { return {block_, capacity_}; }
    std::span<const std::uint8_t> Block() const noexcept { return {block_, capacity_}; }
    std::size_t BlockSize() const noexcept { return capacity_; }
    // The payload as the header's size says, clipped to the block (a negative size gives none).
    std::span<std::uint8_t> Payload() noexcept;
    std::span<const std::uint8_t> Payload() const noexcept;
    // The bytes on the wire or in a file: header and payload, clipped to the block.
    std::span<const std::uint8_t> Wire() const noexcept;

    MessageHeader Header() const;
    void SetHeader(const MessageHeader& h);

    std::uint16_t marker() const { return Get<std::uint16_t>(0); }
    std::uint8_t version() const { return Get<std::uint8_t>(2); }
    std::uint8_t session() const { return Get<std::uint8_t>(3); }
    std::uint16_t type() const { return Get<std::uint16_t>(4); }
    std::uint8_t direction() const { return Get<std::uint8_t>(6); }
    std::uint8_t subsystem() const { return Get<std::uint8_t>(7); }
    std::uint8_t channel() const { return Get<std::uint8_t>(8); }
    std::uint8_t sequence() const { return Get<std::uint8_t>(9); }
    std::uint16_t reserved() const { return Get<std::uint16_t>(10); }
    std::int32_t size() const { return Get<std::int32_t>(12); }

    void set_type(std::uint16_t v) { Put<std::uint16_t>(4, v); }
    void set_direction(std::uint8_t v) { Put<std::uint8_t>(6, v); }
    void set_subsystem(std::uint8_t v) { Put<std::uint8_t>(7, v); }
    void set_channel(std::uint8_t v) { Put<std::uint8_t>(8, v); }
    void set_size(std::int32_t v) { Put<std::int32_t>(12, v); }

    // Hands the block over; the handle is empty afterwards.
    std::uint8_t* Release(std::size_t& blockSize) noexcept;
    static SonarMessage Adopt(std::uint8_t* block, std::size_t blockSize) noexcept;

  private:
    SonarMessage(std::uint8_t* block, std::size_t capacity) noexcept
        : block_(block), capacity_(capacity) {}
    template <class T>
    T Get(std::size_t offset) const {
        return GetLE<T>(Block(), offset);
    }
    template <class T>
    void Put(std::size_t offset, T v) {
        PutLE<T>(Block(), offset, v);
    }

    std::uint8_t* block_ = nullptr;
    std::size_t capacity_ = 0;
};

}  // namespace halvo

#include "core/SonarMessage.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace halvo {

MessageHeader MessageHeader::Make(std::uint16_t type, std::uint8_t direction,
                                  std::uint8_t subsystem, std::uint8_t channel, std::int32_t size) {
    MessageHeader h;
    h.marker = kMessageMarker;
    h.version = kMessageVersion;
    h.type = type;
    h.direction = direction;
    h.subsystem = subsystem;
    h.channel = channel;
    h.size = size;
    return h;
}

bool MessageHeader::Read(std::span<const std::uint8_t> b, MessageHeader& out) {
    if (b.size() < kMessageHeaderSize) return false;
    const std::uint8_t* p = b.data();
    out.marker = LoadLE<std::uint16_t>(p);
    out.version = p[2];
    out.session = p[3];
    out.type = LoadLE<std::uint16_t>(p + 4);
    out.direction = p[6];
    out.subsystem = p[7];
    out.channel = p[8];
    out.sequence = p[9];
    out.reserved = LoadLE<std::uint16_t>(p + 10);
    out.size = LoadLE<std::int32_t>(p + 12);
    return true;
}

bool MessageHeader::Write(std::span<std::uint8_t> b) const {
    if (b.size() < kMessageHeaderSize) return false;
    std::uint8_t* p = b.data();
    StoreLE(p, marker);
    p[2] = version;
    p[3] = session;
    StoreLE(p + 4, type);
    p[6] = direction;
    p[7] = subsystem;
    p[8] = channel;
    p[9] = sequence;
    StoreLE(p + 10, reserved);
    StoreLE(p + 12, size);
    return true;
}

SonarMessage::SonarMessage(SonarMessage&& other) noexcept
    : block_(other.block_), capacity_(other.capacity_) {
    other.block_ = nullptr;
    other.capacity_ = 0;
}

SonarMessage& SonarMessage::operator=(SonarMessage&& other) noexcept {
    if (this != &other) {
        delete[] block_;
        block_ = other.block_;
        capacity_ = other.capacity_;
        other.block_ = nullptr;
        other.capacity_ = 0;
    }
    return *this;
}

SonarMessage::~SonarMessage() {
    delete[] block_;
}

SonarMessage SonarMessage::Allocate(std::size_t payloadCapacity) {
    const std::size_t n = kMessageHeaderSize + payloadCapacity;
    if (n < payloadCapacity) return {};
    auto* p = new (std::nothrow) std::uint8_t[n]();
    return p ? SonarMessage(p, n) : SonarMessage();
}

SonarMessage SonarMessage::AllocateUninitialised(std::size_t payloadCapacity) {
    const std::size_t n = kMessageHeaderSize + payloadCapacity;
    if (n < payloadCapacity) return {};
    auto* p = new (std::nothrow) std::uint8_t[n];
    return p ? SonarMessage(p, n) : SonarMessage();
}

SonarMessage SonarMessage::Build(std::uint16_t type, std::uint8_t direction, std::uint8_t subsystem,
                                 std::uint8_t channel, std::int32_t size) {
    SonarMessage m = Allocate(static_cast<std::size_t>(std::max(size, 0)));
    if (m) MessageHeader::Make(type, direction, subsystem, channel, size).Write(m.Block());
    return m;
}

SonarMessage SonarMessage::FromBytes(std::span<const std::uint8_t> bytes) {
    SonarMessage m = AllocateUninitialised(
        bytes.size() > kMessageHeaderSize ? bytes.size() - kMessageHeaderSize : 0);
    if (!m) return m;
    // Only a block shorter than a header has room the bytes do not fill.
    if (bytes.size() < m.capacity_) std::memset(m.block_, 0, m.capacity_);
    if (!bytes.empty()) std::memcpy(m.block_, bytes.data(), bytes.size());
    return m;
}

SonarMessage SonarMessage::Clone() const {
    if (!block_) return {};
    return FromBytes(Wire());
}

std::span<std::uint8_t> SonarMessage::Payload() noexcept {
    if (capacity_ < kMessageHeaderSize) return {};
    const std::int32_t s = size();
    const std::size_t room = capacity_ - kMessageHeaderSize;
    const std::size_t n = s > 0 ? std::min(static_cast<std::size_t>(s), room) : 0;
    return {block_ + kMessageHeaderSize, n};
}

std::span<const std::uint8_t> SonarMessage::Payload() const noexcept {
    return const_cast<SonarMessage*>(this)->Payload();
}

std::span<const std::uint8_t> SonarMessage::Wire() const noexcept {
    if (capacity_ < kMessageHeaderSize) return {block_, capacity_};
    return {block_, kMessageHeaderSize + Payload().size()};
}

MessageHeader SonarMessage::Header() const {
    MessageHeader h;
    MessageHeader::Read(Block(), h);
    return h;
}

void SonarMessage::SetHeader(const MessageHeader& h) {
    h.Write(Block());
}

std::uint8_t* SonarMessage::Release(std::size_t& blockSize) noexcept {
    std::uint8_t* p = block_;
    blockSize = capacity_;
    block_ = nullptr;
    capacity_ = 0;
    return p;
}

SonarMessage SonarMessage::Adopt(std::uint8_t* block, std::size_t blockSize) noexcept {
    return SonarMessage(block, block ? blockSize : 0);
}

}  // namespace halvo

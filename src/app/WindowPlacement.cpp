#include "app/WindowPlacement.h"

#include <span>

#include "core/ByteOrder.h"

namespace halvo {

namespace {
constexpr std::size_t kLengthAt = 0;
constexpr std::size_t kFlagsAt = 4;
constexpr std::size_t kShowAt = 8;
constexpr std::size_t kMinAt = 12;
constexpr std::size_t kMaxAt = 20;
constexpr std::size_t kNormalAt = 28;
}  // namespace

WindowPlacement::WindowPlacement() {
    SetWord(kLengthAt, static_cast<std::int32_t>(kBytes));
}

std::optional<WindowPlacement> WindowPlacement::Decode(std::string_view text) {
    if (text.size() != kTextChars) return std::nullopt;
    WindowPlacement p;
    for (std::size_t i = 0; i < kBytes; ++i) {
        const unsigned lo = (static_cast<unsigned char>(text[2 * i]) - 1u) & 0x0Fu;
        const unsigned hi = (static_cast<unsigned char>(text[2 * i + 1]) - 1u) & 0x0Fu;
        p.bytes_[i] = static_cast<std::uint8_t>(lo | (hi << 4));
    }
    return p;
}

std::string WindowPlacement::Encode() const {
    std::string text;
    text.reserve(kTextChars);
    for (const std::uint8_t b : bytes_) {
        text += static_cast<char>('A' + (b & 0x0F));
        text += static_cast<char>('A' + (b >> 4));
    }
    return text;
}

std::int32_t WindowPlacement::Word(std::size_t offset) const {
    return GetLE<std::int32_t>(std::span<const std::uint8_t>(bytes_), offset);
}

void WindowPlacement::SetWord(std::size_t offset, std::int32_t value) {
    PutLE<std::int32_t>(std::span<std::uint8_t>(bytes_), offset, value);
}

std::uint32_t WindowPlacement::Length() const {
    return static_cast<std::uint32_t>(Word(kLengthAt));
}
std::uint32_t WindowPlacement::Flags() const {
    return static_cast<std::uint32_t>(Word(kFlagsAt));
}
std::int32_t WindowPlacement::ShowCmd() const {
    return Word(kShowAt);
}

WindowPlacement::Point WindowPlacement::MinPosition() const {
    return {Word(kMinAt), Word(kMinAt + 4)};
}
WindowPlacement::Point WindowPlacement::MaxPosition() const {
    return {Word(kMaxAt), Word(kMaxAt + 4)};
}
WindowPlacement::Rect WindowPlacement::NormalPosition() const {
    return {Word(kNormalAt), Word(kNormalAt + 4), Word(kNormalAt + 8), Word(kNormalAt + 12)};
}

void WindowPlacement::SetFlags(std::uint32_t flags) {
    SetWord(kFlagsAt, static_cast<std::int32_t>(flags));
}
void WindowPlacement::SetShowCmd(std::int32_t show) {
    SetWord(kShowAt, show);
}
void WindowPlacement::SetMinPosition(Point p) {
    SetWord(kMinAt, p.x);
    SetWord(kMinAt + 4, p.y);
}
void WindowPlacement::SetMaxPosition(Point p) {
    SetWord(kMaxAt, p.x);
    SetWord(kMaxAt + 4, p.y);
}
void WindowPlacement::SetNormalPosition(Rect r) {
    SetWord(kNormalAt, r.left);
    SetWord(kNormalAt + 4, r.top);
    SetWord(kNormalAt + 8, r.right);
    SetWord(kNormalAt + 12, r.bottom);
}

}  // namespace halvo

#pragma once
// The main window's stored placement: a 44-byte record (length, flags, show state, minimised and
// maximised positions, normal rectangle; little-endian 32-bit words), kept in the settings as
// the text of MainWindowPos. Each byte is two letters, low nibble first, each nibble added to
// 'A'. The decoder subtracts 1 and keeps the low 4 bits, which gives the same nibble back since
// 'A' - 1 is a multiple of 16. Only a text of exactly 88 letters is a placement.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace halvo {

class WindowPlacement {
  public:
    static constexpr std::size_t kBytes = 44;
    static constexpr std::size_t kTextChars = 2 * kBytes;

    // Show states of the record.
    static constexpr std::int32_t kShowNormal = 1;
    static constexpr std::int32_t kShowMinimised = 2;
    static constexpr std::int32_t kShowMaximised = 3;

    struct Point {
        std::int32_t x = 0;
        std::int32_t y = 0;
        friend bool operator==(const Point&, const Point&) = default;
    };
    struct Rect {
        std::int32_t left = 0;
        std::int32_t top = 0;
        std::int32_t right = 0;
        std::int32_t bottom = 0;
        friend bool operator==(const Rect&, const Rect&) = default;
    };

    WindowPlacement();  // length field set to 44, everything else 0

    static std::optional<WindowPlacement> Decode(std::string_view text);
    std::string Encode() const;

    const std::array<std::uint8_t, kBytes>& Bytes() const { return bytes_; }
    std::array<std::uint8_t, kBytes>& Bytes() { return bytes_; }

    std::uint32_t Length() const;
    std::uint32_t Flags() const;
    std::int32_t ShowCmd() const;
    Point MinPosition() const;
    Point MaxPosition() const;
    Rect NormalPosition() const;

    void SetFlags(std::uint32_t flags);
    void SetShowCmd(std::int32_t show);
    void SetMinPosition(Point p);
    void SetMaxPosition(Point p);
    void SetNormalPosition(Rect r);

    friend bool operator==(const WindowPlacement&, const WindowPlacement&) = default;

  private:
    std::int32_t Word(std::size_t offset) const;
    void SetWord(std::size_t offset, std::int32_t value);

    std::array<std::uint8_t, kBytes> bytes_{};
};

}  // namespace halvo

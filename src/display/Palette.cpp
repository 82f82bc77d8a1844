#include "display/Palette.h"

#include <fstream>
#include <optional>

namespace halvo {

namespace {

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// Reads the file's numbers the way "%d %d %d %d" does across the whole text: blanks and line
// ends are skipped, a number is an optional sign and digits, and anything else stops the read.
class NumberReader {
  public:
    explicit NumberReader(std::string_view text) : text_(text) {}

    // A number, or nothing when the text holds no number here. Values too long to matter are
    // read as a large value rather than overflowing.
    std::optional<long> Next() {
        while (pos_ < text_.size() && IsSpace(text_[pos_])) ++pos_;
        bool negative = false;
        if (pos_ < text_.size() && (text_[pos_] == '-' || text_[pos_] == '+')) {
            negative = text_[pos_] == '-';
            ++pos_;
        }
        long value = 0;
        std::size_t digits = 0;
        while (pos_ < text_.size() && text_[pos_] >= '0' && text_[pos_] <= '9') {
            if (value < 1'000'000) value = value * 10 + (text_[pos_] - '0');
            ++pos_;
            ++digits;
        }
        if (digits == 0) return std::nullopt;
        return negative ? -value : value;
    }

    bool AtEnd() {
        while (pos_ < text_.size() && IsSpace(text_[pos_])) ++pos_;
        return pos_ >= text_.size();
    }

  private:
    std::string_view text_;
    std::size_t pos_ = 0;
};

std::uint8_t Blend(int k, int prev, int index, int colour, int prevColour) {
    return static_cast<std::uint8_t>(((k - prev) * colour + (index - k) * prevColour) /
                                     (index - prev));
}

}  // namespace

PaletteColour ColourOfSetting(std::int32_t value) {
    const auto v = static_cast<std::uint32_t>(value);
    PaletteColour c;
    c.red = static_cast<std::uint8_t>(v & 0xFF);
    c.green = static_cast<std::uint8_t>((v >> 8) & 0xFF);
    c.blue = static_cast<std::uint8_t>((v >> 16) & 0xFF);
    return c;
}

Palette::Palette() {
    SetDefault();
}

void Palette::SetDefault() {
    for (int i = 0; i < kEntries; ++i) {
        const auto g = static_cast<std::uint8_t>(i);
        table_[static_cast<std::size_t>(i)] = PaletteColour{g, g, g, 0};
    }
    table_[0].blue = 100;
    table_[255].blue = 200;
}

Palette::Load Palette::LoadFile(const std::string& pal) {
    SetDefault();
    if (pal.empty()) return Load::Default;
    std::ifstream in(pal, std::ios::binary);
    if (!in) in = std::ifstream(pal + ".hsp", std::ios::binary);
    if (!in) return Load::NotFound;
    std::string text(kMaxFileBytes, '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(in.gcount()));
    // A file cut at the limit must not end in half a number: drop its unfinished last line.
    if (text.size() == kMaxFileBytes) {
        const std::size_t end = text.find_last_of('\n');
        text.resize(end == std::string::npos ? 0 : end);
    }
    return LoadText(text);
}

Palette::Load Palette::LoadText(std::string_view text) {
    SetDefault();
    NumberReader reader(text);
    int prev = -1;
    int prevRed = 0, prevGreen = 0, prevBlue = 0;
    for (;;) {
        long v[4];
        int got = 0;
        for (; got < 4; ++got) {
            const std::optional<long> n = reader.Next();
            if (!n) break;
            v[got] = *n;
        }
        // No number at all: either the text ended, or the next line holds something else.
        if (got == 0) return reader.AtEnd() ? Load::Complete : Load::Stopped;
        if (got < 4) return Load::Stopped;
        for (long x : v) {
            if (x < 0 || x > 255) return Load::Stopped;
        }
        const int index = static_cast<int>(v[0]);
        const int red = static_cast<int>(v[1]);
        const int green = static_cast<int>(v[2]);
        const int blue = static_cast<int>(v[3]);
        for (int k = prev + 1; k <= index; ++k) {
            PaletteColour& e = table_[static_cast<std::size_t>(k)];
            e.red = Blend(k, prev, index, red, prevRed);
            e.green = Blend(k, prev, index, green, prevGreen);
            e.blue = Blend(k, prev, index, blue, prevBlue);
        }
        prev = index;
        prevRed = red;
        prevGreen = green;
        prevBlue = blue;
    }
}

}  // namespace halvo

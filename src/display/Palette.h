#pragma once
// The 256-entry colour table of a waterfall and its `.hsp` text file. A line of the file is
// "index red green blue", each 0 to 255; entries between two lines are filled by linear
// interpolation, and the first line ramps up from black below index 0. A bad number ends the
// load quietly: what was written stays, the rest keeps the default ramp.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace halvo {

// One colour table entry, in the order the table keeps them: blue, green, red, reserved.
struct PaletteColour {
    std::uint8_t blue = 0;
    std::uint8_t green = 0;
    std::uint8_t red = 0;
    std::uint8_t reserved = 0;

    // 0xRRGGBB, the form images and toolkits take.
    std::uint32_t Rgb() const {
        return (std::uint32_t{red} << 16) | (std::uint32_t{green} << 8) | blue;
    }
    friend bool operator==(const PaletteColour&, const PaletteColour&) = default;
};

// A colour setting such as `RGBBottomTrackIndicator` holds red in the low byte, then green, then
// blue (255 is red, 65280 green).
PaletteColour ColourOfSetting(std::int32_t value);

class Palette {
  public:
    static constexpr int kEntries = 256;
    // Palette files are a few kilobytes; anything past this is not read.
    static constexpr std::size_t kMaxFileBytes = 64 * 1024;

    enum class Load : std::uint8_t {
        Default,   // `Pal` was empty
        NotFound,  // neither the name nor the name with ".hsp" could be opened
        Complete,  // every entry of the file was read
        Stopped,   // a line without four numbers 0 to 255 ended the load
    };

    // Starts with the default ramp.
    Palette();

    // Grey ramp, with a blue tint on the two extremes so that they stand out.
    void SetDefault();
    // Resets to the default ramp, then reads the file named by `Pal` over it.
    Load LoadFile(const std::string& pal);
    // The same rules on text already in memory (the default ramp is set first).
    Load LoadText(std::string_view text);

    // Index held to 0 to 255.
    const PaletteColour& operator[](int index) const {
        return table_[static_cast<std::size_t>(index < 0 ? 0 : index > 255 ? 255 : index)];
    }
    const std::array<PaletteColour, kEntries>& Table() const { return table_; }

  private:
    std::array<PaletteColour, kEntries> table_{};
};

}  // namespace halvo

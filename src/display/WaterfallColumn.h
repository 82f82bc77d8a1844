#pragma once
// One waterfall column from one line: the rules that place a line by depth, zoom it, fill what
// it does not cover and mark events, written into any 8-bit indexed buffer. This is the only
// work a live view does per line, so it touches nothing but the column.

#include <cstddef>
#include <cstdint>

namespace halvo {

struct DisplayProcessingConfig;
struct GeneralValues;
class SonarDataCacheElement;

// Where a column goes: pixel i at data[i * stride]. An image row-major with one byte per pixel
// gives the address of the column's top pixel and the image's bytes per row.
struct ColumnSpan {
    std::uint8_t* data = nullptr;
    std::ptrdiff_t stride = 1;
};

// Everything a column depends on besides its line.
struct ColumnContext {
    const DisplayProcessingConfig* config = nullptr;
    const GeneralValues* general = nullptr;
    double zoom = 1.0;  // already through NormaliseZoom
    int scroll = 0;     // first sample shown
    int height = 0;     // pixels to write, at most kMaxColumnHeight
    int imageTop = 0;   // client y of the image top, for the indicators' edge test
};

// What the view draws over the column, and what the extension hook is told.
struct ColumnOverlay {
    static constexpr int kNoRow = -1'000'000;
    // Rows from the image top of the two-pixel bottom and heave indicators, or kNoRow.
    int bottomRow = kNoRow;
    int heaveRow = kNoRow;
    // First sample of the column for the hook: the scroll position less the depth placement.
    int firstSample = 0;
};

// A column is built in a fixed array of this many entries, which caps the image height.
constexpr int kMaxColumnHeight = 2048;

// The zoom a display really uses. At or above 64 and at or below 0.001 as given; from 1 up
// truncated to a whole number; between, a whole-number decimation 1 / ceil(1 / z - 0.25). A value
// that is not a finite number is taken as 1.
double NormaliseZoom(double z);

// Samples to move a line down so that it stands at its true depth: with `MaxDepth` above 0 on a
// single display, the tow depth of the header in samples plus the line's start depth; else 0.
int DepthPlacement(const SonarDataCacheElement& line, const DisplayProcessingConfig& config,
                   const GeneralValues& general);

// Palette index of a line value: inverted unless `PalInvert` is set, so a strong echo is 0.
inline std::uint8_t PaletteIndex(int value, bool palInvert) {
    return static_cast<std::uint8_t>(palInvert ? value : 255 - value);
}

// Writes ctx.height pixels of the column for this line (null draws the no-data level) and
// returns the overlay. Indices only: the indicators are true colours the caller draws on top.
ColumnOverlay RenderWaterfallColumn(const SonarDataCacheElement* line, const ColumnContext& ctx,
                                    ColumnSpan out);

}  // namespace halvo

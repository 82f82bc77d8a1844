#pragma once
// The strip chart above a waterfall, decided without a window: for each column, in the
// waterfall's own column order with the newest line at the right, the pitch and roll lines and
// the reflection point of the line of that age, and the cursor readout.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace halvo {

class SonarDataCacheElement;

struct StripMark {
    int x0 = 0;
    int y0 = 0;
    int x1 = 0;  // equal to x0 and y1 equal to y0: one pixel
    int y1 = 0;
    std::int32_t colour = 0;  // 0x00BBGGRR
};

class PlotStrip {
  public:
    struct Colours {
        std::int32_t pitch = 0;  // 0: not drawn
        std::int32_t roll = 0;
        std::int32_t rc = 0;
    };
    using Lookup = std::function<const SonarDataCacheElement*(int age)>;

    // The age of the line a column shows: column / zoom, the zoom at least 1.
    static int AgeOf(int column, int zoom) { return column / (zoom < 1 ? 1 : zoom); }
    // The marks of column c (0 at the right edge) of a strip width by height, gain G.
    static std::vector<StripMark> Column(int column, int width, int height, int zoom, float gain,
                                         const Colours& colours, const Lookup& lines);
    // "Ping %d Pitch %7.2f Roll %7.2f RC %5.2f", or "No Data At Cursor" without a line.
    static std::string CursorText(const SonarDataCacheElement* line);
    // Degrees of a raw pitch or roll field.
    static double Degrees(int raw) { return raw * 180.0 / 32768.0; }
};

}  // namespace halvo

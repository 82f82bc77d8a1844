#pragma once
// What the scope beside a waterfall draws, as numbers: the newest line as amplitude against
// depth on the waterfall's vertical scale, and the markers of threshold, TVG start and bottom
// search window. The view only strokes what this gives it.

#include <cstdint>
#include <vector>

namespace halvo {

struct DisplayProcessingConfig;
struct GeneralValues;
class SonarDataCacheElement;

// The water sound speed the scope works with: outside 500 to 3000 m/s it is 1500.
float ScopeSoundSpeed(std::int32_t waterSoundSpeed);

// Samples to move the line down by, as the waterfall places it: with `MaxDepth` above 0 on a
// single display, the tow depth in samples plus the start depth; otherwise 0.
int ScopeOffset(const SonarDataCacheElement& line, const DisplayProcessingConfig& config,
                const GeneralValues& general);

// The part of the scroll view in sight, in document pixels.
struct ScopeArea {
    int clientWidth = 0;   // less the 2 pixels kept free at the right
    int scrollPixels = 0;  // first row in sight
    int pageHeight = 0;    // rows in sight
};

struct ScopeTraceShape {
    struct Point {
        int x = 0;
        int y = 0;
    };
    // One row that holds several samples: a horizontal line from x0 to x1.
    struct Span {
        int y = 0;
        int x0 = 0;
        int x1 = 0;
    };
    // Zoom 0.5 and above: a polyline, the first point a move.
    std::vector<Point> points;
    // Below 0.5: one span per row.
    std::vector<Span> spans;
};

struct ScopeMarkers {
    int thresholdX = 0;  // vertical line, red
    int tvgY = 0;        // horizontal line, green
    int rangeHalf = 0;   // blue lines at tvgY - rangeHalf and tvgY + rangeHalf when above 1
};

class ScopeTrace {
  public:
    // No row is ever worth more samples than this; a tiny zoom stops here.
    static constexpr int kMaxSamples = 4'000'000;

    // zoom is the waterfall's; at 0 or below nothing is drawn.
    static ScopeTraceShape Shape(const SonarDataCacheElement& line, int offset, double zoom,
                                 const ScopeArea& area);
    static ScopeMarkers Markers(const SonarDataCacheElement& line,
                                const DisplayProcessingConfig& config, const GeneralValues& general,
                                int offset, double zoom, int clientWidth);
};

}  // namespace halvo

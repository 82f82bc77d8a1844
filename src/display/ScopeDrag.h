#pragma once
// The scope's mouse: the readout under the pointer, and the drag that edits the bottom tracker.
// A wide flat drag switches the tracker off, a drag down sets the search window from half its
// length, and a click sets the threshold from x and the TVG start from y in one gesture.

#include <optional>
#include <string>

namespace halvo {

struct DisplayProcessingConfig;
struct GeneralValues;
class SonarDataCacheElement;

// What a drag changes in the display's record. The view applies it under the set's lock and
// bumps the record.
struct ScopeEdit {
    enum class Kind { TrackerOff, TrackRange, Click };
    Kind kind = Kind::Click;
    float trackRange = 0.0f;        // TrackRange, user units
    float trackThreshold = 0.0f;    // Click: percent of the width
    std::optional<float> tvgStart;  // Click with a line: user units

    void ApplyTo(DisplayProcessingConfig& config) const;
};

// Client rectangle of the scope, right and bottom exclusive.
struct ScopeClient {
    int left = 0;
    int right = 0;
};

class ScopeDrag {
  public:
    void Press(int x, int y) { anchor_ = Point{x, y}; }
    bool Pressed() const { return anchor_.has_value(); }

    // Interprets the drag ending at (x, y) and clears the anchor; nothing without an anchor.
    // scrollPixels is the view's first row; line may be null.
    std::optional<ScopeEdit> Release(int x, int y, const ScopeClient& client, int scrollPixels,
                                     const SonarDataCacheElement* line,
                                     const DisplayProcessingConfig& config,
                                     const GeneralValues& general);

    // The status text at client (x, y): depth, unit, percent of width, sample and value.
    // clientWidth is the full client width; zoom the waterfall's.
    static std::string Readout(int x, int y, int clientWidth, int scrollPixels, double zoom,
                               const SonarDataCacheElement* line,
                               const DisplayProcessingConfig& config, const GeneralValues& general);

  private:
    struct Point {
        int x;
        int y;
    };
    std::optional<Point> anchor_;
};

}  // namespace halvo

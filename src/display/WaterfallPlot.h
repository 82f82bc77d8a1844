#pragma once
// The state behind one waterfall view: settings in force, zoom, geometry of the lines, the image
// rectangle, the cache and how much of it is drawn, a full redraw under way, the cursor readout
// and the palette. The view owns the pixels (an 8-bit indexed image used as a ring) and asks
// the plot to fill columns; the plot never touches a window.

#include <cstdint>
#include <functional>
#include <string>

#include "app/GeneralValues.h"
#include "display/DisplayProcessingConfig.h"
#include "display/Palette.h"
#include "display/WaterfallAxis.h"
#include "display/WaterfallColumn.h"

namespace halvo {

class SonarDataCache;
class SonarDataCacheElement;

// Receives the columns the plot draws. Columns are numbered from the right: 0 is the newest.
class WaterfallColumnTarget {
  public:
    virtual ~WaterfallColumnTarget() = default;
    // Buffer of column c, ColumnHeight() pixels high.
    virtual ColumnSpan Column(int column) = 0;
    // After the column was written: the indicators to draw on top, and the extension's turn.
    virtual void Drawn(int column, int age, const ColumnOverlay& overlay) {
        (void)column, (void)age, (void)overlay;
    }
};

class WaterfallPlot {
  public:
    static constexpr int kNoMaxDepth = -100;
    // Status line bits that ask for the cursor's sample and depth.
    static constexpr std::uint32_t kCursorSampleBit = 0x80;
    static constexpr std::uint32_t kCursorDepthBit = 0x100;

    explicit WaterfallPlot(int displayIndex);
    virtual ~WaterfallPlot() = default;

    struct Adoption {
        bool paletteLoaded = false;  // `Pal` differed and was read again
        bool zoomChanged = false;    // the view resets its scroll bars
    };
    // Takes a changed settings snapshot: palette, zoom, axis label and scale. The caller asks
    // for a repaint afterwards (RepaintWanted is set).
    Adoption Adopt(const DisplayProcessingConfig& config, const GeneralValues& general);
    // Sets the zoom through NormaliseZoom; true when it changed (geometry is recomputed).
    bool SetZoom(double zoom);

    void SetCache(const SonarDataCache* cache) { cache_ = cache; }
    // The image rectangle in client coordinates, right and bottom exclusive. A first non-empty
    // rectangle is the window: lines are drawn only from then on.
    void SetImageRect(int left, int top, int right, int bottom);
    // First sample shown.
    void SetScroll(int firstSample) { scroll_ = firstSample; }

    struct NewLines {
        int lines = 0;         // lines added since the last draw
        int shiftColumns = 0;  // columns the view moves its image left
        bool copy = false;     // false: the shift is the whole image, nothing is worth copying
    };
    // The view moves its image as told, then calls DrawNewColumns. Stores the cache total.
    NewLines TakeNewLines();
    // Draws the columns of TakeNewLines' lines: each line takes `TraceZoomFactor` columns.
    void DrawNewColumns(const NewLines& step, WaterfallColumnTarget& target);

    // Column c; false when it lies left of the image. Column 0 also takes the geometry.
    bool DrawColumn(int column, WaterfallColumnTarget& target);

    // A full redraw from column 0, cut in slices: each slice draws columns while keepGoing says
    // so (the view gives it 50 ms of ticks). True when the redraw reached the image width.
    void BeginRedraw() { nextColumn_ = 0; }
    bool RedrawSlice(WaterfallColumnTarget& target, const std::function<bool()>& keepGoing);
    int NextRedrawColumn() const { return nextColumn_; }
    bool Redrawing() const { return nextColumn_ >= 0 && nextColumn_ < ImageWidth(); }

    // Set when geometry or settings changed; the view repaints and clears it.
    bool TakeRepaintWanted();

    struct Readout {
        const SonarDataCacheElement* line = nullptr;
        int age = -1;
        int sample = 0;
        std::string text;  // before the status formatter adds the header's fields
    };
    // Cursor at client (x, y); scrollPixels is the view's vertical scroll offset. The status
    // `Flags` pick the sample and depth items.
    Readout Cursor(int x, int y, int scrollPixels, std::uint32_t statusFlags,
                   bool leftButtonDown) const;
    // Line age and sample under a press, for the extension's left click.
    int AgeAt(int x) const;
    int SampleAt(int y) const;

    int ImageWidth() const { return right_ > left_ ? right_ - left_ : 0; }
    // Pixels of each column: the image height, at most kMaxColumnHeight.
    int ColumnHeight() const;
    int ImageHeight() const { return bottom_ > top_ ? bottom_ - top_ : 0; }
    int Left() const { return left_; }
    int Top() const { return top_; }
    int Right() const { return right_; }

    double Zoom() const { return zoom_; }
    int Scroll() const { return scroll_; }
    int TraceZoomFactor() const;
    int LineLength() const { return lineLength_; }
    int StartDepth() const { return startDepth_; }
    bool Dual() const { return dual_; }
    int LastMaxDepth() const { return lastMaxDepth_; }
    std::int64_t DrawnTotal() const { return drawnTotal_; }
    const std::string& AxisLabel() const { return axisLabel_; }
    const WaterfallAxis& Axis() const { return axis_; }
    const Palette& Colours() const { return palette_; }
    const DisplayProcessingConfig& Config() const { return config_; }
    const GeneralValues& General() const { return general_; }
    int DisplayIndex() const { return displayIndex_; }

  private:
    void TakeGeometry(const SonarDataCacheElement* line);
    ColumnContext Context() const;

    int displayIndex_;
    DisplayProcessingConfig config_;
    GeneralValues general_;
    Palette palette_;
    std::string paletteName_;
    bool paletteRead_ = false;
    std::string axisLabel_ = "METERS";
    WaterfallAxis axis_;
    // Geometry in force.
    bool dual_ = false;
    int lineLength_ = 0;
    int startDepth_ = 0;
    int lastMaxDepth_ = kNoMaxDepth;
    float lastRate_ = 0.0f;
    // Image rectangle.
    int left_ = 0, top_ = 0, right_ = 0, bottom_ = 0;
    bool hasWindow_ = false;
    double zoom_ = 1.0;
    int scroll_ = 0;
    int nextColumn_ = -1;
    const SonarDataCache* cache_ = nullptr;
    std::int64_t drawnTotal_ = 0;
    bool repaintWanted_ = false;
};

}  // namespace halvo

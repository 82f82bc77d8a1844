#pragma once
// The zoom drag on a waterfall: press inside the image, a rubber band while the button is
// down, and on release the selection in columns and samples. A drag shorter than 5 pixels both
// ways selects the whole image.

#include <optional>

namespace halvo {

class WaterfallPlot;

struct ZoomSelection {
    int imageHeight = 0;
    // Columns counted from the right edge (0 the newest), newest first.
    int firstColumn = 0;
    int lastColumn = 0;
    // Samples, top first.
    int firstSample = 0;
    int lastSample = 0;
    bool whole = false;
};

class WaterfallZoomDrag {
  public:
    static constexpr int kMinMove = 5;

    struct Band {
        int left = 0, top = 0, right = 0, bottom = 0;
    };

    // Stores the anchor when the point lies inside the image (the extension declined first).
    bool Press(const WaterfallPlot& plot, int x, int y);
    bool Dragging() const { return anchorX_ >= 0; }
    // The rectangle from the anchor to the pointer, which the view draws twice to erase.
    std::optional<Band> BandTo(int x, int y) const;
    // Ends the drag; nothing without an anchor.
    std::optional<ZoomSelection> Release(const WaterfallPlot& plot, int x, int y);
    // Forgets the anchor.
    void Clear() {
        anchorX_ = -1;
        anchorY_ = -1;
    }

  private:
    int anchorX_ = -1;
    int anchorY_ = -1;
};

}  // namespace halvo

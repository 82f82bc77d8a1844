#pragma once
// What an extension may do in a waterfall, its plot strip and its legend. Every default declines
// or does nothing, so a view with an extension that overrides nothing behaves as one without.
// The drawing goes through DrawingContext, so what a hook draws is decided without a window.

#include <optional>
#include <string>

#include "display/DrawingContext.h"

namespace halvo {

class ExtensionView;

struct DrawRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

class WaterfallExtension {
  public:
    virtual ~WaterfallExtension() = default;

    // A press over a trace, before the plot's own handling; non-zero when consumed. Age is the
    // trace's distance from the newest, sample the sample under the pointer.
    virtual int OnPlotClick(int age, int sample, ExtensionView& view, int channel) {
        static_cast<void>(age), static_cast<void>(sample), static_cast<void>(view);
        static_cast<void>(channel);
        return 0;
    }
    // While the pointer moves: a text shown with the view's own readout, or nothing.
    virtual std::optional<std::string> StatusText(int age, int zero, ExtensionView& view,
                                                  int channel) {
        static_cast<void>(age), static_cast<void>(zero), static_cast<void>(view);
        static_cast<void>(channel);
        return std::nullopt;
    }
    // After each trace column is drawn, at x, between top and bottom.
    virtual void DrawTraceOverlay(DrawingContext& dc, int age, int firstSample, int x, int top,
                                  int bottom, int channel) {
        static_cast<void>(dc), static_cast<void>(age), static_cast<void>(firstSample);
        static_cast<void>(x), static_cast<void>(top), static_cast<void>(bottom);
        static_cast<void>(channel);
    }
    // For index 0, 1, ... up to 99 while a plot strip paints its column: 0 ends the walk; a
    // position from 0 below twice halfWidth draws two pixels of colour there, -1 draws nothing.
    virtual int PlotMarker(int index, int age, int halfWidth, float scale, int* colour,
                           int* position, ExtensionView& view) {
        static_cast<void>(index), static_cast<void>(age), static_cast<void>(halfWidth);
        static_cast<void>(scale), static_cast<void>(colour), static_cast<void>(position);
        static_cast<void>(view);
        return 0;
    }
    // The margin beside the traces; non-zero when it drew the margin itself.
    virtual int DrawMargin(DrawingContext& dc, DrawRect rect, ExtensionView& view, int channel) {
        static_cast<void>(dc), static_cast<void>(rect), static_cast<void>(view);
        static_cast<void>(channel);
        return 0;
    }
    // The whole picture of a legend view that has this extension attached.
    virtual void DrawLegend(DrawingContext& dc, ExtensionView& view) {
        static_cast<void>(dc), static_cast<void>(view);
    }
};

// The plot window's hook: called after its curve, with the plot rectangle and the scale and
// offset that map a value to a height.
class PlotExtension {
  public:
    virtual ~PlotExtension() = default;
    virtual void DrawFit(DrawingContext& dc, int left, int top, int right, int bottom, float scale,
                         float offset) = 0;
};

}  // namespace halvo

#pragma once
// Somewhere to draw: the few operations that hooks, banners and annotations need. A window
// implements it on its painter; output without a window (printed banners, picture annotations,
// rendered files) on an image in memory. So what is drawn, and where, is decided once, without
// a window, and tested headless.

#include <cstdint>
#include <string_view>

namespace halvo {

struct DrawColour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    friend bool operator==(const DrawColour&, const DrawColour&) = default;
};

class DrawingContext {
  public:
    virtual ~DrawingContext() = default;

    virtual int Width() const = 0;
    virtual int Height() const = 0;

    // Lines and outlines use the pen: its colour and its width in pixels (at least 1).
    virtual void SetPen(DrawColour colour, int width = 1) = 0;
    // From (x0, y0) to (x1, y1), both ends drawn.
    virtual void Line(int x0, int y0, int x1, int y1) = 0;
    // The outline of the pixels from (left, top) to (right, bottom), both inclusive: four lines.
    void Rectangle(int left, int top, int right, int bottom) {
        Line(left, top, right, top);
        Line(right, top, right, bottom);
        Line(right, bottom, left, bottom);
        Line(left, bottom, left, top);
    }
    // The pixels from (left, top) to (right, bottom), both inclusive, in one colour.
    virtual void Fill(int left, int top, int right, int bottom, DrawColour colour) = 0;
    virtual void Pixel(int x, int y, DrawColour colour) = 0;
    // One line of text whose top left corner is at (x, y), `pixelHeight` tall.
    virtual void Text(int x, int y, std::string_view text, int pixelHeight, DrawColour colour) = 0;
};

}  // namespace halvo

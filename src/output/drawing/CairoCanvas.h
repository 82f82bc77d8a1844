#pragma once
// A picture in memory to draw on without a window, through Cairo: 24-bit colour, text in the
// DejaVu Sans face. It is saved as PNG through Cairo, or read back row by row for a picture too
// long to hold whole (the caller streams the rows through PngWriter).

#include <cstdint>
#include <span>
#include <string>

#include "display/DrawingContext.h"

typedef struct _cairo_surface cairo_surface_t;
typedef struct _cairo cairo_t;

namespace halvo {

class CairoCanvas final : public DrawingContext {
  public:
    // Sides outside 1 to kMaxSide give an empty canvas (Valid() false) on which drawing does
    // nothing; so does a canvas the library could not allocate.
    static constexpr int kMaxSide = 32767;

    CairoCanvas(int width, int height, DrawColour background = {255, 255, 255});
    ~CairoCanvas() override;
    CairoCanvas(const CairoCanvas&) = delete;
    CairoCanvas& operator=(const CairoCanvas&) = delete;

    bool Valid() const { return cairo_ != nullptr; }
    int Width() const override { return width_; }
    int Height() const override { return height_; }

    void SetPen(DrawColour colour, int width = 1) override;
    void Line(int x0, int y0, int x1, int y1) override;
    void Fill(int left, int top, int right, int bottom, DrawColour colour) override;
    void Pixel(int x, int y, DrawColour colour) override;
    void Text(int x, int y, std::string_view text, int pixelHeight, DrawColour colour) override;

    DrawColour At(int x, int y);
    // Row y as red, green, blue bytes (width * 3); false outside the picture.
    bool Row(int y, std::span<std::uint8_t> rgb);
    bool WritePng(const std::string& path);

  private:
    void SetColour(DrawColour colour);

    int width_ = 0;
    int height_ = 0;
    cairo_surface_t* surface_ = nullptr;
    cairo_t* cairo_ = nullptr;
    DrawColour pen_{};
    int penWidth_ = 1;
};

}  // namespace halvo

#include "output/drawing/CairoCanvas.h"

#include <cairo.h>

#include <algorithm>
#include <cstring>

namespace halvo {

namespace {

constexpr const char* kFace = "DejaVu Sans";

double Unit(std::uint8_t v) {
    return v / 255.0;
}

}  // namespace

CairoCanvas::CairoCanvas(int width, int height, DrawColour background) {
    if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide) return;
    surface_ = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    if (cairo_surface_status(surface_) != CAIRO_STATUS_SUCCESS) return;
    cairo_ = cairo_create(surface_);
    if (cairo_status(cairo_) != CAIRO_STATUS_SUCCESS) {
        cairo_destroy(cairo_);
        cairo_ = nullptr;
        return;
    }
    width_ = width;
    height_ = height;
    // Whole pixels: lines and fills land on the grid a window's painter would use.
    cairo_set_antialias(cairo_, CAIRO_ANTIALIAS_NONE);
    Fill(0, 0, width - 1, height - 1, background);
}

CairoCanvas::~CairoCanvas() {
    if (cairo_ != nullptr) cairo_destroy(cairo_);
    if (surface_ != nullptr) cairo_surface_destroy(surface_);
}

void CairoCanvas::SetColour(DrawColour c) {
    cairo_set_source_rgb(cairo_, Unit(c.red), Unit(c.green), Unit(c.blue));
}

void CairoCanvas::SetPen(DrawColour colour, int width) {
    pen_ = colour;
    penWidth_ = std::clamp(width, 1, 1000);
}

void CairoCanvas::Line(int x0, int y0, int x1, int y1) {
    if (!Valid()) return;
    SetColour(pen_);
    cairo_set_line_width(cairo_, penWidth_);
    cairo_set_line_cap(cairo_, CAIRO_LINE_CAP_SQUARE);
    // Through pixel centres, so that both end pixels are covered.
    cairo_move_to(cairo_, x0 + 0.5, y0 + 0.5);
    cairo_line_to(cairo_, x1 + 0.5, y1 + 0.5);
    cairo_stroke(cairo_);
}

void CairoCanvas::Fill(int left, int top, int right, int bottom, DrawColour colour) {
    if (!Valid()) return;
    if (right < left) std::swap(left, right);
    if (bottom < top) std::swap(top, bottom);
    SetColour(colour);
    cairo_rectangle(cairo_, left, top, static_cast<double>(right) - left + 1,
                    static_cast<double>(bottom) - top + 1);
    cairo_fill(cairo_);
}

void CairoCanvas::Pixel(int x, int y, DrawColour colour) {
    if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
    Fill(x, y, x, y, colour);
}

void CairoCanvas::Text(int x, int y, std::string_view text, int pixelHeight, DrawColour colour) {
    if (!Valid() || text.empty() || pixelHeight < 1) return;
    const std::string s(text.substr(0, text.find('\0')));
    cairo_save(cairo_);
    // Text is smoothed: a one-bit outline font at banner sizes is hard to read.
    cairo_set_antialias(cairo_, CAIRO_ANTIALIAS_DEFAULT);
    cairo_select_font_face(cairo_, kFace, CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cairo_, pixelHeight);
    cairo_font_extents_t fe;
    cairo_font_extents(cairo_, &fe);
    SetColour(colour);
    cairo_move_to(cairo_, x, y + fe.ascent);
    cairo_show_text(cairo_, s.c_str());
    cairo_restore(cairo_);
}

DrawColour CairoCanvas::At(int x, int y) {
    if (!Valid() || x < 0 || y < 0 || x >= width_ || y >= height_) return {};
    cairo_surface_flush(surface_);
    const unsigned char* data = cairo_image_surface_get_data(surface_);
    const int stride = cairo_image_surface_get_stride(surface_);
    std::uint32_t v = 0;
    std::memcpy(&v, data + static_cast<std::size_t>(y) * stride + 4 * static_cast<std::size_t>(x),
                4);
    return {static_cast<std::uint8_t>(v >> 16), static_cast<std::uint8_t>(v >> 8),
            static_cast<std::uint8_t>(v)};
}

bool CairoCanvas::Row(int y, std::span<std::uint8_t> rgb) {
    if (!Valid() || y < 0 || y >= height_ || rgb.size() < static_cast<std::size_t>(width_) * 3)
        return false;
    for (int x = 0; x < width_; ++x) {
        const DrawColour c = At(x, y);
        rgb[3 * x] = c.red;
        rgb[3 * x + 1] = c.green;
        rgb[3 * x + 2] = c.blue;
    }
    return true;
}

bool CairoCanvas::WritePng(const std::string& path) {
    if (!Valid()) return false;
    cairo_surface_flush(surface_);
    return cairo_surface_write_to_png(surface_, path.c_str()) == CAIRO_STATUS_SUCCESS;
}

}  // namespace halvo

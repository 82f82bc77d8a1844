#pragma once
// The window side of DrawingContext: the same operations on a QPainter, pixel for pixel as the
// image canvas draws them, so an extension's drawing looks alike on screen and in a file.

#include <QPainter>

#include "display/DrawingContext.h"

namespace halvo {

class QPainterContext final : public DrawingContext {
  public:
    QPainterContext(QPainter& painter, int width, int height)
        : painter_(painter), width_(width), height_(height) {}

    int Width() const override { return width_; }
    int Height() const override { return height_; }
    void SetPen(DrawColour colour, int width = 1) override;
    void Line(int x0, int y0, int x1, int y1) override;
    void Fill(int left, int top, int right, int bottom, DrawColour colour) override;
    void Pixel(int x, int y, DrawColour colour) override;
    void Text(int x, int y, std::string_view text, int pixelHeight, DrawColour colour) override;

  private:
    QPainter& painter_;
    int width_;
    int height_;
    QColor pen_{Qt::black};
    int penWidth_ = 1;
};

}  // namespace halvo

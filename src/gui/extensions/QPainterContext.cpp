#include "gui/extensions/QPainterContext.h"

#include <QFont>
#include <QFontMetrics>
#include <algorithm>
#include <string>

namespace halvo {

namespace {

QColor ToQt(DrawColour c) {
    return QColor(c.red, c.green, c.blue);
}

}  // namespace

void QPainterContext::SetPen(DrawColour colour, int width) {
    pen_ = ToQt(colour);
    penWidth_ = std::clamp(width, 1, 1000);
}

void QPainterContext::Line(int x0, int y0, int x1, int y1) {
    painter_.save();
    // Square caps cover both end pixels, as the image canvas does.
    painter_.setPen(QPen(pen_, penWidth_, Qt::SolidLine, Qt::SquareCap));
    painter_.setRenderHint(QPainter::Antialiasing, false);
    if (penWidth_ == 1) {
        painter_.drawLine(x0, y0, x1, y1);
    } else {
        painter_.drawLine(QPointF(x0 + 0.5, y0 + 0.5), QPointF(x1 + 0.5, y1 + 0.5));
    }
    painter_.restore();
}

void QPainterContext::Fill(int left, int top, int right, int bottom, DrawColour colour) {
    if (right < left) std::swap(left, right);
    if (bottom < top) std::swap(top, bottom);
    painter_.fillRect(QRect(QPoint(left, top), QPoint(right, bottom)), ToQt(colour));
}

void QPainterContext::Pixel(int x, int y, DrawColour colour) {
    painter_.fillRect(QRect(x, y, 1, 1), ToQt(colour));
}

void QPainterContext::Text(int x, int y, std::string_view text, int pixelHeight,
                           DrawColour colour) {
    if (text.empty() || pixelHeight < 1) return;
    painter_.save();
    QFont font("DejaVu Sans");
    font.setPixelSize(pixelHeight);
    painter_.setFont(font);
    painter_.setPen(ToQt(colour));
    const std::string s(text.substr(0, text.find('\0')));
    painter_.drawText(QPoint(x, y + QFontMetrics(font).ascent()), QString::fromStdString(s));
    painter_.restore();
}

}  // namespace halvo

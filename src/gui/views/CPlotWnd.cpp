#include "gui/views/CPlotWnd.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>

#include "display/PlotModel.h"
#include "extensions/WaterfallExtension.h"
#include "gui/dialogs/PlotOptions.h"
#include "gui/extensions/QPainterContext.h"

namespace halvo {

namespace {
constexpr int kCaptionHeight = 36;
const QColor kCurveColours[PlotModel::kMaxCurves] = {QColor(0, 0, 200), QColor(200, 0, 0)};
}  // namespace

CPlotWnd::CPlotWnd(PlotModel& model, QString title, QWidget* parent)
    : QWidget(parent), model_(model), title_(std::move(title)) {
    setMouseTracking(true);
    setMinimumSize(160, 100);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

QRect CPlotWnd::PlotArea() const {
    return QRect(4, kCaptionHeight, std::max(10, width() - 8),
                 std::max(10, height() - kCaptionHeight - 4));
}

QString CPlotWnd::CaptionText() const {
    return QString::fromStdString(model_.Caption(cursor_));
}

void CPlotWnd::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.fillRect(rect(), palette().window());
    const QRect area = PlotArea();
    p.fillRect(area, Qt::white);
    p.setPen(QColor(160, 160, 160));
    p.drawRect(area.adjusted(0, 0, -1, -1));
    // Horizontal grid at quarters of the y range.
    for (int q = 1; q < 4; ++q) {
        const int y = area.top() + area.height() * q / 4;
        p.drawLine(area.left(), y, area.right(), y);
    }
    QFont font("Arial");
    font.setPixelSize(14);
    font.setWeight(QFont::Normal);
    p.setFont(font);
    p.setPen(Qt::black);
    p.drawText(QRect(4, 2, width() - 8, 16), Qt::AlignLeft | Qt::AlignVCenter,
               title_ + "   " + QString::fromStdString(model_.RangeText()));
    p.drawText(QRect(4, 18, width() - 8, 16), Qt::AlignLeft | Qt::AlignVCenter, CaptionText());
    if (model_.Empty()) return;

    p.setClipRect(area);
    p.setRenderHint(QPainter::Antialiasing, false);
    for (int c = 0; c < model_.Curves(); ++c) {
        const std::vector<float>& y = model_.Curve(c);
        if (y.empty()) continue;
        const int count = static_cast<int>(y.size());
        // Each pixel column shows the lowest and highest value that falls in it, so a curve of
        // 100,000 points is drawn in as many strokes as the window is wide.
        std::vector<std::pair<double, double>> column(static_cast<std::size_t>(area.width()),
                                                      {1e300, -1e300});
        for (int i = 0; i < count; ++i) {
            const auto shown = model_.Shown(y[static_cast<std::size_t>(i)]);
            if (!shown) continue;
            const double x = model_.XPixel(i, count, area.width());
            if (x < 0 || x >= area.width()) continue;
            auto& col = column[static_cast<std::size_t>(x)];
            const double py = model_.YPixel(*shown, area.height());
            col.first = std::min(col.first, py);
            col.second = std::max(col.second, py);
        }
        p.setPen(kCurveColours[c]);
        QPointF last;
        bool haveLast = false;
        for (int x = 0; x < area.width(); ++x) {
            const auto& col = column[static_cast<std::size_t>(x)];
            if (col.first > col.second) continue;
            const QPointF top(area.left() + x, area.top() + col.first);
            const QPointF bottom(area.left() + x, area.top() + col.second);
            if (haveLast) p.drawLine(last, top);
            p.drawLine(top, bottom);
            last = bottom;
            haveLast = true;
        }
    }
    if (model_.State().options & kPlotHorizontalMarkers) {
        p.setPen(QPen(QColor(0, 140, 0), 1, Qt::DashLine));
        const int y0 = static_cast<int>(model_.YPixel(0.0, area.height()));
        p.drawLine(area.left(), area.top() + y0, area.right(), area.top() + y0);
    }
    if (extension_ != nullptr) {
        float scale = 0.0f, offset = 0.0f;
        model_.Mapping(area.height(), scale, offset);
        QPainterContext dc(p, width(), height());
        extension_->DrawFit(dc, area.left(), area.top(), area.right(), area.bottom(), scale,
                            offset);
    }
}

void CPlotWnd::mouseMoveEvent(QMouseEvent* event) {
    const QRect area = PlotArea();
    const QPoint at = event->position().toPoint();
    if (!area.contains(at) || model_.Empty()) {
        cursor_.reset();
    } else {
        const int px = at.x() - area.left();
        const std::vector<float>& y = model_.Curve(0);
        const int i = model_.IndexAt(px, area.width(), static_cast<int>(y.size()));
        const double x = model_.XAt(px, area.width());
        cursor_ = {x, i >= 0 ? static_cast<double>(y[static_cast<std::size_t>(i)]) : 0.0};
    }
    if (model_.State().options & kPlotCursor) update();
}

void CPlotWnd::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::RightButton) OpenOptions();
}

void CPlotWnd::mouseDoubleClickEvent(QMouseEvent*) {
    OpenOptions();
}

void CPlotWnd::OpenOptions() {
    PlotOptions dialog(model_, this);
    dialog.exec();
    update();
}

}  // namespace halvo

#include "gui/views/PlotView.h"

#include <QMouseEvent>
#include <QPainter>

#include "app/GeneralSettings.h"
#include "display/DisplayProcessingSet.h"
#include "display/PlotStrip.h"
#include "display/SonarDataCache.h"
#include "extensions/WaterfallExtension.h"

namespace halvo {

namespace {

// Colours are stored as 0x00BBGGRR.
QColor FromColourRef(std::int32_t c) {
    return QColor(c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF);
}

// The strip has no gain setting of its own: a gain of 1 puts 5 degrees at half the pane.
constexpr float kGain = 1.0f;

}  // namespace

PlotView::PlotView(DisplayViewContext& context, CWaterfallDoc& document, int display,
                   QWidget* parent)
    : QWidget(parent), ctx_(context), doc_(document), display_(display) {
    setMouseTracking(true);
    setMinimumHeight(8);
    doc_.AddView(this);
}

PlotView::~PlotView() {
    doc_.RemoveView(this);
}

const SonarDataCache* PlotView::Cache() {
    return doc_.GetCache(display_);
}

void PlotView::paintEvent(QPaintEvent*) {
    QPainter p(this);
    PaintStrip(p, rect());
}

void PlotView::PaintStrip(QPainter& p, const QRect& area) {
    p.fillRect(area, Qt::white);
    const SonarDataCache* cache = Cache();
    if (cache == nullptr || area.width() <= 0 || area.height() <= 0) return;
    DisplayProcessingConfig config;
    ctx_.displays.Snapshot(display_, config);
    const GeneralValues g = ctx_.general.Snapshot();
    const PlotStrip::Colours colours{g.RGBPitch, g.RGBRoll, g.RGBRC};
    const auto lookup = [cache](int age) { return cache->Get(age); };
    const int w = area.width();
    const int h = area.height();
    p.setPen(QColor(200, 200, 200));
    p.drawLine(area.left(), area.top() + h / 2, area.right(), area.top() + h / 2);
    for (int c = 0; c < w; ++c) {
        if (extension_ != nullptr) {
            // An attached extension draws this strip: two pixels per marker it gives.
            const int age = PlotStrip::AgeOf(c, config.TraceZoomFactor);
            for (int i = 0; i < 100; ++i) {
                int colour = 0, position = -1;
                if (extension_->PlotMarker(i, age, h / 2, kGain, &colour, &position, *this) == 0)
                    break;
                if (position < 0 || position >= h) continue;
                p.setPen(FromColourRef(colour));
                p.drawPoint(area.left() + w - c - 1, area.top() + position);
                p.drawPoint(area.left() + w - c - 1, area.top() + position + 1);
            }
            continue;
        }
        for (const StripMark& m :
             PlotStrip::Column(c, w, h, config.TraceZoomFactor, kGain, colours, lookup)) {
            p.setPen(FromColourRef(m.colour));
            if (m.x0 == m.x1 && m.y0 == m.y1) {
                p.drawPoint(area.left() + m.x0, area.top() + m.y0);
            } else {
                p.drawLine(area.left() + m.x0, area.top() + m.y0, area.left() + m.x1,
                           area.top() + m.y1);
            }
        }
    }
}

void PlotView::mouseMoveEvent(QMouseEvent* event) {
    const SonarDataCache* cache = Cache();
    DisplayProcessingConfig config;
    ctx_.displays.Snapshot(display_, config);
    const int column = width() - static_cast<int>(event->position().x()) - 1;
    const SonarDataCacheElement* line =
        cache != nullptr && column >= 0
            ? cache->Get(PlotStrip::AgeOf(column, config.TraceZoomFactor))
            : nullptr;
    status_ = QString::fromStdString(PlotStrip::CursorText(line));
    if (onStatus_) onStatus_(status_);
}

}  // namespace halvo

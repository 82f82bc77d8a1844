#include "gui/views/ScopeView.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>

#include "app/GeneralSettings.h"
#include "display/DisplayProcessingSet.h"
#include "display/ScopeTrace.h"
#include "display/SonarDataCache.h"
#include "display/WaterfallColumn.h"
#include "platform/TickSource.h"

namespace halvo {

ScopeView::ScopeView(DisplayViewContext& context, CWaterfallDoc& document, int display,
                     QWidget* parent)
    : QWidget(parent),
      ctx_(context),
      doc_(document),
      display_(std::clamp(display, 0, CWaterfallDoc::kDisplays - 1)) {
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumWidth(10);
    ctx_.displays.Snapshot(display_, config_);
    general_ = ctx_.general.Snapshot();
    cache_ = doc_.GetCache(display_);
    doc_.AddView(this);
    ready_ = true;
}

ScopeView::~ScopeView() {
    doc_.RemoveView(this);
}

bool ScopeView::Refresh() {
    if (!ctx_.displays.Snapshot(display_, config_)) return false;
    general_ = ctx_.general.Snapshot();
    cache_ = doc_.GetCache(display_);
    return true;
}

void ScopeView::OnDocumentUpdate() {
    const std::uint32_t now = ctx_.ticks.TickCount();
    // Outside last paint to last paint + 1 s, which also catches a tick that went backward.
    if (now - lastPaint_ > kRepaintMs) {
        ++invalidations_;
        update();
    }
    if (Refresh()) {
        ++invalidations_;
        update();
    }
}

double ScopeView::Zoom() const {
    return NormaliseZoom(config_.Zoom);
}

const SonarDataCacheElement* ScopeView::Newest() const {
    return cache_ != nullptr ? cache_->Get(0) : nullptr;
}

void ScopeView::paintEvent(QPaintEvent* event) {
    (void)event;
    ++paints_;
    lastPaint_ = ctx_.ticks.TickCount();
    Refresh();
    QPainter p(this);
    const int level = std::clamp(general_.ScopeBackgroundLevel, 0, 255);
    // The scope's grey covers the graph area only; the two columns at the right edge, which
    // no trace reaches, take the window's own background.
    const int graph = std::max(0, width() - kRightMargin);
    p.fillRect(QRect(0, 0, graph, height()), QColor(level, level, level));
    p.fillRect(QRect(graph, 0, width() - graph, height()), palette().window());
    const double z = Zoom();
    const SonarDataCacheElement* line = Newest();
    if (!ready_ || line == nullptr || !(z > 0.0)) return;

    const int offset = ScopeOffset(*line, config_, general_);
    const int width = std::max(0, this->width() - kRightMargin);
    const int scroll = ScrollPixels();
    ScopeArea area;
    area.clientWidth = width;
    area.scrollPixels = scroll;
    area.pageHeight = height();
    const ScopeTraceShape shape = ScopeTrace::Shape(*line, offset, z, area);
    p.translate(0, -scroll);
    p.setPen(QPen(QColor(40, 40, 0), 0));
    if (!shape.points.empty()) {
        QPainterPath path(QPointF(shape.points.front().x, shape.points.front().y));
        for (std::size_t i = 1; i < shape.points.size(); ++i) {
            path.lineTo(shape.points[i].x, shape.points[i].y);
        }
        p.drawPath(path);
    }
    for (const ScopeTraceShape::Span& s : shape.spans) p.drawLine(s.x0, s.y, s.x1, s.y);

    const ScopeMarkers m = ScopeTrace::Markers(*line, config_, general_, offset, z, width);
    p.setPen(QPen(Qt::red, 0));
    p.drawLine(m.thresholdX, scroll, m.thresholdX, scroll + height());
    p.setPen(QPen(Qt::green, 0));
    p.drawLine(0, m.tvgY, this->width(), m.tvgY);
    if (m.rangeHalf > 1) {
        p.setPen(QPen(Qt::blue, 0));
        p.drawLine(0, m.tvgY - m.rangeHalf, this->width(), m.tvgY - m.rangeHalf);
        p.drawLine(0, m.tvgY + m.rangeHalf, this->width(), m.tvgY + m.rangeHalf);
    }
}

void ScopeView::mouseMoveEvent(QMouseEvent* event) {
    const QPoint at = event->position().toPoint();
    Refresh();
    const std::string text = ScopeDrag::Readout(at.x(), at.y(), width(), ScrollPixels(), Zoom(),
                                                Newest(), config_, general_);
    status_ = QString::fromStdString(text);
    if (onStatus_) onStatus_(status_);
}

void ScopeView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    const QPoint at = event->position().toPoint();
    drag_.Press(at.x(), at.y());
}

void ScopeView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    const QPoint at = event->position().toPoint();
    Refresh();
    const std::optional<ScopeEdit> edit = drag_.Release(
        at.x(), at.y(), ScopeClient{0, width()}, ScrollPixels(), Newest(), config_, general_);
    if (!edit) return;
    {
        auto record = ctx_.displays.Lock(display_);
        edit->ApplyTo(*record);
        record.Bump();
    }
    Refresh();
    update();
}

}  // namespace halvo

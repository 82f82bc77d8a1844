#include "gui/views/CWaterfallView.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <cmath>
#include <exception>

#include "app/GeneralSettings.h"
#include "app/SystemCoordinator.h"
#include "display/DisplayProcessingSet.h"
#include "extensions/WaterfallExtension.h"
#include "gui/extensions/QPainterContext.h"
#include "gui/sheets/OperatorPrompts.h"
#include "platform/TickSource.h"

namespace halvo {

namespace {

constexpr int kRulerTick = 4;
constexpr int kRulerStepPixels = 40;

std::uint8_t Level(std::int32_t v) {
    return static_cast<std::uint8_t>(std::clamp(v, 0, 255));
}

}  // namespace

CWaterfallView::CWaterfallView(DisplayViewContext& context, CWaterfallDoc& document, int display,
                               QWidget* parent)
    : QAbstractScrollArea(parent),
      ctx_(context),
      doc_(document),
      display_(std::clamp(display, 0, CWaterfallDoc::kDisplays - 1)),
      plot_(display_) {
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    plot_.SetCache(doc_.GetCache(display_));
    ring_.SetDrawnHook(
        [this](int column, int age, const ColumnOverlay& overlay, QImage& image, int ringX) {
            if (extension_ == nullptr) return;
            // The extension draws in client coordinates; its marks land in the ring's column,
            // so they scroll and repaint with the line they belong to.
            const int clientX = plot_.Right() - column - 1;
            QPainter painter(&image);
            painter.translate(ringX - clientX, -plot_.Top());
            QPainterContext dc(painter, image.width(), image.height());
            extension_->DrawTraceOverlay(dc, age, overlay.firstSample, clientX, plot_.Top(),
                                         plot_.Top() + plot_.ImageHeight(), display_);
        });
    redraw_.setInterval(kRedrawTimerMs);
    connect(&redraw_, &QTimer::timeout, this, [this] { TimerTick(); });
    doc_.AddView(this);
    // The first settings are taken whatever the snapshot says, so the plot has its palette.
    ctx_.displays.Snapshot(display_, config_);
    general_ = ctx_.general.Snapshot();
    plot_.Adopt(config_, general_);
    ring_.SetColours(plot_.Colours(), general_);
}

CWaterfallView::~CWaterfallView() {
    redraw_.stop();
    doc_.RemoveView(this);
}

void CWaterfallView::OnDocumentUpdate() {
    RefreshSettings();
    DrawNewLines();
}

bool CWaterfallView::RefreshSettings() {
    if (!ctx_.displays.Snapshot(display_, config_)) return false;
    general_ = ctx_.general.Snapshot();
    const WaterfallPlot::Adoption a = plot_.Adopt(config_, general_);
    ring_.SetColours(plot_.Colours(), general_);
    // The title and scale may change the ruler, and so the image width.
    Layout();
    if (a.zoomChanged) ResetScrollBars();
    DrawNewLines();
    ResetScrollBars();
    return true;
}

void CWaterfallView::DrawNewLines() {
    const WaterfallPlot::NewLines step = plot_.TakeNewLines();
    if (step.shiftColumns > 0) {
        ring_.Shift(step.shiftColumns);
        plot_.DrawNewColumns(step, ring_);
        // The screen moves by a block copy and only the new columns are painted; a rubber band
        // on screen would move with it, so the image is painted whole then.
        if (step.copy && !bandCorner_) {
            viewport()->scroll(-step.shiftColumns, 0, ImageRect());
        } else {
            viewport()->update(ImageRect());
        }
    }
    if (plot_.TakeRepaintWanted()) {
        Layout();
        ResetScrollBars();
        Invalidate();
    }
}

void CWaterfallView::Invalidate() {
    bandCorner_.reset();
    if (plot_.ImageWidth() == 0) return;
    plot_.BeginRedraw();
    if (!redraw_.isActive()) redraw_.start();
    viewport()->update();
}

void CWaterfallView::TimerTick() {
    // The same guard as the display drain: a tick that finds it held does nothing.
    if (ctx_.coordinator.EnterDisplayTimer() == 0) {
        try {
            const std::uint32_t start = ctx_.ticks.TickCount();
            // Unsigned difference: a tick that moved backward counts as expired.
            const bool done = plot_.RedrawSlice(
                ring_, [&] { return ctx_.ticks.TickCount() - start < kRedrawSliceMs; });
            viewport()->update(ImageRect());
            if (done) redraw_.stop();
            RefreshSettings();
        } catch (const std::exception&) {
            ctx_.prompts.Notify("Waterfall View", "Timer Exception");
        } catch (...) {
            ctx_.prompts.Notify("Waterfall View", "Timer Exception");
        }
    }
    ctx_.coordinator.LeaveDisplayTimer();
}

QRect CWaterfallView::ImageRect() const {
    return QRect(plot_.Left(), plot_.Top(), plot_.ImageWidth(), plot_.ImageHeight());
}

void CWaterfallView::Layout() {
    const QRect client = viewport()->rect();
    const WaterfallAxis& axis = plot_.Axis();
    if (plot_.AxisLabel().empty() && axis.Scale() == 0.0) {
        ruler_ = 0;
    } else {
        const QFontMetrics fm(font());
        int widest = 0;
        for (int s : {0, plot_.LineLength() / 2, plot_.LineLength()}) {
            const std::string label = axis.FormatLabel(axis.LabelOf(s));
            widest = std::max(widest, fm.horizontalAdvance(QString::fromStdString(label)));
        }
        ruler_ = widest + kRulerTick + 4 + fm.height();
    }
    ruler_ = std::min(ruler_, client.width() / 2);
    plot_.SetImageRect(0, 0, std::max(0, client.width() - ruler_), client.height());
    const int w = plot_.ImageWidth();
    const int h = plot_.ColumnHeight();
    if (w != ring_.Width() || h != ring_.Height()) {
        ring_.Reset(w, h, Level(general_.NoDataGreyLevel2));
        ring_.SetColours(plot_.Colours(), general_);
        Invalidate();
    }
}

void CWaterfallView::ResetScrollBars() {
    const double zoom = plot_.Zoom();
    const int page = plot_.ImageHeight();
    const double total = zoom > 0.0 ? plot_.LineLength() * zoom : 0.0;
    const int range = total > page ? static_cast<int>(std::min(total - page, 1e9)) : 0;
    QScrollBar* bar = verticalScrollBar();
    bar->setPageStep(std::max(1, page));
    bar->setSingleStep(std::max(1, static_cast<int>(zoom)));
    bar->setRange(0, range);
}

void CWaterfallView::scrollContentsBy(int dx, int dy) {
    (void)dx, (void)dy;
    const double zoom = plot_.Zoom();
    const int value = verticalScrollBar()->value();
    plot_.SetScroll(zoom > 0.0 ? static_cast<int>(value / zoom) : 0);
    Invalidate();
}

void CWaterfallView::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    Layout();
    ResetScrollBars();
}

void CWaterfallView::showEvent(QShowEvent* event) {
    QAbstractScrollArea::showEvent(event);
    Layout();
    DrawNewLines();
}

void CWaterfallView::paintEvent(QPaintEvent* event) {
    QPainter p(viewport());
    const QRect exposed = event->rect();
    const PaletteColour none = plot_.Colours()[Level(general_.NoDataGreyLevel2)];
    // Anything the ring does not cover (an image taller than a column can be) shows no data.
    p.fillRect(exposed.intersected(ImageRect()), QColor(none.red, none.green, none.blue));
    ring_.Paint(p, QRect(plot_.Left(), plot_.Top(), ring_.Width(), ring_.Height()), exposed);
    PaintRuler(p, exposed);
    if (bandCorner_) {
        const QRect band = BandRect();
        // Inverted, as a rubber band always was: visible on any palette.
        p.setCompositionMode(QPainter::RasterOp_NotDestination);
        p.setPen(QPen(Qt::white, 1));
        p.setBrush(Qt::NoBrush);
        p.drawRect(band);
    }
}

QRect CWaterfallView::BandRect() const {
    if (!bandCorner_) return {};
    const auto band = drag_.BandTo(bandCorner_->x(), bandCorner_->y());
    if (!band) return {};
    return QRect(QPoint(band->left, band->top), QPoint(band->right, band->bottom));
}

void CWaterfallView::PaintRuler(QPainter& p, const QRect& exposed) {
    if (ruler_ <= 0) return;
    const QRect area(plot_.Right(), 0, viewport()->width() - plot_.Right(), viewport()->height());
    if (!area.intersects(exposed)) return;
    p.fillRect(area, palette().window());
    p.setPen(palette().windowText().color());
    const QFontMetrics fm(font());
    const WaterfallAxis& axis = plot_.Axis();
    const double zoom = plot_.Zoom();
    if (zoom > 0.0 && plot_.LineLength() > 0) {
        for (int y = 0; y < plot_.ImageHeight(); y += kRulerStepPixels) {
            const int sample = plot_.Scroll() + static_cast<int>(y / zoom);
            if (sample > plot_.LineLength()) break;
            p.drawLine(area.left(), y, area.left() + kRulerTick, y);
            const QString label = QString::fromStdString(axis.FormatLabel(axis.LabelOf(sample)));
            p.drawText(area.left() + kRulerTick + 2, y + fm.ascent(), label);
        }
    }
    // The title runs down the outer edge.
    p.save();
    p.translate(area.right() - fm.ascent() - 1, area.top() + 4);
    p.rotate(90);
    p.drawText(0, 0, QString::fromStdString(plot_.AxisLabel()));
    p.restore();
}

void CWaterfallView::mouseMoveEvent(QMouseEvent* event) {
    const QPoint at = event->position().toPoint();
    RefreshSettings();
    const bool leftDown = (event->buttons() & Qt::LeftButton) != 0;
    if (drag_.Dragging()) {
        bandCorner_ = at;
        viewport()->update(ImageRect());
    }
    Readout(at.x(), at.y(), leftDown);
}

void CWaterfallView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    const QPoint at = event->position().toPoint();
    if (extension_ != nullptr &&
        extension_->OnPlotClick(plot_.AgeAt(at.x()), plot_.SampleAt(at.y()), *this, display_) !=
            0) {
        return;
    }
    if (drag_.Press(plot_, at.x(), at.y())) bandCorner_ = at;
    Readout(at.x(), at.y(), true);
}

void CWaterfallView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    const QPoint at = event->position().toPoint();
    const std::optional<ZoomSelection> selection = drag_.Release(plot_, at.x(), at.y());
    drag_.Clear();
    if (bandCorner_) {
        bandCorner_.reset();
        viewport()->update(ImageRect());
    }
    if (!selection) return;
    lastSelection_ = selection;
    if (onSelection_) onSelection_(*selection);
}

void CWaterfallView::Readout(int x, int y, bool leftDown) {
    const std::uint32_t flags = ctx_.statusFlags ? ctx_.statusFlags() : 0;
    const WaterfallPlot::Readout r =
        plot_.Cursor(x, y, verticalScrollBar()->value(), flags, leftDown);
    std::string text = r.text;
    if (r.line != nullptr) {
        if (ctx_.pingText) {
            const std::size_t used = std::min<std::size_t>(text.size(), kStatusChars);
            text += ctx_.pingText(kStatusChars - used, r.line);
        }
        if (extension_ != nullptr) {
            if (const auto extra = extension_->StatusText(r.age, 0, *this, display_))
                text += *extra;
        }
    }
    SetStatus(text);
    if (leftDown && r.line != nullptr && ctx_.mainMessage) ctx_.mainMessage(text);
}

void CWaterfallView::SetStatus(const std::string& text) {
    status_ = QString::fromStdString(text);
    if (onStatus_) onStatus_(status_);
}

}  // namespace halvo

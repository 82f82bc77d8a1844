#pragma once
// The waterfall pane of one display: it feeds its plot from the document's cache, keeps the
// pixels in a ring so that a new line costs one column, redraws the whole image in slices of at
// most 50 ms, puts the cursor readout in the status text and does the zoom drag. The computing
// lives in WaterfallPlot; this class blits and routes events.

#include <QAbstractScrollArea>
#include <QString>
#include <QTimer>
#include <functional>
#include <optional>
#include <string>

#include "app/GeneralValues.h"
#include "display/DisplayProcessingConfig.h"
#include "display/WaterfallPlot.h"
#include "display/WaterfallZoomDrag.h"
#include "extensions/ExtensionView.h"
#include "gui/views/CWaterfallDoc.h"
#include "gui/views/DisplayViewContext.h"
#include "gui/views/WaterfallRing.h"

class QPainter;

namespace halvo {

class WaterfallExtension;

class CWaterfallView final : public QAbstractScrollArea,
                             public WaterfallDocView,
                             public ExtensionView {
  public:
    static constexpr int kRedrawTimerMs = 10;
    static constexpr std::uint32_t kRedrawSliceMs = 50;
    static constexpr int kStatusChars = 199;

    CWaterfallView(DisplayViewContext& context, CWaterfallDoc& document, int display,
                   QWidget* parent = nullptr);
    ~CWaterfallView() override;

    // The document's update: settings, then the new lines.
    void OnDocumentUpdate() override;
    // Takes a changed settings snapshot; true when it changed.
    bool RefreshSettings();
    // Moves the image by the new lines and draws their columns.
    void DrawNewLines();
    // Starts a full redraw from the newest column.
    void Invalidate();
    // One tick of the redraw timer (the timer calls it; tests call it directly).
    void TimerTick();

    // The extension this waterfall serves, or none: it may take a click, add to the readout and
    // draw over each column.
    void SetExtension(WaterfallExtension* extension) { extension_ = extension; }
    WaterfallExtension* Extension() const { return extension_; }
    const char* ViewKind() const override { return "CWaterfallView"; }
    int DisplayIndex() const override { return display_; }
    void AttachExtension(WaterfallExtension* extension) override { SetExtension(extension); }
    // The selection notice 0x402 of a finished zoom drag.
    void SetSelectionHandler(std::function<void(const ZoomSelection&)> handler) {
        onSelection_ = std::move(handler);
    }
    // The status text changed.
    void SetStatusHandler(std::function<void(const QString&)> handler) {
        onStatus_ = std::move(handler);
    }

    int Display() const { return display_; }
    const WaterfallPlot& Plot() const { return plot_; }
    const WaterfallRing& Ring() const { return ring_; }
    const QString& StatusText() const { return status_; }
    bool RedrawTimerActive() const { return redraw_.isActive(); }
    int RulerWidth() const { return ruler_; }
    const std::optional<ZoomSelection>& LastSelection() const { return lastSelection_; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

  private:
    // Client size into the plot's rectangles and the ring; a new size redraws everything.
    void Layout();
    void ResetScrollBars();
    void Readout(int x, int y, bool leftDown);
    void SetStatus(const std::string& text);
    void PaintRuler(QPainter& painter, const QRect& exposed);
    QRect ImageRect() const;
    QRect BandRect() const;

    DisplayViewContext& ctx_;
    CWaterfallDoc& doc_;
    int display_;
    DisplayProcessingConfig config_;
    GeneralValues general_;
    WaterfallPlot plot_;
    WaterfallRing ring_;
    WaterfallZoomDrag drag_;
    std::optional<QPoint> bandCorner_;
    QTimer redraw_;
    WaterfallExtension* extension_ = nullptr;
    std::function<void(const ZoomSelection&)> onSelection_;
    std::function<void(const QString&)> onStatus_;
    std::optional<ZoomSelection> lastSelection_;
    QString status_;
    int ruler_ = 0;
};

}  // namespace halvo

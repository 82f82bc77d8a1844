#pragma once
// The strip chart above a waterfall: pitch, roll and the reflection coefficient of each line, in
// the waterfall's column order with the newest at the right, and the cursor readout. With an
// extension attached the extension's markers take the place of its own curves. The columns come
// from PlotStrip; this class paints them.

#include <QString>
#include <QWidget>
#include <functional>

#include "display/DisplayProcessingConfig.h"
#include "extensions/ExtensionView.h"
#include "gui/views/CWaterfallDoc.h"
#include "gui/views/DisplayViewContext.h"

namespace halvo {

class SonarDataCache;
class WaterfallExtension;

class PlotView : public QWidget, public WaterfallDocView, public ExtensionView {
  public:
    PlotView(DisplayViewContext& context, CWaterfallDoc& document, int display,
             QWidget* parent = nullptr);
    ~PlotView() override;

    void SetStatusHandler(std::function<void(const QString&)> handler) {
        onStatus_ = std::move(handler);
    }
    void OnDocumentUpdate() override { update(); }

    const char* ViewKind() const override { return "PlotView"; }
    int DisplayIndex() const override { return display_; }
    void AttachExtension(WaterfallExtension* extension) override { extension_ = extension; }
    WaterfallExtension* Extension() const { return extension_; }
    const QString& StatusText() const { return status_; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    // Paints the strip into the rectangle; XYPlotView repeats it inside its grid.
    void PaintStrip(QPainter& p, const QRect& area);
    const SonarDataCache* Cache();

    DisplayViewContext& ctx_;
    CWaterfallDoc& doc_;
    int display_;
    WaterfallExtension* extension_ = nullptr;

  private:
    std::function<void(const QString&)> onStatus_;
    QString status_;
};

}  // namespace halvo

#pragma once
// The narrow pane beside a waterfall: the newest line as amplitude against depth, on the
// waterfall's vertical scale, with the threshold, TVG start and bottom search window, and the
// mouse gestures that edit them. It repaints at most once a second while data flows: the trace
// is a live hint, not a record.

#include <QString>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <optional>

#include "app/GeneralValues.h"
#include "display/DisplayProcessingConfig.h"
#include "display/ScopeDrag.h"
#include "gui/views/CWaterfallDoc.h"
#include "gui/views/DisplayViewContext.h"

namespace halvo {

class SonarDataCache;

class ScopeView final : public QWidget, public WaterfallDocView {
  public:
    static constexpr std::uint32_t kRepaintMs = 1000;
    static constexpr int kRightMargin = 2;

    ScopeView(DisplayViewContext& context, CWaterfallDoc& document, int display,
              QWidget* parent = nullptr);
    ~ScopeView() override;

    // The waterfall's first row in sight, so that both panes show the same depths.
    void SetScrollSource(std::function<int()> scrollPixels) { scroll_ = std::move(scrollPixels); }
    void SetStatusHandler(std::function<void(const QString&)> handler) {
        onStatus_ = std::move(handler);
    }

    void OnDocumentUpdate() override;
    int Display() const { return display_; }
    const QString& StatusText() const { return status_; }
    // Paints since creation; tests see the once-a-second rule through it.
    int Paints() const { return paints_; }
    // Repaint requests the update made.
    int Invalidations() const { return invalidations_; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

  private:
    // Snapshot and cache; true when the settings changed.
    bool Refresh();
    const SonarDataCacheElement* Newest() const;
    int ScrollPixels() const { return scroll_ ? scroll_() : 0; }
    double Zoom() const;

    DisplayViewContext& ctx_;
    CWaterfallDoc& doc_;
    int display_;
    DisplayProcessingConfig config_;
    GeneralValues general_;
    const SonarDataCache* cache_ = nullptr;
    std::uint32_t lastPaint_ = 0;
    bool ready_ = false;
    ScopeDrag drag_;
    std::function<int()> scroll_;
    std::function<void(const QString&)> onStatus_;
    QString status_;
    int paints_ = 0;
    int invalidations_ = 0;
};

}  // namespace halvo

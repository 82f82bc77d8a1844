#pragma once
// The motion plot of a display: a grey grid labelled "X %d" and "/ %d" with the pitch and roll
// strip repeated inside it. With an extension attached, the extension's legend is its whole
// picture.

#include "gui/views/PlotView.h"

namespace halvo {

class XYPlotView final : public PlotView {
  public:
    using PlotView::PlotView;
    const char* ViewKind() const override { return "XYPlotView"; }

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace halvo

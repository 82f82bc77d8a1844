#pragma once
// A curve window: draws the curves of a PlotModel over its y range, with the captions the model
// gives (range, statistics, cursor). Right-click or double-click opens its options. Which value
// each pixel gets is the model's business; this class only draws and routes the mouse.

#include <QWidget>
#include <optional>
#include <utility>

namespace halvo {

class PlotExtension;
class PlotModel;

class CPlotWnd final : public QWidget {
  public:
    CPlotWnd(PlotModel& model, QString title, QWidget* parent = nullptr);

    // The hook that draws a fit over the curve, after it (null: none).
    void SetExtension(PlotExtension* extension) { extension_ = extension; }
    PlotModel& Model() { return model_; }
    QSize sizeHint() const override { return {420, 220}; }
    // The caption line as drawn (for tests and the screenshot summary).
    QString CaptionText() const;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

  private:
    QRect PlotArea() const;
    void OpenOptions();

    PlotModel& model_;
    QString title_;
    PlotExtension* extension_ = nullptr;
    std::optional<std::pair<double, double>> cursor_;
};

}  // namespace halvo

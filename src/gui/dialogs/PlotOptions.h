#pragma once
// The options of a plot: a list of "Parameter" and "Value" entries. "XZoom" takes a number,
// "Commands" offers "Rescale" and "Expand Y", and each entry under "Options" switches one bit of
// the plot's option word. Changes apply to the plot at once.

#include <QDialog>

class QTableWidget;

namespace halvo {

class PlotModel;

class PlotOptions final : public QDialog {
  public:
    // The option entries in the order listed, each with its bit.
    static constexpr int kOptions = 13;

    PlotOptions(PlotModel& model, QWidget* parent = nullptr);
    QTableWidget* Table() const { return table_; }

  private:
    void Apply();

    PlotModel& model_;
    QTableWidget* table_ = nullptr;
};

}  // namespace halvo

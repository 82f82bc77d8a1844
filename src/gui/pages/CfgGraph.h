#pragma once
// The "Graph" page: one ping of a channel, taken straight from the data bus, as a time plot and a
// spectrum (or the correlation of two channels), with its settings of section `Graph0`. The page
// joins the bus when it is first shown; at each timer pass it takes what the bus handed over and
// redraws. All computing is in GraphSession; this page holds the controls and two plot windows.

#include "dsp/graph/GraphSession.h"
#include "dsp/graph/GraphSettings.h"
#include "gui/sheets/SettingsPage.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;

namespace halvo {

class CPlotWnd;
class GeneralSettings;
class GraphModule;

class CfgGraph final : public SettingsPage<GraphValues> {
  public:
    CfgGraph(SheetContext& context, GraphModule& module, GeneralSettings& general,
             QWidget* parent = nullptr);

    void OnTick() override;
    GraphSession& Session() { return session_; }
    CPlotWnd* TimePlot() const { return time_; }
    CPlotWnd* FrequencyPlot() const { return freq_; }
    // "Save To": the trace of slot 0 under the page's name.
    void SaveTrace();

  protected:
    void Bind(FieldEditor& ed, int direction, GraphValues& v) override;
    void showEvent(QShowEvent* event) override;

  private:
    void Apply(const GraphValues& v);

    GraphModule& module_;
    GeneralSettings& general_;
    GraphSession session_;
    QLineEdit* channel_ = nullptr;
    QLineEdit* channel2_ = nullptr;
    QCheckBox* removeMean_ = nullptr;
    QCheckBox* norm_ = nullptr;
    QCheckBox* adcGain_ = nullptr;
    QCheckBox* pause_ = nullptr;
    QCheckBox* xcorr_ = nullptr;
    QCheckBox* gated_ = nullptr;
    QComboBox* type_ = nullptr;
    QComboBox* window_ = nullptr;
    QLineEdit* saveFile_ = nullptr;
    QPushButton* save_ = nullptr;
    CPlotWnd* time_ = nullptr;
    CPlotWnd* freq_ = nullptr;
    std::string shownTime_;
    std::string shownFreq_;
};

}  // namespace halvo

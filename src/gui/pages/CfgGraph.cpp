#include "gui/pages/CfgGraph.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/GeneralSettings.h"
#include "dsp/graph/GraphModule.h"
#include "gui/pages/PageWidgets.h"
#include "gui/views/CPlotWnd.h"

namespace halvo {

namespace {

constexpr ListEntry kTypes[] = {{0, "Envelope"}, {1, "Real"},    {2, "Imag"},      {3, "Angle"},
                                {4, "Phase0"},   {5, "Phase90"}, {6, "Rel. Angle"}};
constexpr ListEntry kWindows[] = {{0, "None"}, {1, "Hann"}, {2, "Hamming"}, {3, "Blackman"}};

// Check boxes the values keep as bools (not stored) go through an int for the editor.
void Flag(FieldEditor& ed, int dir, QCheckBox* box, bool& flag) {
    std::int32_t v = flag ? 1 : 0;
    ed.Check(dir, box, v);
    flag = v != 0;
}

}  // namespace

CfgGraph::CfgGraph(SheetContext& context, GraphModule& module, GeneralSettings& general,
                   QWidget* parent)
    : SettingsPage(context, "Graph",
                   {[&module] { return module.Settings().Snapshot(); },
                    [this](const GraphValues& v) {
                        module_.Settings().Set(v);
                        Apply(v);
                    },
                    [&module] { return module.Settings().ChangeCount(); }},
                   parent),
      module_(module),
      general_(general) {
    auto* top = new QVBoxLayout(this);
    auto* g = new QGridLayout();
    channel_ = NumberEdit(this, 4);
    channel2_ = NumberEdit(this, 4);
    removeMean_ = new QCheckBox("0 Mean", this);
    norm_ = new QCheckBox("Norm", this);
    adcGain_ = new QCheckBox("xADCGain", this);
    pause_ = new QCheckBox("Pause", this);
    xcorr_ = new QCheckBox("XCorrelate", this);
    gated_ = new QCheckBox("Gated Only", this);
    type_ = new QComboBox(this);
    window_ = new QComboBox(this);
    saveFile_ = new QLineEdit(this);
    saveFile_->setMaxLength(GraphValues::kMaxSaveFile);
    save_ = new QPushButton("Save To", this);
    g->addWidget(new QLabel("Channel"), 0, 0, Qt::AlignRight);
    g->addWidget(channel_, 0, 1);
    g->addWidget(new QLabel("Channel2"), 0, 2, Qt::AlignRight);
    g->addWidget(channel2_, 0, 3);
    g->addWidget(removeMean_, 0, 4);
    g->addWidget(norm_, 0, 5);
    g->addWidget(adcGain_, 0, 6);
    g->addWidget(pause_, 0, 7);
    g->addWidget(new QLabel("Type"), 1, 0, Qt::AlignRight);
    g->addWidget(type_, 1, 1, 1, 2);
    g->addWidget(new QLabel("Window"), 1, 3, Qt::AlignRight);
    g->addWidget(window_, 1, 4);
    g->addWidget(xcorr_, 1, 5);
    g->addWidget(save_, 1, 6);
    g->addWidget(saveFile_, 1, 7);
    g->addWidget(gated_, 1, 8);
    g->setColumnStretch(9, 1);
    top->addLayout(g);
    time_ = new CPlotWnd(session_.Time(), "Time", this);
    freq_ = new CPlotWnd(session_.Frequency(), "Frequency", this);
    top->addWidget(time_, 1);
    top->addWidget(freq_, 1);
    for (QLineEdit* e : {channel_, channel2_, saveFile_}) WatchEdit(e);
    for (QComboBox* c : {type_, window_}) WatchCombo(c);
    for (QCheckBox* b : {removeMean_, norm_, adcGain_, pause_, xcorr_, gated_}) WatchButton(b);
    connect(save_, &QPushButton::clicked, this, [this] { SaveTrace(); });
    const GraphValues v = module_.Settings().Snapshot();
    session_.Time().State() = PlotState::FromText(v.PlotTime);
    session_.Frequency().State() = PlotState::FromText(v.PlotFreq);
    shownTime_ = session_.Time().State().ToText();
    shownFreq_ = session_.Frequency().State().ToText();
    Apply(v);
}

void CfgGraph::Bind(FieldEditor& ed, int dir, GraphValues& v) {
    ed.Int(dir, channel_, v.Channel, 0, 63);
    ed.Int(dir, channel2_, v.Channel2, -1, 63);
    ed.Check(dir, removeMean_, v.RemoveMean);
    ed.Check(dir, norm_, v.ScaleFreqByFFTSize);
    ed.Check(dir, pause_, v.Pause);
    ed.List(dir, type_, v.TimePlotType, kTypes);
    ed.List(dir, window_, v.Window, kWindows);
    ed.Text(dir, saveFile_, v.SaveFile, GraphValues::kMaxSaveFile);
    Flag(ed, dir, adcGain_, v.xADCGain);
    Flag(ed, dir, xcorr_, v.XCorrelate);
    Flag(ed, dir, gated_, v.GatedOnly);
    xcorr_->setEnabled(v.Channel2 >= 0);
}

// The taker reads these on the bus thread at every trace.
void CfgGraph::Apply(const GraphValues& v) {
    GraphTaker& taker = module_.Taker();
    taker.SetChannels(v.Channel, v.Channel2);
    taker.SetPause(v.Pause != 0);
    taker.SetAdcGainScaling(v.xADCGain);
}

void CfgGraph::showEvent(QShowEvent* event) {
    module_.Join();
    SettingsPage::showEvent(event);
}

void CfgGraph::OnTick() {
    GraphValues v = module_.Settings().Snapshot();
    Apply(v);
    const GeneralValues g = general_.Snapshot();
    if (session_.Step(module_.Taker(), v, GraphUnits{g.UserUnits, g.WaterSoundSpeed})) {
        time_->update();
        freq_->update();
    }
    // What the operator set in a plot's options is kept with the page's settings.
    const std::string t = session_.Time().State().ToText();
    const std::string f = session_.Frequency().State().ToText();
    if (t != shownTime_ || f != shownFreq_) {
        shownTime_ = t;
        shownFreq_ = f;
        v.PlotTime = t;
        v.PlotFreq = f;
        module_.Settings().Set(v);
    }
}

void CfgGraph::SaveTrace() {
    GraphValues v = module_.Settings().Snapshot();
    const GraphCompute::Saved saved = session_.Save(v);
    if (saved.written && saved.saveFile != v.SaveFile) {
        v.SaveFile = saved.saveFile;
        module_.Settings().Set(v);
    }
}

}  // namespace halvo

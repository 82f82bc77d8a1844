#include "gui/views/SetupDisplay.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>

#include "display/DisplayProcessingSet.h"
#include "display/SonarDataCacheSet.h"
#include "gui/views/WaterfallDocSet.h"

namespace halvo {

namespace {

constexpr ListEntry kZoomAverage[] = {
    {0, "Decimate"}, {1, "Average"}, {2, "Max Val"}, {0, nullptr}};
constexpr ListEntry kHeaveSource[] = {
    {0, "None"}, {1, "Swell Filter"}, {2, "Heave Sensor"}, {0, nullptr}};
constexpr ListEntry kDualChannel[] = {
    {0, "Subbottom (Single Channel)"}, {1, "Side Scan (2 Adjacent Channels)"}, {0, nullptr}};
constexpr ListEntry kMpxOptions[] = {{0, "All Data"}, {32, "No Data"}, {33, "MPX2-0"},
                                     {34, "MPX2-1"},  {49, "MPX3-0"},  {50, "MPX3-1"},
                                     {52, "MPX3-2"},  {65, "MPX4-0"},  {0, nullptr}};

// Direct path limits and the reflection values have no range of their own; these only keep a
// typing slip from becoming a number no trace could use.
constexpr float kAnyDepth = 100000.0f;
constexpr float kAnyValue = 1.0e6f;

}  // namespace

SetupDisplay::SetupDisplay(SheetContext& context, DisplayProcessingSet& displays,
                           WaterfallDocSet& documents, int display, QWidget* parent)
    : DisplayRecordPage(context, QString("%1 D%2").arg(kTitle).arg(display), displays, display,
                        parent),
      documents_(documents) {
    auto* form = new QFormLayout(this);
    heaveTimeConst_ = AddField(form, "Swell Filter Pings:", "HeaveTimeConst");
    heaveSource_ = AddList(form, "Heave Compensator", "HeaveSource");
    palInvert_ = AddCheck(form, "Invert", "PalInvert");
    pal_ = new QLineEdit(this);
    pal_->setObjectName("Pal");
    pal_->setMaxLength(static_cast<int>(DisplayProcessingConfig::kPalChars));
    WatchEdit(pal_);
    auto* palRow = new QWidget(this);
    auto* palBox = new QHBoxLayout(palRow);
    palBox->setContentsMargins(0, 0, 0, 0);
    palBox->addWidget(pal_, 1);
    auto* browse = new QPushButton("...", palRow);
    browse->setObjectName("PalBrowse");
    connect(browse, &QPushButton::clicked, this, [this] { ChoosePalette(); });
    palBox->addWidget(browse);
    form->addRow("Display Palette", palRow);
    medianFilter_ = AddField(form, "Median Filter Samples (0 to Disable)", "MedianFilter");
    dcFilter_ = AddField(form, "High Pass Filter Samples (0 to Disable)", "DCFilter");
    clampAtZero_ =
        AddCheck(form, "Clamp Negative Values to Zero if Checked, else use their Absolute Value",
                 "ClampAtZero");
    traceZoomFactor_ =
        AddField(form, "Trace Repeat Factor used to Magnify Display", "TraceZoomFactor");
    ssGain_ = AddField(form, "Starboard Xtra Gain DB:", "SSGain");
    eventMarkWidth_ = AddField(form, "Event Mark Indicator Width in Pixels:", "EventMarkWidth");
    mpxOptions_ = AddList(form, "MPX Option", "MPXOptions");
    dualChannel_ = AddList(form, "Channel Setup", "DualChannel");
    zoomAverage_ = AddList(form, "Display Subsample Method:", "ZoomAverage");
    directPath0_ = AddField(form, "From:", "DirectPath0");
    directPathn_ = AddField(form, "To:", "DirectPathn");
    directPathTraces_ = AddField(form, "Trace Avg Samples", "DirectPathTraces");
    directPathFreeze_ = AddCheck(form, "Hold Current Value", "DirectPathFreeze");
    directPathEnable_ = AddCheck(form, "Enable", "DirectPathEnable");
    reflectionGain_ = AddField(form, "Reflection Coef Cal DB Gain:", "ReflectionCoefDBGain");
    rcTimeConst_ = AddField(form, "Time Const in Pings:", "RCTimeConst");
    cacheSize_ = AddField(form, "Dispaly Cache Size in Traces:", "CacheSize");
}

QLineEdit* SetupDisplay::AddField(QFormLayout* form, const char* label, const char* name) {
    auto* edit = new QLineEdit(this);
    edit->setObjectName(name);
    WatchEdit(edit);
    form->addRow(label, edit);
    return edit;
}

QComboBox* SetupDisplay::AddList(QFormLayout* form, const char* label, const char* name) {
    auto* combo = new QComboBox(this);
    combo->setObjectName(name);
    WatchCombo(combo);
    form->addRow(label, combo);
    return combo;
}

QCheckBox* SetupDisplay::AddCheck(QFormLayout* form, const char* text, const char* name) {
    auto* check = new QCheckBox(text, this);
    check->setObjectName(name);
    WatchButton(check);
    form->addRow("", check);
    return check;
}

QLineEdit* SetupDisplay::Field(const char* name) const {
    return findChild<QLineEdit*>(QString::fromLatin1(name));
}
QComboBox* SetupDisplay::List(const char* name) const {
    return findChild<QComboBox*>(QString::fromLatin1(name));
}
QCheckBox* SetupDisplay::Check(const char* name) const {
    return findChild<QCheckBox*>(QString::fromLatin1(name));
}

int SetupDisplay::GetChangeCount() {
    return DisplayRecordPage::GetChangeCount() + documents_.Revision(Display());
}

void SetupDisplay::Bind(FieldEditor& ed, int dir, DisplayProcessingConfig& r) {
    ed.Int(dir, heaveTimeConst_, r.HeaveTimeConst, 0, 400);
    ed.Check(dir, palInvert_, r.PalInvert);
    ed.Text(dir, pal_, r.Pal, DisplayProcessingConfig::kPalChars);
    ed.Int(dir, medianFilter_, r.MedianFilter, 0, 127);
    ed.Int(dir, dcFilter_, r.DCFilter, 0, 255);
    ed.Check(dir, clampAtZero_, r.ClampAtZero);
    ed.Int(dir, traceZoomFactor_, r.TraceZoomFactor, 1, 10);
    ed.Int(dir, ssGain_, r.SSGain, 0, 100);
    ed.Int(dir, eventMarkWidth_, r.EventMarkWidth, 0, 1000);
    ed.List(dir, mpxOptions_, r.MPXOptions, kMpxOptions);
    ed.List(dir, dualChannel_, r.DualChannel, kDualChannel);
    ed.List(dir, zoomAverage_, r.ZoomAverage, kZoomAverage);
    ed.List(dir, heaveSource_, r.HeaveSource, kHeaveSource);
    ed.Float(dir, directPath0_, r.DirectPath0, -kAnyDepth, kAnyDepth, 2);
    ed.Float(dir, directPathn_, r.DirectPathn, -kAnyDepth, kAnyDepth, 2);
    ed.Int(dir, directPathTraces_, r.DirectPathTraces, 0, 10000);
    ed.Check(dir, directPathFreeze_, r.DirectPathFreeze);
    ed.Check(dir, directPathEnable_, r.DirectPathEnable);
    ed.Float(dir, reflectionGain_, r.ReflectionCoefDBGain, -kAnyValue, kAnyValue, 2);
    ed.Float(dir, rcTimeConst_, r.RCTimeConst, -kAnyValue, kAnyValue, 2);
}

int SetupDisplay::BindOutside(int dir) {
    std::int32_t lines = documents_.CacheSize(Display());
    FieldEditor ed;
    const int result = ed.Int(dir, cacheSize_, lines, 0, SonarDataCacheSet::kMaxCapacity);
    // Shown held, or typed: either way the set takes the number.
    if (result > 0) documents_.SetCacheSize(Display(), lines);
    return ed.Changes();
}

void SetupDisplay::ChoosePalette() {
    std::optional<std::string> file;
    if (chooser_) {
        file = chooser_();
    } else {
        const QString name = QFileDialog::getOpenFileName(this, "Select a Palette File", QString(),
                                                          "Palette File (*.hsp)");
        if (!name.isEmpty()) file = name.toStdString();
    }
    if (!file) return;
    {
        auto record = Displays().Lock(Display());
        record->Pal = file->substr(0, DisplayProcessingConfig::kPalChars);
        record.Bump();
    }
    Exchange(kShow);
}

}  // namespace halvo

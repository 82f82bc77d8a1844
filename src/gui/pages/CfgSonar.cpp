#include "gui/pages/CfgSonar.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <span>
#include <string>

#include "gui/pages/SonarChannelGrid.h"
#include "gui/pages/SonarLists.h"
#include "gui/sheets/OperatorPrompts.h"
#include "sonar/DataFormatWarning.h"
#include "sonar/SonarIF.h"

namespace halvo {

namespace {

constexpr int kTextChars = static_cast<int>(SonarController::kTextBytes) - 1;

QLineEdit* NumberEdit(QWidget* parent, const char* name, int chars = 10) {
    auto* e = new QLineEdit(parent);
    e->setObjectName(name);
    e->setAlignment(Qt::AlignRight);
    e->setMaximumWidth(e->fontMetrics().horizontalAdvance(QString(chars, '0')) + 16);
    return e;
}

// A list filled with its choices from the start, so the page is laid out for its longest text.
QComboBox* ListBox(QWidget* parent, const char* name, std::span<const ListEntry> table = {}) {
    auto* c = new QComboBox(parent);
    c->setObjectName(name);
    c->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    for (const ListEntry& e : table) {
        if (e.text == nullptr || e.text[0] == '\0') break;
        c->addItem(QString::fromUtf8(e.text), e.value);
    }
    return c;
}

QCheckBox* CheckBox(QWidget* parent, const char* name, const QString& text) {
    auto* c = new QCheckBox(text, parent);
    c->setObjectName(name);
    return c;
}

// One line of a group: label, then the field with its unit right beside it (may be empty).
QLabel* AddRow(QGridLayout* grid, const QString& label, QWidget* field, const QString& unit = {}) {
    const int row = grid->rowCount();
    auto* l = new QLabel(label);
    l->setBuddy(field);
    grid->addWidget(l, row, 0, Qt::AlignRight);
    auto* h = new QHBoxLayout;
    h->setSpacing(6);
    h->addWidget(field);
    auto* u = new QLabel(unit);
    h->addWidget(u);
    h->addStretch(1);
    grid->addLayout(h, row, 1);
    return u;
}

}  // namespace

CfgSonar::CfgSonar(SheetContext& context, QString caption, SonarIF& sonar, int index,
                   QWidget* parent)
    : SettingsPage(context, std::move(caption),
                   {[&sonar, index] { return sonar.GetSonar(index); },
                    [&sonar, index](const SonarConfig& c) { sonar.SetSonar(c, index); },
                    [&sonar] { return sonar.GetChangeCount(); }},
                   parent),
      sonar_(sonar),
      index_(SonarController::ClampIndex(index)) {
    Build();
}

QVBoxLayout* CfgSonar::Column(int column) const {
    return columns_[column < 0 ? 0 : (column > 2 ? 2 : column)];
}

QGridLayout* CfgSonar::AddGroup(int column, const QString& title) {
    auto* box = new QGroupBox(title, this);
    auto* grid = new QGridLayout(box);
    grid->setColumnStretch(1, 1);
    grid->setVerticalSpacing(4);
    Column(column)->insertWidget(Column(column)->count() - 1, box);
    return grid;
}

void CfgSonar::SetWindowNote(const QString& text) {
    windowNote_->setText(text);
    windowNote_->setVisible(!text.isEmpty());
}

void CfgSonar::Build() {
    auto* top = new QHBoxLayout(this);
    top->setSpacing(10);
    for (auto*& c : columns_) {
        c = new QVBoxLayout;
        c->addStretch(1);
        top->addLayout(c);
    }
    top->setStretch(2, 1);

    QGridLayout* g = AddGroup(0, "Subsystem");
    subsystem_ = ListBox(this, "SubSystem", sonarlists::kSubsystems);
    AddRow(g, "Subsystem:", subsystem_);
    inUse_ = CheckBox(this, "Flags", "Subsystem In Use");
    g->addWidget(inUse_, g->rowCount(), 1);
    transducers_ = NumberEdit(this, "Transducers", 4);
    AddRow(g, "Transducers:", transducers_, "0 to 16");
    inputChannels_ = NumberEdit(this, "InputChannels", 4);
    AddRow(g, "Input Channels:", inputChannels_, "0 to 16");
    channelOffset_ = NumberEdit(this, "SubsystemChannelOffset", 4);
    AddRow(g, "First Display Channel:", channelOffset_);
    specialOptions_ = ListBox(this, "SpecialOptions", sonarlists::kSpecialOptions);
    AddRow(g, "Input Multiplexer:", specialOptions_);
    subsystemValue_ = new QLabel(this);
    subsystemValue_->setObjectName("SubsystemValue");
    AddRow(g, "Sonar Reports:", subsystemValue_);
    rates_ = new QLabel(this);
    rates_->setObjectName("Rates");
    g->addWidget(rates_, g->rowCount(), 0, 1, 2);

    g = AddGroup(0, "Transmit");
    sonarOn_ = CheckBox(this, "SonarOn", "Sonar On (transmit)");
    g->addWidget(sonarOn_, g->rowCount(), 1);
    pingRate_ = NumberEdit(this, "PingRate");
    rangeOrRate_ = ListBox(this, "RangeOrRate", sonarlists::kRangeOrRate);
    {
        auto* rate = new QWidget(this);
        auto* h = new QHBoxLayout(rate);
        h->setContentsMargins(0, 0, 0, 0);
        h->addWidget(pingRate_);
        h->addWidget(rangeOrRate_);
        AddRow(g, "Ping Rate:", rate);
    }
    overallPower_ = NumberEdit(this, "OverallPulsePower", 6);
    AddRow(g, "Overall Power:", overallPower_, "%");
    // The sonar's pulse names to choose from, or a name typed in.
    pulse_ = ListBox(this, "PulseNames");
    pulse_->setEditable(true);
    pulse_->lineEdit()->setObjectName("Pulse");
    pulse_->setInsertPolicy(QComboBox::NoInsert);
    pulse_->setMinimumContentsLength(16);
    AddRow(g, "Pulse:", pulse_);
    secondPulse_ = new QLineEdit(this);
    secondPulse_->setObjectName("SecondPulseText");
    secondPulse_->setMinimumWidth(160);
    AddRow(g, "Second Pulse:", secondPulse_);
    trigger_ = ListBox(this, "Trigger", sonarlists::kTrigger);
    AddRow(g, "Trigger:", trigger_);
    couplingSystem_ = NumberEdit(this, "CouplingSystem", 4);
    AddRow(g, "Couple To Subsystem:", couplingSystem_);
    couplingDelay_ = NumberEdit(this, "CouplingDelay", 8);
    AddRow(g, "Coupling Delay:", couplingDelay_);
    couplingDecimator_ = NumberEdit(this, "CouplingDecimator", 5);
    AddRow(g, "1/N:", couplingDecimator_);

    g = AddGroup(1, "Data Window");
    windowUnits_ = ListBox(this, "WindowUnits", sonarlists::kWindowUnits);
    AddRow(g, "Window Units:", windowUnits_);
    delay_ = NumberEdit(this, "ADCDelay");
    units_[0] = AddRow(g, "Delay:", delay_);
    depth_ = NumberEdit(this, "ADCDepth");
    units_[1] = AddRow(g, "Depth:", depth_);
    frameDecimator_ = ListBox(this, "ADCFrameDecimator", sonarlists::kFrameDecimators);
    AddRow(g, "Trace / N:", frameDecimator_);
    pixelDecimator_ = ListBox(this, "ADCPixelDecimator", sonarlists::kPixelDecimators);
    AddRow(g, "Pixel / N:", pixelDecimator_);
    dataType_ = ListBox(this, "DataType", sonarlists::kDataType);
    AddRow(g, "Data Type:", dataType_);
    windowNote_ = new QLabel(this);
    windowNote_->setWordWrap(true);
    windowNote_->setVisible(false);
    g->addWidget(windowNote_, g->rowCount(), 0, 1, 2);

    g = AddGroup(1, "Storage In Sonar");
    enableStorage_ = CheckBox(this, "EnableStorage", "Store In Sonar");
    g->addWidget(enableStorage_, g->rowCount(), 1);
    storageDelay_ = NumberEdit(this, "ADCStorageDelay");
    units_[2] = AddRow(g, "Storage Delay:", storageDelay_);
    storageDepth_ = NumberEdit(this, "ADCStorageDepth");
    units_[3] = AddRow(g, "Storage Depth:", storageDepth_);

    auto* box = new QGroupBox("Channels", this);
    auto* v = new QVBoxLayout(box);
    auto* scroll = new QScrollArea(box);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->viewport()->setAutoFillBackground(false);
    channels_ = new SonarChannelGrid;
    channels_->setAutoFillBackground(false);
    scroll->setWidget(channels_);
    v->addWidget(scroll);
    Column(2)->insertWidget(0, box, 1);

    for (QLineEdit* e : {transducers_, inputChannels_, channelOffset_, pingRate_, overallPower_,
                         pulse_->lineEdit(), secondPulse_, couplingSystem_, couplingDelay_,
                         couplingDecimator_, delay_, depth_, storageDelay_, storageDepth_}) {
        WatchEdit(e);
    }
    for (QComboBox* c : {subsystem_, specialOptions_, rangeOrRate_, pulse_, trigger_, windowUnits_,
                         frameDecimator_, pixelDecimator_, dataType_}) {
        WatchCombo(c);
    }
    for (QCheckBox* c : {inUse_, sonarOn_, enableStorage_}) WatchButton(c);
    for (QLineEdit* e : channels_->Edits()) WatchEdit(e);
    for (QAbstractButton* b : channels_->Buttons()) WatchButton(b);
}

void CfgSonar::Bind(FieldEditor& ed, int dir, SonarConfig& c) {
    using namespace sonarlists;
    ed.List(dir, subsystem_, c.subsystem, kSubsystems);
    std::int32_t inUse = c.InUse() ? 1 : 0;
    if (ed.Check(dir, inUse_, inUse) != 0 && dir == kRead) {
        c.flags =
            inUse != 0 ? (c.flags | SonarConfig::kFlagInUse) : (c.flags & ~SonarConfig::kFlagInUse);
    }
    ed.Int(dir, transducers_, c.transducers, 0, SonarConfig::kMaxChannels);
    ed.Int(dir, inputChannels_, c.inputChannels, 0, SonarConfig::kMaxChannels);
    ed.Int(dir, channelOffset_, c.channelOffset, 0, kMaxDisplayChannel);
    ed.List(dir, specialOptions_, c.specialOptions, kSpecialOptions);

    ed.Check(dir, sonarOn_, c.sonarOn);
    ed.List(dir, rangeOrRate_, c.rangeOrRate, kRangeOrRate);
    // The same field is a rate or a range, each with its own sensible span.
    if (c.rangeOrRate == SonarConfig::RangeMeters) {
        ed.Float(dir, pingRate_, c.pingRate, kMinRangeMeters, kMaxRangeMeters, 2);
    } else {
        ed.Float(dir, pingRate_, c.pingRate, kMinRateHz, kMaxRateHz, 2);
    }
    ed.Float(dir, overallPower_, c.overallPower, 0.0f, SonarChannelGrid::kMaxPower, 1);
    ed.Text(dir, pulse_->lineEdit(), c.pulse, kTextChars);
    ed.Text(dir, secondPulse_, c.secondPulseText, kTextChars);
    ed.List(dir, trigger_, c.trigger, kTrigger);
    ed.Int(dir, couplingSystem_, c.couplingSystem, 0, kMaxSubsystemNumber);
    ed.Int(dir, couplingDelay_, c.couplingDelay, 0, kMaxCouplingDelay);
    ed.Int(dir, couplingDecimator_, c.couplingDecimator, 1, kMaxCouplingDecimator);

    ed.List(dir, windowUnits_, c.windowUnits, kWindowUnits);
    ed.Float(dir, delay_, c.delay, 0.0f, kMaxWindow, 2);
    ed.Float(dir, depth_, c.depth, 0.0f, kMaxWindow, 2);
    ed.List(dir, frameDecimator_, c.frameDecimator, kFrameDecimators);
    ed.List(dir, pixelDecimator_, c.pixelDecimator, kPixelDecimators);
    const std::int32_t format = c.dataType;
    if (ed.List(dir, dataType_, c.dataType, kDataType) != 0 && dir == kRead) {
        formatChange_ = FormatChange{format, c.dataType};
    }

    ed.Check(dir, enableStorage_, c.enableStorage);
    ed.Float(dir, storageDelay_, c.storageDelay, 0.0f, kMaxWindow, 2);
    ed.Float(dir, storageDepth_, c.storageDepth, 0.0f, kMaxWindow, 2);

    channels_->Bind(ed, dir, c);
    if (dir == kShow) {
        ShowUnits(c);
        subsystemValue_->setText(QString("Subsystem Value %1").arg(c.subsystemValue));
    }
}

void CfgSonar::ShowUnits(const SonarConfig& c) {
    const char* unit = sonarlists::TextOf(sonarlists::kWindowUnits, c.windowUnits);
    const QString text = unit != nullptr ? QString(unit) : QString();
    for (QLabel* u : units_) u->setText(text);
}

int CfgSonar::DoIO(int direction) {
    formatChange_.reset();
    const int changes = SettingsPage::DoIO(direction);
    if (formatChange_) {
        const FormatChange f = *formatChange_;
        formatChange_.reset();
        // Nothing is refused; the operator is told once per run what the change costs.
        if (sonar_.FormatWarning().OnOperatorChange(sonar_.ConfigType(), f.from, f.to)) {
            Context().prompts.Notify(DataFormatWarning::kTitle, DataFormatWarning::kText);
        }
    }
    return changes;
}

void CfgSonar::OnTick() {
    const int replies = sonar_.GetReplyCount();
    if (replies != replyCount_) {
        replyCount_ = replies;
        rates_->setText(QString::fromStdString(sonar_.RateText(index_)));
    }
    RefreshPulseNames();
}

void CfgSonar::RefreshPulseNames() {
    const int version = sonar_.GetPulseBlockVersion(index_);
    if (version == pulseVersion_) return;
    pulseVersion_ = version;
    const std::vector<std::string> names = sonar_.GetPulseNames(index_);
    // The list is what the sonar offers; the text is the pulse in use and stays as it is.
    const QString inUse = pulse_->lineEdit()->text();
    const QSignalBlocker block(pulse_);
    pulse_->clear();
    for (const std::string& n : names) pulse_->addItem(QString::fromStdString(n));
    pulse_->lineEdit()->setText(inUse);
}

void CfgSonar::SetupRawDataCollection() {
    SonarConfig c = sonar_.GetSonar(index_);
    const std::int32_t format = c.dataType;
    c.dataType = SonarConfig::DataRaw;
    c.trigger = SonarConfig::TriggerInternal;
    c.rangeOrRate = SonarConfig::RateHz;
    c.pingRate = 1.0f;
    c.windowUnits = SonarConfig::UnitsMilliseconds;
    c.delay = 0.0f;
    c.depth = 100.0f;
    c.sonarOn = 1;
    sonar_.SetSonar(c, index_);
    if (sonar_.FormatWarning().OnOperatorChange(sonar_.ConfigType(), format, c.dataType)) {
        Context().prompts.Notify(DataFormatWarning::kTitle, DataFormatWarning::kText);
    }
    Exchange(kShow);
}

int CfgSonar::FirstDisplayChannel() const {
    return sonar_.GetSonar(index_).channelOffset;
}

}  // namespace halvo

#include "gui/pages/CfgDevices.h"

#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>
#include <array>
#include <utility>

#include "app/GeneralSettings.h"
#include "gui/pages/DeviceReadings.h"
#include "status/StatusDataProcessor.h"

namespace halvo {

namespace {

QLineEdit* NumberEdit(QWidget* parent, int width) {
    auto* e = new QLineEdit(parent);
    e->setAlignment(Qt::AlignRight);
    e->setFixedWidth(width);
    return e;
}

QLabel* Reading(QWidget* parent) {
    auto* l = new QLabel(parent);
    l->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    l->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return l;
}

void SetIfDifferent(QLabel* label, const std::string& text) {
    const QString t = QString::fromStdString(text);
    if (label->text() != t) label->setText(t);
}

}  // namespace

CfgDevices::CfgDevices(SheetContext& context, GeneralSettings& general, StatusDataProcessor& status,
                       QWidget* parent)
    : SettingsPage(context, "Devices",
                   {[&general] { return general.Snapshot(); },
                    [&general](const GeneralValues& v) {
                        // Only this page's keys go back, so a change made meanwhile elsewhere
                        // in the section survives.
                        general.Modify([&v](GeneralValues& w) {
                            w.TemperatureChannel = v.TemperatureChannel;
                            w.TemperatureGain = v.TemperatureGain;
                            w.TemperatureOffset = v.TemperatureOffset;
                            w.BottleTemperatureChannel = v.BottleTemperatureChannel;
                            w.BottleTemperatureGain = v.BottleTemperatureGain;
                            w.BottleTemperatureOffset = v.BottleTemperatureOffset;
                            w.PressureGain = v.PressureGain;
                            w.PressureOffset = v.PressureOffset;
                            w.PressureMountingOffsetMeters = v.PressureMountingOffsetMeters;
                        });
                    },
                    [&general] { return general.ChangeCount(); }},
                   parent),
      status_(status) {
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(MakeReadings());
    layout->addWidget(MakeScaling());
    layout->addStretch(1);
}

QWidget* CfgDevices::MakeReadings() {
    auto* box = new QGroupBox("Readings", this);
    auto* grid = new QGridLayout(box);
    analog_ = Reading(box);
    sensors_ = Reading(box);
    bottle_ = Reading(box);
    grid->addWidget(new QLabel("Analog 0-7", box), 0, 0);
    grid->setHorizontalSpacing(16);
    grid->addWidget(analog_, 0, 1);
    grid->addWidget(new QLabel("Sensors", box), 1, 0);
    grid->addWidget(sensors_, 1, 1);
    grid->addWidget(new QLabel("Bottle", box), 2, 0);
    grid->addWidget(bottle_, 2, 1);
    grid->setColumnStretch(1, 1);
    return box;
}

QWidget* CfgDevices::MakeScaling() {
    auto* box = new QGroupBox("Analog Scaling", this);
    auto* grid = new QGridLayout(box);
    grid->addWidget(new QLabel("Channel", box), 0, 1);
    grid->addWidget(new QLabel("Gain", box), 0, 2);
    grid->addWidget(new QLabel("Offset", box), 0, 4);

    tempChannel_ = NumberEdit(box, 40);
    tempGain_ = NumberEdit(box, 100);
    tempOffset_ = NumberEdit(box, 100);
    grid->addWidget(new QLabel("Water Temperature", box), 1, 0);
    grid->addWidget(tempChannel_, 1, 1);
    grid->addWidget(tempGain_, 1, 2);
    grid->addWidget(new QLabel("C/count", box), 1, 3);
    grid->addWidget(tempOffset_, 1, 4);
    grid->addWidget(new QLabel("C", box), 1, 5);

    bottleChannel_ = NumberEdit(box, 40);
    bottleGain_ = NumberEdit(box, 100);
    bottleOffset_ = NumberEdit(box, 100);
    grid->addWidget(new QLabel("Bottle Temperature", box), 2, 0);
    grid->addWidget(bottleChannel_, 2, 1);
    grid->addWidget(bottleGain_, 2, 2);
    grid->addWidget(new QLabel("C/count", box), 2, 3);
    grid->addWidget(bottleOffset_, 2, 4);
    grid->addWidget(new QLabel("C", box), 2, 5);

    pressureGain_ = NumberEdit(box, 100);
    pressureOffset_ = NumberEdit(box, 100);
    grid->addWidget(new QLabel("Pressure", box), 3, 0);
    grid->addWidget(pressureGain_, 3, 2);
    grid->addWidget(pressureOffset_, 3, 4);
    grid->addWidget(new QLabel("PSI", box), 3, 5);

    mounting_ = NumberEdit(box, 100);
    grid->addWidget(new QLabel("Pressure Mounting Offset", box), 4, 0);
    grid->addWidget(mounting_, 4, 4);
    grid->addWidget(new QLabel("m", box), 4, 5);

    auto* note = new QLabel("Channel -1 reads no channel.", box);
    grid->addWidget(note, 5, 0, 1, 6);
    grid->setColumnStretch(6, 1);
    const std::array<std::pair<QLineEdit*, const char*>, 9> keys = {{
        {tempChannel_, "TemperatureChannel"},
        {tempGain_, "TemperatureGain"},
        {tempOffset_, "TemperatureOffset"},
        {bottleChannel_, "BottleTemperatureChannel"},
        {bottleGain_, "BottleTemperatureGain"},
        {bottleOffset_, "BottleTemperatureOffset"},
        {pressureGain_, "PressureGain"},
        {pressureOffset_, "PressureOffset"},
        {mounting_, "PressureMountingOffsetMeters"},
    }};
    for (const auto& [edit, key] : keys) edit->setObjectName(key);
    for (QLineEdit* e : {tempChannel_, tempGain_, tempOffset_, bottleChannel_, bottleGain_,
                         bottleOffset_, pressureGain_, pressureOffset_, mounting_}) {
        WatchEdit(e);
    }
    return box;
}

void CfgDevices::Bind(FieldEditor& ed, int dir, GeneralValues& v) {
    ed.Int(dir, tempChannel_, v.TemperatureChannel, kMinChannel, kMaxChannel);
    ed.Float(dir, tempGain_, v.TemperatureGain, -kGainLimit, kGainLimit, 7);
    ed.Float(dir, tempOffset_, v.TemperatureOffset, -kTemperatureOffsetLimit,
             kTemperatureOffsetLimit, 6);
    ed.Int(dir, bottleChannel_, v.BottleTemperatureChannel, kMinChannel, kMaxChannel);
    ed.Float(dir, bottleGain_, v.BottleTemperatureGain, -kGainLimit, kGainLimit, 7);
    ed.Float(dir, bottleOffset_, v.BottleTemperatureOffset, -kTemperatureOffsetLimit,
             kTemperatureOffsetLimit, 6);
    ed.Float(dir, pressureGain_, v.PressureGain, -kGainLimit, kGainLimit, 5);
    ed.Float(dir, pressureOffset_, v.PressureOffset, -kPressureOffsetLimit, kPressureOffsetLimit,
             3);
    ed.Float(dir, mounting_, v.PressureMountingOffsetMeters, -kMountingLimit, kMountingLimit, 3);
}

QString CfgDevices::AnalogText() const {
    return analog_->text();
}
QString CfgDevices::SensorText() const {
    return sensors_->text();
}
QString CfgDevices::BottleText() const {
    return bottle_->text();
}

void CfgDevices::OnTick() {
    // Reading the digest would start status ahead of its turn; before that there is nothing.
    if (!status_.started()) return;
    const StatusRecord r = status_.getRecord();
    SetIfDifferent(analog_, AnalogLine(r));
    SetIfDifferent(sensors_, SensorLine(r));
    SetIfDifferent(bottle_, BottleLine(r));
}

}  // namespace halvo

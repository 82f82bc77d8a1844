#include "gui/pages/SetupDevices.h"

#include <QComboBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>
#include <array>
#include <cstdio>

#include "app/GeneralSettings.h"
#include "gui/pages/DeviceReadings.h"
#include "status/StatusDataProcessor.h"

namespace halvo {

namespace {

constexpr std::array<ListEntry, 3> kHeaveSources = {{
    {0, "Attitude Sensor"},
    {1, "Pressure Depth"},
    {0, nullptr},
}};

constexpr std::array<ListEntry, 3> kSpeedSources = {{
    {0, "Fixed Value"},
    {1, "Sound Velocity Sensor"},
    {0, nullptr},
}};

QLineEdit* NumberEdit(QWidget* parent, int width) {
    auto* e = new QLineEdit(parent);
    e->setAlignment(Qt::AlignRight);
    e->setFixedWidth(width);
    return e;
}

}  // namespace

SetupDevices::SetupDevices(SheetContext& context, GeneralSettings& general,
                           StatusDataProcessor& status, QWidget* parent)
    : SettingsPage(context, "Devices",
                   {[&general] { return general.Snapshot(); },
                    [&general](const GeneralValues& v) {
                        // Only this page's keys go back, so a change made meanwhile elsewhere
                        // in the section survives.
                        general.Modify([&v](GeneralValues& w) {
                            w.PitchBias = v.PitchBias;
                            w.RollBias = v.RollBias;
                            w.HeaveScale = v.HeaveScale;
                            w.HeaveSensorSource = v.HeaveSensorSource;
                            w.SoundSpeedSource = v.SoundSpeedSource;
                            w.WaterSoundSpeed = v.WaterSoundSpeed;
                        });
                    },
                    [&general] { return general.ChangeCount(); }},
                   parent),
      status_(status) {
    auto* top = new QHBoxLayout;
    top->addWidget(MakeAttitude(), 1);
    top->addWidget(MakeSoundSpeed(), 1);
    auto* layout = new QVBoxLayout(this);
    // Wide enough for the sensor line, which arrives after the sheet is laid out.
    setMinimumWidth(620);
    layout->addLayout(top);
    layout->addWidget(MakeReadings());
    layout->addStretch(1);
}

QWidget* SetupDevices::MakeAttitude() {
    auto* box = new QGroupBox("Attitude and Heave", this);
    auto* grid = new QGridLayout(box);
    pitchBias_ = NumberEdit(box, 80);
    rollBias_ = NumberEdit(box, 80);
    heaveScale_ = NumberEdit(box, 80);
    heaveSource_ = new QComboBox(box);
    heaveSource_->setMinimumContentsLength(16);
    grid->addWidget(new QLabel("Pitch Bias", box), 0, 0);
    grid->addWidget(pitchBias_, 0, 1);
    grid->addWidget(new QLabel("deg", box), 0, 2);
    grid->addWidget(new QLabel("Roll Bias", box), 1, 0);
    grid->addWidget(rollBias_, 1, 1);
    grid->addWidget(new QLabel("deg", box), 1, 2);
    grid->addWidget(new QLabel("Heave Source", box), 2, 0);
    grid->addWidget(heaveSource_, 2, 1, 1, 2);
    grid->addWidget(new QLabel("Heave Scale", box), 3, 0);
    grid->addWidget(heaveScale_, 3, 1);
    grid->addWidget(new QLabel("x", box), 3, 2);
    grid->setColumnStretch(3, 1);
    pitchBias_->setObjectName("PitchBias");
    rollBias_->setObjectName("RollBias");
    heaveScale_->setObjectName("HeaveScale");
    heaveSource_->setObjectName("HeaveSensorSource");
    WatchEdit(pitchBias_);
    WatchEdit(rollBias_);
    WatchEdit(heaveScale_);
    WatchCombo(heaveSource_);
    return box;
}

QWidget* SetupDevices::MakeSoundSpeed() {
    auto* box = new QGroupBox("Speed of Sound", this);
    auto* grid = new QGridLayout(box);
    speedSource_ = new QComboBox(box);
    speedSource_->setMinimumContentsLength(22);
    soundSpeed_ = NumberEdit(box, 80);
    grid->addWidget(new QLabel("Source", box), 0, 0);
    grid->addWidget(speedSource_, 0, 1, 1, 2);
    grid->addWidget(new QLabel("Water", box), 1, 0);
    grid->addWidget(soundSpeed_, 1, 1);
    grid->addWidget(new QLabel("m/s", box), 1, 2);
    grid->setColumnStretch(3, 1);
    grid->setRowStretch(2, 1);
    speedSource_->setObjectName("SoundSpeedSource");
    soundSpeed_->setObjectName("WaterSoundSpeed");
    WatchCombo(speedSource_);
    WatchEdit(soundSpeed_);
    return box;
}

QWidget* SetupDevices::MakeReadings() {
    auto* box = new QGroupBox("Readings", this);
    auto* layout = new QVBoxLayout(box);
    readings_ = new QLabel(box);
    readings_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    readings_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // Room for every line from the start, so the sheet is laid out for them.
    readings_->setText(QString("No readings yet") + QString("\n").repeated(6));
    layout->addWidget(readings_);
    return box;
}

void SetupDevices::Bind(FieldEditor& ed, int dir, GeneralValues& v) {
    ed.Float(dir, pitchBias_, v.PitchBias, -kBiasLimit, kBiasLimit, 2);
    ed.Float(dir, rollBias_, v.RollBias, -kBiasLimit, kBiasLimit, 2);
    ed.List(dir, heaveSource_, v.HeaveSensorSource, kHeaveSources);
    ed.Float(dir, heaveScale_, v.HeaveScale, -kHeaveScaleLimit, kHeaveScaleLimit, 3);
    ed.List(dir, speedSource_, v.SoundSpeedSource, kSpeedSources);
    ed.Int(dir, soundSpeed_, v.WaterSoundSpeed, kMinSoundSpeed, kMaxSoundSpeed);
}

QString SetupDevices::ReadingsText() const {
    return readings_->text();
}

void SetupDevices::OnTick() {
    // Reading the digest would start status ahead of its turn; before that there is nothing.
    if (!status_.started()) return;
    const StatusRecord r = status_.getRecord();
    char speed[64];
    std::snprintf(speed, sizeof speed, "Sound speed  %d m/s   CTD messages %d", r.soundSpeed,
                  r.ctdCount);
    const QString text =
        QStringList{
            QString::fromStdString("Attitude     " + (r.attitude.empty() ? "-" : r.attitude)),
            QString::fromStdString("Position     " + (r.position.empty() ? "-" : r.position)),
            QString::fromStdString("Time         " + (r.time.empty() ? "-" : r.time)),
            QString::fromStdString("Speed        " + (r.speed.empty() ? "-" : r.speed)),
            QString::fromStdString("Sensors      " + SensorLine(r)),
            QString::fromStdString("Bottle       " + BottleLine(r)),
            QString::fromLatin1(speed),
        }
            .join('\n');
    if (readings_->text() != text) readings_->setText(text);
}

}  // namespace halvo

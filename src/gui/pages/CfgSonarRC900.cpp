#include "gui/pages/CfgSonarRC900.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "sonar/SonarIF.h"

namespace halvo {

namespace {

void FlagBit(FieldEditor& ed, int dir, QCheckBox* box, std::int32_t& flags, std::int32_t bit) {
    std::int32_t on = (flags & bit) != 0 ? 1 : 0;
    if (ed.Check(dir, box, on) != 0 && dir == FieldEditor::kRead) {
        flags = on != 0 ? (flags | bit) : (flags & ~bit);
    }
}

QCheckBox* CheckBox(QWidget* parent, const char* name, const QString& text) {
    auto* c = new QCheckBox(text, parent);
    c->setObjectName(name);
    return c;
}

SonarSideRecords Read(const SonarIF& sonar) {
    return {sonar.GetSensor(), sonar.GetRecorder()};
}

// Only the record that changed is written. A new pitch and roll channel is also selected in the
// sonar: the select word goes up, which is what makes the controller send it.
void Write(SonarIF& sonar, const SonarSideRecords& r) {
    const SonarSideRecords now = Read(sonar);
    if (!(r.sensor == now.sensor)) {
        SensorConfig s = r.sensor;
        if (s.pitchRollChannel != now.sensor.pitchRollChannel) s.pitchRollSelect += 1;
        sonar.SetSensor(s);
    }
    if (!(r.recorder == now.recorder)) sonar.SetRecorder(r.recorder);
}

}  // namespace

CfgSonarRC900::CfgSonarRC900(SheetContext& context, SonarIF& sonar, QWidget* parent)
    : SettingsPage(context, "RC900",
                   {[&sonar] { return Read(sonar); },
                    [&sonar](const SonarSideRecords& r) { Write(sonar, r); },
                    [&sonar] { return sonar.GetChangeCount(); }},
                   parent),
      sonar_(sonar) {
    auto* top = new QHBoxLayout(this);

    auto* recBox = new QGroupBox("Recorder In Sonar", this);
    auto* g = new QGridLayout(recBox);
    recordFile_ = new QLineEdit(this);
    recordFile_->setObjectName("RecordFile");
    recordFile_->setMinimumWidth(recordFile_->fontMetrics().horizontalAdvance(QString(30, 'M')));
    masterEnable_ = CheckBox(this, "MasterEnable", "Record In Sonar");
    playbackEnable_ = CheckBox(this, "PlaybackEnable", "Playback In Sonar");
    recorderOn_ = CheckBox(this, "RecorderFlag", "Sonar Has A Recorder");
    firstConnection_ =
        CheckBox(this, "FirstConnectionFlag", "Send All Settings At The First Check");
    // The recorder's own switch first: the file and master enable wait for it.
    g->addWidget(recorderOn_, 0, 1);
    g->addWidget(new QLabel("Record File:"), 1, 0, Qt::AlignRight);
    g->addWidget(recordFile_, 1, 1);
    int row = 2;
    for (QCheckBox* c : {masterEnable_, playbackEnable_, firstConnection_}) {
        g->addWidget(c, row++, 1);
    }
    recorderStatus_ = new QLabel(this);
    recorderStatus_->setObjectName("RecorderStatus");
    g->addWidget(recorderStatus_, row, 0, 1, 2);

    auto* sensBox = new QGroupBox("Sensors In Sonar", this);
    auto* s = new QGridLayout(sensBox);
    pitchRollChannel_ = new QLineEdit(this);
    pitchRollChannel_->setObjectName("PitchRollChannel");
    pitchRollChannel_->setAlignment(Qt::AlignRight);
    pitchRollChannel_->setMaximumWidth(60);
    selectPitchRoll_ = new QPushButton("Select Again", this);
    selectPitchRoll_->setObjectName("SelectPitchRoll");
    // Enter in a field of the sheet must apply the field, not press this button.
    selectPitchRoll_->setAutoDefault(false);
    s->addWidget(new QLabel("Pitch Roll Channel:"), 0, 0, Qt::AlignRight);
    s->addWidget(pitchRollChannel_, 0, 1);
    s->addWidget(selectPitchRoll_, 0, 2);
    s->addWidget(new QLabel("-1 selects none"), 1, 1, 1, 2);
    lowRateAnalog_ = CheckBox(this, "EnableLowRateAnalogInputs", "Low Rate Analog Inputs");
    sensorInputs_ = CheckBox(this, "SensorFlags", "Sensor Inputs 0 to 9");
    s->addWidget(lowRateAnalog_, 2, 1, 1, 2);
    s->addWidget(sensorInputs_, 3, 1, 1, 2);

    top->addWidget(recBox, 0, Qt::AlignTop);
    top->addWidget(sensBox, 0, Qt::AlignTop);
    top->addStretch(1);

    for (QLineEdit* e : {recordFile_, pitchRollChannel_}) WatchEdit(e);
    for (QCheckBox* c : {masterEnable_, playbackEnable_, recorderOn_, firstConnection_,
                         lowRateAnalog_, sensorInputs_}) {
        WatchButton(c);
    }
    // The select word is no setting to show: a press raises it, and the controller sends the
    // channel again.
    connect(selectPitchRoll_, &QPushButton::clicked, this, [this] {
        SensorConfig c = sonar_.GetSensor();
        c.pitchRollSelect += 1;
        sonar_.SetSensor(c);
    });
}

void CfgSonarRC900::Bind(FieldEditor& ed, int dir, SonarSideRecords& r) {
    ed.Text(dir, recordFile_, r.recorder.recordFile, RecorderConfig::kRecordFileChars);
    ed.Check(dir, masterEnable_, r.recorder.masterEnable);
    ed.Check(dir, playbackEnable_, r.recorder.playbackEnable);
    FlagBit(ed, dir, recorderOn_, r.recorder.flags, RecorderConfig::kFlagRecorderOn);
    FlagBit(ed, dir, firstConnection_, r.recorder.flags, RecorderConfig::kFlagFirstConnection);
    ed.Int(dir, pitchRollChannel_, r.sensor.pitchRollChannel, -1, kMaxPitchRollChannel);
    ed.Check(dir, lowRateAnalog_, r.sensor.enableLowRateAnalogInputs);
    FlagBit(ed, dir, sensorInputs_, r.sensor.flags, SensorConfig::kFlagSensorInputs);
    if (dir == kShow) {
        const bool on = (r.recorder.flags & RecorderConfig::kFlagRecorderOn) != 0;
        // Without a recorder the file name and master enable are never sent.
        recordFile_->setEnabled(on);
        masterEnable_->setEnabled(on);
        selectPitchRoll_->setEnabled(r.sensor.pitchRollChannel >= 0);
    }
}

void CfgSonarRC900::OnTick() {
    const int replies = sonar_.GetReplyCount();
    if (replies == replyCount_) return;
    replyCount_ = replies;
    const std::size_t n = sonar_.GetRecorderStatus().size();
    recorderStatus_->setText(n == 0 ? QString("No recorder status from the sonar yet")
                                    : QString("Recorder status received (%1 bytes)").arg(n));
}

}  // namespace halvo

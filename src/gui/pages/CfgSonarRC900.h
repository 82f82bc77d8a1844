#pragma once
// The page of what sits in the sonar beside the subsystems: its recorder (file name, master
// enable, playback, flags) and its sensor inputs (pitch and roll channel, low-rate analog
// inputs, the ten sensor inputs). Both records belong to the sonar model; the page shows them
// and writes back only the one the operator changed.

#include <QString>

#include "gui/sheets/SettingsPage.h"
#include "sonar/RecorderConfig.h"
#include "sonar/SensorConfig.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace halvo {

class SonarIF;

struct SonarSideRecords {
    SensorConfig sensor;
    RecorderConfig recorder;
};

class CfgSonarRC900 : public SettingsPage<SonarSideRecords> {
  public:
    static constexpr std::int32_t kMaxPitchRollChannel = 9;  // the sensor inputs 0 to 9

    CfgSonarRC900(SheetContext& context, SonarIF& sonar, QWidget* parent = nullptr);

    // The size of the sonar recorder's last status reply.
    void OnTick() override;

  protected:
    void Bind(FieldEditor& ed, int direction, SonarSideRecords& r) override;

  private:
    SonarIF& sonar_;
    // Recorder
    QLineEdit* recordFile_ = nullptr;
    QCheckBox* masterEnable_ = nullptr;
    QCheckBox* playbackEnable_ = nullptr;
    QCheckBox* recorderOn_ = nullptr;
    QCheckBox* firstConnection_ = nullptr;
    QLabel* recorderStatus_ = nullptr;
    // Sensors
    QLineEdit* pitchRollChannel_ = nullptr;
    QPushButton* selectPitchRoll_ = nullptr;
    QCheckBox* lowRateAnalog_ = nullptr;
    QCheckBox* sensorInputs_ = nullptr;
    bool selectPending_ = false;
    int replyCount_ = -1;
};

}  // namespace halvo

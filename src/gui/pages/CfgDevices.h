#pragma once
// The devices page of the control sheet: the live analog values and sensor line, and the
// scaling of the analog channels that stamping and the alerts use (water and bottle
// temperature, pressure). It edits those keys of General and leaves the rest of the section
// alone.

#include "app/GeneralValues.h"
#include "gui/sheets/SettingsPage.h"

class QLabel;
class QLineEdit;

namespace halvo {

class GeneralSettings;
class StatusDataProcessor;

class CfgDevices : public SettingsPage<GeneralValues> {
  public:
    // Analog channels are 0 to 7; -1 reads none.
    static constexpr std::int32_t kMinChannel = -1;
    static constexpr std::int32_t kMaxChannel = 7;
    static constexpr float kGainLimit = 1000.0f;
    static constexpr float kTemperatureOffsetLimit = 1000.0f;
    static constexpr float kPressureOffsetLimit = 10000.0f;
    static constexpr float kMountingLimit = 100.0f;

    CfgDevices(SheetContext& context, GeneralSettings& general, StatusDataProcessor& status,
               QWidget* parent = nullptr);

    QString AnalogText() const;
    QString SensorText() const;
    QString BottleText() const;

    void OnTick() override;

  protected:
    void Bind(FieldEditor& ed, int dir, GeneralValues& v) override;

  private:
    QWidget* MakeReadings();
    QWidget* MakeScaling();

    StatusDataProcessor& status_;

    QLabel* analog_ = nullptr;
    QLabel* sensors_ = nullptr;
    QLabel* bottle_ = nullptr;
    QLineEdit* tempChannel_ = nullptr;
    QLineEdit* tempGain_ = nullptr;
    QLineEdit* tempOffset_ = nullptr;
    QLineEdit* bottleChannel_ = nullptr;
    QLineEdit* bottleGain_ = nullptr;
    QLineEdit* bottleOffset_ = nullptr;
    QLineEdit* pressureGain_ = nullptr;
    QLineEdit* pressureOffset_ = nullptr;
    QLineEdit* mounting_ = nullptr;
};

}  // namespace halvo

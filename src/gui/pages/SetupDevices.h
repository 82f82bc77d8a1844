#pragma once
// The devices page of the setup sheet: the attitude and sound speed sensors (biases, heave
// scale and source, where the speed of sound comes from) beside what those sensors report now.
// It edits those keys of General and leaves the rest of the section alone.

#include "app/GeneralValues.h"
#include "gui/sheets/SettingsPage.h"

class QComboBox;
class QLabel;
class QLineEdit;

namespace halvo {

class GeneralSettings;
class StatusDataProcessor;

class SetupDevices : public SettingsPage<GeneralValues> {
  public:
    static constexpr float kBiasLimit = 180.0f;
    static constexpr float kHeaveScaleLimit = 100.0f;
    static constexpr std::int32_t kMinSoundSpeed = 1300;
    static constexpr std::int32_t kMaxSoundSpeed = 1700;

    SetupDevices(SheetContext& context, GeneralSettings& general, StatusDataProcessor& status,
                 QWidget* parent = nullptr);

    // The readings as last shown, one per line.
    QString ReadingsText() const;

    void OnTick() override;

  protected:
    void Bind(FieldEditor& ed, int dir, GeneralValues& v) override;

  private:
    QWidget* MakeAttitude();
    QWidget* MakeSoundSpeed();
    QWidget* MakeReadings();

    StatusDataProcessor& status_;

    QLineEdit* pitchBias_ = nullptr;
    QLineEdit* rollBias_ = nullptr;
    QLineEdit* heaveScale_ = nullptr;
    QComboBox* heaveSource_ = nullptr;
    QComboBox* speedSource_ = nullptr;
    QLineEdit* soundSpeed_ = nullptr;
    QLabel* readings_ = nullptr;
};

}  // namespace halvo

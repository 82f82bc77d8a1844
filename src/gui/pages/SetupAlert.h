#pragma once
// The "Alerts" page: which alerts are enabled, their limits, the beep, and the alert text as the
// status processor has it now. The limits stay editable while an alert is off, so an operator
// can set them before switching the alert on.

#include <QString>
#include <functional>
#include <string>

#include "gui/sheets/SettingsPage.h"
#include "status/AlertSettings.h"

class QCheckBox;
class QLabel;
class QLineEdit;

namespace halvo {

class StatusControl;

class SetupAlert : public SettingsPage<AlertSettings> {
  public:
    static constexpr const char* kCaption = "Alerts";
    static constexpr int kBitCount = 13;

    struct Widgets {
        QCheckBox* enables[kBitCount] = {};  // in the order of AlertBitTable()
        QLineEdit* altitudeDisplay = nullptr;
        QLineEdit* altitudeWarning = nullptr;
        QLineEdit* rollMin = nullptr;
        QLineEdit* rollMax = nullptr;
        QLineEdit* pitchMin = nullptr;
        QLineEdit* pitchMax = nullptr;
        QLineEdit* temperatureMax = nullptr;
        QLineEdit* minDiskFree = nullptr;
        QLineEdit* miscMin = nullptr;
        QLineEdit* miscMax = nullptr;
        QLineEdit* miscChan = nullptr;
        QLineEdit* beepInterval = nullptr;
        QLineEdit* beepTone = nullptr;
        QLineEdit* beepDuration = nullptr;
        QLabel* alertText = nullptr;
    };

    // alertText: the status processor's current alert text.
    SetupAlert(SheetContext& context, StatusControl& status, std::function<std::string()> alertText,
               QWidget* parent = nullptr);

    const Widgets& Ui() const { return ui_; }

  protected:
    void Bind(FieldEditor& ed, int direction, AlertSettings& v) override;
    void OnTick() override;

  private:
    void BuildLayout();

    std::function<std::string()> alertText_;
    Widgets ui_;
};

}  // namespace halvo

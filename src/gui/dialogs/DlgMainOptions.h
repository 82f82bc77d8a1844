#pragma once
// The "Options" dialog: the shape of the installation. Every OK stores what the fields say and
// tells the operator that some of it waits for a restart, whether or not anything changed.

#include <QDialog>
#include <array>

#include "gui/dialogs/MainOptions.h"

class QCheckBox;
class QLineEdit;
class QListWidget;
class QTabWidget;

namespace halvo {

class OperatorPrompts;

class DlgMainOptions : public QDialog {
  public:
    DlgMainOptions(OperatorPrompts& prompts, MainOptionsStore& store, QWidget* parent = nullptr);

    // Takes the stored values into the fields.
    void Reset();
    // The main window's update while the dialog is open: sonar tabs follow the number of
    // sonar subsystems typed so far.
    void Serve();
    // The OK button.
    void accept() override;

    const MainOptions& Values() const { return values_; }
    QLineEdit* NumSonarsField() const { return numSonars_; }
    QLineEdit* DisplaysField() const { return displays_; }
    QLineEdit* SonarNameField(int sonar) const;
    QCheckBox* PitchRollBox() const { return pitchRoll_; }
    QListWidget* SummedList(int which) const;
    bool SonarTabEnabled(int sonar) const;

  private:
    struct SonarFields {
        QWidget* tab = nullptr;
        QLineEdit* name = nullptr;
        QLineEdit* subsystem = nullptr;
        QLineEdit* offset = nullptr;
        QLineEdit* transmit = nullptr;
        QLineEdit* receive = nullptr;
        QCheckBox* enable = nullptr;
    };
    QWidget* BuildGeneral();
    QWidget* BuildSonar(SonarFields& f);
    // Fields and values in the direction given; returns the editor's change count.
    int Exchange(int direction);

    OperatorPrompts& prompts_;
    MainOptionsStore& store_;
    MainOptions values_;
    QTabWidget* tabs_ = nullptr;
    QLineEdit* numSonars_ = nullptr;
    QCheckBox* inBottle_ = nullptr;
    QLineEdit* displays_ = nullptr;
    QCheckBox* pitchRoll_ = nullptr;
    std::array<QListWidget*, 2> summed_{};
    std::array<SonarFields, MainOptions::kSonars> sonars_{};
};

}  // namespace halvo

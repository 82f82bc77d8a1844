#pragma once
// The settings page of one display in the "Status And Control" sheet, captioned "D%d": gains,
// TVG, the bottom tracker, depth and zoom, the channel shown, with spin buttons for threshold,
// zoom and TVG start, the "Auto" gain button, and the newest line's ping and weighting factor.

#include <QString>
#include <functional>

#include "gui/sheets/WizardTargets.h"
#include "gui/views/DisplayRecordPage.h"

class QComboBox;
class QDialog;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;

namespace halvo {

class SonarDataCacheElement;
class SetupDisplay;

class CfgDisplay final : public DisplayRecordPage, public WizardDisplayTarget {
  public:
    // The newest line of this display, or null.
    using NewestLine = std::function<const SonarDataCacheElement*()>;
    // Makes the "Display Advanced" page of this display, or null when there is none.
    using AdvancedMaker = std::function<SetupDisplay*(QWidget* parent)>;

    CfgDisplay(SheetContext& context, DisplayProcessingSet& displays, int display,
               NewestLine newest, AdvancedMaker advanced = {}, QWidget* parent = nullptr);

    // Zoom spin steps: whole numbers from 1 up, reciprocals of whole numbers below 1.
    static double ZoomStep(double zoom, bool up);

    // WizardDisplayTarget
    void ShowChannel(int channel) override;

    void OnTick() override;
    // The buttons, as the operator presses them.
    void AutoGain();
    void SpinThreshold(bool up);
    void SpinZoom(bool up);
    void SpinTVGStart(bool up);
    QDialog* OpenAdvanced();

    QLabel* PingLabel() const { return ping_; }
    QLineEdit* Field(const char* name) const;
    QComboBox* ChannelList() const { return channel_; }

  protected:
    void Bind(FieldEditor& ed, int direction, DisplayProcessingConfig& record) override;

  private:
    // Changes the locked record and bumps it, then shows the result.
    void Edit(const std::function<void(DisplayProcessingConfig&)>& change);
    QLineEdit* AddField(QFormLayout* form, const char* label, const char* name);
    QWidget* Spin(QLineEdit* field, std::function<void(bool)> step);

    NewestLine newest_;
    AdvancedMaker advanced_;
    QLineEdit* tvgStart_ = nullptr;
    QLineEdit* tvg_ = nullptr;
    QComboBox* channel_ = nullptr;
    QLineEdit* gain_ = nullptr;
    QLineEdit* refGain_ = nullptr;
    QLineEdit* trackRange_ = nullptr;
    QLineEdit* threshold_ = nullptr;
    QLineEdit* tvgLimit_ = nullptr;
    QLineEdit* holdoff_ = nullptr;
    QLineEdit* maxDepth_ = nullptr;
    QLineEdit* zoom_ = nullptr;
    QLabel* ping_ = nullptr;
    QDialog* advancedDialog_ = nullptr;
    float shownTVGStart_ = 0.0f;
};

}  // namespace halvo

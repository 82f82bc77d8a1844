#pragma once
// The page of one sonar subsystem: what it is, how it pings, its data window, what it stores
// itself, and each channel's gain and power. It holds no settings of its own: it shows the
// sonar model's copy of its record and writes back what the operator changed; the controller
// sends it. Read-backs of the sonar (rates, pulse names, the subsystem value) follow replies.

#include <QString>
#include <optional>

#include "gui/sheets/SettingsPage.h"
#include "gui/sheets/WizardTargets.h"
#include "sonar/SonarConfig.h"

class QCheckBox;
class QComboBox;
class QGridLayout;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QVBoxLayout;

namespace halvo {

class SonarChannelGrid;
class SonarIF;

class CfgSonar : public SettingsPage<SonarConfig>, public WizardSonarTarget {
  public:
    // Ranges of the fields the sonar leaves open; see docs/pages.md.
    static constexpr float kMinRateHz = 0.01f;
    static constexpr float kMaxRateHz = 100.0f;
    static constexpr float kMinRangeMeters = 1.0f;
    static constexpr float kMaxRangeMeters = 10000.0f;
    static constexpr float kMaxWindow = 1000000.0f;
    static constexpr std::int32_t kMaxDisplayChannel = 31;
    static constexpr std::int32_t kMaxCouplingDelay = 1000000;
    static constexpr std::int32_t kMaxCouplingDecimator = 1000;
    static constexpr std::int32_t kMaxSubsystemNumber = 128;

    CfgSonar(SheetContext& context, QString caption, SonarIF& sonar, int index,
             QWidget* parent = nullptr);

    // The exchange, then the once-per-run warning when the operator changed the data format.
    int DoIO(int direction) override;
    // Read-backs from the sonar's replies: rates, pulse names.
    void OnTick() override;

    void SetupRawDataCollection() override;
    int FirstDisplayChannel() const override;

    int Index() const { return index_; }

  protected:
    void Bind(FieldEditor& ed, int direction, SonarConfig& c) override;

    // The page's three columns, for pages that add groups of their own.
    QVBoxLayout* Column(int column) const;
    // A titled group in a column, with a grid of label, field and unit.
    QGridLayout* AddGroup(int column, const QString& title);
    // A note under the data window's fields.
    void SetWindowNote(const QString& text);
    SonarIF& Sonar() const { return sonar_; }

  private:
    void Build();
    void ShowUnits(const SonarConfig& c);
    void RefreshPulseNames();

    SonarIF& sonar_;
    const int index_;

    QVBoxLayout* columns_[3] = {};
    // Subsystem
    QComboBox* subsystem_ = nullptr;
    QCheckBox* inUse_ = nullptr;
    QLineEdit* transducers_ = nullptr;
    QLineEdit* inputChannels_ = nullptr;
    QLineEdit* channelOffset_ = nullptr;
    QComboBox* specialOptions_ = nullptr;
    QLabel* subsystemValue_ = nullptr;
    QLabel* rates_ = nullptr;
    // Transmit
    QCheckBox* sonarOn_ = nullptr;
    QLineEdit* pingRate_ = nullptr;
    QComboBox* rangeOrRate_ = nullptr;
    QLineEdit* overallPower_ = nullptr;
    QComboBox* pulse_ = nullptr;
    QLineEdit* secondPulse_ = nullptr;
    QComboBox* trigger_ = nullptr;
    QLineEdit* couplingSystem_ = nullptr;
    QLineEdit* couplingDelay_ = nullptr;
    QLineEdit* couplingDecimator_ = nullptr;
    // Data window
    QComboBox* windowUnits_ = nullptr;
    QLineEdit* delay_ = nullptr;
    QLineEdit* depth_ = nullptr;
    QComboBox* frameDecimator_ = nullptr;
    QComboBox* pixelDecimator_ = nullptr;
    QComboBox* dataType_ = nullptr;
    QLabel* windowNote_ = nullptr;
    // Storage in the sonar
    QCheckBox* enableStorage_ = nullptr;
    QLineEdit* storageDelay_ = nullptr;
    QLineEdit* storageDepth_ = nullptr;
    QLabel* units_[4] = {};  // the unit texts beside delay, depth and the storage pair
    SonarChannelGrid* channels_ = nullptr;

    struct FormatChange {
        int from = 0;
        int to = 0;
    };
    std::optional<FormatChange> formatChange_;
    int pulseVersion_ = -1;
    int replyCount_ = -1;
};

}  // namespace halvo

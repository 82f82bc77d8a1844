#pragma once
// The navigation page: which sentences give position and time, clock steering, the three serial
// ports, the antenna offsets and the GPSFlags bits, beside a live panel of what navigation
// receives (the status lines, the port status and the recent sentences, filtered by port).
// Settings of two owners meet here: NavigationConfig, and the three navigation keys of General.

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "gui/sheets/SettingsPage.h"
#include "nav/NavigationConfig.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace halvo {

class GeneralSettings;
class NavigationInput;
class SegyDataProcessor;
class SentenceHistory;

// What the page edits: the navigation settings, and the General keys held in 32 bits while
// edited (the offsets are typed in a wider range than they are stored in).
struct NavPageValues {
    NavigationConfig nav;
    std::int32_t antennaO = 0;  // NMEAantennaeO, cm to starboard
    std::int32_t antennaR = 0;  // NMEAantennaeR, cm back
    std::int32_t gpsFlags = 0;  // GPSFlags

    friend bool operator==(const NavPageValues&, const NavPageValues&) = default;
};

class SetupNav : public SettingsPage<NavPageValues> {
  public:
    static constexpr std::int32_t kAntennaLimit = 1000000;
    static constexpr std::int32_t kBiasLimit = 60000;
    // The GPSFlags bits the page offers.
    enum GpsBit : int {
        LaybackEnable = 0,
        SsblEnable = 1,
        NegateNs = 2,
        NegateEw = 3,
        SaveCorrected = 4,
    };
    static constexpr int kGpsBits = 5;
    // The history filter's first entry shows every port.
    static constexpr int kAllPorts = -1;

    struct Sources {
        NavigationConfigStore& navigation;
        GeneralSettings& general;
        SegyDataProcessor& stamping;
        NavigationInput& serial;
        std::function<bool()> isPlayback;
    };

    SetupNav(SheetContext& context, Sources sources, QWidget* parent = nullptr);

    // Chooses the port whose sentences the history shows (kAllPorts for all).
    void SetHistoryPort(int port);
    // The live panel's texts as last shown.
    QString StatusLinesText() const;
    QString HistoryText() const;
    QString PortStatusText() const;
    QString NavStatusText() const;

    // The sentences of one port (or all), oldest first, as the history shows them.
    static QString FilterHistory(const SentenceHistory& history, int port);

    void OnTick() override;

  protected:
    void Bind(FieldEditor& ed, int dir, NavPageValues& v) override;

  private:
    struct PortRow {
        QCheckBox* enable = nullptr;
        QLineEdit* port = nullptr;
        QComboBox* baud = nullptr;
        QLineEdit* device = nullptr;
    };

    QWidget* MakeSources();
    QWidget* MakeClock();
    QWidget* MakePorts();
    QWidget* MakeAntenna();
    QWidget* MakeLive();
    void UpdateLive();

    Sources sources_;

    QComboBox* latLon_ = nullptr;
    QComboBox* time_ = nullptr;
    QCheckBox* tsEnable_ = nullptr;
    QLineEdit* tsBias_ = nullptr;
    QCheckBox* scopeOut_ = nullptr;
    QLineEdit* scopePort_ = nullptr;
    std::array<PortRow, NavigationConfig::kPorts> ports_{};
    QLineEdit* stbd_ = nullptr;
    QLineEdit* back_ = nullptr;
    std::array<QCheckBox*, kGpsBits> gps_{};

    QLabel* navStatus_ = nullptr;
    QLabel* portStatus_ = nullptr;
    QPlainTextEdit* statusLines_ = nullptr;
    QComboBox* historyPort_ = nullptr;
    QPlainTextEdit* history_ = nullptr;
};

}  // namespace halvo

#pragma once
// The installation-wide settings of section OverallConfig: the kind of system, the sonar names,
// how the display windows are split, and where the main window sits.
//
// The layout keys are read only by the first load: splits and plots are fixed for the run and
// a change takes effect at the next start. The window placement and pane sizes are applied on
// every load.

#include <array>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

#include "app/SettingsLifecycle.h"

namespace halvo {

class IniFile;
class MainWindowHost;
class SystemCoordinator;

class OverallConfig {
  public:
    static constexpr int kDisplays = 10;
    static constexpr int kSonars = 4;
    static constexpr int kMaxChannels = 10;             // shared by all displays together
    static constexpr std::size_t kSonarNameChars = 79;  // fields of 80 with their terminator

    // Configuration types, from the Config key of the installation file.
    static constexpr int kConfigUnknown = 0;
    static constexpr int kConfigSBSS = 1;
    static constexpr int kConfigMPX = 2;
    static constexpr int kConfigR90 = 3;
    static constexpr int kConfigSB = 4;
    static constexpr int kConfigSBRC900 = 5;

    struct Values {
        int configType = kConfigUnknown;
        bool engineering = false;
        int promptForDefaultsFile = 1;
        std::array<std::string, kSonars> sonarNames{};
        int displayCount = 0;
        std::array<int, kDisplays> numSplits{};
        std::array<int, kDisplays> hasPlot{};
        std::array<int, kDisplays> pixelsRows{-1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
        std::array<int, kDisplays> pixelsColumns{-1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
        int rc900DisplayEnable = 0;
    };

    // Section HalvoConfig of the installation file, read once at start.
    struct Installation {
        int configType = kConfigUnknown;
        int multiPing = 0;
        int sedimentClassification = 0;
        int topsideForEngineering = 0;
    };

    explicit OverallConfig(const SystemCoordinator& coordinator) : coordinator_(coordinator) {}

    // Exact and case-sensitive: "sbss" is the general case.
    static int ConfigTypeFromText(std::string_view text);
    // Reads section HalvoConfig of the file the record points at.
    static Installation ReadInstallation(IniFile& ini);

    // The GUI's side; null (the default) for a run without windows.
    void SetHost(MainWindowHost* host) { host_ = host; }

    void Start();
    void Load();
    void Save();

    Values Snapshot() const;
    // A settings page's copy written back; raises the change count.
    void Update(const Values& values);
    int ChangeCount() const;
    const SettingsLifecycle& Lifecycle() const { return lifecycle_; }

    void SetInstallation(int configType, bool engineering);
    int DisplayCount() const;
    // Always 0 after a load, whatever the file says.
    int RC900DisplayEnable() const;

  private:
    void LoadOnce(IniFile& ini, Values& v);

    const SystemCoordinator& coordinator_;
    MainWindowHost* host_ = nullptr;
    mutable std::mutex mutex_;
    Values values_;
    int changes_ = 0;
    SettingsLifecycle lifecycle_;
};

}  // namespace halvo

#pragma once
// Settings of navigation input: section Nav (clock steering, source choice) and sections Nav0 to
// Nav2, one per serial port. The record is copied by value; NavigationConfigStore guards the one
// shared copy with its own lock and counts changes, so the port threads and the stamping step
// notice a change by comparing counts.

#include <array>
#include <cstdint>
#include <mutex>
#include <string>

#include "app/SettingsLifecycle.h"

namespace halvo {

class IniFile;
class SystemCoordinator;

struct NavigationPortConfig {
    std::int32_t baud = 4800;  // Baud
    std::int32_t port = 2;     // Port: serial port number, 1 to 255
    std::int32_t enable = 0;   // Enable
    // Device: the Linux device path. Empty means /dev/ttyS<port-1>.
    std::string device;

    std::string DevicePath() const;

    friend bool operator==(const NavigationPortConfig&, const NavigationPortConfig&) = default;
};

struct NavigationConfig {
    static constexpr int kPorts = 3;

    // Which sentence moves the position: 0 RMC, 1 GLL, 2 GGA.
    enum LatLon : std::int32_t { LatLonRmc = 0, LatLonGll = 1, LatLonGga = 2 };
    // Which sentence gives navigation time: 0 ZDA, 1 GLL, 2 RMC, 3 GGA.
    enum Time : std::int32_t { TimeZda = 0, TimeGll = 1, TimeRmc = 2, TimeGga = 3 };

    std::int32_t tsEnable = 0;              // TSEnable: steer the clock by navigation time
    std::int32_t tsBias = 0;                // TSBias, ms
    std::int32_t tsScopeOutEnable = 0;      // TSScopeOutEnable: saved, never loaded
    std::int32_t tsScopeOutPort = 0;        // TSScopeOutPort: I/O address of the pulse
    std::int32_t latLonSource = LatLonGll;  // LatLonSource
    std::int32_t timeSource = TimeZda;      // TimeSource
    std::array<NavigationPortConfig, kPorts> ports{};

    // Reads section Nav and Nav0..Nav2 of the active settings (or of `file`). TSScopeOutEnable
    // is not read: it always comes up 0.
    static NavigationConfig Load(const SystemCoordinator& coordinator);
    void Save(const SystemCoordinator& coordinator) const;

    friend bool operator==(const NavigationConfig&, const NavigationConfig&) = default;
};

class NavigationConfigStore {
  public:
    explicit NavigationConfigStore(const SystemCoordinator& coordinator)
        : coordinator_(coordinator) {}

    void Load();
    // Writes only once something was loaded.
    void Save();
    const SettingsLifecycle& Lifecycle() const { return lifecycle_; }

    NavigationConfig Get() const;
    NavigationConfig Get(int& changeCount) const;
    void Set(const NavigationConfig& config);
    int ChangeCount() const;

  private:
    const SystemCoordinator& coordinator_;
    mutable std::mutex mutex_;
    NavigationConfig config_;
    int changes_ = 0;
    SettingsLifecycle lifecycle_;
};

}  // namespace halvo

#pragma once
// The shared Logging settings: the logs page writes them, the bus observers read the flags on
// every message and the per-file log polls the change count. Records are copied under a lock;
// the flags are mirrored in an atomic so the per-message test takes no lock.

#include <atomic>
#include <cstdint>
#include <mutex>

#include "app/SettingsLifecycle.h"
#include "storage/LoggingSettings.h"

namespace halvo {

class SystemCoordinator;

class LoggingControl {
  public:
    explicit LoggingControl(const SystemCoordinator& coordinator) : coordinator_(coordinator) {}

    // Reads section Logging of the active settings file.
    void Load();
    // Writes the section, but only once something was loaded.
    void Save();
    const SettingsLifecycle& Lifecycle() const { return lifecycle_; }

    // A copy of the record (the first call loads the section) and the change count it belongs to.
    LoggingSettings getSettings();
    LoggingSettings getSettings(int& changeCount);
    // Stores the record with its comments cut to size, raises the change count, marks it loaded.
    void setSettings(LoggingSettings record);
    int ChangeCount();
    // The Flags word as last stored; no lock, no load.
    std::int32_t Flags() const { return flags_.load(std::memory_order_acquire); }

  private:
    void EnsureLoaded();

    const SystemCoordinator& coordinator_;
    std::mutex mutex_;
    LoggingSettings settings_;
    int changes_ = 0;
    std::atomic<std::int32_t> flags_{0};
    SettingsLifecycle lifecycle_;
    std::once_flag loadOnce_;
};

}  // namespace halvo

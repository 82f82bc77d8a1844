#pragma once
// The shared status object: the status settings and the alert settings, each with its own
// change counter, behind one lock. Pages write whole records back; the bus thread and the beep
// thread poll the counters and take copies. Nothing is signalled.

#include <cstdint>
#include <functional>
#include <mutex>
#include <string_view>

#include "app/SettingsLifecycle.h"
#include "status/AlertSettings.h"
#include "status/StatusSettings.h"

namespace halvo {

class SystemCoordinator;

class StatusControl {
  public:
    static constexpr std::string_view kSection = "Status";
    // Shows a message box (text, title); a headless run logs it.
    using Reporter = std::function<void(std::string_view text, std::string_view title)>;

    explicit StatusControl(const SystemCoordinator& coordinator) : coordinator_(coordinator) {}

    void SetReporter(Reporter reporter);

    // Loads the section unless something already did.
    void Start();
    // Reads section Status of the active settings file: both records, both counters raised.
    void Load();
    // Writes both records, but only once something was loaded.
    void Save();
    const SettingsLifecycle& Lifecycle() const { return lifecycle_; }

    // Copies; the first call of any of these loads the section.
    StatusSettings getSettings();
    StatusSettings getSettings(int& changeCount);
    AlertSettings getAlertSettings();
    AlertSettings getAlertSettings(int& changeCount);
    // Store a copy and add 1 to that record's counter. The section is loaded first, so a
    // later load cannot undo what the page wrote.
    void setSettings(const StatusSettings& record);
    void setAlertSettings(const AlertSettings& record);

    int ChangeCount();
    int AlertChangeCount();

  private:
    // The lock with its holder count; a release while not held is reported and ignored.
    class Guard {
      public:
        explicit Guard(StatusControl& owner);
        ~Guard();
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

      private:
        StatusControl& owner_;
    };
    void Lock();
    void Unlock();
    void EnsureLoaded();

    const SystemCoordinator& coordinator_;
    std::mutex mutex_;
    int holders_ = 0;
    StatusSettings settings_;
    int changes_ = 0;
    AlertSettings alerts_;
    int alertChanges_ = 0;
    SettingsLifecycle lifecycle_;
    std::once_flag loadOnce_;
    Reporter reporter_;
};

}  // namespace halvo

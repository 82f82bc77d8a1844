#pragma once
// The one shared storage object: the current settings with their change count, the published
// status, and the operator's requests. Pages, status, alerts and the bus thread all come here;
// everything is copied in and out under one lock, so no reader sees half a record.

#include <cstdint>
#include <functional>
#include <mutex>
#include <string_view>

#include "app/SettingsLifecycle.h"
#include "storage/StorageSettings.h"
#include "storage/StorageStatus.h"

namespace halvo {

class SystemCoordinator;

class StorageControl {
  public:
    // Shows a message box (text, title); a headless run logs it.
    using Reporter = std::function<void(std::string_view text, std::string_view title)>;

    explicit StorageControl(const SystemCoordinator& coordinator) : coordinator_(coordinator) {}

    // Called once, by the first setSettings, to register the processor on the bus.
    void SetProcessorStarter(std::function<void()> starter);
    void SetReporter(Reporter reporter);

    // Reads section Storage of the active settings file (the reload of a settings file).
    void Load();
    // Writes the section, but only once something was loaded: a run that never touched
    // storage rewrites nothing.
    void Save();
    const SettingsLifecycle& Lifecycle() const { return lifecycle_; }

    // A copy of the record; the first call loads the section.
    StorageSettings getSettings();
    // The record and the change count it belongs to, taken together.
    StorageSettings getSettings(int& changeCount);
    // Applies the request rules, stores the record, raises the change count, marks the record
    // loaded, and starts the processor if nobody has yet.
    void setSettings(const StorageSettings& record);
    int ChangeCount();

    StorageStatus getStatus();
    void PublishStatus(const StorageStatus& status);

    // Mode 1 or 3, or AcquireMode 1. Serial input, the status pane and alerts ask this.
    bool isPlaybackMode();

    // The operator's requests.
    void RequestRecord();    // Record button: mode 0
    void RequestStop();      // Stop button: mode 2
    void RequestPlayback();  // Playback button: mode 1 (the page also resets its file list)
    // Pause check box: checked asks 3, unchecked 1; only while the mode is 1 or 3.
    void SetPauseChecked(bool checked);
    // Main window "Change/Pause": 1 to 3, 3 to 1, 0 to 2, 2 to 1 or 0 by AcquireMode.
    void ChangePause();
    // "Playback Slower": halves a rate above 0, so 1 becomes 0 and reading halts.
    void PlaybackSlower();
    // "Playback Faster": below 10000 doubles (0 becomes 1), capped at 10000.
    void PlaybackFaster();

  private:
    // The lock with its holder count; a release while not held is reported and ignored.
    class Guard {
      public:
        explicit Guard(StorageControl& owner);
        ~Guard();
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

      private:
        StorageControl& owner_;
    };
    void Lock();
    void Unlock();

    void EnsureLoaded();
    void Store(StorageSettings record);  // under the lock
    template <class Change>
    void Modify(Change&& change);

    const SystemCoordinator& coordinator_;
    std::mutex mutex_;
    int holders_ = 0;
    StorageSettings settings_;
    int changes_ = 0;
    StorageStatus status_;
    SettingsLifecycle lifecycle_;
    std::once_flag loadOnce_;
    std::once_flag startOnce_;
    std::function<void()> starter_;
    Reporter reporter_;
};

}  // namespace halvo

#pragma once
// Owner of section General. Pages write a whole copy back through Update; consumers poll the
// change count and take a fresh Snapshot when it moved.

#include <mutex>

#include "app/GeneralValues.h"
#include "app/SettingsLifecycle.h"

namespace halvo {

class SystemCoordinator;

class GeneralSettings {
  public:
    explicit GeneralSettings(const SystemCoordinator& coordinator) : coordinator_(coordinator) {}

    void Start();
    // Reads every key of the section from the active settings file, on every call.
    void Load();
    // Writes every key, in table order; nothing unless something was loaded.
    void Save();

    GeneralValues Snapshot() const;
    void Update(const GeneralValues& values);
    // For the few writers that change one value in place (the sound speed from the sonar).
    template <class Change>
    void Modify(Change&& change) {
        std::lock_guard lock(mutex_);
        change(values_);
        ++changes_;
    }
    int ChangeCount() const;
    const SettingsLifecycle& Lifecycle() const { return lifecycle_; }

  private:
    const SystemCoordinator& coordinator_;
    mutable std::mutex mutex_;
    GeneralValues values_;
    int changes_ = 0;
    SettingsLifecycle lifecycle_;
};

}  // namespace halvo

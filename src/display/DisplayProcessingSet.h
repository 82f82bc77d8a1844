#pragma once
// Owner of the ten display records, of the display queue, and of the one lock over the records.
// The chain works on private snapshots and takes the lock only to write; the pages and views
// change a record under the lock and then bump it, so every snapshot holder sees the change.

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>

#include "app/SettingsLifecycle.h"
#include "display/DisplayProcessingConfig.h"
#include "display/DisplayQueue.h"

namespace halvo {

class GeneralSettings;
class SystemCoordinator;

class DisplayProcessingSet {
  public:
    static constexpr int kDisplays = 10;

    DisplayProcessingSet(const SystemCoordinator& coordinator, const GeneralSettings& general);

    // Marks the set built and loads the records unless they were loaded already.
    void Start();
    // Reads `DisplayProcessing0` to `DisplayProcessing9` of the active settings file.
    void Load();
    // Writes them back; nothing unless they were loaded.
    void Save();

    // A record held under the set's lock for as long as this object lives.
    class Locked {
      public:
        DisplayProcessingConfig& operator*() { return record_; }
        DisplayProcessingConfig* operator->() { return &record_; }
        // Stores the current `General` change count in the record and raises its revision.
        void Bump();

      private:
        friend class DisplayProcessingSet;
        Locked(DisplayProcessingSet& set, DisplayProcessingConfig& record)
            : lock_(set.mutex_), set_(set), record_(record) {}
        std::unique_lock<std::mutex> lock_;
        DisplayProcessingSet& set_;
        DisplayProcessingConfig& record_;
    };
    // An index outside 0 to 9 gives record 0.
    Locked Lock(int index);

    // Copies record i into copy when its revision or `Channel` differs from the copy's; true when
    // it copied. A `General` change since the record's last bump counts as a change of it.
    bool Snapshot(int index, DisplayProcessingConfig& copy);

    DisplayQueue& Queue() { return queue_; }

    // Displays in use rise one by one to ten as documents open them.
    int DisplaysInUse() const { return inUse_.load(std::memory_order_acquire); }
    void UseDisplay();

    const SettingsLifecycle& Lifecycle() const { return lifecycle_; }

  private:
    static int Clamp(int index) { return index < 0 || index >= kDisplays ? 0 : index; }

    const SystemCoordinator& coordinator_;
    const GeneralSettings& general_;
    std::mutex mutex_;
    std::array<DisplayProcessingConfig, kDisplays> records_{};
    DisplayQueue queue_;
    std::atomic<int> inUse_{0};
    SettingsLifecycle lifecycle_;
};

}  // namespace halvo

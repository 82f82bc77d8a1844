#include "display/DisplayProcessingSet.h"

#include <string>

#include "app/GeneralSettings.h"
#include "app/IniFile.h"

namespace halvo {

DisplayProcessingSet::DisplayProcessingSet(const SystemCoordinator& coordinator,
                                           const GeneralSettings& general)
    : coordinator_(coordinator), general_(general) {}

void DisplayProcessingSet::Start() {
    lifecycle_.Start([this] { Load(); });
}

void DisplayProcessingSet::Load() {
    const int stamp = general_.ChangeCount();
    IniFile ini(coordinator_);
    for (int i = 0; i < kDisplays; ++i) {
        ini.Open("DisplayProcessing" + std::to_string(i));
        DisplayProcessingConfig loaded;
        loaded.Load(ini, i);
        std::lock_guard lock(mutex_);
        DisplayProcessingConfig& r = records_[static_cast<std::size_t>(i)];
        // The hidden words (auto gain counters, sample rate, revision) live on across a load.
        loaded.autoGainRequest = r.autoGainRequest;
        loaded.autoGainAcknowledge = r.autoGainAcknowledge;
        loaded.bytePath = r.bytePath;
        loaded.sampleRate = r.sampleRate;
        loaded.generalStamp = stamp;
        loaded.revision = r.revision + 1;
        r = loaded;
    }
    lifecycle_.MarkLoaded();
}

void DisplayProcessingSet::Save() {
    if (!lifecycle_.MaySave()) return;
    IniFile ini(coordinator_);
    for (int i = 0; i < kDisplays; ++i) {
        DisplayProcessingConfig copy;
        {
            std::lock_guard lock(mutex_);
            copy = records_[static_cast<std::size_t>(i)];
        }
        ini.Open("DisplayProcessing" + std::to_string(i));
        copy.Save(ini);
    }
}

void DisplayProcessingSet::Locked::Bump() {
    record_.generalStamp = set_.general_.ChangeCount();
    ++record_.revision;
}

DisplayProcessingSet::Locked DisplayProcessingSet::Lock(int index) {
    return Locked(*this, records_[static_cast<std::size_t>(Clamp(index))]);
}

bool DisplayProcessingSet::Snapshot(int index, DisplayProcessingConfig& copy) {
    const int stamp = general_.ChangeCount();
    std::lock_guard lock(mutex_);
    DisplayProcessingConfig& r = records_[static_cast<std::size_t>(Clamp(index))];
    if (r.generalStamp != stamp) {
        r.generalStamp = stamp;
        ++r.revision;
    }
    if (r.revision == copy.revision && r.Channel == copy.Channel) return false;
    copy = r;
    return true;
}

void DisplayProcessingSet::UseDisplay() {
    int n = inUse_.load(std::memory_order_acquire);
    while (n < kDisplays && !inUse_.compare_exchange_weak(n, n + 1, std::memory_order_acq_rel)) {
    }
}

}  // namespace halvo

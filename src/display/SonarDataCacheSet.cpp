#include "display/SonarDataCacheSet.h"

#include <algorithm>
#include <string>

#include "app/IniFile.h"

namespace halvo {

bool SonarDataCacheSet::Add(SharedLine line) {
    if (!line) return false;
    const int d = line->displayIndex;
    if (d < 0 || d >= kDisplays) return false;
    auto& cache = caches_[static_cast<std::size_t>(d)];
    if (!cache) cache = std::make_unique<SonarDataCache>(initialCapacity_);
    cache->Add(std::move(line));
    return true;
}

SonarDataCache* SonarDataCacheSet::Cache(int display) {
    if (display < 0 || display >= kDisplays) return nullptr;
    return caches_[static_cast<std::size_t>(display)].get();
}

const SonarDataCache* SonarDataCacheSet::Cache(int display) const {
    if (display < 0 || display >= kDisplays) return nullptr;
    return caches_[static_cast<std::size_t>(display)].get();
}

void SonarDataCacheSet::Resize(int display, int capacity) {
    if (display < 0 || display >= kDisplays) return;
    auto& cache = caches_[static_cast<std::size_t>(display)];
    if (!cache) {
        cache = std::make_unique<SonarDataCache>(capacity);
    } else {
        cache->Resize(capacity);
    }
}

int SonarDataCacheSet::ReadInitialCapacity(const SystemCoordinator& coordinator) {
    IniFile ini(coordinator);
    ini.Open("WaterFall");
    return std::clamp(ini.ReadInt("CacheSize", SonarDataCache::kDefaultCapacity), 0, kMaxCapacity);
}

int SonarDataCacheSet::ReadCapacity(const SystemCoordinator& coordinator, int display) {
    IniFile ini(coordinator);
    ini.Open("Display" + std::to_string(display));
    return std::clamp(ini.ReadInt("CacheSize", SonarDataCache::kDefaultCapacity), 0, kMaxCapacity);
}

}  // namespace halvo

#include "gui/views/WaterfallDocSet.h"

#include <algorithm>
#include <string>

#include "app/IniFile.h"
#include "display/SonarDataCache.h"
#include "display/SonarDataCacheSet.h"
#include "gui/views/CWaterfallDoc.h"

namespace halvo {

void WaterfallDocSet::Load() {
    for (int d = 0; d < kDisplays; ++d) {
        cacheSize_[static_cast<std::size_t>(d)] = SonarDataCacheSet::ReadCapacity(coordinator_, d);
    }
    loaded_ = true;
}

void WaterfallDocSet::Save() const {
    if (!loaded_) return;
    for (int d = 0; d < kDisplays; ++d) {
        IniFile ini(coordinator_);
        ini.Open("Display" + std::to_string(d));
        ini.WriteInt("CacheSize", cacheSize_[static_cast<std::size_t>(d)]);
    }
}

int WaterfallDocSet::CacheSize(int display) {
    if (display < 0 || display >= kDisplays) return kDefaultCacheSize;
    if (!loaded_) Load();
    return cacheSize_[static_cast<std::size_t>(display)];
}

void WaterfallDocSet::SetCacheSize(int display, int lines) {
    if (display < 0 || display >= kDisplays) return;
    if (!loaded_) Load();
    const int n = std::clamp(lines, 0, SonarDataCacheSet::kMaxCapacity);
    cacheSize_[static_cast<std::size_t>(display)] = n;
    for (CWaterfallDoc* doc : documents_) {
        if (doc == nullptr) continue;
        SonarDataCache* cache = doc->ExistingCache(display);
        if (cache != nullptr && cache->Capacity() != n) cache->Resize(n);
    }
    ++revision_[static_cast<std::size_t>(display)];
}

int WaterfallDocSet::Revision(int display) const {
    if (display < 0 || display >= kDisplays) return 0;
    return static_cast<int>(revision_[static_cast<std::size_t>(display)]);
}

void WaterfallDocSet::SetDocument(int frame, CWaterfallDoc* document) {
    if (frame < 0 || frame >= kMaxDocuments) return;
    documents_[static_cast<std::size_t>(frame)] = document;
}

CWaterfallDoc* WaterfallDocSet::Document(int frame) const {
    if (frame < 0 || frame >= kMaxDocuments) return nullptr;
    return documents_[static_cast<std::size_t>(frame)];
}

}  // namespace halvo

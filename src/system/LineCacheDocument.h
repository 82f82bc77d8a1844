#pragma once
// The system's own display document: it keeps the newest lines of every display in caches and
// counts what arrived, so that a run without windows (and the demo's summary) sees the same
// lines a waterfall would.

#include <array>
#include <atomic>
#include <cstdint>

#include "display/DisplayDocumentIF.h"
#include "display/SonarDataCacheElement.h"
#include "display/SonarDataCacheSet.h"

namespace halvo {

class LineCacheDocument final : public DisplayDocumentIF {
  public:
    void OnDisplayNotice(int argument, const SonarDataCacheElement* element) override {
        if (argument != kStoreElement || element == nullptr) return;
        if (caches_.Add(*element)) {
            const int d = element->displayIndex;
            if (d >= 0 && d < SonarDataCacheSet::kDisplays) lines_[d].fetch_add(1);
        }
    }
    // Lines delivered to display d since the start.
    std::uint64_t Lines(int d) const {
        return d >= 0 && d < SonarDataCacheSet::kDisplays ? lines_[d].load() : 0;
    }
    SonarDataCacheSet& Caches() { return caches_; }

  private:
    SonarDataCacheSet caches_;
    std::array<std::atomic<std::uint64_t>, SonarDataCacheSet::kDisplays> lines_{};
};

}  // namespace halvo

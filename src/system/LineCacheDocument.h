#pragma once
// The system's own display document: it counts what arrived for every display and, in a run
// without windows, keeps the newest lines in caches, so that such a run sees the lines a
// waterfall would. With windows their documents keep the lines, and this one only counts.

#include <array>
#include <atomic>
#include <cstdint>

#include "display/DisplayDocumentIF.h"
#include "display/SonarDataCacheElement.h"
#include "display/SonarDataCacheSet.h"

namespace halvo {

class LineCacheDocument final : public DisplayDocumentIF {
  public:
    explicit LineCacheDocument(bool keepLines = true) : keepLines_(keepLines) {}

    void OnDisplayNotice(int argument, const SharedLine& line) override {
        if (argument != kStoreElement || !line) return;
        const int d = line->displayIndex;
        if (d < 0 || d >= SonarDataCacheSet::kDisplays) return;
        if (keepLines_) caches_.Add(line);
        lines_[d].fetch_add(1);
    }
    // Lines delivered to display d since the start.
    std::uint64_t Lines(int d) const {
        return d >= 0 && d < SonarDataCacheSet::kDisplays ? lines_[d].load() : 0;
    }
    SonarDataCacheSet& Caches() { return caches_; }

  private:
    bool keepLines_;
    SonarDataCacheSet caches_;
    std::array<std::atomic<std::uint64_t>, SonarDataCacheSet::kDisplays> lines_{};
};

}  // namespace halvo

#pragma once
// The caches of one document: one per display, made on first use. A document forwards the
// store notice of the display timer here.

#include <array>
#include <memory>

#include "display/SonarDataCache.h"

namespace halvo {

class SystemCoordinator;

class SonarDataCacheSet {
  public:
    static constexpr int kDisplays = 10;
    // Largest capacity taken from a settings file; a bigger number is a typing error, not a wish
    // for gigabytes of lines.
    static constexpr int kMaxCapacity = 100000;

    // Capacity given to a cache made before the document applied its settings.
    explicit SonarDataCacheSet(int initialCapacity = SonarDataCache::kDefaultCapacity)
        : initialCapacity_(initialCapacity) {}

    // Adds to the cache of the line's display; false for an index outside 0 to 9.
    bool Add(SharedLine line);
    bool Add(const SonarDataCacheElement& element) {
        return Add(std::make_shared<const SonarDataCacheElement>(element));
    }
    // Null until the display's first line.
    SonarDataCache* Cache(int display);
    const SonarDataCache* Cache(int display) const;
    // Resizes one display's cache, making it if needed.
    void Resize(int display, int capacity);

    // `CacheSize` of section `Display%d` (ReadCapacity) or of section `WaterFall` (the capacity
    // before the document applied its settings), defaulting to 200, held to 0 to kMaxCapacity.
    // Read from the active settings file.
    static int ReadCapacity(const SystemCoordinator& coordinator, int display);
    static int ReadInitialCapacity(const SystemCoordinator& coordinator);

  private:
    int initialCapacity_;
    std::array<std::unique_ptr<SonarDataCache>, kDisplays> caches_{};
};

}  // namespace halvo

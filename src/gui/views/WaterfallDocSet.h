#pragma once
// The process-wide side of the waterfall documents: each display's cache capacity (`CacheSize`
// of section `Display%d`) with a revision that rises whenever it is set, and the documents open
// by frame index, so that a new capacity reaches the caches that exist.

#include <array>
#include <cstdint>

namespace halvo {

class CWaterfallDoc;
class SystemCoordinator;

class WaterfallDocSet {
  public:
    static constexpr int kDisplays = 10;
    static constexpr int kMaxDocuments = 10;
    static constexpr int kDefaultCacheSize = 200;

    explicit WaterfallDocSet(const SystemCoordinator& coordinator) : coordinator_(coordinator) {}

    // Reads every `CacheSize` of the active settings file.
    void Load();
    // Writes them back; nothing before a load.
    void Save() const;
    bool Loaded() const { return loaded_; }

    // Loads on first use. An index outside 0 to 9 gives the default.
    int CacheSize(int display);
    // Sets the capacity, resizes the cache of every open document whose capacity differs and
    // raises the display's revision. Held to 0 to the largest capacity a file may give.
    void SetCacheSize(int display, int lines);
    int Revision(int display) const;

    // Documents by frame index; null removes one.
    void SetDocument(int frame, CWaterfallDoc* document);
    CWaterfallDoc* Document(int frame) const;

  private:
    const SystemCoordinator& coordinator_;
    std::array<int, kDisplays> cacheSize_{};
    std::array<std::uint32_t, kDisplays> revision_{};
    std::array<CWaterfallDoc*, kMaxDocuments> documents_{};
    bool loaded_ = false;
};

}  // namespace halvo

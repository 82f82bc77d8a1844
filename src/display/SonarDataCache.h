#pragma once
// The newest lines of one display, looked up by age. Touched only on the user interface thread,
// so it has no lock. The ring shares the lines it is given; a line lives as long as any cache or
// output still holds it.

#include <cstdint>
#include <memory>
#include <vector>

#include "display/SonarDataCacheElement.h"

namespace halvo {

class SonarDataCache {
  public:
    static constexpr int kDefaultCapacity = 200;
    // Slots at the old end that Get never offers, so a writer may overtake a slow reader.
    static constexpr int kGuardSlots = 10;

    explicit SonarDataCache(int capacity = kDefaultCapacity);

    // Stores the line in the head slot, dropping the oldest line there.
    void Add(SharedLine line);
    // The same with a copy of the element.
    void Add(const SonarDataCacheElement& element) {
        Add(std::make_shared<const SonarDataCacheElement>(element));
    }
    // Age 0 is the newest; null for an empty slot and for the ten oldest slots.
    const SonarDataCacheElement* Get(int age) const;
    // Lines ever added; survives Resize.
    std::int64_t Total() const { return total_; }
    // Drops every line and starts an empty ring of n slots (n below 0 counts as 0).
    void Resize(int n);
    int Capacity() const { return static_cast<int>(slots_.size()); }

  private:
    std::vector<SharedLine> slots_;
    int head_ = 0;
    std::int64_t total_ = 0;
};

}  // namespace halvo

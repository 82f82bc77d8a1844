#pragma once
// The one crossing from the data bus to the views: a ring of 200 entries with one writer (the bus
// thread) and one reader (the display timer). No lock: head and tail only rise, and an entry is
// complete before the writer's counter moves past it.

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

#include "display/SonarDataCacheElement.h"

namespace halvo {

struct DisplayQueueEntry {
    int kind = 0;  // 0: an element
    std::uint32_t word = 0;
    std::unique_ptr<SonarDataCacheElement> element;
};

class DisplayQueue {
  public:
    static constexpr std::uint32_t kCapacity = 200;
    static constexpr int kElement = 0;

    // Writer side. On success the queue owns the element and `element` is empty; on a full
    // queue nothing changes and the caller still holds it.
    bool TryPut(std::unique_ptr<SonarDataCacheElement>& element, int kind = kElement,
                std::uint32_t word = 0);
    // Reader side: the oldest entry, or false when none waits.
    bool Take(DisplayQueueEntry& out);

    std::uint32_t Waiting() const;
    bool Full() const { return Waiting() >= kCapacity; }

  private:
    std::array<DisplayQueueEntry, kCapacity> entries_{};
    std::atomic<std::uint64_t> head_{0};  // next to write; 64 bits never wrap
    std::atomic<std::uint64_t> tail_{0};  // next to read
};

}  // namespace halvo

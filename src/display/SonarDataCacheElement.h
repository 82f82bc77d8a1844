#pragma once
// One finished display line: the header of its first side, two byte lines and what the views
// draw beside them. Elements cross from the bus thread to the views by the display queue, so the
// record is plain: copying duplicates both lines, destroying frees them.

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "core/TraceHeader.h"

namespace halvo {

class SonarDataCacheElement {
  public:
    // A size of 0 or less owns no lines.
    explicit SonarDataCacheElement(int size);
    SonarDataCacheElement(const SonarDataCacheElement& other);
    SonarDataCacheElement& operator=(const SonarDataCacheElement& other) = default;
    ~SonarDataCacheElement();

    // The header as a view, so fields are read by name.
    ConstTraceHeaderView Header() const { return ConstTraceHeaderView(header); }

    std::array<std::uint8_t, kTraceHeaderSize> header{};
    int size = 0;
    int displayIndex = 0;
    int startDepth = 0;
    int dualChannel = 0;
    int bottomSample = 0;
    int heaveSamples = 0;
    float reflection = 0.0f;
    float gain = 0.0f;
    std::vector<std::uint8_t> pixels;
    std::vector<std::uint8_t> rawPixels;
    std::array<int, 3> reserved{};

    // Diagnostics: elements made and destroyed since the program started. Counted, not owned:
    // nothing reads them to decide anything.
    static std::uint64_t Made() { return made_.load(std::memory_order_relaxed); }
    static std::uint64_t Destroyed() { return destroyed_.load(std::memory_order_relaxed); }

  private:
    static inline std::atomic<std::uint64_t> made_{0};
    static inline std::atomic<std::uint64_t> destroyed_{0};
};

// A finished line as the drain hands it on: made once on the bus thread, then shared, never
// copied, by every cache, window and output that keeps it.
using SharedLine = std::shared_ptr<const SonarDataCacheElement>;

}  // namespace halvo

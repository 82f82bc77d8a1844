#pragma once
// The acquire filter: which classes of data from the sonar's data link reach the later stages.
// Value and change count are kept in one atomic word so a bus never sees one without the other.

#include <atomic>
#include <cstdint>

namespace halvo {

// Filter values as the QC page offers them.
enum AcquireFilterValue : std::uint32_t {
    FilterAllSources = 0,
    FilterAcquireOnly = 1,
    FilterStoreAndForwardOnly = 2,
    FilterQCOnly = 4,
};

struct FilterSnapshot {
    std::uint32_t value = 0;
    std::int32_t count = -1;
};

class AcquireFilter {
  public:
    AcquireFilter();

    // Stores the value and adds 1 to the change count.
    void Set(std::uint32_t value);
    std::uint32_t Value() const;
    std::int32_t ChangeCount() const;
    // Copies value and count into the snapshot when the counts differ; says whether it did.
    bool Refresh(FilterSnapshot& snapshot) const;

    // Whether a message of this direction and type passes filter value F.
    static bool Passes(std::uint32_t F, std::uint8_t direction, std::uint16_t type);

  private:
    std::atomic<std::uint64_t> packed_;
};

}  // namespace halvo

#pragma once
// Test seam: a parallel port that records every write, so a test can see what would have reached
// the I/O addresses. Safe to use from several threads.

#include <mutex>
#include <utility>
#include <vector>

#include "platform/ParallelPort.h"

namespace halvo {

class FakeParallelPort final : public ParallelPort {
  public:
    using PortWrite = std::pair<std::uint16_t, std::uint8_t>;

    bool Available() const override { return true; }
    bool Write(std::uint16_t address, std::uint8_t value) override {
        std::lock_guard lock(mutex_);
        writes_.emplace_back(address, value);
        return true;
    }

    std::vector<PortWrite> Writes() const {
        std::lock_guard lock(mutex_);
        return writes_;
    }

  private:
    mutable std::mutex mutex_;
    std::vector<PortWrite> writes_;
};

}  // namespace halvo

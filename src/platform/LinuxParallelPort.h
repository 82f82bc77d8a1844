#pragma once
// The parallel-port seam on Linux. Raw I/O addresses would need ioperm and root, and a stray
// write to the wrong address can upset other hardware; a pulse that is only a diagnostic is not
// worth that. So writes are dropped and the port reports itself unavailable.

#include "platform/ParallelPort.h"

namespace halvo {

class LinuxParallelPort final : public ParallelPort {
  public:
    bool Available() const override { return false; }
    bool Write(std::uint16_t address, std::uint8_t value) override;
};

}  // namespace halvo

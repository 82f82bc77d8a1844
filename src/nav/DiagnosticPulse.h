#pragma once
// The diagnostic pulse: for every received navigation line, 0x0F then 0xF0 go to a parallel-port
// address, so an oscilloscope shows when each line arrived. The first use of an address first
// writes 0 to address + 2 (the control register) to set the port up. Shared by the port threads.

#include <cstdint>
#include <mutex>

namespace halvo {

class ParallelPort;

class DiagnosticPulse {
  public:
    explicit DiagnosticPulse(ParallelPort& port) : port_(port) {}

    // Does nothing unless `enable` is set and `address` is a usable I/O address (1 to 0xFFFD,
    // so that address + 2 exists too).
    void Run(std::int32_t enable, std::int32_t address);

  private:
    ParallelPort& port_;
    std::mutex mutex_;
    std::int32_t preparedAddress_ = 0;
};

}  // namespace halvo

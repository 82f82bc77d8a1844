#pragma once
// Where finished lines go: first to every printer, then onto the display queue. Live data never
// waits for the views; playback does, so that a file plays no faster than the views can take it.

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "display/DisplayQueue.h"
#include "display/LinePrinterIF.h"

namespace halvo {

class RunFlag;

class DisplayLineOutput {
  public:
    static constexpr int kWaitMs = 100;
    static constexpr int kWaitTries = 50;

    // isPlayback tells whether the storage mode is playback; running is the program's run flag;
    // sleepMs waits that many milliseconds (a fake clock's step in tests).
    DisplayLineOutput(DisplayQueue& queue, std::function<bool()> isPlayback, const RunFlag& running,
                      std::function<void(int)> sleepMs);

    void AddPrinter(LinePrinterIF* printer);
    void RemovePrinter(LinePrinterIF* printer);

    // Offers the element to the printers and queues it. False when it was dropped.
    bool Deliver(std::unique_ptr<SonarDataCacheElement> element);

    std::uint64_t Queued() const { return queued_; }
    std::uint64_t Dropped() const { return dropped_; }

  private:
    DisplayQueue& queue_;
    std::function<bool()> isPlayback_;
    const RunFlag& running_;
    std::function<void(int)> sleepMs_;
    std::vector<LinePrinterIF*> printers_;
    std::uint64_t queued_ = 0;
    std::uint64_t dropped_ = 0;
};

}  // namespace halvo

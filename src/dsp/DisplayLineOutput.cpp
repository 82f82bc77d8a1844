#include "dsp/DisplayLineOutput.h"

#include <algorithm>

#include "core/RunFlag.h"

namespace halvo {

DisplayLineOutput::DisplayLineOutput(DisplayQueue& queue, std::function<bool()> isPlayback,
                                     const RunFlag& running, std::function<void(int)> sleepMs)
    : queue_(queue),
      isPlayback_(std::move(isPlayback)),
      running_(running),
      sleepMs_(std::move(sleepMs)) {}

void DisplayLineOutput::AddPrinter(LinePrinterIF* printer) {
    if (printer && std::find(printers_.begin(), printers_.end(), printer) == printers_.end()) {
        printers_.push_back(printer);
    }
}

void DisplayLineOutput::RemovePrinter(LinePrinterIF* printer) {
    printers_.erase(std::remove(printers_.begin(), printers_.end(), printer), printers_.end());
}

bool DisplayLineOutput::Deliver(std::unique_ptr<SonarDataCacheElement> element) {
    if (!element) return false;
    for (LinePrinterIF* p : printers_) p->OfferLine(*element);
    if (queue_.TryPut(element)) {
        ++queued_;
        return true;
    }
    for (int i = 0; i < kWaitTries; ++i) {
        if (!(isPlayback_ && isPlayback_() && running_.IsSet()) || !sleepMs_) break;
        sleepMs_(kWaitMs);
        if (queue_.TryPut(element)) {
            ++queued_;
            return true;
        }
    }
    ++dropped_;
    return false;
}

}  // namespace halvo

#pragma once
// The display timer's step: empties the display queue into the open documents. Runs on the user
// interface thread every 250 ms; the GUI's timer only calls Drain.

#include <functional>
#include <span>

#include "display/DisplayDocumentIF.h"
#include "display/DisplayQueue.h"

namespace halvo {

class SystemCoordinator;

class DisplayDrain {
  public:
    static constexpr int kMaxDocuments = 10;

    // refreshStatus is the main window's status refresh; it may be empty.
    DisplayDrain(DisplayQueue& queue, SystemCoordinator& coordinator,
                 std::function<void()> refreshStatus = {})
        : queue_(queue), coordinator_(coordinator), refreshStatus_(std::move(refreshStatus)) {}

    // Delivers every waiting element to each document (at most ten), then one update notice if
    // any element went out. Returns the number of elements delivered, or -1 when the shared
    // display timer guard was already held and this tick was skipped. guardHeld says the caller
    // is the display timer's own pass and already holds the guard.
    int Drain(std::span<DisplayDocumentIF* const> documents, bool guardHeld = false);

  private:
    DisplayQueue& queue_;
    SystemCoordinator& coordinator_;
    std::function<void()> refreshStatus_;
};

}  // namespace halvo

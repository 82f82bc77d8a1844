#include "display/DisplayDrain.h"

#include <algorithm>

#include "app/SystemCoordinator.h"

namespace halvo {

namespace {

// Leaves the display timer's guard however the pass ends: a document that throws must not keep
// every later pass out.
class GuardRelease {
  public:
    GuardRelease(SystemCoordinator& coordinator, bool active)
        : coordinator_(coordinator), active_(active) {}
    ~GuardRelease() {
        if (active_) coordinator_.LeaveDisplayTimer();
    }
    GuardRelease(const GuardRelease&) = delete;
    GuardRelease& operator=(const GuardRelease&) = delete;

  private:
    SystemCoordinator& coordinator_;
    bool active_;
};

}  // namespace

int DisplayDrain::Drain(std::span<DisplayDocumentIF* const> documents, bool guardHeld) {
    const bool entered = !guardHeld;
    const bool busy = entered && coordinator_.EnterDisplayTimer() != 0;
    const GuardRelease release(coordinator_, entered);
    if (busy) return -1;
    const auto docs = documents.first(std::min<std::size_t>(documents.size(), kMaxDocuments));
    int delivered = 0;
    DisplayQueueEntry entry;
    // Only what waits now: a writer that keeps adding must not hold the timer forever.
    for (std::uint32_t n = queue_.Waiting(); n > 0 && queue_.Take(entry); --n) {
        if (entry.kind == DisplayQueue::kElement && entry.element) {
            const SharedLine line(std::move(entry.element));
            for (DisplayDocumentIF* doc : docs) {
                if (doc) doc->OnDisplayNotice(DisplayDocumentIF::kStoreElement, line);
            }
            ++delivered;
        }
        entry.element.reset();
    }
    if (delivered > 0) {
        for (DisplayDocumentIF* doc : docs) {
            if (doc) doc->OnDisplayNotice(DisplayDocumentIF::kUpdateViews, {});
        }
    }
    if (refreshStatus_) refreshStatus_();
    return delivered;
}

}  // namespace halvo

#include "display/DisplayDrain.h"

#include <algorithm>

#include "app/SystemCoordinator.h"

namespace halvo {

int DisplayDrain::Drain(std::span<DisplayDocumentIF* const> documents, bool guardHeld) {
    if (!guardHeld && coordinator_.EnterDisplayTimer() != 0) {
        coordinator_.LeaveDisplayTimer();
        return -1;
    }
    const auto docs = documents.first(std::min<std::size_t>(documents.size(), kMaxDocuments));
    int delivered = 0;
    DisplayQueueEntry entry;
    // Only what waits now: a writer that keeps adding must not hold the timer forever.
    for (std::uint32_t n = queue_.Waiting(); n > 0 && queue_.Take(entry); --n) {
        if (entry.kind == DisplayQueue::kElement && entry.element) {
            for (DisplayDocumentIF* doc : docs) {
                if (doc)
                    doc->OnDisplayNotice(DisplayDocumentIF::kStoreElement, entry.element.get());
            }
            ++delivered;
        }
        entry.element.reset();
    }
    if (delivered > 0) {
        for (DisplayDocumentIF* doc : docs) {
            if (doc) doc->OnDisplayNotice(DisplayDocumentIF::kUpdateViews, nullptr);
        }
    }
    if (refreshStatus_) refreshStatus_();
    if (!guardHeld) coordinator_.LeaveDisplayTimer();
    return delivered;
}

}  // namespace halvo

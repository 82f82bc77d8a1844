#pragma once
// How an extension finds the views it serves. It needs a major window of its own, the last one
// configured, with a plot row and at least two waterfall rows; if the installation lacks it the
// configuration is given one for the next start and the operator is told to restart. Otherwise
// the largest display shown by a plot strip of the first document is the extension's display:
// its plot views and its two waterfalls (that display and the next) get the extension, and
// those two displays are prepared for the extension's channels (9 and 8).

#include <functional>
#include <optional>
#include <vector>

namespace halvo {

class ExtensionView;
class Notifier;
class OverallConfig;
class WaterfallExtension;

struct ViewBinding {
    OverallConfig* overall = nullptr;
    Notifier* notices = nullptr;
    // The first display document's views in its order; empty when there is no document (a run
    // without windows).
    std::function<std::optional<std::vector<ExtensionView*>>()> firstDocumentViews;
    // A display the extension takes, with the channel it must show; may be empty.
    std::function<void(int display, int channel)> prepareDisplay;
};

// The display the extension was bound to, or -1 (after a message, or silently when there are no
// views to bind).
int BindViews(const ViewBinding& binding, WaterfallExtension& extension, const char* caption);

}  // namespace halvo

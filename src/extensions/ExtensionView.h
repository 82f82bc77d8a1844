#pragma once
// A view an extension serves, as the extension sees it: what kind of view it is and which
// display it shows. The window side implements it; an extension finds its views by asking.

namespace halvo {

class WaterfallExtension;

class ExtensionView {
  public:
    virtual ~ExtensionView() = default;
    // "CWaterfallView", "PlotView" or "XYPlotView".
    virtual const char* ViewKind() const = 0;
    virtual int DisplayIndex() const = 0;
    // From now on the view calls this extension (null: none).
    virtual void AttachExtension(WaterfallExtension* extension) = 0;
};

}  // namespace halvo

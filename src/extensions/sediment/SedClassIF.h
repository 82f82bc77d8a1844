#pragma once
// The extension for sediment classification: deconvolution, frequency bands, layer picks and the
// attenuation fit. Switched on from the installation file. For now it binds to its window at
// phase 3 (asking for one when the installation lacks it); its processing, pages and hooks
// arrive with the classification itself.

#include "extensions/BindViews.h"
#include "extensions/HalvoExtension.h"
#include "extensions/WaterfallExtension.h"

namespace halvo {

class SedClassIF final : public HalvoExtension {
  public:
    static constexpr const char* kCaption = "Sediment Classification";

    const char* Name() const override { return "SedimentClassification"; }
    // Views exist from phase 3: the extension binds to its own window then.
    void StartPhase(int phase) override {
        if (phase == 3) display_ = BindViews(binding_, waterfall_, kCaption);
    }

    void SetViewBinding(ViewBinding binding) { binding_ = std::move(binding); }
    // The display it serves once bound, or -1.
    int BoundDisplay() const { return display_; }

  private:
    ViewBinding binding_;
    WaterfallExtension waterfall_;  // its hooks arrive with the classification itself
    int display_ = -1;
};

}  // namespace halvo

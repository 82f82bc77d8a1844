#pragma once
// The extension for sediment classification: deconvolution, frequency bands, layer picks and the
// attenuation fit. Switched on from the installation file; until its processing and pages are built
// it takes part in the start-up and settings calls and does nothing in them.

#include "extensions/HalvoExtension.h"

namespace halvo {

class SedClassIF final : public HalvoExtension {
  public:
    const char* Name() const override { return "SedimentClassification"; }
};

}  // namespace halvo

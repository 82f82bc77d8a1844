#pragma once
// The extension for the focus blending of a side-scan with focus elements. Switched on from the
// installation file; until its processing and pages are built it takes part in the start-up and
// settings calls and does nothing in them.

#include "extensions/HalvoExtension.h"

namespace halvo {

class DFExtensionIF final : public HalvoExtension {
  public:
    const char* Name() const override { return "DynamicFocus"; }
};

}  // namespace halvo

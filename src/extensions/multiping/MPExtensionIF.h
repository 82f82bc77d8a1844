#pragma once
// The extension for multi-ping statistics and calibration of a side-scan with several pulses in the
// water. Switched on from the installation file; until its processing and pages are built it takes
// part in the start-up and settings calls and does nothing in them.

#include "extensions/HalvoExtension.h"

namespace halvo {

class MPExtensionIF final : public HalvoExtension {
  public:
    const char* Name() const override { return "MultiPing"; }
};

}  // namespace halvo

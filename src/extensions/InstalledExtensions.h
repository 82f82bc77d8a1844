#pragma once
// The program's three extensions. All three exist in every run; only those the installation
// switches on are registered, and only registered ones are ever called.

#include "extensions/ExtensionList.h"
#include "extensions/dynamicfocus/DFExtensionIF.h"
#include "extensions/multiping/MPExtensionIF.h"
#include "extensions/sediment/SedClassIF.h"

namespace halvo {

class InstalledExtensions {
  public:
    // From section HalvoConfig: MultiPing 2 is dynamic focus, any other non-zero value
    // multi-ping (the two cannot both run), then sediment classification when non-zero. The
    // multi-ping family is always registered first.
    void SwitchOn(int multiPing, int sedimentClassification);

    ExtensionList& List() { return list_; }
    SedClassIF& Sediment() { return sediment_; }
    MPExtensionIF& MultiPing() { return multiPing_; }
    DFExtensionIF& DynamicFocus() { return dynamicFocus_; }

  private:
    ExtensionList list_;
    SedClassIF sediment_;
    MPExtensionIF multiPing_;
    DFExtensionIF dynamicFocus_;
};

}  // namespace halvo

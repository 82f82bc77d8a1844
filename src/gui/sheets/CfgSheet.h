#pragma once
// The modeless "Status And Control" sheet that stays open beside the displays. Its pages go in
// the fixed order below, whatever order they are made in.

#include <vector>

#include "gui/sheets/PageSheet.h"

namespace halvo {

class CfgExtension;

class CfgSheet : public PageSheet {
  public:
    enum Slot {
        SetupWizard,
        CfgStorage,
        CfgSonarR90,
        CfgSonar,  // one per sonar, captioned with the sonar's name
        CfgSonarRC900,
        SetupAlert,
        SetupLiveVideo,
        CfgDisplay,  // one per display
        CfgDevices,
        CfgGraph,
        CfgCapture,
        SetupStatus,
        SetupTelemetry,
        SetupNav,
        CfgPrinter,
        SetupLogs,
        SetupQC,
        Extension,  // pages of extensions come last
    };

    explicit CfgSheet(SheetContext& context, QWidget* parent = nullptr);

    // Adds a page in its slot; the slot also says when the timer visits it.
    void AddPage(SheetPage* page, Slot slot);
    // An extension's page goes behind the fixed pages, in the order of the calls, and its hook
    // gets OnSheetTimer at every timer pass after the pages. A null hook is ignored.
    void AddExtensionPage(CfgExtension* hook);
    int ExtensionHooks() const { return static_cast<int>(extensionHooks_.size()); }

  private:
    std::vector<CfgExtension*> extensionHooks_;

    static TickGroup GroupOf(Slot slot);
};

}  // namespace halvo

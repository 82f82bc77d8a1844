#include "gui/sheets/CfgSheet.h"

#include "gui/extensions/CfgExtension.h"

namespace halvo {

CfgSheet::CfgSheet(SheetContext& context, QWidget* parent)
    : PageSheet(context, "Status And Control", "Windows Exception In On Timer Cfg Sheet", parent) {
    setModal(false);
    // A tool window of its own, so it can sit beside the displays.
    setWindowFlag(Qt::Window, true);
}

void CfgSheet::AddPage(SheetPage* page, Slot slot) {
    PageSheet::AddPage(page, slot, GroupOf(slot));
}

void CfgSheet::AddExtensionPage(CfgExtension* hook) {
    if (hook == nullptr) return;
    if (extensionHooks_.empty()) {
        extensionHooks_.reserve(10);
        // One timer hook walks them all, in the order they came, after the pages' ticks.
        AddTimerHook([this] {
            for (CfgExtension* h : extensionHooks_) h->OnSheetTimer(0, *this);
        });
    }
    extensionHooks_.push_back(hook);
    if (SheetPage* page = hook->GetPage()) AddPage(page, Extension);
}

PageSheet::TickGroup CfgSheet::GroupOf(Slot slot) {
    switch (slot) {
        case CfgSonar:
        case CfgSonarRC900:
            return TickGroup::Sonar;
        case CfgSonarR90:
            return TickGroup::SonarR90;
        case CfgDisplay:
            return TickGroup::Display;
        default:
            return TickGroup::Other;
    }
}

}  // namespace halvo

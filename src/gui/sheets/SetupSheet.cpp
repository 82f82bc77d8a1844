#include "gui/sheets/SetupSheet.h"

namespace halvo {

SetupSheet::SetupSheet(SheetContext& context, QWidget* parent)
    : PageSheet(context, "Setup", "Windows Exception In On Timer Setup Sheet", parent) {
    setWindowFlag(Qt::Window, true);
}

void SetupSheet::AddPage(SheetPage* page, TickGroup group) {
    PageSheet::AddPage(page, next_++, group);
}

}  // namespace halvo

#pragma once
// The dialog of advanced pages. Same timer and guard as the "Status And Control" sheet; its
// pages go in the order the program adds them.

#include "gui/sheets/PageSheet.h"

namespace halvo {

class SetupSheet : public PageSheet {
  public:
    explicit SetupSheet(SheetContext& context, QWidget* parent = nullptr);

    // Adds a page after those already there.
    void AddPage(SheetPage* page, TickGroup group = TickGroup::Other);

  private:
    int next_ = 0;
};

}  // namespace halvo

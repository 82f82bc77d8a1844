#pragma once
// The base of the pages over one display's record: the exchange runs under the lock of the set,
// so the bottom tracker cannot write between a read and a write of the same record, and any
// change bumps the record, which every snapshot holder then sees.

#include "display/DisplayProcessingConfig.h"
#include "gui/editors/FieldEditor.h"
#include "gui/sheets/SheetPage.h"

namespace halvo {

class DisplayProcessingSet;

class DisplayRecordPage : public SheetPage {
  public:
    DisplayRecordPage(SheetContext& context, QString caption, DisplayProcessingSet& displays,
                      int display, QWidget* parent = nullptr);

    int GetChangeCount() override;
    int DoIO(int direction) override;
    int Display() const { return display_; }

  protected:
    // One editor call per control, with the locked record. Extra changes that are not fields of
    // the record may be counted in `extra`.
    virtual void Bind(FieldEditor& ed, int direction, DisplayProcessingConfig& record) = 0;
    // Exchanges outside the record, after the lock is released; returns the changes made.
    virtual int BindOutside(int direction) {
        (void)direction;
        return 0;
    }
    DisplayProcessingSet& Displays() { return displays_; }

  private:
    DisplayProcessingSet& displays_;
    int display_;
};

}  // namespace halvo

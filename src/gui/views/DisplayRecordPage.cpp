#include "gui/views/DisplayRecordPage.h"

#include "display/DisplayProcessingSet.h"

namespace halvo {

DisplayRecordPage::DisplayRecordPage(SheetContext& context, QString caption,
                                     DisplayProcessingSet& displays, int display, QWidget* parent)
    : SheetPage(context, std::move(caption), parent), displays_(displays), display_(display) {}

int DisplayRecordPage::GetChangeCount() {
    auto record = displays_.Lock(display_);
    return record->revision;
}

int DisplayRecordPage::DoIO(int direction) {
    int changes = 0;
    {
        auto record = displays_.Lock(display_);
        FieldEditor ed;
        Bind(ed, direction, *record);
        changes = ed.Changes();
        // A value held to its range while shown is a change of the record too.
        if (changes > 0) record.Bump();
    }
    return changes + BindOutside(direction);
}

}  // namespace halvo

#pragma once
// A page over one settings record. DoIO takes a fresh copy from the owner, lets the page bind
// each control to a field of the copy through a FieldEditor, and writes the copy back through
// the owner's setter when the operator changed anything. The sheet's timer compares the owner's
// change count, so a change made elsewhere shows up here within a tick.
//
//   struct GeneralPage : SettingsPage<GeneralValues> {
//       void Bind(FieldEditor& ed, int dir, GeneralValues& v) override {
//           ed.Int(dir, speed_, v.WaterSoundSpeed, 1300, 1700);
//       }
//   };

#include <functional>
#include <utility>

#include "gui/editors/FieldEditor.h"
#include "gui/sheets/SheetPage.h"

namespace halvo {

template <class Record>
class SettingsPage : public SheetPage {
  public:
    struct Owner {
        std::function<Record()> get;
        std::function<void(const Record&)> set;
        std::function<int()> changeCount;
    };

    SettingsPage(SheetContext& context, QString caption, Owner owner, QWidget* parent = nullptr)
        : SheetPage(context, std::move(caption), parent), owner_(std::move(owner)) {}

    int GetChangeCount() override { return owner_.changeCount ? owner_.changeCount() : 0; }

    // Returns the editor's count of changes, refused entries included, so that a refused or
    // held entry is shown again at once with the stored value.
    int DoIO(int direction) override {
        if (!owner_.get) return 0;
        Record copy = owner_.get();
        FieldEditor ed;
        Bind(ed, direction, copy);
        if (direction == kRead && ed.Changes() > 0 && owner_.set) owner_.set(copy);
        return ed.Changes();
    }

  protected:
    // One editor call per control, each with the field of the copy it shows.
    virtual void Bind(FieldEditor& ed, int direction, Record& record) = 0;

  private:
    Owner owner_;
};

}  // namespace halvo

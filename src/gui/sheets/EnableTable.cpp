#include "gui/sheets/EnableTable.h"

#include <algorithm>

namespace halvo {

void EnableTable::Register(QWidget* control, std::uint64_t mask) {
    if (control == nullptr) return;
    entries_.push_back(Entry{control, mask, -1});
    Apply(entries_.back());
}

void EnableTable::SetBits(std::uint64_t bits) {
    if (bits == bits_) return;
    bits_ = bits;
    // Controls whose page has gone leave the table on the next walk.
    std::erase_if(entries_, [](const Entry& e) { return e.control.isNull(); });
    for (Entry& e : entries_) Apply(e);
}

void EnableTable::SetBit(int bit, bool on) {
    if (bit < 0 || bit > 63) return;
    const std::uint64_t m = std::uint64_t{1} << bit;
    SetBits(on ? (bits_ | m) : (bits_ & ~m));
}

void EnableTable::Apply(Entry& e) {
    if (e.control.isNull()) return;
    const int state = (e.mask & bits_) != 0 ? 1 : 0;
    if (state == e.applied) return;
    e.applied = state;
    e.control->setEnabled(state != 0);
}

}  // namespace halvo

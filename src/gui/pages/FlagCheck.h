#pragma once
// One check box per bit of a flags word: the box shows whether the bit is set, and reading it
// sets or clears that bit alone, so boxes of one word never disturb each other's bits.

#include <cstdint>

#include "gui/editors/FieldEditor.h"

namespace halvo {

inline int CheckBit(FieldEditor& ed, int dir, QAbstractButton* box, std::int32_t& word,
                    std::uint32_t bit) {
    auto bits = static_cast<std::uint32_t>(word);
    std::int32_t on = (bits & bit) != 0 ? 1 : 0;
    const int r = ed.Check(dir, box, on);
    if (dir == FieldEditor::kRead && r != 0) {
        bits = on != 0 ? (bits | bit) : (bits & ~bit);
        word = static_cast<std::int32_t>(bits);
    }
    return r;
}

}  // namespace halvo

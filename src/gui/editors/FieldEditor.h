#pragma once
// The field editors: a DoIO builds one on the stack and calls one operation per control. Each
// operation exchanges one value between a settings copy and a control, in the direction given:
// 1 shows the value in the control, 0 reads the control into the value. The editor counts the
// changes it made, so the page knows whether its copy must be written back.
//
// Direction 1 returns 1 when the value had to be held to its range (and stores the held value
// back), else 0. Direction 0 returns 0 when nothing changed or the text was refused, else 1,
// or 2 when the new value was also held. A control that is null is skipped.

#include <cstdint>
#include <span>
#include <string>

#include "core/TimeValue.h"
#include "gui/editors/FieldText.h"

class QAbstractButton;
class QAbstractSlider;
class QComboBox;
class QLineEdit;

namespace halvo {

// One choice of a list field. A table ends at its first entry with no text, or after
// FieldEditor::kMaxListEntries entries.
struct ListEntry {
    std::int32_t value = 0;
    const char* text = nullptr;
};

class FieldEditor {
  public:
    static constexpr int kShow = 1;
    static constexpr int kRead = 0;
    static constexpr int kMaxListEntries = 100;
    // Characters of a control's text that are read.
    static constexpr int kMaxTextChars = 100;

    int Changes() const { return changes_; }

    // Integer, "%d"/"%u"/"%x"/"%o" by the flags (fieldtext::kHex, kUnsigned, kOctal). With
    // min above max any value is taken. The range is compared in unsigned terms when the flags
    // say unsigned.
    int Int(int dir, QLineEdit* ctl, std::int32_t& value, std::int32_t min, std::int32_t max,
            unsigned flags = 0);
    int UInt(int dir, QLineEdit* ctl, std::uint32_t& value, std::uint32_t min, std::uint32_t max,
             unsigned flags = fieldtext::kUnsigned);
    // Float shown with "%2.<decimals>f".
    int Float(int dir, QLineEdit* ctl, float& value, float min, float max, int decimals);
    // Float shown with "%<width>.<decimals>f".
    int FloatWidth(int dir, QLineEdit* ctl, float& value, float min, float max, int width,
                   int decimals);
    // Two numbers in one field: "%<w>.<d>f %<w>.<d>f" read with "%f %f", or "%d %d".
    int Pair(int dir, QLineEdit* ctl, float& a, float& b, int width, int decimals);
    int Pair(int dir, QLineEdit* ctl, std::int32_t& a, std::int32_t& b);
    // A value chosen from a table; a value the table lacks shows as "<Unknown %d>".
    int List(int dir, QComboBox* ctl, std::int32_t& value, std::span<const ListEntry> table);
    // Latitude or longitude in degrees; unit 0 "%9.3f", 1 and 2 degrees and minutes.
    int Position(int dir, QLineEdit* ctl, double& degrees, fieldtext::Axis axis, int unit);
    int PositionPair(int dir, QLineEdit* ctl, double& latitude, double& longitude, int unit);
    // Program time, "%02d/%02d/%04d %02d:%02d:%02d.%03d" or "Invalid".
    int DateTime(int dir, QLineEdit* ctl, TimeValue& time);
    // Text, cut to maxChars.
    int Text(int dir, QLineEdit* ctl, std::string& value, std::size_t maxChars);
    // Check box: non-zero is checked; reading stores 1 or 0.
    int Check(int dir, QAbstractButton* ctl, std::int32_t& value);
    // One radio button of a group: checked while value equals mine.
    int Radio(int dir, QAbstractButton* ctl, std::int32_t& value, std::int32_t mine);
    // Slider position, held to the slider's range.
    int Slider(int dir, QAbstractSlider* ctl, std::int32_t& value);

  private:
    int IntBits(int dir, QLineEdit* ctl, std::uint32_t& bits, std::uint32_t min, std::uint32_t max,
                unsigned flags);
    int FloatFormat(int dir, QLineEdit* ctl, float& value, float min, float max, int width,
                    int decimals);
    // Shows text unless the control already holds it, so the caret stays where it is.
    static void Show(QLineEdit* ctl, const std::string& text);
    static std::string Read(QLineEdit* ctl);

    int changes_ = 0;
};

}  // namespace halvo

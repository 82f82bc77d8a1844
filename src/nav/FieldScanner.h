#pragma once
// Field scanning for sentences. Each scanner acts like the scanf conversion it is named after
// (leading blanks skipped, the longest number prefix taken, trailing junk left alone) but works
// on a bounded view, never on a terminator, and refuses what scanf would silently turn into
// nonsense: numbers out of range, "inf", "nan" and hexadecimal floats.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace halvo {

// On success the view is advanced past what was read; on failure it is left as it was.
bool ScanDouble(std::string_view& in, double& out);               // "%lf"
bool ScanFloat(std::string_view& in, float& out);                 // "%f"
bool ScanInt(std::string_view& in, int& out, int width = 0);      // "%d", "%2d", "%4d"
bool ScanAutoInt(std::string_view& in, int& out, int width = 0);  // "%i", "%2i": 0x hex, 0 octal
bool ScanChar(std::string_view& in, char& out);                   // "%c": no blank skipping

// "%2d%2d%f" (or "%2i%2i%f" with autoBase): true only when all three were read.
bool ScanClock(std::string_view in, int& hour, int& minute, float& second, bool autoBase = false);

// The text of a sentence: up to the first carriage return, line feed or zero byte.
std::string_view SentenceBody(std::string_view raw);

// Walks the comma fields behind a sentence's name. The first field starts after the first comma
// at or behind `start`. A field ends at ",", at "*" (after which nothing is a field) or at the
// end of the text. With escapes, "^" and the two characters behind it never end a field.
class FieldCursor {
  public:
    FieldCursor(std::string_view text, std::size_t start);

    // The next field, possibly empty; false when there are no fields left.
    bool Next(std::string_view& field, bool escapes = false);
    // Skips one field; false when there was none.
    bool Skip() {
        std::string_view f;
        return Next(f);
    }

  private:
    std::string_view text_;
    std::size_t pos_ = 0;
    bool more_ = false;
};

}  // namespace halvo

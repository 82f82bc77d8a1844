#pragma once
// The text rules of the field editors, without any window: how a value is shown in a field and
// how a field's text is read back. Reading follows the old scanf conversions: leading blanks are
// skipped, a conversion stops at the first character that does not fit, and it fails only when
// not one digit was found. Integers wrap modulo 2^32 instead of overflowing. None of this
// depends on the process locale, so a decimal comma in the environment changes nothing.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/TimeValue.h"

namespace halvo::fieldtext {

// Flags of an integer field. Hexadecimal and octal imply unsigned.
constexpr unsigned kHex = 1;
constexpr unsigned kUnsigned = 2;
constexpr unsigned kOctal = 4;

// Normalises the flag word: hexadecimal and octal imply unsigned.
unsigned IntFlags(unsigned flags);

// A cursor over a field's text, one scanf conversion per call. A failed call leaves the cursor
// where it was.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : text_(text) {}

    // "%d" (base 10), "%u" (base 10), "%o" (base 8), "%x" (base 16, optional 0x).
    bool Int(int base, std::uint32_t& out);
    // "%f": plain decimal forms only; infinities, NaN and out-of-range values fail.
    bool Float(double& out);
    // A blank in a format: any number of blanks, none included.
    void Blanks();
    // A literal character of a format.
    bool Literal(char c);
    // "%1s": skips blanks and takes one non-blank character.
    bool Char(char& out);

  private:
    std::string_view text_;
    std::size_t pos_ = 0;
};

// "%d", "%u", "%o" or "%x" by the flags.
std::string FormatInt(std::uint32_t bits, unsigned flags);
// "%<width>.<decimals>f"; width is held to 0..40 and decimals to 0..12.
std::string FormatFixed(double value, int width, int decimals);

// Positions in degrees, north and east positive. Units: 0 decimal degrees, 1 degrees and
// minutes to 4 decimals, 2 to 5 decimals; any other unit counts as 0.
enum class Axis { Latitude, Longitude };
std::string FormatPosition(double degrees, Axis axis, int unit);
// Reads "%f" for unit 0, else "%d:%f%1s" where the letter, if any, is the axis' hemisphere.
std::optional<double> ParsePosition(std::string_view text, Axis axis, int unit);
// Two positions, latitude first: "%f %f" for unit 0, else "%d:%f%1s %d:%f%1s".
std::string FormatPositionPair(double latitude, double longitude, int unit);
bool ParsePositionPair(std::string_view text, int unit, double& latitude, double& longitude);

// "%02d/%02d/%04d %02d:%02d:%02d.%03d" (month/day/year, UTC), or "Invalid" for a time before
// 1970 or with milliseconds out of 0..999.
std::string FormatDateTime(const TimeValue& time);
// Reads "%d/%d/%d %d:%d:%d.%d"; the milliseconds may be left off. Dates that do not exist and
// times outside the 32-bit seconds of the program clock are refused.
std::optional<TimeValue> ParseDateTime(std::string_view text);

}  // namespace halvo::fieldtext

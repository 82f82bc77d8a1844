#pragma once
// One settings file held in memory as its lines, each with its own line ending, so that an edit
// touches only the line it changes and every other byte is written back as it was read.
//
// Lookup follows the private-profile rules: sections in square brackets, section and key names
// compared without regard to ASCII case and with surrounding blanks ignored, the first matching
// section wins, and within it the first matching key. Lines that are neither a section header
// nor "key=value" are kept verbatim and never match.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace halvo {

class ProfileDocument {
  public:
    static ProfileDocument Parse(std::string_view bytes);
    std::string Serialise() const;

    // The value of key in the first section of that name; nullopt when either is missing.
    // Blanks around the value and one pair of matching quotes are removed; a NUL byte ends it.
    std::optional<std::string> Find(std::string_view section, std::string_view key) const;

    // Every section header in file order, duplicates included.
    std::vector<std::string> SectionNames() const;

    // Replaces the value of an existing key in place, or adds the key at the end of its section,
    // or adds the section at the end of the document. The value is cut at the first CR, LF or NUL
    // so that it can never start a new line. False (document unchanged) for a name that could
    // not be read back: empty, or holding a line break, NUL, '=' in a key, ']' in a section.
    bool Set(std::string_view section, std::string_view key, std::string_view value);

    // False when there was nothing to remove.
    bool RemoveKey(std::string_view section, std::string_view key);
    bool RemoveSection(std::string_view section);

    static bool IsWritableSection(std::string_view section);
    static bool IsWritableKey(std::string_view key);

  private:
    struct Line {
        std::string text;  // without its line ending
        std::string eol;   // "\n", "\r\n", or empty on a last line that has none
    };
    struct Range {
        std::size_t header = 0;  // index of the section's header line
        std::size_t end = 0;     // one past its last line
    };

    std::optional<Range> FindSection(std::string_view section) const;
    std::optional<std::size_t> FindKey(const Range& range, std::string_view key) const;
    std::string PreferredEol() const;

    std::vector<Line> lines_;
    std::string bom_;  // a byte-order mark the file began with, kept for the save
};

}  // namespace halvo

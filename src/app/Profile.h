#pragma once
// Settings files read and written key by key, with the private-profile rules every settings
// helper relies on: a missing file or key gives the default, a write creates the file and the
// section and leaves every other line as it was, values are cut at the caller's buffer size.
//
// Every call reads the file afresh; nothing is cached, so a file edited by hand between two
// calls is seen at once. Names written with backslashes ("\\") are taken with '/' instead.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace halvo {

class Profile {
  public:
    // Larger files are not settings files: reads give defaults and writes leave them alone.
    static constexpr std::size_t kMaxFileBytes = 8u * 1024u * 1024u;

    // The Linux name of a settings file: every '\' becomes '/'.
    static std::string NativeName(std::string_view file);

    // The value, cut to at most maxChars characters; def (without its trailing blanks, and also
    // cut) when the file, the section or the key is missing or the file cannot be read.
    static std::string ReadString(std::string_view file, std::string_view section,
                                  std::string_view key, std::string_view def, std::size_t maxChars);

    // Section names in file order; empty when the file is missing.
    static std::vector<std::string> SectionNames(std::string_view file);

    // False when the file could not be read or written or the name is not writable; the file
    // is then as it was. The new contents replace the old in one rename, so a reader never sees
    // half a file.
    static bool WriteString(std::string_view file, std::string_view section, std::string_view key,
                            std::string_view value);
    static bool DeleteKey(std::string_view file, std::string_view section, std::string_view key);
    static bool DeleteSection(std::string_view file, std::string_view section);
};

}  // namespace halvo

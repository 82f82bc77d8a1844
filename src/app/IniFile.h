#pragma once
// The work record of every settings load and save: one section of one file (or of the active
// settings file), read and written key by key, with the number formats every owner shares.
//
// Reads come in two kinds. A plain read passes its default to the file as text, so a missing key
// and a present one go through the same parse. An "OrCreate" read passes the sentinel instead,
// learns whether the key exists, and can write the default when it does not.
//
// ReadFloat and ReadInt treat bad text differently on purpose: a float that does not parse reads
// as 0, an integer that does not parse reads as the default. Callers rely on both.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace halvo {

class SystemCoordinator;

class IniFile {
  public:
    // Marks a key that is absent; never a real value.
    static constexpr std::string_view kSentinel = "EMPTY_STRING_RETURN_TEST_VALUE_2011";
    static constexpr std::size_t kSectionChars = 99;
    static constexpr std::size_t kValueChars = 199;
    static constexpr std::size_t kFileChars = 99;
    static constexpr std::size_t kMaxBlobBytes = 98;
    // An OrCreate read writes its default only when it is shorter than this.
    static constexpr std::size_t kMaxCreateChars = 2048;

    explicit IniFile(const SystemCoordinator& coordinator) : coordinator_(coordinator) {}

    // Chooses section and file; an empty file means the active settings file, looked up afresh
    // at every read and write. Both names are cut to their field sizes.
    void Open(std::string_view section, std::string_view file = {});

    bool WriteString(std::string_view key, std::string_view value);
    bool WriteFloat(std::string_view key, double value);       // "%f"
    bool WriteInt(std::string_view key, std::int32_t value);   // "%d"
    bool WriteHex(std::string_view key, std::uint32_t value);  // "%X"
    // Two letters per byte, low nibble first, each nibble added to 'a'. False, and nothing
    // written, for more than kMaxBlobBytes bytes.
    bool WriteBlob(std::string_view key, std::span<const std::uint8_t> data);

    std::string ReadString(std::string_view key, std::string_view def);
    // def may be null: then an absent key reads as empty and nothing is written.
    std::string ReadStringOrCreate(std::string_view key, const char* def, bool create);
    double ReadFloat(std::string_view key, double def);
    double ReadFloatOrCreate(std::string_view key, double def, bool create);
    std::int32_t ReadInt(std::string_view key, std::int32_t def);
    std::int32_t ReadIntOrCreate(std::string_view key, std::int32_t def, bool create);
    std::uint32_t ReadHex(std::string_view key, std::uint32_t def);

    const std::string& Section() const { return section_; }
    const std::string& File() const { return file_; }
    // The file reads and writes go to now.
    std::string TargetFile() const;

    // Number formats shared with code that writes values without an IniFile. Parsers return
    // false on text that does not start with a number; the result is then untouched.
    static std::string FormatFloat(double value);
    static bool ParseFloat(std::string_view text, double& out);       // "%f"
    static bool ParseInt(std::string_view text, std::int32_t& out);   // "%i": 0x.. hex, 0.. octal
    static bool ParseHex(std::string_view text, std::uint32_t& out);  // "%X"

  private:
    std::string Raw(std::string_view key, std::string_view def);
    bool IsAbsent(std::string_view value, std::size_t compared) const;

    const SystemCoordinator& coordinator_;
    std::string section_;
    std::string file_;
};

}  // namespace halvo

#include "app/IniFile.h"

#include <charconv>
#include <cstring>

#include "app/Profile.h"
#include "app/SystemCoordinator.h"

namespace halvo {

namespace {

// How much of a read result is compared with the sentinel: whole texts, and numbers.
constexpr std::size_t kTextCompare = 200;
constexpr std::size_t kNumberCompare = 40;

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

int DigitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return 99;
}

// Leading blanks and an optional sign, as scanf takes them. Returns the index after them.
std::size_t SkipSpaceAndSign(std::string_view text, bool& negative) {
    std::size_t i = 0;
    while (i < text.size() && IsSpace(text[i])) ++i;
    negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        negative = text[i] == '-';
        ++i;
    }
    return i;
}

// Digits of one base from i on, modulo 2^32 as a 32-bit scan wraps. Returns the count of digits.
std::size_t Accumulate(std::string_view text, std::size_t i, unsigned base, std::uint32_t& value) {
    std::size_t count = 0;
    value = 0;
    for (; i < text.size(); ++i, ++count) {
        const int d = DigitValue(text[i]);
        if (d >= static_cast<int>(base)) break;
        value = value * base + static_cast<std::uint32_t>(d);
    }
    return count;
}

bool HasHexPrefix(std::string_view text, std::size_t i) {
    return i + 2 < text.size() && text[i] == '0' && (text[i + 1] == 'x' || text[i + 1] == 'X') &&
           DigitValue(text[i + 2]) < 16;
}

std::uint32_t ApplySign(std::uint32_t v, bool negative) {
    return negative ? 0u - v : v;
}

std::string FormatHexText(std::uint32_t value) {
    char buf[16];
    const auto res = std::to_chars(buf, buf + sizeof buf, value, 16);
    std::string text(buf, res.ptr);
    for (char& c : text) {
        if (c >= 'a' && c <= 'f') c = static_cast<char>(c - 'a' + 'A');
    }
    return text;
}

}  // namespace

std::string IniFile::FormatFloat(double value) {
    char buf[400];
    const auto res = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::fixed, 6);
    if (res.ec != std::errc{}) return "0.000000";
    return std::string(buf, res.ptr);
}

bool IniFile::ParseFloat(std::string_view text, double& out) {
    bool negative = false;
    const std::size_t i = SkipSpaceAndSign(text, negative);
    // Only plain decimal forms: infinities, NaN and hexadecimal floats are not settings values.
    if (i >= text.size()) return false;
    if (!IsDigit(text[i]) && !(text[i] == '.' && i + 1 < text.size() && IsDigit(text[i + 1]))) {
        return false;
    }
    double v = 0;
    const auto res =
        std::from_chars(text.data() + i, text.data() + text.size(), v, std::chars_format::general);
    if (res.ec != std::errc{}) return false;
    out = negative ? -v : v;
    return true;
}

bool IniFile::ParseInt(std::string_view text, std::int32_t& out) {
    bool negative = false;
    std::size_t i = SkipSpaceAndSign(text, negative);
    if (i >= text.size() || !IsDigit(text[i])) return false;
    unsigned base = 10;
    if (HasHexPrefix(text, i)) {
        base = 16;
        i += 2;
    } else if (text[i] == '0') {
        base = 8;
    }
    std::uint32_t v = 0;
    Accumulate(text, i, base, v);
    out = static_cast<std::int32_t>(ApplySign(v, negative));
    return true;
}

bool IniFile::ParseHex(std::string_view text, std::uint32_t& out) {
    bool negative = false;
    std::size_t i = SkipSpaceAndSign(text, negative);
    if (HasHexPrefix(text, i)) i += 2;
    std::uint32_t v = 0;
    if (Accumulate(text, i, 16, v) == 0) return false;
    out = ApplySign(v, negative);
    return true;
}

void IniFile::Open(std::string_view section, std::string_view file) {
    section_.assign(section.substr(0, kSectionChars));
    file_.assign(file.substr(0, kFileChars));
}

std::string IniFile::TargetFile() const {
    return file_.empty() ? coordinator_.ActiveProfile() : file_;
}

std::string IniFile::Raw(std::string_view key, std::string_view def) {
    return Profile::ReadString(TargetFile(), section_, key, def, kValueChars);
}

bool IniFile::IsAbsent(std::string_view value, std::size_t compared) const {
    return value.substr(0, compared) == kSentinel.substr(0, compared);
}

bool IniFile::WriteString(std::string_view key, std::string_view value) {
    return Profile::WriteString(TargetFile(), section_, key, value);
}

bool IniFile::WriteFloat(std::string_view key, double value) {
    return WriteString(key, FormatFloat(value));
}

bool IniFile::WriteInt(std::string_view key, std::int32_t value) {
    return WriteString(key, std::to_string(value));
}

bool IniFile::WriteHex(std::string_view key, std::uint32_t value) {
    return WriteString(key, FormatHexText(value));
}

bool IniFile::WriteBlob(std::string_view key, std::span<const std::uint8_t> data) {
    if (data.size() > kMaxBlobBytes) return false;
    std::string text;
    text.reserve(data.size() * 2);
    for (const std::uint8_t b : data) {
        text += static_cast<char>('a' + (b & 0x0F));
        text += static_cast<char>('a' + (b >> 4));
    }
    return WriteString(key, text);
}

std::string IniFile::ReadString(std::string_view key, std::string_view def) {
    return Raw(key, def);
}

std::string IniFile::ReadStringOrCreate(std::string_view key, const char* def, bool create) {
    std::string value = Raw(key, kSentinel);
    if (!IsAbsent(value, kTextCompare)) return value;
    if (def == nullptr) return {};
    const std::size_t length = ::strnlen(def, kMaxCreateChars);
    const std::string_view text(def, length);
    if (create && length < kMaxCreateChars) WriteString(key, text);
    return std::string(text.substr(0, kValueChars));
}

double IniFile::ReadFloat(std::string_view key, double def) {
    double v = 0;  // bad text reads as 0, not as the default
    ParseFloat(Raw(key, FormatFloat(def)), v);
    return v;
}

double IniFile::ReadFloatOrCreate(std::string_view key, double def, bool create) {
    const std::string value = Raw(key, kSentinel);
    if (IsAbsent(value, kNumberCompare)) {
        if (create) WriteFloat(key, def);
        return def;
    }
    double v = def;
    ParseFloat(value, v);
    return v;
}

std::int32_t IniFile::ReadInt(std::string_view key, std::int32_t def) {
    std::int32_t v = def;
    ParseInt(Raw(key, std::to_string(def)), v);
    return v;
}

std::int32_t IniFile::ReadIntOrCreate(std::string_view key, std::int32_t def, bool create) {
    const std::string value = Raw(key, kSentinel);
    if (IsAbsent(value, kNumberCompare)) {
        if (create) WriteInt(key, def);
        return def;
    }
    std::int32_t v = def;
    ParseInt(value, v);
    return v;
}

std::uint32_t IniFile::ReadHex(std::string_view key, std::uint32_t def) {
    std::uint32_t v = def;
    ParseHex(Raw(key, FormatHexText(def)), v);
    return v;
}

}  // namespace halvo

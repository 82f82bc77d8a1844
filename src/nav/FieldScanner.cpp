#include "nav/FieldScanner.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace halvo {

namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\v' || c == '\f';
}
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

std::size_t SkipBlanks(std::string_view in) {
    std::size_t i = 0;
    while (i < in.size() && IsBlank(in[i])) ++i;
    return i;
}

// Length of the decimal number at the start of `in` ([sign] digits [. digits] [e [sign] digits]),
// or 0 when there is none. The exponent counts only when digits follow it.
std::size_t DecimalLength(std::string_view in) {
    std::size_t i = 0, digits = 0;
    if (i < in.size() && (in[i] == '+' || in[i] == '-')) ++i;
    while (i < in.size() && IsDigit(in[i])) ++i, ++digits;
    if (i < in.size() && in[i] == '.') {
        ++i;
        while (i < in.size() && IsDigit(in[i])) ++i, ++digits;
    }
    if (digits == 0) return 0;
    if (i < in.size() && (in[i] == 'e' || in[i] == 'E')) {
        std::size_t j = i + 1;
        if (j < in.size() && (in[j] == '+' || in[j] == '-')) ++j;
        std::size_t expDigits = 0;
        while (j < in.size() && IsDigit(in[j])) ++j, ++expDigits;
        if (expDigits > 0) i = j;
    }
    return i;
}

template <class T>
bool ScanReal(std::string_view& in, T& out) {
    const std::size_t lead = SkipBlanks(in);
    std::string_view rest = in.substr(lead);
    const std::size_t len = DecimalLength(rest);
    if (len == 0) return false;
    std::string_view token = rest.substr(0, len);
    if (token.front() == '+') token.remove_prefix(1);  // from_chars takes no plus sign
    T value{};
    auto [end, ec] = std::from_chars(token.data(), token.data() + token.size(), value);
    if (ec != std::errc() || end != token.data() + token.size() || !std::isfinite(value))
        return false;
    out = value;
    in.remove_prefix(lead + len);
    return true;
}

int DigitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return 99;
}

// Reads digits of `base` from in[i], at most up to `limit`; accumulates into value.
bool Accumulate(std::string_view in, std::size_t& i, std::size_t limit, int base,
                std::int64_t& value, std::size_t& count) {
    while (i < limit && DigitValue(in[i]) < base) {
        value = value * base + DigitValue(in[i]);
        if (value > 2147483648LL) return false;  // beyond any int: refuse rather than wrap
        ++i, ++count;
    }
    return true;
}

bool ScanInteger(std::string_view& in, int& out, int width, bool autoBase) {
    const std::size_t lead = SkipBlanks(in);
    std::string_view rest = in.substr(lead);
    const std::size_t limit =
        width > 0 ? std::min<std::size_t>(rest.size(), static_cast<std::size_t>(width))
                  : rest.size();
    std::size_t i = 0;
    bool negative = false;
    if (i < limit && (rest[i] == '+' || rest[i] == '-')) negative = rest[i++] == '-';
    int base = 10;
    std::int64_t value = 0;
    std::size_t count = 0;
    if (autoBase && i < limit && rest[i] == '0') {
        // "0x" counts as a prefix only when a hex digit follows inside the width.
        if (i + 2 < limit && (rest[i + 1] == 'x' || rest[i + 1] == 'X') &&
            DigitValue(rest[i + 2]) < 16) {
            base = 16;
            i += 2;
        } else {
            base = 8;
        }
    }
    if (!Accumulate(rest, i, limit, base, value, count) || count == 0) return false;
    if (negative) value = -value;
    if (value > 2147483647LL || value < -2147483648LL) return false;
    out = static_cast<int>(value);
    in.remove_prefix(lead + i);
    return true;
}

}  // namespace

bool ScanDouble(std::string_view& in, double& out) {
    return ScanReal(in, out);
}
bool ScanFloat(std::string_view& in, float& out) {
    return ScanReal(in, out);
}

bool ScanInt(std::string_view& in, int& out, int width) {
    return ScanInteger(in, out, width, false);
}

bool ScanAutoInt(std::string_view& in, int& out, int width) {
    return ScanInteger(in, out, width, true);
}

bool ScanChar(std::string_view& in, char& out) {
    if (in.empty()) return false;
    out = in.front();
    in.remove_prefix(1);
    return true;
}

bool ScanClock(std::string_view in, int& hour, int& minute, float& second, bool autoBase) {
    int h = 0, m = 0;
    float s = 0;
    auto scanInt = autoBase ? ScanAutoInt : ScanInt;
    if (!scanInt(in, h, 2) || !scanInt(in, m, 2) || !ScanFloat(in, s)) return false;
    hour = h, minute = m, second = s;
    return true;
}

std::string_view SentenceBody(std::string_view raw) {
    const std::size_t end = raw.find_first_of(std::string_view("\r\n\0", 3));
    return end == std::string_view::npos ? raw : raw.substr(0, end);
}

FieldCursor::FieldCursor(std::string_view text, std::size_t start) : text_(text) {
    if (start > text_.size()) return;
    const std::size_t comma = text_.find(',', start);
    // A "*" before the first comma ends the sentence before any field.
    const std::size_t star = text_.find('*', start);
    if (comma == std::string_view::npos || (star != std::string_view::npos && star < comma)) return;
    pos_ = comma + 1;
    more_ = true;
}

bool FieldCursor::Next(std::string_view& field, bool escapes) {
    if (!more_) return false;
    std::size_t i = pos_;
    while (i < text_.size()) {
        const char c = text_[i];
        if (escapes && c == '^') {
            i = std::min(text_.size(), i + 3);
            continue;
        }
        if (c == ',' || c == '*') break;
        ++i;
    }
    field = text_.substr(pos_, i - pos_);
    if (i < text_.size() && text_[i] == ',') {
        pos_ = i + 1;
    } else {
        more_ = false;
        pos_ = text_.size();
    }
    return true;
}

}  // namespace halvo

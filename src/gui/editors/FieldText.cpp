#include "gui/editors/FieldText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

namespace halvo::fieldtext {
namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

int DigitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return 99;
}

// Days since 1970-01-01 of a civil date (proleptic Gregorian).
std::int64_t DaysFromCivil(std::int64_t y, unsigned m, unsigned d) {
    y -= m <= 2;
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

void CivilFromDays(std::int64_t z, int& y, int& m, int& d) {
    z += 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    y = static_cast<int>(static_cast<std::int64_t>(yoe) + era * 400 + (m <= 2));
}

int DaysInMonth(int y, int m) {
    static constexpr int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
    return m == 2 && leap ? 29 : kDays[m - 1];
}

std::int32_t AsSigned(std::uint32_t bits) {
    return static_cast<std::int32_t>(bits);  // two's complement, defined since C++20
}

char Hemisphere(Axis axis, bool negative) {
    if (axis == Axis::Latitude) return negative ? 'S' : 'N';
    return negative ? 'W' : 'E';
}

double Limit(Axis axis) {
    return axis == Axis::Latitude ? 90.0 : 180.0;
}

// One position in degrees and minutes; the letter, if given, must belong to the axis.
std::optional<double> ScanDegreesMinutes(Scanner& s, Axis axis) {
    std::uint32_t degBits = 0;
    double minutes = 0;
    if (!s.Int(10, degBits) || !s.Literal(':') || !s.Float(minutes)) return std::nullopt;
    if (!(minutes >= 0.0 && minutes < 60.0)) return std::nullopt;
    const std::int32_t deg = AsSigned(degBits);
    if (deg < -180 || deg > 180) return std::nullopt;
    bool negative = deg < 0;
    char letter = 0;
    Scanner probe = s;
    if (probe.Char(letter)) {
        const char up = static_cast<char>(letter >= 'a' && letter <= 'z' ? letter - 32 : letter);
        if (up == Hemisphere(axis, false)) {
            s = probe;
        } else if (up == Hemisphere(axis, true)) {
            negative = true;
            s = probe;
        } else if (axis == Axis::Latitude && (up == 'E' || up == 'W')) {
            return std::nullopt;
        } else if (axis == Axis::Longitude && (up == 'N' || up == 'S')) {
            return std::nullopt;
        }
        // Anything else is not a hemisphere: leave it for the next conversion.
    }
    const double magnitude = std::abs(static_cast<double>(deg)) + minutes / 60.0;
    const double value = negative ? -magnitude : magnitude;
    if (std::abs(value) > Limit(axis)) return std::nullopt;
    return value;
}

}  // namespace

unsigned IntFlags(unsigned flags) {
    if ((flags & (kHex | kOctal)) != 0) flags |= kUnsigned;
    return flags;
}

bool Scanner::Int(int base, std::uint32_t& out) {
    std::size_t i = pos_;
    while (i < text_.size() && IsBlank(text_[i])) ++i;
    bool negative = false;
    if (i < text_.size() && (text_[i] == '+' || text_[i] == '-')) {
        negative = text_[i] == '-';
        ++i;
    }
    if (base == 16 && i + 1 < text_.size() && text_[i] == '0' &&
        (text_[i + 1] == 'x' || text_[i + 1] == 'X') &&
        DigitValue(text_.size() > i + 2 ? text_[i + 2] : 'z') < 16) {
        i += 2;
    }
    std::uint32_t value = 0;
    std::size_t digits = 0;
    while (i < text_.size()) {
        const int d = DigitValue(text_[i]);
        if (d >= base) break;
        value = value * static_cast<std::uint32_t>(base) + static_cast<std::uint32_t>(d);
        ++i;
        ++digits;
    }
    if (digits == 0) return false;
    out = negative ? 0u - value : value;
    pos_ = i;
    return true;
}

bool Scanner::Float(double& out) {
    std::size_t i = pos_;
    while (i < text_.size() && IsBlank(text_[i])) ++i;
    bool negative = false;
    if (i < text_.size() && (text_[i] == '+' || text_[i] == '-')) {
        negative = text_[i] == '-';
        ++i;
    }
    const auto digit = [&](std::size_t k) { return k < text_.size() && DigitValue(text_[k]) < 10; };
    if (!digit(i) && !(i < text_.size() && text_[i] == '.' && digit(i + 1))) return false;
    double v = 0;
    const char* first = text_.data() + i;
    const auto res =
        std::from_chars(first, text_.data() + text_.size(), v, std::chars_format::general);
    if (res.ec != std::errc{}) return false;
    out = negative ? -v : v;
    pos_ = static_cast<std::size_t>(res.ptr - text_.data());
    return true;
}

void Scanner::Blanks() {
    while (pos_ < text_.size() && IsBlank(text_[pos_])) ++pos_;
}

bool Scanner::Literal(char c) {
    if (pos_ < text_.size() && text_[pos_] == c) {
        ++pos_;
        return true;
    }
    return false;
}

bool Scanner::Char(char& out) {
    std::size_t i = pos_;
    while (i < text_.size() && IsBlank(text_[i])) ++i;
    if (i >= text_.size()) return false;
    out = text_[i];
    pos_ = i + 1;
    return true;
}

std::string FormatInt(std::uint32_t bits, unsigned flags) {
    flags = IntFlags(flags);
    char buf[40];
    if (flags & kHex) {
        std::snprintf(buf, sizeof buf, "%x", bits);
    } else if (flags & kOctal) {
        std::snprintf(buf, sizeof buf, "%o", bits);
    } else if (flags & kUnsigned) {
        std::snprintf(buf, sizeof buf, "%u", bits);
    } else {
        std::snprintf(buf, sizeof buf, "%d", AsSigned(bits));
    }
    return buf;
}

std::string FormatFixed(double value, int width, int decimals) {
    width = std::clamp(width, 0, 40);
    decimals = std::clamp(decimals, 0, 12);
    std::string out;
    if (std::isnan(value)) {
        out = "nan";
    } else if (std::isinf(value)) {
        out = value < 0 ? "-inf" : "inf";
    } else {
        char buf[400];
        const auto res =
            std::to_chars(buf, buf + sizeof buf, value, std::chars_format::fixed, decimals);
        out.assign(buf, res.ec == std::errc{} ? res.ptr : buf);
    }
    if (out.size() < static_cast<std::size_t>(width)) out.insert(0, width - out.size(), ' ');
    return out;
}

std::string FormatPosition(double degrees, Axis axis, int unit) {
    if (unit != 1 && unit != 2) return FormatFixed(degrees, 9, 3);
    if (!std::isfinite(degrees)) degrees = 0;
    degrees = std::clamp(degrees, -Limit(axis), Limit(axis));
    const int decimals = unit == 1 ? 4 : 5;
    const double scale = unit == 1 ? 1e4 : 1e5;
    const bool negative = degrees < 0;
    const double magnitude = std::abs(degrees);
    int whole = static_cast<int>(magnitude);
    // Round the minutes first, so that 59.99999 does not show as 60.0000.
    double minutes = std::round((magnitude - whole) * 60.0 * scale) / scale;
    if (minutes >= 60.0) {
        minutes -= 60.0;
        ++whole;
    }
    char buf[64];
    std::snprintf(buf, sizeof buf, "%d:%s %c ", whole,
                  FormatFixed(minutes, decimals + 3, decimals).c_str(), Hemisphere(axis, negative));
    // "%07.4f" pads with zeros, not blanks.
    std::string out = buf;
    for (std::size_t i = out.find(':') + 1; i < out.size() && out[i] == ' '; ++i) out[i] = '0';
    return out;
}

std::optional<double> ParsePosition(std::string_view text, Axis axis, int unit) {
    Scanner s(text);
    if (unit != 1 && unit != 2) {
        double v = 0;
        if (!s.Float(v) || std::abs(v) > Limit(axis)) return std::nullopt;
        return v;
    }
    return ScanDegreesMinutes(s, axis);
}

std::string FormatPositionPair(double latitude, double longitude, int unit) {
    return FormatPosition(latitude, Axis::Latitude, unit) + " " +
           FormatPosition(longitude, Axis::Longitude, unit);
}

bool ParsePositionPair(std::string_view text, int unit, double& latitude, double& longitude) {
    Scanner s(text);
    std::optional<double> lat, lon;
    if (unit != 1 && unit != 2) {
        double a = 0, b = 0;
        if (!s.Float(a)) return false;
        s.Blanks();
        if (!s.Float(b)) return false;
        if (std::abs(a) > 90.0 || std::abs(b) > 180.0) return false;
        lat = a;
        lon = b;
    } else {
        lat = ScanDegreesMinutes(s, Axis::Latitude);
        if (!lat) return false;
        s.Blanks();
        lon = ScanDegreesMinutes(s, Axis::Longitude);
        if (!lon) return false;
    }
    latitude = *lat;
    longitude = *lon;
    return true;
}

std::string FormatDateTime(const TimeValue& time) {
    if (time.seconds < 0 || time.ms < 0 || time.ms > 999) return "Invalid";
    const std::int64_t days = time.seconds / 86400;
    const int rest = static_cast<int>(time.seconds % 86400);
    int y = 0, m = 0, d = 0;
    CivilFromDays(days, y, m, d);
    char buf[64];
    std::snprintf(buf, sizeof buf, "%02d/%02d/%04d %02d:%02d:%02d.%03d", m, d, y, rest / 3600,
                  rest / 60 % 60, rest % 60, time.ms);
    return buf;
}

std::optional<TimeValue> ParseDateTime(std::string_view text) {
    Scanner s(text);
    std::uint32_t f[7] = {0, 0, 0, 0, 0, 0, 0};
    static constexpr char kSeparators[6] = {'/', '/', ' ', ':', ':', '.'};
    int got = 0;
    for (int i = 0; i < 7; ++i) {
        if (i > 0) {
            if (kSeparators[i - 1] == ' ') {
                s.Blanks();
            } else if (!s.Literal(kSeparators[i - 1])) {
                break;
            }
        }
        if (!s.Int(10, f[i])) break;
        ++got;
    }
    if (got < 6) return std::nullopt;
    const std::int32_t month = AsSigned(f[0]), day = AsSigned(f[1]), year = AsSigned(f[2]);
    const std::int32_t hour = AsSigned(f[3]), minute = AsSigned(f[4]), second = AsSigned(f[5]);
    const std::int32_t ms = got == 7 ? AsSigned(f[6]) : 0;
    if (year < 1970 || year > 2038 || month < 1 || month > 12 || day < 1 ||
        day > DaysInMonth(year, month) || hour < 0 || hour > 23 || minute < 0 || minute > 59 ||
        second < 0 || second > 59 || ms < 0 || ms > 999) {
        return std::nullopt;
    }
    const std::int64_t seconds =
        DaysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day)) * 86400 +
        hour * 3600 + minute * 60 + second;
    if (seconds > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
    return TimeValue{static_cast<std::int32_t>(seconds), ms};
}

}  // namespace halvo::fieldtext

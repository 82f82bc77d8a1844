#include "status/CustomFormat.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "core/ByteOrder.h"
#include "core/TraceHeader.h"

namespace halvo {

namespace {

// Reads the numbers of the label's head the way "%f" and "%d" conversions take them: leading
// blanks skipped, as many characters as make a number. Written out rather than handed to a
// scanf, so that an out-of-range integer is clamped instead of being undefined.
class HeadReader {
  public:
    explicit HeadReader(std::string_view text) : text_(text) {}

    bool Float(float& out) {
        const std::string rest = Rest();
        char* end = nullptr;
        const float v = std::strtof(rest.c_str(), &end);
        if (end == rest.c_str()) return false;
        pos_ += static_cast<std::size_t>(end - rest.c_str());
        out = v;
        return true;
    }

    bool Int(int& out) {
        const std::string rest = Rest();
        char* end = nullptr;
        const long v = std::strtol(rest.c_str(), &end, 10);
        if (end == rest.c_str()) return false;
        pos_ += static_cast<std::size_t>(end - rest.c_str());
        out = static_cast<int>(std::clamp<long>(v, INT_MIN, INT_MAX));
        return true;
    }

    bool Comma() {
        if (pos_ >= text_.size() || text_[pos_] != ',') return false;
        ++pos_;
        return true;
    }

  private:
    // strtof and strtol want a terminated string; the label is short.
    std::string Rest() const { return std::string(text_.substr(std::min(pos_, text_.size()))); }

    std::string_view text_;
    std::size_t pos_ = 0;
};

bool ReadFourPart(std::string_view label, CustomFormat& f) {
    HeadReader r(label);
    return r.Float(f.gain) && r.Comma() && r.Float(f.offset) && r.Comma() && r.Int(f.width) &&
           r.Comma() && r.Int(f.digits);
}

bool ReadThreePart(std::string_view label, CustomFormat& f) {
    HeadReader r(label);
    return r.Float(f.gain) && r.Comma() && r.Int(f.width) && r.Comma() && r.Int(f.digits);
}

void AppendNumber(std::string& out, const CustomFormat& f, double v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%*.*f", f.width, f.digits, v);
    out += buf;
}

}  // namespace

CustomFormat CustomFormat::Parse(std::string_view label) {
    CustomFormat f;
    CustomFormat four;
    CustomFormat three;
    if (ReadFourPart(label, four)) {
        f = four;
    } else if (ReadThreePart(label, three)) {
        f = three;
        f.offset = 0.0f;
    }
    f.width = std::clamp(f.width, 0, kMaxWidth);
    f.digits = std::clamp(f.digits, 0, kMaxWidth);
    const std::string_view searched = label.substr(0, std::min(label.size(), kBarSearch));
    const std::size_t bar = searched.find('|');
    f.text = bar == std::string_view::npos ? std::string() : std::string(label.substr(bar + 1));
    return f;
}

std::string CustomFormat::Format(std::int32_t value) const {
    std::string out;
    const std::string_view t = text;
    for (std::size_t i = 0; i < t.size() && out.size() < kOutputBytes; ++i) {
        if (t[i] != '%') {
            out += t[i];
            continue;
        }
        const char next = i + 1 < t.size() ? t[i + 1] : '\0';
        if (next == '%') {
            out += '%';
            ++i;
        } else if (next == 'f' || next == 'F') {
            const double raw = std::bit_cast<float>(value);
            AppendNumber(out, *this, raw * gain + offset);
            ++i;
        } else if (next == 'x' || next == 'X') {
            char buf[16];
            std::snprintf(buf, sizeof buf, "%X", static_cast<unsigned>(value));
            out += buf;
            ++i;
        } else {
            // The character after a bare "%" is text of its own.
            AppendNumber(out, *this, static_cast<double>(value) * gain + offset);
        }
    }
    if (out.size() >= kOutputBytes) out.resize(kOutputBytes - 1);
    return out;
}

std::string FormatCustomField(std::string_view label, std::int32_t value) {
    return CustomFormat::Parse(label).Format(value);
}

std::optional<std::int32_t> ReadCustomField(std::span<const std::uint8_t> bytes, int field) {
    if (field < 0 || field >= static_cast<int>(kTraceHeaderSize)) return std::nullopt;
    const auto at = static_cast<std::size_t>(field);
    if ((field & 1) != 0) {
        std::int16_t v = 0;
        if (!ReadLE(bytes, at - 1, v)) return std::nullopt;
        return v;
    }
    std::int32_t v = 0;
    if (!ReadLE(bytes, at, v)) return std::nullopt;
    return v;
}

}  // namespace halvo

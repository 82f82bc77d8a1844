#include "gui/editors/FieldEditor.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QComboBox>
#include <QLineEdit>
#include <QSignalBlocker>
#include <algorithm>
#include <cfloat>
#include <cstdio>

namespace halvo {
namespace {

using fieldtext::Scanner;

constexpr int kUnknownRole = Qt::UserRole + 1;

// Holds bits to [min, max] in signed or unsigned terms. True when it had to.
bool HoldBits(std::uint32_t& bits, std::uint32_t min, std::uint32_t max, bool isUnsigned) {
    if (isUnsigned) {
        if (min > max) return false;
        const std::uint32_t held = std::clamp(bits, min, max);
        const bool changed = held != bits;
        bits = held;
        return changed;
    }
    const auto s = static_cast<std::int32_t>(bits);
    const auto lo = static_cast<std::int32_t>(min), hi = static_cast<std::int32_t>(max);
    if (lo > hi) return false;
    const std::int32_t held = std::clamp(s, lo, hi);
    bits = static_cast<std::uint32_t>(held);
    return held != s;
}

bool HoldFloat(float& v, float min, float max) {
    if (!(min <= max)) return false;
    const float held = v < min ? min : (v > max ? max : v);
    const bool changed = held != v;
    v = held;
    return changed;
}

// A parsed double as a float without leaving the float range.
float ToFloat(double d) {
    return static_cast<float>(
        std::clamp(d, -static_cast<double>(FLT_MAX), static_cast<double>(FLT_MAX)));
}

std::string UnknownText(std::int32_t value) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "<Unknown %d>", value);
    return buf;
}

int TableSize(std::span<const ListEntry> table) {
    int n = 0;
    for (const ListEntry& e : table) {
        if (n >= FieldEditor::kMaxListEntries || e.text == nullptr || e.text[0] == '\0') break;
        ++n;
    }
    return n;
}

// Makes the combo's items the table's entries (and nothing else), unless they already are.
void Populate(QComboBox* ctl, std::span<const ListEntry> table, int n) {
    bool same = ctl->count() >= n;
    for (int i = 0; same && i < n; ++i) {
        same = ctl->itemText(i) == QString::fromUtf8(table[i].text) &&
               ctl->itemData(i).toInt() == table[i].value &&
               !ctl->itemData(i, kUnknownRole).toBool();
    }
    if (same) return;
    const QSignalBlocker block(ctl);
    ctl->clear();
    for (int i = 0; i < n; ++i) ctl->addItem(QString::fromUtf8(table[i].text), table[i].value);
}

}  // namespace

void FieldEditor::Show(QLineEdit* ctl, const std::string& text) {
    const QString q = QString::fromStdString(text);
    if (ctl->text() != q) ctl->setText(q);
}

std::string FieldEditor::Read(QLineEdit* ctl) {
    return ctl->text().left(kMaxTextChars).toStdString();
}

int FieldEditor::IntBits(int dir, QLineEdit* ctl, std::uint32_t& bits, std::uint32_t min,
                         std::uint32_t max, unsigned flags) {
    if (ctl == nullptr) return 0;
    flags = fieldtext::IntFlags(flags);
    const bool isUnsigned = (flags & fieldtext::kUnsigned) != 0;
    if (dir != kRead) {
        const bool held = HoldBits(bits, min, max, isUnsigned);
        Show(ctl, fieldtext::FormatInt(bits, flags));
        return held ? 1 : 0;
    }
    const std::string text = Read(ctl);
    std::uint32_t v = bits;
    bool hexParsed = false;
    if (flags & fieldtext::kHex) {
        Scanner hex(text);
        if (hex.Int(16, v)) {
            hexParsed = true;
        } else {
            ++changes_;
        }
    }
    // The second parse runs on a hexadecimal field too and overwrites the first: "1F" is 1.
    Scanner plain(text);
    std::uint32_t second = v;
    if (plain.Int((flags & fieldtext::kOctal) ? 8 : 10, second)) {
        v = second;
    } else {
        ++changes_;
        if (!hexParsed) return 0;
    }
    const bool held = HoldBits(v, min, max, isUnsigned);
    if (held) ++changes_;
    std::uint32_t stored = bits;
    HoldBits(stored, min, max, isUnsigned);
    if (v == stored) return 0;
    ++changes_;
    bits = v;
    return held ? 2 : 1;
}

int FieldEditor::Int(int dir, QLineEdit* ctl, std::int32_t& value, std::int32_t min,
                     std::int32_t max, unsigned flags) {
    auto bits = static_cast<std::uint32_t>(value);
    const int r = IntBits(dir, ctl, bits, static_cast<std::uint32_t>(min),
                          static_cast<std::uint32_t>(max), flags);
    value = static_cast<std::int32_t>(bits);
    return r;
}

int FieldEditor::UInt(int dir, QLineEdit* ctl, std::uint32_t& value, std::uint32_t min,
                      std::uint32_t max, unsigned flags) {
    return IntBits(dir, ctl, value, min, max, flags | fieldtext::kUnsigned);
}

int FieldEditor::FloatFormat(int dir, QLineEdit* ctl, float& value, float min, float max, int width,
                             int decimals) {
    if (ctl == nullptr) return 0;
    if (dir != kRead) {
        const bool held = HoldFloat(value, min, max);
        Show(ctl, fieldtext::FormatFixed(value, width, decimals));
        return held ? 1 : 0;
    }
    Scanner s(Read(ctl));
    double parsed = 0;
    if (!s.Float(parsed)) {
        ++changes_;
        return 0;
    }
    float v = ToFloat(parsed);
    const bool held = HoldFloat(v, min, max);
    if (held) ++changes_;
    float stored = value;
    HoldFloat(stored, min, max);
    if (v == stored) return 0;
    ++changes_;
    value = v;
    return held ? 2 : 1;
}

int FieldEditor::Float(int dir, QLineEdit* ctl, float& value, float min, float max, int decimals) {
    return FloatFormat(dir, ctl, value, min, max, 2, decimals);
}

int FieldEditor::FloatWidth(int dir, QLineEdit* ctl, float& value, float min, float max, int width,
                            int decimals) {
    return FloatFormat(dir, ctl, value, min, max, width, decimals);
}

int FieldEditor::Pair(int dir, QLineEdit* ctl, float& a, float& b, int width, int decimals) {
    if (ctl == nullptr) return 0;
    if (dir != kRead) {
        Show(ctl, fieldtext::FormatFixed(a, width, decimals) + " " +
                      fieldtext::FormatFixed(b, width, decimals));
        return 0;
    }
    Scanner s(Read(ctl));
    double x = 0, y = 0;
    bool ok = s.Float(x);
    s.Blanks();
    ok = ok && s.Float(y);
    if (!ok) {
        ++changes_;
        return 0;
    }
    const float fx = ToFloat(x), fy = ToFloat(y);
    if (fx == a && fy == b) return 0;
    ++changes_;
    a = fx;
    b = fy;
    return 1;
}

int FieldEditor::Pair(int dir, QLineEdit* ctl, std::int32_t& a, std::int32_t& b) {
    if (ctl == nullptr) return 0;
    if (dir != kRead) {
        Show(ctl, std::to_string(a) + " " + std::to_string(b));
        return 0;
    }
    Scanner s(Read(ctl));
    std::uint32_t x = 0, y = 0;
    bool ok = s.Int(10, x);
    s.Blanks();
    ok = ok && s.Int(10, y);
    if (!ok) {
        ++changes_;
        return 0;
    }
    const auto sx = static_cast<std::int32_t>(x), sy = static_cast<std::int32_t>(y);
    if (sx == a && sy == b) return 0;
    ++changes_;
    a = sx;
    b = sy;
    return 1;
}

int FieldEditor::List(int dir, QComboBox* ctl, std::int32_t& value,
                      std::span<const ListEntry> table) {
    if (ctl == nullptr) return 0;
    const int n = TableSize(table);
    Populate(ctl, table, n);
    if (dir != kRead) {
        int index = -1;
        for (int i = 0; i < n && index < 0; ++i) {
            if (table[i].value == value) index = i;
        }
        const QSignalBlocker block(ctl);
        if (index < 0) {
            // One extra entry names the value the table lacks; it is not a choice to offer.
            const QString text = QString::fromStdString(UnknownText(value));
            if (ctl->count() == n) {
                ctl->addItem(text, value);
                ctl->setItemData(n, true, kUnknownRole);
            } else {
                ctl->setItemText(n, text);
                ctl->setItemData(n, value);
            }
            index = n;
        } else {
            while (ctl->count() > n) ctl->removeItem(ctl->count() - 1);
        }
        if (ctl->currentIndex() != index) ctl->setCurrentIndex(index);
        return 0;
    }
    const int index = ctl->currentIndex();
    if (index < 0 || index >= n) return 0;
    if (table[index].value == value) return 0;
    ++changes_;
    value = table[index].value;
    return 1;
}

int FieldEditor::Position(int dir, QLineEdit* ctl, double& degrees, fieldtext::Axis axis,
                          int unit) {
    if (ctl == nullptr) return 0;
    const double limit = axis == fieldtext::Axis::Latitude ? 90.0 : 180.0;
    if (dir != kRead) {
        bool held = false;
        if (!(degrees >= -limit && degrees <= limit)) {
            degrees = degrees > 0 ? limit : (degrees < 0 ? -limit : 0.0);
            held = true;
        }
        Show(ctl, fieldtext::FormatPosition(degrees, axis, unit));
        return held ? 1 : 0;
    }
    const auto parsed = fieldtext::ParsePosition(Read(ctl), axis, unit);
    if (!parsed) {
        ++changes_;
        return 0;
    }
    if (*parsed == degrees) return 0;
    ++changes_;
    degrees = *parsed;
    return 1;
}

int FieldEditor::PositionPair(int dir, QLineEdit* ctl, double& latitude, double& longitude,
                              int unit) {
    if (ctl == nullptr) return 0;
    if (dir != kRead) {
        Show(ctl, fieldtext::FormatPositionPair(latitude, longitude, unit));
        return 0;
    }
    double lat = 0, lon = 0;
    if (!fieldtext::ParsePositionPair(Read(ctl), unit, lat, lon)) {
        ++changes_;
        return 0;
    }
    if (lat == latitude && lon == longitude) return 0;
    ++changes_;
    latitude = lat;
    longitude = lon;
    return 1;
}

int FieldEditor::DateTime(int dir, QLineEdit* ctl, TimeValue& time) {
    if (ctl == nullptr) return 0;
    if (dir != kRead) {
        Show(ctl, fieldtext::FormatDateTime(time));
        return 0;
    }
    const auto parsed = fieldtext::ParseDateTime(Read(ctl));
    if (!parsed) {
        ++changes_;
        return 0;
    }
    if (*parsed == time) return 0;
    ++changes_;
    time = *parsed;
    return 1;
}

int FieldEditor::Text(int dir, QLineEdit* ctl, std::string& value, std::size_t maxChars) {
    if (ctl == nullptr) return 0;
    const int limit = static_cast<int>(std::min<std::size_t>(maxChars, 32767));
    if (ctl->maxLength() != limit) ctl->setMaxLength(limit);
    if (dir != kRead) {
        bool held = false;
        if (value.size() > maxChars) {
            value.resize(maxChars);
            held = true;
        }
        Show(ctl, value);
        return held ? 1 : 0;
    }
    std::string text = ctl->text().toStdString();
    if (text.size() > maxChars) text.resize(maxChars);
    if (text == value) return 0;
    ++changes_;
    value = std::move(text);
    return 1;
}

int FieldEditor::Check(int dir, QAbstractButton* ctl, std::int32_t& value) {
    if (ctl == nullptr) return 0;
    if (dir != kRead) {
        const QSignalBlocker block(ctl);
        if (ctl->isChecked() != (value != 0)) ctl->setChecked(value != 0);
        return 0;
    }
    const bool checked = ctl->isChecked();
    if (checked == (value != 0)) return 0;
    ++changes_;
    value = checked ? 1 : 0;
    return 1;
}

int FieldEditor::Radio(int dir, QAbstractButton* ctl, std::int32_t& value, std::int32_t mine) {
    if (ctl == nullptr) return 0;
    if (dir != kRead) {
        const QSignalBlocker block(ctl);
        if (value == mine && !ctl->isChecked()) ctl->setChecked(true);
        return 0;
    }
    if (!ctl->isChecked() || value == mine) return 0;
    ++changes_;
    value = mine;
    return 1;
}

int FieldEditor::Slider(int dir, QAbstractSlider* ctl, std::int32_t& value) {
    if (ctl == nullptr) return 0;
    if (dir != kRead) {
        const std::int32_t held = std::clamp(value, ctl->minimum(), ctl->maximum());
        const bool wasHeld = held != value;
        value = held;
        const QSignalBlocker block(ctl);
        if (ctl->value() != value) ctl->setValue(value);
        return wasHeld ? 1 : 0;
    }
    if (ctl->value() == value) return 0;
    ++changes_;
    value = ctl->value();
    return 1;
}

}  // namespace halvo

#include "app/ProfileDocument.h"

namespace halvo {

namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

std::string_view Trim(std::string_view s) {
    while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
    while (!s.empty() && IsBlank(s.back())) s.remove_suffix(1);
    return s;
}

char Lower(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

bool SameName(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (Lower(a[i]) != Lower(b[i])) return false;
    }
    return true;
}

enum class Kind { Other, Section, Key };

struct Classified {
    Kind kind = Kind::Other;
    std::string_view name;   // section or key name, trimmed
    std::string_view value;  // raw text after '=' (keys only)
};

Classified Classify(std::string_view text) {
    const std::string_view t = Trim(text);
    if (t.empty() || t.front() == ';' || t.front() == '#') return {};
    if (t.front() == '[') {
        const std::size_t close = t.find(']');
        // A header without its closing bracket is junk: it neither opens a section nor holds a key.
        if (close == std::string_view::npos) return {};
        return {Kind::Section, Trim(t.substr(1, close - 1)), {}};
    }
    const std::size_t eq = t.find('=');
    if (eq == std::string_view::npos) return {};
    const std::string_view key = Trim(t.substr(0, eq));
    if (key.empty()) return {};
    return {Kind::Key, key, t.substr(eq + 1)};
}

std::string CleanReadValue(std::string_view raw) {
    const std::size_t nul = raw.find('\0');
    if (nul != std::string_view::npos) raw = raw.substr(0, nul);
    raw = Trim(raw);
    if (raw.size() >= 2 && (raw.front() == '"' || raw.front() == '\'') &&
        raw.back() == raw.front()) {
        raw = raw.substr(1, raw.size() - 2);
    }
    return std::string(raw);
}

bool IsBlankLine(std::string_view text) {
    return Trim(text).empty();
}

}  // namespace

ProfileDocument ProfileDocument::Parse(std::string_view bytes) {
    ProfileDocument doc;
    // An editor may have saved the file with a UTF-8 byte-order mark. It is not part of the first
    // line (which would hide that line's section), and it goes back where it was at a save.
    static constexpr std::string_view kBom = "\xEF\xBB\xBF";
    if (bytes.substr(0, kBom.size()) == kBom) {
        doc.bom_ = std::string(kBom);
        bytes.remove_prefix(kBom.size());
    }
    std::size_t pos = 0;
    while (pos < bytes.size()) {
        const std::size_t nl = bytes.find('\n', pos);
        if (nl == std::string_view::npos) {
            doc.lines_.push_back({std::string(bytes.substr(pos)), {}});
            break;
        }
        std::string_view text = bytes.substr(pos, nl - pos);
        std::string eol = "\n";
        if (!text.empty() && text.back() == '\r') {
            text.remove_suffix(1);
            eol = "\r\n";
        }
        doc.lines_.push_back({std::string(text), std::move(eol)});
        pos = nl + 1;
    }
    return doc;
}

std::string ProfileDocument::Serialise() const {
    std::size_t total = 0;
    for (const Line& line : lines_) total += line.text.size() + line.eol.size();
    std::string out = bom_;
    out.reserve(bom_.size() + total);
    for (const Line& line : lines_) {
        out += line.text;
        out += line.eol;
    }
    return out;
}

std::optional<ProfileDocument::Range> ProfileDocument::FindSection(std::string_view section) const {
    const std::string_view wanted = Trim(section);
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const Classified c = Classify(lines_[i].text);
        if (c.kind != Kind::Section || !SameName(c.name, wanted)) continue;
        Range range{i, lines_.size()};
        for (std::size_t j = i + 1; j < lines_.size(); ++j) {
            if (Classify(lines_[j].text).kind == Kind::Section) {
                range.end = j;
                break;
            }
        }
        return range;
    }
    return std::nullopt;
}

std::optional<std::size_t> ProfileDocument::FindKey(const Range& range,
                                                    std::string_view key) const {
    const std::string_view wanted = Trim(key);
    for (std::size_t i = range.header + 1; i < range.end; ++i) {
        const Classified c = Classify(lines_[i].text);
        if (c.kind == Kind::Key && SameName(c.name, wanted)) return i;
    }
    return std::nullopt;
}

std::optional<std::string> ProfileDocument::Find(std::string_view section,
                                                 std::string_view key) const {
    const auto range = FindSection(section);
    if (!range) return std::nullopt;
    const auto index = FindKey(*range, key);
    if (!index) return std::nullopt;
    return CleanReadValue(Classify(lines_[*index].text).value);
}

std::vector<std::string> ProfileDocument::SectionNames() const {
    std::vector<std::string> names;
    for (const Line& line : lines_) {
        const Classified c = Classify(line.text);
        if (c.kind == Kind::Section) names.emplace_back(c.name);
    }
    return names;
}

bool ProfileDocument::IsWritableSection(std::string_view section) {
    const std::string_view t = Trim(section);
    return !t.empty() && t.find_first_of(std::string_view("\r\n\0]", 4)) == std::string_view::npos;
}

bool ProfileDocument::IsWritableKey(std::string_view key) {
    const std::string_view t = Trim(key);
    if (t.empty() || t.front() == '[' || t.front() == ';' || t.front() == '#') return false;
    return t.find_first_of(std::string_view("\r\n\0=", 4)) == std::string_view::npos;
}

std::string ProfileDocument::PreferredEol() const {
    // New lines follow the file's own convention, taken from its first line.
    if (!lines_.empty() && !lines_.front().eol.empty()) return lines_.front().eol;
    return "\n";
}

bool ProfileDocument::Set(std::string_view section, std::string_view key, std::string_view value) {
    if (!IsWritableSection(section) || !IsWritableKey(key)) return false;
    const std::size_t cut = value.find_first_of(std::string_view("\r\n\0", 3));
    if (cut != std::string_view::npos) value = value.substr(0, cut);

    const std::string eol = PreferredEol();
    const auto range = FindSection(section);
    if (range) {
        if (const auto index = FindKey(*range, key)) {
            // Keep the line up to its old value as it was: indentation, spelling, blanks after '='.
            std::string& text = lines_[*index].text;
            std::size_t keep = text.find('=') + 1;
            while (keep < text.size() && (text[keep] == ' ' || text[keep] == '\t')) ++keep;
            text.erase(keep);
            text += value;
            return true;
        }
        std::size_t last = range->header;
        for (std::size_t i = range->header + 1; i < range->end; ++i) {
            if (!IsBlankLine(lines_[i].text)) last = i;
        }
        if (lines_[last].eol.empty()) lines_[last].eol = eol;
        std::string text(Trim(key));
        text += '=';
        text += value;
        lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(last + 1),
                      Line{std::move(text), eol});
        return true;
    }

    if (!lines_.empty()) {
        if (lines_.back().eol.empty()) lines_.back().eol = eol;
        if (!IsBlankLine(lines_.back().text)) lines_.push_back({{}, eol});
    }
    lines_.push_back({"[" + std::string(Trim(section)) + "]", eol});
    std::string text(Trim(key));
    text += '=';
    text += value;
    lines_.push_back({std::move(text), eol});
    return true;
}

bool ProfileDocument::RemoveKey(std::string_view section, std::string_view key) {
    const auto range = FindSection(section);
    if (!range) return false;
    const auto index = FindKey(*range, key);
    if (!index) return false;
    lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(*index));
    return true;
}

bool ProfileDocument::RemoveSection(std::string_view section) {
    const auto range = FindSection(section);
    if (!range) return false;
    lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(range->header),
                 lines_.begin() + static_cast<std::ptrdiff_t>(range->end));
    return true;
}

}  // namespace halvo

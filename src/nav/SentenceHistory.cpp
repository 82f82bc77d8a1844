#include "nav/SentenceHistory.h"

#include <algorithm>
#include <cstring>

#include "nav/FieldScanner.h"

namespace halvo {

std::string_view SentenceHistory::Entry::Text() const {
    return std::string_view(text.data(), ::strnlen(text.data(), text.size()));
}

SentenceHistory::SentenceHistory() {
    constexpr std::string_view kNone = "<== None ==>";
    std::copy(kNone.begin(), kNone.end(), entries_[0].text.begin());
}

void SentenceHistory::Add(std::string_view sentence, bool accepted, std::uint8_t port,
                          std::uint8_t kind) {
    Entry e;
    e.port = port;
    e.kind = kind;
    const std::string_view mark = accepted ? "OK:" : "??:";
    // The line ending is not shown; the text stops where the sentence does.
    const std::string_view body = SentenceBody(sentence).substr(0, kSentenceChars);
    auto out = std::copy(mark.begin(), mark.end(), e.text.begin());
    std::copy(body.begin(), body.end(), out);
    entries_[writeIndex_ % kEntries] = e;
    ++writeIndex_;
}

}  // namespace halvo

#pragma once
// The last 30 sentences seen, for the navigation page's live panel: each entry holds two code
// bytes (the port and the kind), "OK:" or "??:", and up to 74 characters of the sentence.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace halvo {

class SentenceHistory {
  public:
    static constexpr std::size_t kEntries = 30;
    static constexpr std::size_t kEntrySize = 80;
    static constexpr std::size_t kSentenceChars = 74;

    struct Entry {
        std::uint8_t port = 0;
        std::uint8_t kind = 0;
        std::array<char, kEntrySize - 2> text{};  // zero-terminated
        std::string_view Text() const;
    };

    SentenceHistory();

    // Adds one sentence at the write index, which then moves on by one.
    void Add(std::string_view sentence, bool accepted, std::uint8_t port, std::uint8_t kind);

    const Entry& At(std::size_t index) const { return entries_[index % kEntries]; }
    // Number of sentences added so far; the next one goes to WriteIndex() % 30.
    std::uint32_t WriteIndex() const { return writeIndex_; }

  private:
    std::array<Entry, kEntries> entries_{};
    std::uint32_t writeIndex_ = 0;
};

}  // namespace halvo

// Feeds arbitrary bytes to the sentence parser, once as a bare sentence and once wrapped as a
// 2002 message, and checks that the parser's results stay consistent.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

#include "nav/NavigationStatusText.h"
#include "nav/SentenceParser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    halvo::SentenceParser parser;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const halvo::SentenceResult bare = parser.ParseSentence(text, 1000, 0, 1);
    if (bare.accepted && bare.kind == halvo::SentenceKind::None) std::abort();

    std::vector<std::uint8_t> payload(12 + size, 0);
    if (size) std::memcpy(payload.data() + 12, data, size);
    halvo::SentenceParser wrapped;
    const halvo::SentenceResult viaMessage =
        wrapped.ProcessMessage({2002, 13, 1, payload}, {1000, 0});
    // Same text, same verdict, whenever the message is short enough to be parsed.
    const std::string_view cut = text.substr(0, text.find('\0'));
    if (cut == text && size > 5 && size < 200 &&
        (viaMessage.accepted != bare.accepted || viaMessage.kind != bare.kind))
        std::abort();

    (void)halvo::NavigationStatusLines(parser.Fix(), data[0 % (size ? size : 1)] % 3, 0);
    return 0;
}

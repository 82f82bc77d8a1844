#pragma once
// The event log's lines for one message: which messages the Logging flags let through, the
// "SONRDAT" / "SONRCMD" line with the type's bracket label, and the verbose second line with
// the fields of a sensor payload. Pure text work over bounds-checked reads of the payload.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

class SonarMessage;

enum class LogStream { Data, Command };

class MessageLogLines {
  public:
    // Serial bytes shown on a verbose line, at most.
    static constexpr std::size_t kSerialBytesShown = 60;

    // Whether the flags let this message into the log on this stream.
    static bool Wanted(std::uint16_t type, std::uint8_t direction, LogStream stream,
                       std::int32_t flags);
    // "SONRDAT : Cmd %d Dir %d Sub %d Chan %d Bytes = %d" (or "SONRCMD : ...") and the label.
    static std::string HeaderLine(const SonarMessage& message, LogStream stream);
    // The type's label with its value filled in; empty for an unlabelled type, or when the
    // value it needs lies outside the payload.
    static std::string Label(const SonarMessage& message);
    // The verbose line of a sensor payload, or nothing for types without one or a payload too
    // short for its fields.
    static std::optional<std::string> VerboseLine(const SonarMessage& message);
    // Zero, one or two lines, as the flags ask.
    static std::vector<std::string> Lines(const SonarMessage& message, LogStream stream,
                                          std::int32_t flags);
};

}  // namespace halvo

#pragma once
// The pieces of a record as JSON, shared by the subcommands: the header fields, the trace
// header under the names of its table, and the sample values.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "core/SonarMessage.h"
#include "storage/HsfReader.h"

namespace halvo::hsf {

using Json = nlohmann::ordered_json;

// The table names two fields "Reserved3A"; the 16-bit one at offset 124 is written under this
// key so that both survive in one JSON object.
inline constexpr std::string_view kSecondReserved3A = "Reserved3A@124";

// The key of a trace field in JSON output.
std::string TraceKey(std::size_t fieldIndex);

// Every field of a 240-byte trace header, in table order.
Json TraceJson(std::span<const std::uint8_t> header);

// The sample values behind a trace header, as numbers, pairs interleaved. Empty when the
// record is packed (only --normalise unpacks) or the layout is unknown.
bool SamplesJson(const SonarMessage& message, Json& out);

// "END OF FILE" or "ERROR", the words of the storage page.
std::string_view StateWord(ReadStatus status);

// One line of JSON, with bytes that are not text replaced rather than failing.
std::string Line(const Json& j);

}  // namespace halvo::hsf

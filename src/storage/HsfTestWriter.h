#pragma once
// Builds data files byte by byte, exactly as told: whole messages, raw bytes (to cut a file
// anywhere), and bare trace headers of the legacy layout. For tests, benchmarks and the
// simulator; the recorder does not use it.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "core/SonarMessage.h"

namespace halvo {

// The few trace fields a generated trace needs; the rest of the header stays zero.
struct TraceSpec {
    std::int32_t ping = 1;
    std::uint8_t subsystem = 0;
    std::uint8_t channel = 0;
    std::uint8_t direction = 2;
    std::int16_t format = 0;  // Data Format
    std::int32_t sampleIntervalNs = 40000;
    std::int32_t timeSince1970 = 1'700'000'000;
    std::int32_t millisecondsToday = 0;
    std::int32_t groupCoordX = 0;  // 10000 * minutes of arc
    std::int32_t groupCoordY = 0;
    std::int16_t course = 0;
    std::uint16_t samples = 16;  // per channel; complex formats hold two values each
};

class HsfTestWriter {
  public:
    // A type 80 message with a filled trace header and a ramp of sample values.
    static SonarMessage MakeTrace(const TraceSpec& spec);
    // A message of any type with the given payload.
    static SonarMessage MakeMessage(std::uint16_t type, std::uint8_t direction,
                                    std::uint8_t subsystem, std::uint8_t channel,
                                    std::span<const std::uint8_t> payload);

    // Header and payload as they stand.
    HsfTestWriter& Add(const SonarMessage& message);
    // Any bytes: a header with a lying size, half a record, garbage.
    HsfTestWriter& Raw(std::span<const std::uint8_t> bytes);
    // A 16-byte header with these fields and no payload behind it.
    HsfTestWriter& Header(std::uint16_t marker, std::uint16_t type, std::uint32_t size);
    // The payload of a trace message alone: the legacy layout.
    HsfTestWriter& Legacy(const SonarMessage& trace);

    const std::vector<std::uint8_t>& Bytes() const { return bytes_; }
    std::size_t Size() const { return bytes_.size(); }
    // Writes the bytes to a file, replacing it; false on failure.
    bool Save(const std::string& path) const;

  private:
    std::vector<std::uint8_t> bytes_;
};

}  // namespace halvo

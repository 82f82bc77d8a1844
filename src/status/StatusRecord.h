#pragma once
// The live digest of traces and sensors that the status line is made from. A plain record,
// written on the data bus thread and handed out as a whole copy.

#include <array>
#include <cstdint>
#include <string>

namespace halvo {

struct StatusRecord {
    static constexpr int kChannels = 63;  // absolute channels 0 to 62 are kept
    static constexpr std::size_t kTextBytes = 80;
    static constexpr std::size_t kMarkTextBytes = 31;
    static constexpr std::size_t kMarkTextOffset = 90;  // header offset the mark text starts at

    std::array<std::uint32_t, kChannels> ping{};
    std::array<std::uint32_t, kChannels> signal{};  // `ADC Max`
    std::array<std::uint32_t, kChannels> gain{};    // `ADC Gain`
    std::array<float, kChannels> sampleRate{};      // samples per second
    std::int32_t overflow = 0;                      // ping gaps seen
    std::array<std::int32_t, 8> custom{};
    std::string position, time, speed, attitude;  // each at most kTextBytes - 1 characters
    std::array<std::int16_t, 8> analog{};
    std::int32_t pressure = 0;           // PSI * 1000
    std::int32_t soundSpeed = 0;         // m/s
    std::int32_t depth = 0;              // mm
    std::int32_t temperature = 0;        // 10 * deg C
    std::int32_t bottleTemperature = 0;  // 10 * deg C
    std::int32_t altitude = 0;           // mm, from the channel display 0 shows
    std::array<std::int32_t, 16> ctd{};  // message 2060 from its offset 12
    std::int32_t ctdCount = 0;
    std::int32_t markNumber = 0;
    std::array<std::uint8_t, kMarkTextBytes> markText{};

    friend bool operator==(const StatusRecord&, const StatusRecord&) = default;
};

}  // namespace halvo

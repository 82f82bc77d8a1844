#pragma once
// The arithmetic of messages 81 and 441: a window in the operator's units turned into samples
// at the ADC rate the sonar reported. Pure functions, so every case can be checked on its own.

#include <array>
#include <cstddef>
#include <cstdint>

namespace halvo {

struct SonarConfig;

// Float to integer as the commands need it: toward zero, held to the 32-bit range, NaN as 0.
std::int32_t TruncToInt32(double value);

struct SonarWindow {
    static constexpr std::size_t kPayloadBytes = 16;
    // The sonar takes a zero size as "as much as you can"; this is the figure it expects then.
    static constexpr std::int32_t kDefaultLastWord = 250000;
    static constexpr std::int32_t kR90Width = 200000;

    std::uint16_t frameDecimator = 1;
    std::uint16_t pixelDecimator = 1;
    std::int32_t delay = 0;  // samples
    std::int32_t width = 0;  // samples
    std::int32_t last = 0;   // 2 x width, or kDefaultLastWord

    std::array<std::uint8_t, kPayloadBytes> Payload() const;

    // The storage window: decimators 1, storage delay and depth.
    static SonarWindow Storage(const SonarConfig& config, std::int32_t adcRateReadBack);
    // The display window. In metres the sample figures are divided by the pixel decimator; in
    // milliseconds they are not. The R90 unit takes a fixed window whatever was computed.
    static SonarWindow Display(const SonarConfig& config, std::int32_t adcRateReadBack,
                               int configType);

    friend bool operator==(const SonarWindow&, const SonarWindow&) = default;
};

}  // namespace halvo

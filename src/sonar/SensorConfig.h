#pragma once
// Settings of the sensors behind the sonar (section SonarSerial), passed by value.

#include <cstdint>

namespace halvo {

class IniFile;

struct SensorConfig {
    static constexpr std::int32_t kFlagSensorInputs = 2;  // enables sensor inputs 0 to 9
    static constexpr int kSensorInputs = 10;

    // Not a setting: 0 at every load. A page raises it to have message 2021 sent.
    std::int32_t pitchRollSelect = 0;
    std::int32_t pitchRollChannel = 3;           // PitchRollChannel
    std::int32_t enableLowRateAnalogInputs = 1;  // EnableLowRateAnalogInputs
    std::int32_t flags = 0;                      // Flags

    static SensorConfig Load(IniFile& ini);
    void Save(IniFile& ini) const;

    friend bool operator==(const SensorConfig&, const SensorConfig&) = default;
};

}  // namespace halvo

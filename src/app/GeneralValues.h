#pragma once
// The values of section General, with their defaults. A plain record: other threads take whole
// copies of it from GeneralSettings.

#include <cstdint>
#include <string>

namespace halvo {

struct GeneralValues {
    static constexpr std::size_t kAnnotationChars = 31;

    std::int32_t UserUnits = 0;  // 0 metres, 1 milliseconds, 2 samples
    std::int32_t SoundSpeedSource = 0;
    std::int32_t WaterSoundSpeed = 1500;     // m/s
    std::int32_t SedimentSoundSpeed = 1500;  // m/s
    float HeaveScale = 1.0f;
    float PitchBias = 0.0f;
    float RollBias = 0.0f;
    std::int32_t TemperatureChannel = 7;  // analog channel
    float TemperatureGain = -0.0033235f;  // raw ADC counts to degrees C
    float TemperatureOffset = -17.777779f;
    std::int32_t BottleTemperatureChannel = 5;
    float BottleTemperatureGain = -0.0033235f;
    float BottleTemperatureOffset = -17.777779f;
    float PressureGain = 1.0f;
    float PressureOffset = 0.0f;
    float PressureMountingOffsetMeters = 0.0f;
    std::int32_t HeaveSensorSource = 0;
    std::int32_t PressurePings = 0;
    std::int32_t NoDataGreyLevel = 210;
    std::int32_t NoDataGreyLevel2 = 210;
    std::int32_t ScopeBackgroundLevel = 210;
    std::int32_t RGBBottomTrackIndicator = 255;
    float BottomTrackIndicatorOffset = 1.0f;
    std::int32_t RGBHeaveIndicator = 65280;
    std::int32_t RGBPitch = 16711680;
    std::int32_t RGBRoll = 255;
    std::int32_t RGBRC = 0;
    std::int32_t MarkNumber = 0;  // next mark number
    std::int32_t LabelWidth = 0;
    std::string Annotation;          // up to kAnnotationChars
    std::int16_t NMEAantennaeO = 0;  // antenna offset to starboard, cm
    std::int16_t NMEAantennaeR = 0;  // antenna offset back, cm
    std::int16_t GPSFlags = 0;
    std::int32_t SummedChannel0 = 0;
    std::int32_t SummedChannel1 = 0;

    friend bool operator==(const GeneralValues&, const GeneralValues&) = default;
};

}  // namespace halvo

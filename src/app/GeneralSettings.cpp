#include "app/GeneralSettings.h"

#include <string_view>
#include <variant>

#include "app/IniFile.h"
#include "app/SystemCoordinator.h"

namespace halvo {

namespace {

using Field = std::variant<std::int32_t GeneralValues::*, float GeneralValues::*,
                           std::int16_t GeneralValues::*, std::string GeneralValues::*>;

struct Key {
    std::string_view name;
    Field field;
};

// Read at load and written at save in this order. Defaults are those of GeneralValues.
constexpr Key kKeys[] = {
    {"UserUnits", &GeneralValues::UserUnits},
    {"SoundSpeedSource", &GeneralValues::SoundSpeedSource},
    {"WaterSoundSpeed", &GeneralValues::WaterSoundSpeed},
    {"SedimentSoundSpeed", &GeneralValues::SedimentSoundSpeed},
    {"HeaveScale", &GeneralValues::HeaveScale},
    {"PitchBias", &GeneralValues::PitchBias},
    {"RollBias", &GeneralValues::RollBias},
    {"TemperatureChannel", &GeneralValues::TemperatureChannel},
    {"TemperatureGain", &GeneralValues::TemperatureGain},
    {"TemperatureOffset", &GeneralValues::TemperatureOffset},
    {"BottleTemperatureChannel", &GeneralValues::BottleTemperatureChannel},
    {"BottleTemperatureGain", &GeneralValues::BottleTemperatureGain},
    {"BottleTemperatureOffset", &GeneralValues::BottleTemperatureOffset},
    {"PressureGain", &GeneralValues::PressureGain},
    {"PressureOffset", &GeneralValues::PressureOffset},
    {"PressureMountingOffsetMeters", &GeneralValues::PressureMountingOffsetMeters},
    {"HeaveSensorSource", &GeneralValues::HeaveSensorSource},
    {"PressurePings", &GeneralValues::PressurePings},
    {"NoDataGreyLevel", &GeneralValues::NoDataGreyLevel},
    {"NoDataGreyLevel2", &GeneralValues::NoDataGreyLevel2},
    {"ScopeBackgroundLevel", &GeneralValues::ScopeBackgroundLevel},
    {"RGBBottomTrackIndicator", &GeneralValues::RGBBottomTrackIndicator},
    {"BottomTrackIndicatorOffset", &GeneralValues::BottomTrackIndicatorOffset},
    {"RGBHeaveIndicator", &GeneralValues::RGBHeaveIndicator},
    {"RGBPitch", &GeneralValues::RGBPitch},
    {"RGBRoll", &GeneralValues::RGBRoll},
    {"RGBRC", &GeneralValues::RGBRC},
    {"MarkNumber", &GeneralValues::MarkNumber},
    {"LabelWidth", &GeneralValues::LabelWidth},
    {"Annotation", &GeneralValues::Annotation},
    {"NMEAantennaeO", &GeneralValues::NMEAantennaeO},
    {"NMEAantennaeR", &GeneralValues::NMEAantennaeR},
    {"GPSFlags", &GeneralValues::GPSFlags},
    {"SummedChannel0", &GeneralValues::SummedChannel0},
    {"SummedChannel1", &GeneralValues::SummedChannel1},
};

template <class... F>
struct Overloaded : F... {
    using F::operator()...;
};
template <class... F>
Overloaded(F...) -> Overloaded<F...>;

}  // namespace

void GeneralSettings::Start() {
    lifecycle_.Start([this] { Load(); });
}

void GeneralSettings::Load() {
    lifecycle_.MarkLoaded();
    const GeneralValues defaults;
    GeneralValues v;
    IniFile ini(coordinator_);
    ini.Open("General");
    for (const Key& key : kKeys) {
        std::visit(
            Overloaded{
                [&](std::int32_t GeneralValues::*m) { v.*m = ini.ReadInt(key.name, defaults.*m); },
                [&](float GeneralValues::*m) {
                    v.*m = static_cast<float>(ini.ReadFloat(key.name, defaults.*m));
                },
                // Kept in 16 bits, as the trace header stores them.
                [&](std::int16_t GeneralValues::*m) {
                    v.*m = static_cast<std::int16_t>(ini.ReadInt(key.name, defaults.*m));
                },
                [&](std::string GeneralValues::*m) {
                    v.*m = ini.ReadString(key.name, defaults.*m)
                               .substr(0, GeneralValues::kAnnotationChars);
                },
            },
            key.field);
    }
    Update(v);
}

void GeneralSettings::Save() {
    if (!lifecycle_.MaySave()) return;
    const GeneralValues v = Snapshot();
    IniFile ini(coordinator_);
    ini.Open("General");
    for (const Key& key : kKeys) {
        std::visit(Overloaded{
                       [&](std::int32_t GeneralValues::*m) { ini.WriteInt(key.name, v.*m); },
                       [&](float GeneralValues::*m) { ini.WriteFloat(key.name, v.*m); },
                       [&](std::int16_t GeneralValues::*m) { ini.WriteInt(key.name, v.*m); },
                       [&](std::string GeneralValues::*m) { ini.WriteString(key.name, v.*m); },
                   },
                   key.field);
    }
}

GeneralValues GeneralSettings::Snapshot() const {
    std::lock_guard lock(mutex_);
    return values_;
}

void GeneralSettings::Update(const GeneralValues& values) {
    std::lock_guard lock(mutex_);
    values_ = values;
    ++changes_;
}

int GeneralSettings::ChangeCount() const {
    std::lock_guard lock(mutex_);
    return changes_;
}

}  // namespace halvo

#include "status/AlertSettings.h"

#include <variant>

#include "app/IniFile.h"

namespace halvo {

namespace {

constexpr AlertBitInfo kBits[] = {
    {AlertRoll, " ROLL", "Enable Roll"},
    {AlertPitch, " PITCH", "Enable Pitch"},
    {AlertAltitude, " ALT", "Enable Altitude"},
    {AlertHot, " HOT", "Enable Temperature"},
    {AlertLeak, " LEAK", "Enable Misc / Leak"},
    {AlertDisk, " DISK", "Enable File Space"},
    {AlertNav, " NAV", "Enable GPS"},
    {AlertAdcClip, " ADCCLIP", "ADC Not Clipping"},
    {AlertBeep, "", "PC Speaker Beeps on Alerts"},
    {AlertOverflow, " OVERFLOW", "Dropped Data (OF Counter)"},
    {AlertNoPitchRoll, " NOPITCHROLL", "Pitch Roll Received"},
    {AlertNoSvs, " NOSVS", "SVS Received"},
    {AlertNoPressure, " NOPRESSURE", "Pressure Received"},
};

using Field = std::variant<std::int32_t AlertSettings::*, float AlertSettings::*>;

struct Key {
    std::string_view name;
    Field field;
};

// Record order; read at load and written at save in this order.
constexpr Key kKeys[] = {
    {"AlertFlags", &AlertSettings::alertFlags},
    {"AltitudeDisplayNumber", &AlertSettings::altitudeDisplay},
    {"AltitudeWarningLevel", &AlertSettings::altitudeWarning},
    {"RollMin", &AlertSettings::rollMin},
    {"RollMax", &AlertSettings::rollMax},
    {"PitchMin", &AlertSettings::pitchMin},
    {"PitchMax", &AlertSettings::pitchMax},
    {"TemperatureMax", &AlertSettings::temperatureMax},
    {"MinDiskFree", &AlertSettings::minDiskFree},
    {"MiscMin", &AlertSettings::miscMin},
    {"MiscMax", &AlertSettings::miscMax},
    {"MiscChan", &AlertSettings::miscChan},
    {"BeepWarningInterval", &AlertSettings::beepInterval},
    {"BeepTone", &AlertSettings::beepTone},
    {"BeepDuration", &AlertSettings::beepDuration},
};

}  // namespace

std::span<const AlertBitInfo> AlertBitTable() {
    return kBits;
}

AlertSettings AlertSettings::Load(IniFile& ini) {
    AlertSettings s;
    for (const Key& key : kKeys) {
        if (auto p = std::get_if<std::int32_t AlertSettings::*>(&key.field)) {
            s.*(*p) = ini.ReadInt(key.name, s.*(*p));
        } else {
            auto q = std::get<float AlertSettings::*>(key.field);
            s.*q = static_cast<float>(ini.ReadFloat(key.name, s.*q));
        }
    }
    return s;
}

void AlertSettings::Save(IniFile& ini) const {
    for (const Key& key : kKeys) {
        if (auto p = std::get_if<std::int32_t AlertSettings::*>(&key.field)) {
            ini.WriteInt(key.name, this->*(*p));
        } else {
            ini.WriteFloat(key.name, this->*std::get<float AlertSettings::*>(key.field));
        }
    }
}

}  // namespace halvo

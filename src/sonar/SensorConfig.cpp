#include "sonar/SensorConfig.h"

#include "app/IniFile.h"

namespace halvo {

SensorConfig SensorConfig::Load(IniFile& ini) {
    const SensorConfig def;
    SensorConfig s;
    ini.Open("SonarSerial");
    s.pitchRollSelect = 0;
    s.pitchRollChannel = ini.ReadInt("PitchRollChannel", def.pitchRollChannel);
    s.enableLowRateAnalogInputs =
        ini.ReadInt("EnableLowRateAnalogInputs", def.enableLowRateAnalogInputs);
    s.flags = ini.ReadInt("Flags", def.flags);
    return s;
}

void SensorConfig::Save(IniFile& ini) const {
    ini.Open("SonarSerial");
    ini.WriteInt("PitchRollChannel", pitchRollChannel);
    ini.WriteInt("EnableLowRateAnalogInputs", enableLowRateAnalogInputs);
    ini.WriteInt("Flags", flags);
}

}  // namespace halvo

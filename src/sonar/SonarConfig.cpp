#include "sonar/SonarConfig.h"

#include <algorithm>
#include <cstdio>

#include "app/IniFile.h"

namespace halvo {

std::string SonarSection(int d) {
    char name[32];
    std::snprintf(name, sizeof name, "SBSonar%d", d);
    return name;
}

std::string SonarChannelSection(int d, int c) {
    char name[40];
    std::snprintf(name, sizeof name, "SBSonar%d_%d", d, c);
    return name;
}

SonarConfig::SonarConfig() {
    gain.fill(1.0f);
    pulsePower.fill(100.0f);
    agc.fill(0);
    enable.fill(1);
}

SonarConfig SonarConfig::Defaults(int d) {
    SonarConfig c;
    // The first three are the sub-bottom and the two side-scan frequencies of the usual system.
    c.subsystem = d == 1 ? 20 : d == 2 ? 21 : d;
    c.transducers = d == 0 ? 1 : 2;
    c.inputChannels = d == 0 ? 1 : 2;
    c.channelOffset = 2 * d;
    return c;
}

int SonarConfig::ChannelCount() const {
    return std::clamp(inputChannels, 0, kMaxChannels);
}

int SonarConfig::TransducerCount() const {
    return std::clamp(transducers, 0, kMaxChannels);
}

SonarConfig SonarConfig::Load(IniFile& ini, int d) {
    const SonarConfig def = Defaults(d);
    SonarConfig c = def;
    ini.Open(SonarSection(d));
    c.subsystem = ini.ReadInt("SubSystem", def.subsystem);
    c.delay = static_cast<float>(ini.ReadFloat("ADCDelay", def.delay));
    c.depth = static_cast<float>(ini.ReadFloat("ADCDepth", def.depth));
    c.frameDecimator = ini.ReadInt("ADCFrameDecimator", def.frameDecimator);
    c.pixelDecimator = ini.ReadInt("ADCPixelDecimator", def.pixelDecimator);
    // Written as CouplingDecimator; keys ignore case, and files carry both spellings.
    c.couplingDecimator = ini.ReadInt("couplingDecimator", def.couplingDecimator);
    c.storageDepth = static_cast<float>(ini.ReadFloat("ADCStorageDepth", def.storageDepth));
    c.storageDelay = static_cast<float>(ini.ReadFloat("ADCStorageDelay", def.storageDelay));
    c.enableStorage = ini.ReadInt("EnableStorage", def.enableStorage);
    c.pingRate = static_cast<float>(ini.ReadFloat("PingRate", def.pingRate));
    c.specialOptions = ini.ReadInt("SpecialOptions", def.specialOptions);
    c.flags = ini.ReadInt("Flags", def.flags);
    c.windowUnits = ini.ReadInt("WindowUnits", def.windowUnits);
    c.rangeOrRate = ini.ReadInt("RangeOrRate", def.rangeOrRate);
    c.pulse = ini.ReadString("Pulse", "");
    c.dataType = ini.ReadInt("DataType", def.dataType);
    c.trigger = ini.ReadInt("Trigger", def.trigger);
    c.couplingSystem = ini.ReadInt("CouplingSystem", def.couplingSystem);
    c.couplingDelay = ini.ReadInt("CouplingDelay", def.couplingDelay);
    c.transducers = ini.ReadInt("Transducers", def.transducers);
    c.inputChannels = ini.ReadInt("InputChannels", def.inputChannels);
    c.channelOffset = ini.ReadInt("SubsystemChannelOffset", def.channelOffset);
    c.overallPower = static_cast<float>(ini.ReadFloat("OverallPulsePower", def.overallPower));
    // Transmit is never restored from a file: a restart must not start the transmitter.
    c.sonarOn = 0;
    c.secondPulseText.clear();
    for (int ch = 0; ch < kMaxChannels; ++ch) {
        ini.Open(SonarChannelSection(d, ch));
        c.pulsePower[ch] = static_cast<float>(ini.ReadFloat("PulsePower", def.pulsePower[ch]));
        c.gain[ch] = static_cast<float>(ini.ReadFloat("ADCGain", def.gain[ch]));
        c.agc[ch] = ini.ReadInt("AGC", def.agc[ch]);
        c.enable[ch] = ini.ReadInt("Enable", def.enable[ch]);
    }
    ini.Open(SonarSection(d));
    return c;
}

void SonarConfig::Save(IniFile& ini, int d) const {
    ini.Open(SonarSection(d));
    ini.WriteInt("SubSystem", subsystem);
    ini.WriteFloat("ADCDelay", delay);
    ini.WriteFloat("ADCDepth", depth);
    ini.WriteInt("ADCFrameDecimator", frameDecimator);
    ini.WriteInt("ADCPixelDecimator", pixelDecimator);
    ini.WriteInt("CouplingDecimator", couplingDecimator);
    ini.WriteFloat("ADCStorageDepth", storageDepth);
    ini.WriteFloat("ADCStorageDelay", storageDelay);
    ini.WriteInt("EnableStorage", enableStorage);
    ini.WriteFloat("PingRate", pingRate);
    ini.WriteInt("SpecialOptions", specialOptions);
    ini.WriteInt("Flags", flags);
    ini.WriteInt("WindowUnits", windowUnits);
    ini.WriteInt("RangeOrRate", rangeOrRate);
    ini.WriteString("Pulse", pulse);
    ini.WriteInt("DataType", dataType);
    ini.WriteInt("Trigger", trigger);
    ini.WriteInt("CouplingSystem", couplingSystem);
    ini.WriteInt("CouplingDelay", couplingDelay);
    ini.WriteInt("Transducers", transducers);
    ini.WriteInt("InputChannels", inputChannels);
    ini.WriteInt("SubsystemChannelOffset", channelOffset);
    ini.WriteFloat("OverallPulsePower", overallPower);
    ini.WriteInt("SonarOn", sonarOn);
    for (int ch = 0; ch < kMaxChannels; ++ch) {
        ini.Open(SonarChannelSection(d, ch));
        ini.WriteFloat("PulsePower", pulsePower[ch]);
        ini.WriteFloat("ADCGain", gain[ch]);
        ini.WriteInt("AGC", agc[ch]);
        ini.WriteInt("Enable", enable[ch]);
    }
    ini.Open(SonarSection(d));
}

}  // namespace halvo

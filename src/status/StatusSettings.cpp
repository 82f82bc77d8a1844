#include "status/StatusSettings.h"

#include <cstdio>

#include "app/IniFile.h"

namespace halvo {

namespace {

constexpr StatusItemLabel kItemLabels[] = {
    {ItemPressure, "Pressure"},
    {ItemPitchRoll, "Pitch Roll"},
    {ItemLatLong, "Lat/Long"},
    {ItemSBGain, "SB Gain"},
    {ItemCourseSpeed, "Course / Speed"},
    {ItemMark, "Mark #"},
    {ItemTime, "Time"},
    {ItemOverflowCheck, "Overflow Check"},
    {ItemWaterTemp, "Water Temp"},
    {ItemDepthEstimate, "Depth Estimate"},
    {ItemSBPing, "SB Ping"},
    {ItemSSLPing, "SSL Ping"},
    {ItemSSHPing, "SSH Ping"},
    {ItemSBSignal, "SB Signal"},
    {ItemSSLSignal, "SSL Signal"},
    {ItemSSHSignal, "SSH Signal"},
    {ItemSoundVelocity, "Sound Velocity from SVS"},
    {ItemPulseID, "Pulse ID"},
    {ItemBottleTemp, "Bottle Temp"},
    {ItemSystemStatus, "System Status"},
    {ItemTotalDepth, "Total Depth (Pressure Depth + Altitude)"},
    {ItemReflectionCoef, "Reflection Coef"},
    {ItemCTD, "CTD Readings"},
};

constexpr std::string_view kDefaultDescriptions[StatusSettings::kCustomCount] = {
    "SBW %", "Reserved %", "SLPW %", "SLSW %", "SHPW %", "SHPS %", "Reserved %", "Reserved %",
};

std::string Key(const char* stem, int n) {
    char key[32];
    std::snprintf(key, sizeof key, "%s%d", stem, n);
    return key;
}

}  // namespace

std::span<const StatusItemLabel> StatusItemLabels() {
    return kItemLabels;
}

std::string CutToBuffer(std::string_view text, std::size_t bytes) {
    if (bytes == 0) return {};
    return std::string(text.substr(0, bytes - 1));
}

CustomField StatusSettings::DefaultCustom(int n) {
    if (n < 0 || n >= kCustomCount) n = 0;
    CustomField c;
    c.channel = n;
    c.description = std::string(kDefaultDescriptions[n]);
    c.label = CutToBuffer("1,0,1,0|" + c.description, CustomField::kLabelBytes);
    return c;
}

StatusSettings::StatusSettings() {
    for (int n = 0; n < kCustomCount; ++n) custom[n] = DefaultCustom(n);
}

StatusSettings StatusSettings::Load(IniFile& ini) {
    StatusSettings s;
    s.flags = ini.ReadInt("Flags", s.flags);
    for (int n = 0; n < kCustomCount; ++n) {
        CustomField& c = s.custom[n];
        c.enable = ini.ReadInt(Key("CustomEnable", n), c.enable);
        c.field = ini.ReadInt(Key("CustomFld", n), c.field);
        c.channel = ini.ReadInt(Key("CustomChn", n), c.channel);
        c.label =
            CutToBuffer(ini.ReadString(Key("CustomLabel", n), c.label), CustomField::kLabelBytes);
        c.description = CutToBuffer(ini.ReadString(Key("CustomDesc", n), c.description),
                                    CustomField::kDescriptionBytes);
    }
    s.fontSize = ini.ReadInt("FontSize", s.fontSize);
    s.statusLines = ini.ReadInt("StatusLines", s.statusLines);
    return s;
}

void StatusSettings::Save(IniFile& ini) const {
    ini.WriteInt("Flags", flags);
    for (int n = 0; n < kCustomCount; ++n) {
        const CustomField& c = custom[n];
        ini.WriteInt(Key("CustomEnable", n), c.enable);
        ini.WriteInt(Key("CustomFld", n), c.field);
        ini.WriteInt(Key("CustomChn", n), c.channel);
        ini.WriteString(Key("CustomLabel", n), c.label);
        ini.WriteString(Key("CustomDesc", n), c.description);
    }
    ini.WriteInt("FontSize", fontSize);
    ini.WriteInt("StatusLines", statusLines);
}

}  // namespace halvo

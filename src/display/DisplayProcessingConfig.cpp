#include "display/DisplayProcessingConfig.h"

#include "app/IniFile.h"
#include "display/DisplayUnits.h"

namespace halvo {

namespace {

float Float(IniFile& ini, const char* key, double def) {
    const double v = ini.ReadFloat(key, def);
    // A value beyond float range in a hand-edited file is held at the edge.
    constexpr double kMax = 3.0e38;
    return static_cast<float>(v > kMax ? kMax : (v < -kMax ? -kMax : v));
}

}  // namespace

void DisplayProcessingConfig::Load(IniFile& ini, int displayIndex) {
    TVG = ini.ReadInt("TVG", 0);
    TVGLimit = ini.ReadInt("TVGLimit", 60);
    Gain = ini.ReadInt("Gain", 0);
    SSGain = ini.ReadInt("SSGain", 0);
    RefGain0 = Float(ini, "RefGain0", 0.0);
    Channel = ini.ReadInt("Channel", displayIndex);
    TVGStart = Float(ini, "TVGStart", 0.0);
    TrackRange = Float(ini, "TrackRange", 0.0);
    TrackThreshold = Float(ini, "TrackThreshold", 0.0);
    TrackEnabled = ini.ReadInt("TrackEnabled", 1);
    Holdoff = ini.ReadInt("Holdoff", 0);
    Zoom = ini.ReadFloat("Zoom", 1.0);
    TraceZoomFactor = ini.ReadInt("TraceZoomFactor", 1);
    ZoomAverage = ini.ReadInt("ZoomAverage", 2);
    HeaveTimeConst = TruncCount(ini.ReadFloat("HeaveTimeConst", 0.0));
    HeaveSource = ini.ReadInt("HeaveSource", 0);
    MedianFilter = ini.ReadInt("MedianFilter", 0);
    DirectPath0 = Float(ini, "DirectPath0", 0.0);
    DirectPathn = Float(ini, "DirectPathn", 0.0);
    DirectPathTraces = ini.ReadInt("DirectPathTraces", 0);
    DirectPathFreeze = ini.ReadInt("DirectPathFreeze", 0);
    DirectPathEnable = ini.ReadInt("DirectPathEnable", 0);
    DCFilter = ini.ReadInt("DCFilter", 0);
    ClampAtZero = ini.ReadInt("ClampAtZero", 0);
    DualChannel = ini.ReadInt("DualChannel", 0);
    Pal = ini.ReadString("Pal", "");
    if (Pal.size() > kPalChars) Pal.resize(kPalChars);
    PalInvert = ini.ReadInt("PalInvert", 0);
    EventMarkWidth = ini.ReadInt("EventMarkWidth", 20);
    MaxDepth = ini.ReadInt("MaxDepth", 0);
    ReflectionCoefDBGain = Float(ini, "ReflectionCoefDBGain", 0.0);
    RCTimeConst = Float(ini, "RCTimeConst", 0.0);
    MPXOptions = ini.ReadInt("MPXOptions", 0);
    // Ping selection is a session choice: it never survives a restart.
    MPXOptions = 0;
}

void DisplayProcessingConfig::Save(IniFile& ini) const {
    ini.WriteInt("TVG", TVG);
    ini.WriteInt("TVGLimit", TVGLimit);
    ini.WriteInt("Gain", Gain);
    ini.WriteInt("SSGain", SSGain);
    ini.WriteFloat("RefGain0", RefGain0);
    ini.WriteInt("Channel", Channel);
    ini.WriteFloat("TVGStart", TVGStart);
    ini.WriteFloat("TrackRange", TrackRange);
    ini.WriteFloat("TrackThreshold", TrackThreshold);
    ini.WriteInt("Holdoff", Holdoff);
    ini.WriteFloat("Zoom", Zoom);
    ini.WriteInt("TraceZoomFactor", TraceZoomFactor);
    ini.WriteInt("ZoomAverage", ZoomAverage);
    ini.WriteFloat("HeaveTimeConst", HeaveTimeConst);
    ini.WriteInt("HeaveSource", HeaveSource);
    ini.WriteInt("MedianFilter", MedianFilter);
    ini.WriteFloat("DirectPath0", DirectPath0);
    ini.WriteFloat("DirectPathn", DirectPathn);
    ini.WriteFloat("DirectPathTraces", DirectPathTraces);
    ini.WriteInt("DirectPathFreeze", DirectPathFreeze);
    ini.WriteInt("DirectPathEnable", DirectPathEnable);
    ini.WriteInt("DCFilter", DCFilter);
    ini.WriteInt("ClampAtZero", ClampAtZero);
    ini.WriteInt("DualChannel", DualChannel);
    ini.WriteString("Pal", Pal);
    ini.WriteInt("PalInvert", PalInvert);
    ini.WriteInt("EventMarkWidth", EventMarkWidth);
    ini.WriteInt("MaxDepth", MaxDepth);
    ini.WriteFloat("ReflectionCoefDBGain", ReflectionCoefDBGain);
    ini.WriteFloat("RCTimeConst", RCTimeConst);
    ini.WriteInt("MPXOptions", MPXOptions);
}

}  // namespace halvo

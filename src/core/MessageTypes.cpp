#include "core/MessageTypes.h"

#include <array>

namespace halvo {

namespace {

struct TypeInfo {
    std::uint16_t type;
    std::string_view name;
    std::string_view label;
};

constexpr std::array kTypes = {
    TypeInfo{MsgClock, "MsgClock", ""},
    TypeInfo{MsgClockSlew, "MsgClockSlew", ""},
    TypeInfo{MsgSystemStatus, "MsgSystemStatus", ""},
    TypeInfo{MsgAlive, "MsgAlive", " [Alive]"},
    TypeInfo{MsgTrace, "MsgTrace", " [Segy Data Ping %d]"},
    TypeInfo{MsgWindow, "MsgWindow", " [Window]"},
    TypeInfo{MsgSideScanTrace, "MsgSideScanTrace", " [SS Data Ping %d]"},
    TypeInfo{MsgChannelEnable, "MsgChannelEnable", ""},
    TypeInfo{MsgCompactTrace, "MsgCompactTrace", ""},
    TypeInfo{MsgCompactSideScanTrace, "MsgCompactSideScanTrace", ""},
    TypeInfo{MsgQCSetup, "MsgQCSetup", ""},
    TypeInfo{MsgSonarOn, "MsgSonarOn", " [SonarOn %d]"},
    TypeInfo{MsgPulsePower, "MsgPulsePower", ""},
    TypeInfo{MsgPulseList, "MsgPulseList", ""},
    TypeInfo{MsgPulseName, "MsgPulseName", " [Pulse %s]"},
    TypeInfo{MsgPingRate, "MsgPingRate", ""},
    TypeInfo{MsgTrigger, "MsgTrigger", ""},
    TypeInfo{MsgPingRange, "MsgPingRange", ""},
    TypeInfo{MsgCoupling, "MsgCoupling", ""},
    TypeInfo{MsgBeginConfigure, "MsgBeginConfigure", ""},
    TypeInfo{MsgSecondPulseText, "MsgSecondPulseText", ""},
    TypeInfo{MsgChannelGain, "MsgChannelGain", ""},
    TypeInfo{MsgChannelAGC, "MsgChannelAGC", ""},
    TypeInfo{MsgSampleRate, "MsgSampleRate", ""},
    TypeInfo{MsgStorageMasterEnable, "MsgStorageMasterEnable", ""},
    TypeInfo{MsgStorageFileName, "MsgStorageFileName", ""},
    TypeInfo{MsgChannelStoreEnable, "MsgChannelStoreEnable", ""},
    TypeInfo{MsgStorageWindow, "MsgStorageWindow", ""},
    TypeInfo{MsgStorageStatus, "MsgStorageStatus", ""},
    TypeInfo{MsgOptionCheck, "MsgOptionCheck", ""},
    TypeInfo{MsgSubsystemValue, "MsgSubsystemValue", ""},
    TypeInfo{MsgChannelDataType, "MsgChannelDataType", ""},
    TypeInfo{MsgSpecialOptions, "MsgSpecialOptions", ""},
    TypeInfo{MsgStreamFlagHigh, "MsgStreamFlagHigh", ""},
    TypeInfo{MsgStreamFlagLow, "MsgStreamFlagLow", ""},
    TypeInfo{MsgVideoFrame, "MsgVideoFrame", " [Video]"},
    TypeInfo{MsgVideoControl, "MsgVideoControl", ""},
    TypeInfo{MsgDynamicFocus, "MsgDynamicFocus", ""},
    TypeInfo{MsgSerial, "MsgSerial", " [SERIAL]"},
    TypeInfo{MsgNmea, "MsgNmea", " [NMEA]"},
    TypeInfo{MsgPitchRoll, "MsgPitchRoll", " [PITCHROLL]"},
    TypeInfo{MsgPitchRollSelect, "MsgPitchRollSelect", ""},
    TypeInfo{MsgAnalog, "MsgAnalog", " [AIO]"},
    TypeInfo{MsgPressure, "MsgPressure", " [PRESSURE]"},
    TypeInfo{MsgSensorReset, "MsgSensorReset", ""},
    TypeInfo{MsgAltitude, "MsgAltitude", " [ALTITUDE]"},
    TypeInfo{MsgDvl, "MsgDvl", " [DVL]"},
    TypeInfo{MsgSituation, "MsgSituation", " [SIT %4.1f %4.1f %4.1f]"},
    TypeInfo{MsgContainerTime, "MsgContainerTime", " [CONTAINERTIME]"},
};

const TypeInfo* Find(std::uint16_t type) {
    for (const auto& t : kTypes) {
        if (t.type == type) return &t;
    }
    return nullptr;
}

}  // namespace

std::string_view MessageTypeName(std::uint16_t type) {
    if (const TypeInfo* t = Find(type)) return t->name;
    if (type >= MsgMultiPingFirst && type <= MsgMultiPingLast) return "MsgMultiPing";
    return {};
}

std::string_view MessageLogLabel(std::uint16_t type) {
    const TypeInfo* t = Find(type);
    return t ? t->label : std::string_view{};
}

std::string_view DirectionName(std::uint8_t direction) {
    switch (direction) {
        case DirSet:
            return "DirSet";
        case DirQuery:
            return "DirQuery";
        case DirReply:
            return "DirReply";
        case DirStoreForward:
            return "DirStoreForward";
        case DirQC:
            return "DirQC";
        default:
            return {};
    }
}

}  // namespace halvo

#pragma once
// Numbers of the message types and directions, with their names and the labels the event log
// prints behind a message line.

#include <cstdint>
#include <string_view>

namespace halvo {

enum Direction : std::uint8_t {
    DirSet = 0,
    DirQuery = 1,
    DirReply = 2,
    DirStoreForward = 4,
    DirQC = 5,
};

enum MessageType : std::uint16_t {
    MsgClock = 22,
    MsgClockSlew = 23,
    MsgSystemStatus = 40,
    MsgAlive = 41,
    MsgTrace = 80,
    MsgWindow = 81,
    MsgSideScanTrace = 82,
    MsgChannelEnable = 83,
    MsgCompactTrace = 84,
    MsgCompactSideScanTrace = 85,
    MsgQCSetup = 87,
    MsgSonarOn = 120,
    MsgPulsePower = 121,
    MsgPulseList = 122,
    MsgPulseName = 123,
    MsgPingRate = 124,
    MsgTrigger = 125,
    MsgPingRange = 128,
    MsgCoupling = 129,
    MsgBeginConfigure = 133,
    MsgSecondPulseText = 134,
    MsgChannelGain = 140,
    MsgChannelAGC = 141,
    MsgSampleRate = 142,
    MsgStorageMasterEnable = 420,
    MsgStorageFileName = 427,
    MsgChannelStoreEnable = 440,
    MsgStorageWindow = 441,
    MsgStorageStatus = 444,
    MsgOptionCheck = 1008,
    MsgSubsystemValue = 1025,
    MsgChannelDataType = 1080,
    MsgSpecialOptions = 1101,
    MsgMultiPingFirst = 1180,
    MsgMultiPingLast = 1188,
    MsgStreamFlagHigh = 1200,
    MsgStreamFlagLow = 1201,
    MsgVideoFrame = 1240,
    MsgVideoControl = 1241,
    MsgDynamicFocus = 1320,
    MsgSerial = 2000,
    MsgNmea = 2002,
    MsgPitchRoll = 2020,
    MsgPitchRollSelect = 2021,
    MsgAnalog = 2040,
    MsgPressure = 2060,
    MsgSensorReset = 2061,
    MsgAltitude = 2070,
    MsgDvl = 2080,
    MsgSituation = 2090,
    MsgContainerTime = 2111,
};

// Sensor groups and other fixed subsystem numbers.
enum SubsystemNumber : std::uint8_t {
    SubSerialPorts = 100,
    SubSonarSensors = 101,
    SubAnalogInputs = 102,
    SubVideo = 110,
};

// Source numbers of the bus.
enum MessageSource : int {
    SourceIdle = -1,
    SourceSonarCommand = 1,
    SourceSonarData = 2,
    SourceLocal = 3,
    SourceSerial = 4,
    SourcePlayback = 5,
    SourceDerived = 7,
};

// The name of a type ("MsgTrace"), or an empty view for a type without a name.
std::string_view MessageTypeName(std::uint16_t type);

// The printf-style label the event log prints behind a message line (" [Segy Data Ping %d]"),
// or an empty view for types the log does not label.
std::string_view MessageLogLabel(std::uint16_t type);

// The name of a direction value ("DirReply"), or an empty view.
std::string_view DirectionName(std::uint8_t direction);

// The class of a message for the acquire filter: 2 gives 1, 4 gives 2, 5 gives 4, else 1.
inline std::uint32_t AcquireClass(std::uint8_t direction) {
    switch (direction) {
        case DirStoreForward:
            return 2;
        case DirQC:
            return 4;
        default:
            return 1;
    }
}

}  // namespace halvo

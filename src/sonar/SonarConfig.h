#pragma once
// The settings of one sonar subsystem, passed by value. Sections SBSonar<d> and SBSonar<d>_<c>
// of the operator's settings file hold them.

#include <array>
#include <cstdint>
#include <string>

namespace halvo {

class IniFile;

struct SonarConfig {
    static constexpr int kMaxChannels = 16;  // transducers and input channels alike
    static constexpr std::int32_t kFlagInUse = 4;
    static constexpr std::int32_t kFlagStreamLow = 1;   // R90 only
    static constexpr std::int32_t kFlagStreamHigh = 2;  // R90 only

    enum WindowUnits : std::int32_t { UnitsSamples = 0, UnitsMilliseconds = 1, UnitsMeters = 2 };
    enum RangeOrRate : std::int32_t { RateHz = 0, RangeMeters = 1 };
    enum Trigger : std::int32_t {
        TriggerInternal = 0,
        TriggerExternal = 1,
        TriggerCoupled = 2,
        TriggerLinked = 4
    };
    enum DataType : std::int32_t { DataEnvelope = 0, DataAnalytic = 1, DataRaw = 2 };

    std::int32_t subsystem = 0;                       // SubSystem: the number on the wire
    float delay = 0.0f;                               // ADCDelay, in window units
    float depth = 500.0f;                             // ADCDepth, in window units
    std::int32_t windowUnits = UnitsSamples;          // WindowUnits
    std::int32_t frameDecimator = 1;                  // ADCFrameDecimator
    std::int32_t pixelDecimator = 1;                  // ADCPixelDecimator
    float pingRate = 4.0f;                            // PingRate: Hz, or metres by RangeOrRate
    std::int32_t transducers = 1;                     // Transducers
    std::int32_t inputChannels = 1;                   // InputChannels
    std::int32_t channelOffset = 0;                   // SubsystemChannelOffset
    std::int32_t specialOptions = 273;                // SpecialOptions: input multiplexer word
    std::int32_t rangeOrRate = RateHz;                // RangeOrRate
    std::int32_t sonarOn = 0;                         // SonarOn: written, never read
    std::array<float, kMaxChannels> gain{};           // ADCGain, per channel
    float overallPower = 100.0f;                      // OverallPulsePower, percent
    std::array<float, kMaxChannels> pulsePower{};     // PulsePower, percent, per transducer
    std::array<std::int32_t, kMaxChannels> agc{};     // AGC, per channel
    std::array<std::int32_t, kMaxChannels> enable{};  // Enable, per channel
    std::int32_t trigger = TriggerInternal;           // Trigger
    std::int32_t couplingSystem = 0;                  // CouplingSystem
    std::int32_t couplingDelay = 0;                   // CouplingDelay
    std::int32_t couplingDecimator = 1;               // CouplingDecimator
    std::string pulse;                                // Pulse: name of the pulse in use
    std::string secondPulseText;                      // memory only, empty at load
    std::int32_t dataType = DataAnalytic;             // DataType, one value for all channels
    std::int32_t enableStorage = 0;                   // EnableStorage
    float storageDelay = 0.0f;                        // ADCStorageDelay
    float storageDepth = 500.0f;                      // ADCStorageDepth
    std::int32_t subsystemValue = 0;                  // read back from message 1025
    std::int32_t flags = kFlagInUse;                  // Flags

    SonarConfig();

    // The defaults of record d (0 to 3): numbering, channel counts and offset depend on d.
    static SonarConfig Defaults(int d);

    bool InUse() const { return (flags & kFlagInUse) != 0; }
    // Channel and transducer counts as loops use them: 0 to 16.
    int ChannelCount() const;
    int TransducerCount() const;

    // Reads section SBSonar<d> and SBSonar<d>_0 .. _15. SonarOn is not read: every run starts
    // with transmit off. ini keeps its file; its section is changed.
    static SonarConfig Load(IniFile& ini, int d);
    // Writes the same keys, SonarOn among them.
    void Save(IniFile& ini, int d) const;

    friend bool operator==(const SonarConfig&, const SonarConfig&) = default;
};

// Section names of record d and of its channel c.
std::string SonarSection(int d);
std::string SonarChannelSection(int d, int c);

}  // namespace halvo

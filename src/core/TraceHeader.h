#pragma once
// The 240-byte trace header at the start of every trace message, as a typed view over the bytes
// (never a packed struct). Every field can be read and written by its name or through the
// TraceField enumeration; the offsets are those of the header table.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace halvo {

constexpr std::size_t kTraceHeaderSize = 240;

enum class FieldKind : std::uint8_t { Int16, Int32, Flt32, Chars2 };

enum class TraceField : std::uint8_t {
    TimeSince1970,
    StartDepth,
    PingNumber,
    ChannelNumber,
    MSB1,
    LSB1,
    LSB2,
    Unused1A,
    Unused1B,
    Unused1C,
    TraceIDCode,
    ValidityFlags,
    Reserved1,
    DataFormat,
    NMEAAntennaeR,
    NMEAAntennaeO,
    AttitudeMilliseconds,
    NavFixMilliseconds,
    KP,
    Reserved3A,
    Reserved3B,
    Reserved3C,
    Reserved3AD,
    PulseGenInfo0,
    PulseGenInfo1,
    SourceCoordX,
    SourceCoordY,
    GroupCoordX,
    GroupCoordY,
    CoordUnits,
    AnnotationWord0,
    AnnotationWord1,
    AnnotationWord2,
    AnnotationWord3,
    AnnotationWord4,
    AnnotationWord5,
    AnnotationWord6,
    AnnotationWord7,
    AnnotationWord8,
    AnnotationWord9,
    AnnotationWord10,
    AnnotationWord11,
    Samples,
    SampleIntervalNS,
    ADCGain,
    PulsePower,
    Reserved3A_2,  // the table names two fields "Reserved3A"; this is the 16-bit one at 124
    StartFreq,
    EndFreq,
    SweepLengthMS,
    PressurePSI,
    DepthMM,
    AliasFreq,
    PulseID,
    Altitude,
    SoundSpeed,
    MixerFrequency,
    Year,
    Day,
    Hour,
    Minute,
    Second,
    TimeBasis,
    WeightingFactor,
    NumOfPulses,
    Heading,
    Pitch,
    Roll,
    Temperature,
    HeaveCompensationSamples,
    TriggerSource,
    MarkNumber,
    NMEAHour,
    NMEAMinute,
    NMEASecond,
    NMEACourse,
    NMEASpeed,
    NMEADay,
    NMEAYear,
    MillisecondsToday,
    ADCMax,
    CalConst,
    VehicleID,
    SoftwareVersionWord0,
    SoftwareVersionWord1,
    SoftwareVersionWord2,
    SphericalCorrection,
    PacketNumber,
    ADCDecimationPre,
    ADCDecimationPost,
    WaterTemperature,
    LaybackFloat,
    FoundBottomOffset,
    CableOut,
    PulseGenType,
    Count
};

struct TraceFieldInfo {
    std::string_view name;  // exactly as the header table writes it
    std::uint16_t offset;
    FieldKind kind;
};

constexpr std::size_t kTraceFieldCount = static_cast<std::size_t>(TraceField::Count);

const TraceFieldInfo& InfoOf(TraceField f);
std::span<const TraceFieldInfo> AllTraceFields();
// The first field of that name (case-sensitive, as written in the table).
std::optional<TraceField> FindTraceField(std::string_view name);

// Sample layout that follows from a `Data Format` value.
struct DataFormatInfo {
    std::string_view name;  // "Envelope", "Complex", "RAW", or empty
    int bytesPerValue;
    int valuesPerSample;
    bool isFloat;
};
DataFormatInfo DataFormatOf(int format);

// Read-write view of a trace header. Valid when it covers at least 240 bytes; reads of an
// invalid view give 0 and writes do nothing.
class TraceHeaderView {
  public:
    explicit TraceHeaderView(std::span<std::uint8_t> bytes) : bytes_(bytes) {}
    bool valid() const { return bytes_.size() >= kTraceHeaderSize; }

    // Integer value of an Int16 or Int32 field (a float field is truncated, chars give the word).
    std::int32_t GetInt(TraceField f) const;
    float GetFloat(TraceField f) const;
    // A number of any kind, as a double, for dumps and by-name access.
    double GetNumber(TraceField f) const;
    void SetInt(TraceField f, std::int32_t v);
    void SetFloat(TraceField f, float v);
    void SetNumber(TraceField f, double v);

    std::span<std::uint8_t> bytes() const { return bytes_; }

  private:
    std::span<std::uint8_t> bytes_;
};

// Read-only variant for consumers that only look.
class ConstTraceHeaderView {
  public:
    explicit ConstTraceHeaderView(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
    bool valid() const { return bytes_.size() >= kTraceHeaderSize; }
    std::int32_t GetInt(TraceField f) const;
    float GetFloat(TraceField f) const;
    double GetNumber(TraceField f) const;

  private:
    std::span<const std::uint8_t> bytes_;
};

}  // namespace halvo

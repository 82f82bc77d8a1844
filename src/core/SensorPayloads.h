#pragma once
// Readers for the payloads of the sensor messages. Each reader takes the payload bytes (the
// bytes behind the 16-byte header, bounded by the header's size), tests the size before it
// touches a field and reports a field only when its validity flag says so. A message shorter
// than the minimum is ignored whole: the reader returns nothing.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "core/TimeValue.h"

namespace halvo {

// Sensor message types without a name of their own in the type table.
inline constexpr std::uint16_t kTypeCompactSituation = 2091;
inline constexpr std::uint16_t kTypeAuxiliary1 = 2100;
inline constexpr std::uint16_t kTypeAuxiliary2 = 2101;
inline constexpr std::uint16_t kTypeAttitude = 3001;
inline constexpr std::uint16_t kTypeEnvironment = 3002;
inline constexpr std::uint16_t kTypeRange = 3003;
inline constexpr std::uint16_t kTypePosition = 3004;
inline constexpr std::uint16_t kTypeAuxiliaryTimed = 8060;

using Payload = std::span<const std::uint8_t>;

// A field that may be absent: its value counts only when `valid` is set.
template <class T>
struct Flagged {
    T value{};
    bool valid = false;
};

// The block most payloads open with. In 3001 to 3004 `subsecond` is nanoseconds and `source`
// is taken as 4; everywhere else it is milliseconds and the byte at offset 8.
struct SensorStamp {
    std::int32_t seconds = 0;
    std::int32_t subsecond = 0;
    std::uint8_t source = 0;
    bool nanoseconds = false;

    // The stamp as a time value (nanoseconds folded to milliseconds).
    TimeValue Time() const;
};

std::optional<TimeValue> ReadContainerTime(Payload p);  // 2111: exactly 12 bytes

struct SerialReading {  // 2000
    SensorStamp stamp;
    std::span<const std::uint8_t> bytes;
};
std::optional<SerialReading> ReadSerial(Payload p);

struct NmeaReading {  // 2002
    SensorStamp stamp;
    std::string_view text;  // from offset 12, one trailing terminator dropped
    // True when the text length lies in the range the sentence parsers take (6 to 199).
    bool Parsable() const { return text.size() > 5 && text.size() < 200; }
};
std::optional<NmeaReading> ReadNmea(Payload p);

struct PitchRollReading {  // 2020, present only with flag 0x40
    SensorStamp stamp;
    std::uint32_t flags = 0;
    std::int16_t pitchRaw = 0;  // 180/32768 degree
    std::int16_t rollRaw = 0;
    double pitchDegrees = 0;
    double rollDegrees = 0;
    Flagged<std::int16_t> heaveMm;
    Flagged<std::uint16_t> headingCentiDegrees;
};
std::optional<PitchRollReading> ReadPitchRoll(Payload p);

struct AnalogReading {  // 2040
    SensorStamp stamp;
    std::array<std::int16_t, 12> values{};
};
std::optional<AnalogReading> ReadAnalog(Payload p);

struct PressureReading {  // 2060; values already divided by 1000
    SensorStamp stamp;
    std::uint32_t flags = 0;
    Flagged<double> pressurePsi;
    Flagged<double> temperature;
    Flagged<double> salinity;
    Flagged<double> conductivity;
    Flagged<double> soundSpeed;
    Flagged<double> depth;
};
std::optional<PressureReading> ReadPressure(Payload p);

struct AltitudeReading {  // 2070
    SensorStamp stamp;
    std::uint32_t flags = 0;
    Flagged<std::int32_t> altitudeMm;
};
std::optional<AltitudeReading> ReadAltitude(Payload p);

struct DvlReading {  // 2080, for the log only
    SensorStamp stamp;
    std::array<std::int32_t, 4> beamRange{};
    std::array<std::int16_t, 3> velocity{};
    std::int16_t pitch = 0;
    std::int16_t roll = 0;
    std::uint16_t compass = 0;
    std::int16_t temperature = 0;
};
std::optional<DvlReading> ReadDvl(Payload p);

struct SituationReading {  // 2090, present only with a bit of 0x1111110 set
    SensorStamp stamp;
    std::uint32_t flags = 0;
    Flagged<double> latitude, longitude, depth, heading, pitch, roll, heave;
    double velocityX = 0, velocityY = 0, velocityZ = 0, positionX = 0, positionY = 0;
    Flagged<double> speed, course;  // derived from the velocities
};
std::optional<SituationReading> ReadSituation(Payload p);

struct CompactSituationReading {  // 2091
    SensorStamp stamp;
    std::uint32_t flags = 0;
    Flagged<std::uint8_t> courseRule;  // with 0x40 and 0x80, as the velocities
    Flagged<double> latitude, longitude;
    Flagged<float> depth, altitude, heave, heading, soundSpeed, temperature;
    Flagged<float> velocityX, velocityY;
    Flagged<float> pitch, roll;
    Flagged<double> speed;  // derived from the velocities
};
std::optional<CompactSituationReading> ReadCompactSituation(Payload p);

struct AuxiliaryReading {  // 2100, 2101, 8060; present only when the guard is non-zero
    SensorStamp stamp;     // zero for 8060, which has none
    int slot = 1;          // auxiliary value 1 or 2
    bool timedByNmea = false;
    float value = 0;
};
std::optional<AuxiliaryReading> ReadAuxiliary(std::uint16_t type, Payload p);

struct AttitudeReading {  // 3001
    SensorStamp stamp;
    std::uint32_t flags = 0;
    Flagged<float> heading, heave, pitch, roll;
};
std::optional<AttitudeReading> ReadAttitude(Payload p);

struct EnvironmentReading {  // 3002
    SensorStamp stamp;
    std::uint32_t flags = 0;
    Flagged<float> pressure, temperature, salinity, conductivity, soundSpeed, depth;
};
std::optional<EnvironmentReading> ReadEnvironment(Payload p);

struct RangeReading {  // 3003
    SensorStamp stamp;
    std::uint32_t flags = 0;
    Flagged<float> altitude, speed, heading;
};
std::optional<RangeReading> ReadRange(Payload p);

struct PositionReading {  // 3004
    SensorStamp stamp;
    std::uint32_t flags = 0;
    Flagged<std::int16_t> word;
    Flagged<double> x, y, latitude, longitude;
    Flagged<float> speed, heading, extra;
};
std::optional<PositionReading> ReadPosition(Payload p);

// Speed from two velocity components: the root of the sum of their squares.
double SpeedFromVelocity(double vx, double vy);
// Course: the four-quadrant arctangent of vy over vx in degrees, plus heading, into 0..360.
double CourseFromVelocity(double vx, double vy, double heading);
// Folds any angle in degrees into [0, 360).
double WrapDegrees(double degrees);

// The time of a reading: a container time (message 2111 of size 12) that came just before and
// differs by more than 5 seconds wins; otherwise a non-zero stamp; otherwise now. The container
// time applies to the one message behind it.
class ContainerTime {
  public:
    TimeValue ReadingTime(const SensorStamp& stamp, TimeValue now) const;
    // Call after every message has been handled, as its last step.
    void AfterMessage(std::uint16_t type, Payload p);
    const std::optional<TimeValue>& Pending() const { return pending_; }

  private:
    std::optional<TimeValue> pending_;
};

}  // namespace halvo

#include "core/SensorPayloads.h"

#include <cmath>
#include <cstdlib>

#include "core/ByteOrder.h"
#include "core/MessageTypes.h"

namespace halvo {

namespace {

constexpr double kPi = 3.1415926535;  // the constant the course formula is defined with

template <class T>
T Get(Payload p, std::size_t offset) {
    return GetLE<T>(p, offset);  // every caller has checked the minimum size first
}

SensorStamp ReadStamp(Payload p) {
    SensorStamp s;
    s.seconds = Get<std::int32_t>(p, 0);
    s.subsecond = Get<std::int32_t>(p, 4);
    s.source = Get<std::uint8_t>(p, 8);
    return s;
}

// 3001 to 3004: nanoseconds, and offset 8 holds flags, not a source.
SensorStamp ReadNanoStamp(Payload p) {
    SensorStamp s;
    s.seconds = Get<std::int32_t>(p, 0);
    s.subsecond = Get<std::int32_t>(p, 4);
    s.source = 4;
    s.nanoseconds = true;
    return s;
}

template <class T>
Flagged<T> If(bool valid, T value) {
    Flagged<T> f;
    if (valid) {
        f.value = value;
        f.valid = true;
    }
    return f;
}

bool All(std::uint32_t flags, std::uint32_t bits) {
    return (flags & bits) == bits;
}

}  // namespace

TimeValue SensorStamp::Time() const {
    return nanoseconds ? NormaliseTime(seconds, subsecond / 1000000)
                       : NormaliseTime(seconds, subsecond);
}

std::optional<TimeValue> ReadContainerTime(Payload p) {
    if (p.size() != 12) return std::nullopt;
    return NormaliseTime(Get<std::int32_t>(p, 0), Get<std::int32_t>(p, 4));
}

std::optional<SerialReading> ReadSerial(Payload p) {
    if (p.size() < 12) return std::nullopt;
    return SerialReading{ReadStamp(p), p.subspan(12)};
}

std::optional<NmeaReading> ReadNmea(Payload p) {
    if (p.size() < 12) return std::nullopt;
    auto bytes = p.subspan(12);
    // Our own serial input stores the terminator with the text; other senders may not.
    if (!bytes.empty() && bytes.back() == 0) bytes = bytes.first(bytes.size() - 1);
    NmeaReading r;
    r.stamp = ReadStamp(p);
    r.text = std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return r;
}

std::optional<PitchRollReading> ReadPitchRoll(Payload p) {
    if (p.size() < 44) return std::nullopt;
    PitchRollReading r;
    r.flags = Get<std::uint32_t>(p, 36);
    if (!(r.flags & 0x40)) return std::nullopt;  // heave and heading go with it
    r.stamp = ReadStamp(p);
    r.pitchRaw = Get<std::int16_t>(p, 24);
    r.rollRaw = Get<std::int16_t>(p, 26);
    r.pitchDegrees = r.pitchRaw * 180.0 / 32768.0;
    r.rollDegrees = r.rollRaw * 180.0 / 32768.0;
    r.heaveMm = If(r.flags & 0x100, Get<std::int16_t>(p, 32));
    r.headingCentiDegrees = If(r.flags & 0x200, Get<std::uint16_t>(p, 34));
    return r;
}

std::optional<AnalogReading> ReadAnalog(Payload p) {
    if (p.size() < 36) return std::nullopt;
    AnalogReading r;
    r.stamp = ReadStamp(p);
    for (std::size_t i = 0; i < r.values.size(); ++i)
        r.values[i] = Get<std::int16_t>(p, 12 + 2 * i);
    return r;
}

std::optional<PressureReading> ReadPressure(Payload p) {
    if (p.size() < 76) return std::nullopt;
    PressureReading r;
    r.stamp = ReadStamp(p);
    r.flags = Get<std::uint32_t>(p, 24);
    auto milli = [&](std::size_t off) { return Get<std::int32_t>(p, off) / 1000.0; };
    r.pressurePsi = If(r.flags & 0x01, milli(12));
    r.temperature = If(r.flags & 0x02, milli(16));
    r.salinity = If(r.flags & 0x04, milli(20));
    r.conductivity = If(r.flags & 0x08, milli(28));
    r.soundSpeed = If(r.flags & 0x10, milli(32));
    r.depth = If(r.flags & 0x20, milli(36));
    return r;
}

std::optional<AltitudeReading> ReadAltitude(Payload p) {
    if (p.size() < 44) return std::nullopt;
    AltitudeReading r;
    r.stamp = ReadStamp(p);
    r.flags = Get<std::uint32_t>(p, 12);
    r.altitudeMm = If(r.flags & 0x01, Get<std::int32_t>(p, 16));
    return r;
}

std::optional<DvlReading> ReadDvl(Payload p) {
    if (p.size() < 56) return std::nullopt;  // the last field read ends at 56
    DvlReading r;
    r.stamp = ReadStamp(p);
    for (std::size_t i = 0; i < 4; ++i) r.beamRange[i] = Get<std::int32_t>(p, 16 + 4 * i);
    for (std::size_t i = 0; i < 3; ++i) r.velocity[i] = Get<std::int16_t>(p, 32 + 2 * i);
    r.pitch = Get<std::int16_t>(p, 46);
    r.roll = Get<std::int16_t>(p, 48);
    r.compass = Get<std::uint16_t>(p, 50);
    r.temperature = Get<std::int16_t>(p, 54);
    return r;
}

std::optional<SituationReading> ReadSituation(Payload p) {
    if (p.size() < 276) return std::nullopt;
    SituationReading r;
    r.flags = Get<std::uint32_t>(p, 12);
    if (!(r.flags & 0x1111110)) return std::nullopt;
    r.stamp = ReadStamp(p);
    auto d = [&](std::size_t off) { return Get<double>(p, off); };
    const bool pos = r.flags & 0x06;
    r.latitude = If(pos, d(28));
    r.longitude = If(pos, d(36));
    r.depth = If(r.flags & 0x08, d(44));
    r.heading = If(r.flags & 0x10, d(52));
    const bool att = r.flags & 0x60;
    r.pitch = If(att, d(60));
    r.roll = If(att, d(68));
    r.positionX = d(76);
    r.positionY = d(84);
    r.heave = If(r.flags & 0x200, d(92));
    r.velocityX = d(100);
    r.velocityY = d(108);
    r.velocityZ = d(116);
    const bool motion = All(r.flags, 0x400 | 0x800 | 0x10);
    r.speed = If(motion, SpeedFromVelocity(r.velocityX, r.velocityY));
    r.course = If(motion, CourseFromVelocity(r.velocityX, r.velocityY, d(52)));
    return r;
}

std::optional<CompactSituationReading> ReadCompactSituation(Payload p) {
    if (p.size() < 100) return std::nullopt;
    CompactSituationReading r;
    r.stamp = ReadStamp(p);
    r.flags = Get<std::uint32_t>(p, 12);
    auto f = [&](std::size_t off) { return Get<float>(p, off); };
    const bool pos = All(r.flags, 0x06);
    r.latitude = If(pos, Get<double>(p, 28));
    r.longitude = If(pos, Get<double>(p, 36));
    r.depth = If(r.flags & 0x08, f(44));
    r.altitude = If(r.flags & 0x10, f(48));
    r.heave = If(r.flags & 0x20, f(52));
    const bool vel = All(r.flags, 0xC0);
    r.velocityX = If(vel, f(56));
    r.velocityY = If(vel, f(60));
    r.courseRule = If(vel, Get<std::uint8_t>(p, 16));
    r.speed = If(vel, SpeedFromVelocity(f(56), f(60)));
    const bool att = All(r.flags, 0x300);
    r.pitch = If(att, f(68));
    r.roll = If(att, f(72));
    r.heading = If(r.flags & 0x400, f(76));
    r.soundSpeed = If(r.flags & 0x800, f(80));
    r.temperature = If(r.flags & 0x1000, f(84));
    return r;
}

std::optional<AuxiliaryReading> ReadAuxiliary(std::uint16_t type, Payload p) {
    std::size_t minimum = 0, valueAt = 0, guardAt = 0;
    AuxiliaryReading r;
    switch (type) {
        case kTypeAuxiliary1:
            minimum = 32, valueAt = 12, guardAt = 20;
            break;
        case kTypeAuxiliary2:
            minimum = 20, valueAt = 12, guardAt = 16, r.slot = 2;
            break;
        case kTypeAuxiliaryTimed:
            minimum = 14, valueAt = 0, guardAt = 8, r.timedByNmea = true;
            break;
        default:
            return std::nullopt;
    }
    if (p.size() < minimum) return std::nullopt;
    if (Get<std::uint16_t>(p, guardAt) == 0) return std::nullopt;
    if (!r.timedByNmea) r.stamp = ReadStamp(p);
    r.value = Get<float>(p, valueAt);
    return r;
}

std::optional<AttitudeReading> ReadAttitude(Payload p) {
    if (p.size() < 32) return std::nullopt;
    AttitudeReading r;
    r.stamp = ReadNanoStamp(p);
    r.flags = Get<std::uint16_t>(p, 8);
    auto f = [&](std::size_t off) { return Get<float>(p, off); };
    r.heading = If(r.flags & 0x01, f(12));
    r.heave = If(r.flags & 0x02, f(16));
    const bool att = All(r.flags, 0x0C);
    r.pitch = If(att, f(20));
    r.roll = If(att, f(24));
    return r;
}

std::optional<EnvironmentReading> ReadEnvironment(Payload p) {
    if (p.size() < 36) return std::nullopt;
    EnvironmentReading r;
    r.stamp = ReadNanoStamp(p);
    r.flags = Get<std::uint16_t>(p, 8);
    auto f = [&](std::size_t off) { return Get<float>(p, off); };
    r.pressure = If(r.flags & 0x01, f(12));
    r.temperature = If(r.flags & 0x02, f(16));
    r.salinity = If(r.flags & 0x04, f(20));
    r.conductivity = If(r.flags & 0x08, f(24));
    r.soundSpeed = If(r.flags & 0x10, f(28));
    // The last field ends at 36; a 36-byte message holds it exactly.
    r.depth = If(r.flags & 0x20, f(32));
    return r;
}

std::optional<RangeReading> ReadRange(Payload p) {
    if (p.size() < 24) return std::nullopt;
    RangeReading r;
    r.stamp = ReadNanoStamp(p);
    r.flags = Get<std::uint16_t>(p, 8);
    r.altitude = If(r.flags & 0x01, Get<float>(p, 12));
    r.speed = If(r.flags & 0x02, Get<float>(p, 16));
    r.heading = If(r.flags & 0x04, Get<float>(p, 20));
    return r;
}

std::optional<PositionReading> ReadPosition(Payload p) {
    if (p.size() < 56) return std::nullopt;
    PositionReading r;
    r.stamp = ReadNanoStamp(p);
    r.flags = Get<std::uint16_t>(p, 8);
    r.word = If(r.flags & 0x01, Get<std::int16_t>(p, 10));
    const bool xy = All(r.flags, 0x06);
    r.x = If(xy, Get<double>(p, 12));
    r.y = If(xy, Get<double>(p, 20));
    const bool ll = All(r.flags, 0x18);
    r.latitude = If(ll, Get<double>(p, 28));
    r.longitude = If(ll, Get<double>(p, 36));
    r.speed = If(r.flags & 0x20, Get<float>(p, 44));
    r.heading = If(r.flags & 0x40, Get<float>(p, 48));
    r.extra = If(r.flags & 0x80, Get<float>(p, 52));
    return r;
}

double SpeedFromVelocity(double vx, double vy) {
    return std::sqrt(vx * vx + vy * vy);
}

double WrapDegrees(double degrees) {
    if (!std::isfinite(degrees)) return degrees;
    double w = std::fmod(degrees, 360.0);
    if (w < 0) w += 360.0;
    if (w >= 360.0) w = 0.0;  // -tiny + 360 can round up to 360
    return w;
}

double CourseFromVelocity(double vx, double vy, double heading) {
    return WrapDegrees(std::atan2(vy, vx) * 180.0 / kPi + heading);
}

TimeValue ContainerTime::ReadingTime(const SensorStamp& stamp, TimeValue now) const {
    if (pending_ && std::llabs(static_cast<long long>(pending_->seconds) - stamp.seconds) > 5)
        return *pending_;
    if (stamp.seconds != 0) return stamp.Time();
    return now;
}

void ContainerTime::AfterMessage(std::uint16_t type, Payload p) {
    pending_ = type == MsgContainerTime ? ReadContainerTime(p) : std::nullopt;
}

}  // namespace halvo

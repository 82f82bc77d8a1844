#include "halvo-sim/SimSensors.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/ByteOrder.h"
#include "core/MessageTypes.h"

namespace halvo {

namespace {

SonarMessage Stamped(std::uint16_t type, std::uint8_t subsystem, std::uint8_t channel,
                     std::int32_t size, TimeValue t, std::uint8_t source) {
    SonarMessage m = SonarMessage::Build(type, DirReply, subsystem, channel, size);
    auto p = m.Payload();
    PutLE<std::int32_t>(p, 0, t.seconds);
    PutLE<std::int32_t>(p, 4, t.ms);
    PutLE<std::uint8_t>(p, 8, source);
    return m;
}

std::int32_t Milli(double v) {
    return static_cast<std::int32_t>(std::lround(v * 1000.0));
}

bool Due(std::int64_t now, std::int64_t& next, std::int64_t period) {
    if (now < next) return false;
    // A long stall does not make a burst: the next reading is one period from now.
    next = std::max(next + period, now - period / 2);
    return true;
}

}  // namespace

SonarMessage SimPitchRollMessage(TimeValue t, std::uint8_t source, double pitchDeg, double rollDeg,
                                 double heaveM, double headingDeg) {
    SonarMessage m = Stamped(MsgPitchRoll, SubSonarSensors, source, 44, t, source);
    auto p = m.Payload();
    const auto raw = [](double deg) {
        return static_cast<std::int16_t>(
            std::clamp(std::lround(deg * 32768.0 / 180.0), -32768L, 32767L));
    };
    PutLE<std::int16_t>(p, 24, raw(pitchDeg));
    PutLE<std::int16_t>(p, 26, raw(rollDeg));
    PutLE<std::int16_t>(p, 32, static_cast<std::int16_t>(std::lround(heaveM * 1000.0)));
    const double heading = std::fmod(std::fmod(headingDeg, 360.0) + 360.0, 360.0);
    PutLE<std::uint16_t>(p, 34, static_cast<std::uint16_t>(std::lround(heading * 100.0) % 36000));
    PutLE<std::uint32_t>(p, 36, 0x40u | 0x100u | 0x200u);
    return m;
}

SonarMessage SimPressureMessage(TimeValue t, std::uint8_t source, double depthM,
                                double temperatureC, double soundSpeed) {
    SonarMessage m = Stamped(MsgPressure, SubSonarSensors, source, 76, t, source);
    auto p = m.Payload();
    const double psi = 14.696 + depthM * 1.4503;
    PutLE<std::int32_t>(p, 12, Milli(psi));
    PutLE<std::int32_t>(p, 16, Milli(temperatureC));
    PutLE<std::int32_t>(p, 20, Milli(34.8));
    PutLE<std::uint32_t>(p, 24, 0x3Fu);
    PutLE<std::int32_t>(p, 28, Milli(4.21));
    PutLE<std::int32_t>(p, 32, Milli(soundSpeed));  // millimetres per second
    PutLE<std::int32_t>(p, 36, Milli(depthM));
    return m;
}

SonarMessage SimAltitudeMessage(TimeValue t, std::uint8_t source, double altitudeM) {
    SonarMessage m = Stamped(MsgAltitude, SubSonarSensors, source, 44, t, source);
    auto p = m.Payload();
    PutLE<std::uint32_t>(p, 12, 0x01u);
    PutLE<std::int32_t>(p, 16, Milli(altitudeM));
    return m;
}

SonarMessage SimAnalogMessage(TimeValue t, const std::array<std::int16_t, 12>& values) {
    SonarMessage m = Stamped(MsgAnalog, SubAnalogInputs, 0, 36, t, 0);
    auto p = m.Payload();
    for (std::size_t i = 0; i < values.size(); ++i) PutLE<std::int16_t>(p, 12 + 2 * i, values[i]);
    return m;
}

SonarMessage SimSituationMessage(TimeValue t, std::uint8_t source, const SimFix& fix, double depthM,
                                 double headingDeg, double pitchDeg, double rollDeg, double heaveM,
                                 double speedMs) {
    SonarMessage m = Stamped(MsgSituation, SubSonarSensors, source, 276, t, source);
    auto p = m.Payload();
    PutLE<std::uint32_t>(p, 12, 0x02u | 0x08u | 0x10u | 0x20u | 0x200u | 0x400u | 0x800u);
    PutLE<double>(p, 28, fix.latitude);
    PutLE<double>(p, 36, fix.longitude);
    PutLE<double>(p, 44, depthM);
    PutLE<double>(p, 52, headingDeg);
    PutLE<double>(p, 60, pitchDeg);
    PutLE<double>(p, 68, rollDeg);
    PutLE<double>(p, 92, heaveM);
    // Body-frame velocity: straight ahead, so the course is the heading.
    PutLE<double>(p, 100, speedMs);
    PutLE<double>(p, 108, 0.0);
    PutLE<double>(p, 116, 0.0);
    return m;
}

SonarMessage SimNmeaMessage(TimeValue t, std::uint8_t port, const std::string& sentence) {
    // The text goes with its terminating zero, as the serial inputs store it.
    const auto size = static_cast<std::int32_t>(12 + sentence.size() + 1);
    SonarMessage m = Stamped(MsgNmea, SubSonarSensors, port, size, t, port);
    std::memcpy(m.Payload().data() + 12, sentence.data(), sentence.size());
    return m;
}

SonarMessage SimContainerTimeMessage(TimeValue t) {
    SonarMessage m = SonarMessage::Build(MsgContainerTime, DirReply, SubSonarSensors, 0, 12);
    PutLE<std::int32_t>(m.Payload(), 0, t.seconds);
    PutLE<std::int32_t>(m.Payload(), 4, t.ms);
    return m;
}

void SimSensors::Poll(std::int64_t elapsedMs, TimeValue now, const SimDevice& device,
                      std::vector<SonarMessage>& out) {
    const double t = static_cast<double>(elapsedMs) / 1000.0;
    const double s = t * kSimSurveySpeed;
    const double heading = scene_.HeadingDegrees(s);
    const double floor = scene_.FloorDepth(s);
    const double altitude = scene_.FishAltitude(s);
    if (Due(elapsedMs, pitchRoll_.nextMs, pitchRoll_.periodMs)) {
        out.push_back(SimPitchRollMessage(now, SimPortPitchRoll, scene_.PitchDegrees(t),
                                          scene_.RollDegrees(t), scene_.Heave(t), heading));
    }
    if (Due(elapsedMs, situation_.nextMs, situation_.periodMs)) {
        out.push_back(SimSituationMessage(now, SimPortSituation, line_.At(t), floor - altitude,
                                          heading, scene_.PitchDegrees(t), scene_.RollDegrees(t),
                                          scene_.Heave(t), kSimSurveySpeed));
    }
    if (Due(elapsedMs, altitude_.nextMs, altitude_.periodMs)) {
        out.push_back(SimAltitudeMessage(now, SimPortAltitude, altitude));
    }
    if (Due(elapsedMs, pressure_.nextMs, pressure_.periodMs)) {
        const double temp = scene_.WaterTemperature(t);
        out.push_back(SimPressureMessage(
            now, SimPortPressure, floor - altitude, temp,
            1449.2 + 4.6 * temp - 0.055 * temp * temp + 1.39 * 0.8 + 0.016 * (floor - altitude)));
    }
    if (Due(elapsedMs, analog_.nextMs, analog_.periodMs) && device.analogEnable != 0) {
        std::array<std::int16_t, 12> v{};
        for (std::size_t i = 0; i < v.size(); ++i) {
            v[i] = static_cast<std::int16_t>(1000 * (static_cast<int>(i) + 1) +
                                             std::lround(50.0 * std::sin(t / (3.0 + i))));
        }
        out.push_back(SimAnalogMessage(now, v));
    }
    if (Due(elapsedMs, nmea_.nextMs, nmea_.periodMs)) {
        for (const std::string& sentence : SimNmeaSecond(now, line_.At(t)))
            out.push_back(SimNmeaMessage(now, SimPortNmea, sentence));
    }
    if (Due(elapsedMs, container_.nextMs, container_.periodMs)) {
        // An altimeter without a clock of its own, dated by the container in front of it.
        out.push_back(SimContainerTimeMessage(now));
        out.push_back(SimAltitudeMessage(TimeValue{0, 0}, SimPortAltitude, altitude));
    }
}

}  // namespace halvo

#pragma once
// The sensors behind the sonar's inputs: attitude, pressure and sound speed, altitude, analog
// channels, a navigation situation and the NMEA receiver, each at its own rate, and now and
// then a container time. Payload builders are free functions so tests can check the layouts.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "core/SonarMessage.h"
#include "core/TimeValue.h"
#include "halvo-sim/SimNmea.h"
#include "halvo-sim/SimScene.h"
#include "halvo-sim/SimSonarState.h"

namespace halvo {

SonarMessage SimPitchRollMessage(TimeValue t, std::uint8_t source, double pitchDeg, double rollDeg,
                                 double heaveM, double headingDeg);
SonarMessage SimPressureMessage(TimeValue t, std::uint8_t source, double depthM,
                                double temperatureC, double soundSpeed);
SonarMessage SimAltitudeMessage(TimeValue t, std::uint8_t source, double altitudeM);
SonarMessage SimAnalogMessage(TimeValue t, const std::array<std::int16_t, 12>& values);
SonarMessage SimSituationMessage(TimeValue t, std::uint8_t source, const SimFix& fix, double depthM,
                                 double headingDeg, double pitchDeg, double rollDeg, double heaveM,
                                 double speedMs);
SonarMessage SimNmeaMessage(TimeValue t, std::uint8_t port, const std::string& sentence);
SonarMessage SimContainerTimeMessage(TimeValue t);

// Which input port each sensor sits on; the stamp's source byte names it.
enum SimSensorPort : std::uint8_t {
    SimPortNmea = 0,
    SimPortPressure = 1,
    SimPortAltitude = 2,
    SimPortPitchRoll = 3,
    SimPortSituation = 4,
};

class SimSensors {
  public:
    explicit SimSensors(const SimScene& scene) : scene_(scene) {}

    // Appends every reading due at `elapsedMs` since start; `now` dates them.
    void Poll(std::int64_t elapsedMs, TimeValue now, const SimDevice& device,
              std::vector<SonarMessage>& out);

  private:
    struct Schedule {
        std::int64_t periodMs;
        std::int64_t nextMs;
    };
    const SimScene& scene_;
    SimSurveyLine line_;
    Schedule pitchRoll_{100, 0};
    Schedule situation_{200, 50};
    Schedule altitude_{200, 20};
    Schedule pressure_{500, 70};
    Schedule analog_{1000, 90};
    Schedule nmea_{1000, 10};
    Schedule container_{20000, 5000};
};

}  // namespace halvo

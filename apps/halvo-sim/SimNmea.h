#pragma once
// NMEA 0183 sentences of the simulated navigation receiver, with their checksums, and the
// survey line the vessel follows.

#include <cstdint>
#include <string>
#include <vector>

#include "core/TimeValue.h"

namespace halvo {

struct SimFix {
    double latitude = 0;   // degrees, north positive
    double longitude = 0;  // degrees, east positive
    double course = 0;     // degrees true
    double speedKnots = 0;
};

// A straight survey line at the survey speed, from a fixed start point.
class SimSurveyLine {
  public:
    SimFix At(double seconds) const;

  private:
    double startLat_ = 57.6900;
    double startLon_ = 11.8000;
    double course_ = 45.0;
    double speed_ = 1.0;  // m/s
};

// "$" + body + "*" + checksum + CR LF. The checksum is the XOR of the body's bytes.
std::string SimNmeaSentence(const std::string& body);
// XOR of the characters between "$" and "*" of a sentence, or -1 when it is not framed so.
int SimNmeaChecksumOf(const std::string& sentence);

std::string SimGGA(TimeValue utc, const SimFix& fix);
std::string SimRMC(TimeValue utc, const SimFix& fix);
std::string SimZDA(TimeValue utc);
std::string SimVTG(const SimFix& fix);
std::string SimGLL(TimeValue utc, const SimFix& fix);
// The five sentences of one second, in the order the receiver sends them.
std::vector<std::string> SimNmeaSecond(TimeValue utc, const SimFix& fix);

}  // namespace halvo

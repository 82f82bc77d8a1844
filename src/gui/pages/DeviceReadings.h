#pragma once
// The texts of the sensor readings the devices pages show, built from the status digest.

#include <string>

#include "status/StatusRecord.h"

namespace halvo {

// The eight analog values as raw counts: "%6d" each, one blank apart.
std::string AnalogLine(const StatusRecord& r);
// "%9.2fC, %7.3fPSI, %8.3fM d, %8.3fM a": water temperature, pressure, depth and altitude.
std::string SensorLine(const StatusRecord& r);
// "%4.1f BC": the bottle temperature.
std::string BottleLine(const StatusRecord& r);

}  // namespace halvo

#include "gui/pages/DeviceReadings.h"

#include <cstdio>

namespace halvo {

std::string AnalogLine(const StatusRecord& r) {
    char buf[80];
    std::snprintf(buf, sizeof buf, "%6d %6d %6d %6d %6d %6d %6d %6d", r.analog[0], r.analog[1],
                  r.analog[2], r.analog[3], r.analog[4], r.analog[5], r.analog[6], r.analog[7]);
    return buf;
}

std::string SensorLine(const StatusRecord& r) {
    // Any int of the digest fits these widths' buffer: 11 digits and a sign at most each.
    char buf[120];
    std::snprintf(buf, sizeof buf, "%9.2fC, %7.3fPSI, %8.3fM d, %8.3fM a", r.temperature / 10.0,
                  r.pressure / 1000.0, r.depth / 1000.0, r.altitude / 1000.0);
    return buf;
}

std::string BottleLine(const StatusRecord& r) {
    char buf[40];
    std::snprintf(buf, sizeof buf, "%4.1f BC", r.bottleTemperature / 10.0);
    return buf;
}

}  // namespace halvo

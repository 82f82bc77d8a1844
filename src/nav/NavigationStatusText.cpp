#include "nav/NavigationStatusText.h"

#include <cstdarg>
#include <cstdio>

namespace halvo {

namespace {

std::string Format(const char* format, ...) {
    char buffer[512];
    va_list args;
    va_start(args, format);
    const int n = std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    if (n < 0) return {};
    return std::string(buffer, static_cast<std::size_t>(n) < sizeof buffer ? n : sizeof buffer - 1);
}

// A hemisphere never seen prints as a blank, not as a zero byte.
char Shown(char c) {
    return c == 0 ? ' ' : c;
}

struct Position {
    int latDegrees = 0;
    double latMinutes = 0;
    char latHemisphere = 0;
    int lonDegrees = 0;
    double lonMinutes = 0;
    char lonHemisphere = 0;
};

Position FromSplit(const LatLonRecord& r) {
    return {r.latDegrees, r.latMinutes, r.latHemisphere,
            r.lonDegrees, r.lonMinutes, r.lonHemisphere};
}

Position FromRmc(const RmcRecord& r) {
    Position p;
    p.latDegrees = WholeDegrees(r.latitude);
    p.latMinutes = r.latitude - 100.0 * p.latDegrees;
    p.latHemisphere = r.latHemisphere;
    p.lonDegrees = WholeDegrees(r.longitude);
    p.lonMinutes = r.longitude - 100.0 * p.lonDegrees;
    p.lonHemisphere = r.lonHemisphere;
    return p;
}

}  // namespace

std::vector<std::string> NavigationStatusLines(const NavigationFix& fix, int latLonSource,
                                               int timeSource) {
    std::vector<std::string> lines;
    lines.push_back(Format("GLL:%d GGA:%d RMC:%d ZDA:%d VTG:%d EVT:%d", fix.gll.stamp,
                           fix.gga.stamp, fix.rmc.stamp, fix.zda.stamp, fix.vtg.stamp,
                           fix.evt.stamp));

    const Position p = latLonSource == 0   ? FromRmc(fix.rmc)
                       : latLonSource == 2 ? FromSplit(fix.gga)
                                           : FromSplit(fix.gll);
    lines.push_back(Format("LATLON: LAT %d %f %c LON %d %f %c", p.latDegrees, p.latMinutes,
                           Shown(p.latHemisphere), p.lonDegrees, p.lonMinutes,
                           Shown(p.lonHemisphere)));

    int hour = fix.gll.hour, minute = fix.gll.minute;
    double second = fix.gll.second;
    if (timeSource == 0) hour = fix.zda.hour, minute = fix.zda.minute, second = fix.zda.second;
    if (timeSource == 2) hour = fix.rmc.hour, minute = fix.rmc.minute, second = fix.rmc.second;
    if (timeSource == 3) hour = fix.gga.hour, minute = fix.gga.minute, second = fix.gga.second;
    lines.push_back(Format("TIME: %d:%d:%f", hour, minute, second));

    if (fix.evt.stamp != 0) {
        std::string text;
        for (std::size_t i = 0; i < EventRecord::kFields; ++i) {
            const std::string_view f = fix.evt.Field(i);
            if (f.empty()) continue;
            if (!text.empty()) text += ' ';
            text.append(f);
        }
        lines.push_back("EVT: " + text);
    }
    if (fix.zda.stamp != 0)
        lines.push_back(Format("ZDA: %d:%d:%f %d/%d/%d", fix.zda.hour, fix.zda.minute,
                               double{fix.zda.second}, fix.zda.day, fix.zda.month, fix.zda.year));
    if (fix.vtg.stamp != 0)
        lines.push_back(Format("VTG: Deg(True:%f Mag%f) Speed(km:%f kn:%f)",
                               double{fix.vtg.trueCourse}, double{fix.vtg.magneticCourse},
                               double{fix.vtg.speedKmh}, double{fix.vtg.speedKnots}));
    return lines;
}

}  // namespace halvo

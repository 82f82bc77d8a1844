#include "halvo-sim/SimNmea.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <numbers>

namespace halvo {

namespace {

std::string Format(const char* fmt, auto... args) {
    char buf[160];
    const int n = std::snprintf(buf, sizeof buf, fmt, args...);
    return std::string(buf, static_cast<std::size_t>(std::clamp(n, 0, int(sizeof buf) - 1)));
}

std::string Time(TimeValue t) {
    const std::int64_t day = ((t.seconds % 86400) + 86400) % 86400;
    return Format("%02d%02d%02d.%02d", int(day / 3600), int(day / 60 % 60), int(day % 60),
                  t.ms / 10);
}

std::string Latitude(double lat) {
    const double a = std::fabs(lat);
    const int deg = static_cast<int>(a);
    return Format("%02d%07.4f,%c", deg, (a - deg) * 60.0, lat < 0 ? 'S' : 'N');
}

std::string Longitude(double lon) {
    const double a = std::fabs(lon);
    const int deg = static_cast<int>(a);
    return Format("%03d%07.4f,%c", deg, (a - deg) * 60.0, lon < 0 ? 'W' : 'E');
}

struct Date {
    int day, month, year;
};
Date DateOf(TimeValue t) {
    std::tm tm{};
    const std::time_t s = t.seconds;
    gmtime_r(&s, &tm);
    return {tm.tm_mday, tm.tm_mon + 1, tm.tm_year + 1900};
}

}  // namespace

SimFix SimSurveyLine::At(double seconds) const {
    const double s = seconds * speed_;
    const double c = course_ * std::numbers::pi / 180.0;
    SimFix f;
    f.latitude = startLat_ + s * std::cos(c) / 111120.0;
    f.longitude =
        startLon_ + s * std::sin(c) / (111120.0 * std::cos(startLat_ * std::numbers::pi / 180.0));
    f.course = course_;
    f.speedKnots = speed_ * 3600.0 / 1852.0;
    return f;
}

std::string SimNmeaSentence(const std::string& body) {
    unsigned sum = 0;
    for (char c : body) sum ^= static_cast<unsigned char>(c);
    return "$" + body + Format("*%02X\r\n", sum);
}

int SimNmeaChecksumOf(const std::string& sentence) {
    const auto star = sentence.find('*');
    if (sentence.empty() || sentence[0] != '$' || star == std::string::npos) return -1;
    unsigned sum = 0;
    for (std::size_t i = 1; i < star; ++i) sum ^= static_cast<unsigned char>(sentence[i]);
    return static_cast<int>(sum);
}

std::string SimGGA(TimeValue utc, const SimFix& f) {
    return SimNmeaSentence("GPGGA," + Time(utc) + "," + Latitude(f.latitude) + "," +
                           Longitude(f.longitude) + ",1,09,0.9,0.0,M,41.2,M,,");
}

std::string SimRMC(TimeValue utc, const SimFix& f) {
    const Date d = DateOf(utc);
    return SimNmeaSentence("GPRMC," + Time(utc) + ",A," + Latitude(f.latitude) + "," +
                           Longitude(f.longitude) + Format(",%.2f,%.1f,", f.speedKnots, f.course) +
                           Format("%02d%02d%02d", d.day, d.month, d.year % 100) + ",2.5,E,A");
}

std::string SimZDA(TimeValue utc) {
    const Date d = DateOf(utc);
    return SimNmeaSentence("GPZDA," + Time(utc) +
                           Format(",%02d,%02d,%04d,00,00", d.day, d.month, d.year));
}

std::string SimVTG(const SimFix& f) {
    const double magnetic = std::fmod(f.course - 2.5 + 360.0, 360.0);
    return SimNmeaSentence(Format("GPVTG,%.1f,T,%.1f,M,%.2f,N,%.2f,K,A", f.course, magnetic,
                                  f.speedKnots, f.speedKnots * 1.852));
}

std::string SimGLL(TimeValue utc, const SimFix& f) {
    return SimNmeaSentence("GPGLL," + Latitude(f.latitude) + "," + Longitude(f.longitude) + "," +
                           Time(utc) + ",A,A");
}

std::vector<std::string> SimNmeaSecond(TimeValue utc, const SimFix& fix) {
    return {SimGGA(utc, fix), SimRMC(utc, fix), SimZDA(utc), SimVTG(fix), SimGLL(utc, fix)};
}

}  // namespace halvo

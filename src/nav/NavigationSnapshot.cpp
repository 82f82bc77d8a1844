#include "nav/NavigationSnapshot.h"

#include <cctype>
#include <ctime>

#include "nav/NavigationConfig.h"

namespace halvo {

namespace {

char Upper(char c) {
    return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

void DateOf(TimeValue now, std::int32_t& day, std::int32_t& month, std::int32_t& year) {
    const std::time_t t = now.seconds;
    std::tm parts{};
    if (gmtime_r(&t, &parts) == nullptr) return;
    day = parts.tm_mday;
    month = parts.tm_mon + 1;
    year = parts.tm_year + 1900;
}

}  // namespace

bool NavigationSnapshot::Within(bool set, std::uint32_t then, std::uint32_t now,
                                std::uint32_t limitMs) {
    // Unsigned distance: a tick behind `then` wraps to a huge value and so is expired.
    return set && now - then < limitMs;
}

void NavigationSnapshot::TakeOver(const NavigationFix& fix, std::int32_t latLonSource,
                                  std::int32_t timeSource, std::uint32_t tick,
                                  TimeValue programNow) {
    bool positionTaken = false;
    auto moved = [this](Group g, std::int32_t stamp) {
        if (counters[g] == stamp) return false;
        counters[g] = stamp;
        return true;
    };
    auto takeSplit = [&](const LatLonRecord& r) {
        latDegrees = r.latDegrees;
        latMinutes = r.latMinutes;
        latHemisphere = r.latHemisphere;
        lonDegrees = r.lonDegrees;
        lonMinutes = r.lonMinutes;
        lonHemisphere = r.lonHemisphere;
        positionTaken = true;
    };
    auto takeTimeOfDay = [&](const LatLonRecord& r) {
        hour = r.hour;
        minute = r.minute;
        second = r.second;
        DateOf(programNow, day, month, year);
    };

    if (moved(GroupA, fix.rmc.stamp)) {
        const RmcRecord& r = fix.rmc;
        if (latLonSource == NavigationConfig::LatLonRmc) {
            latHemisphere = Upper(r.latHemisphere);
            lonHemisphere = Upper(r.lonHemisphere);
            latDegrees = WholeDegrees(r.latitude);
            latMinutes = static_cast<float>(r.latitude - 100.0 * latDegrees);
            lonDegrees = WholeDegrees(r.longitude);
            lonMinutes = static_cast<float>(r.longitude - 100.0 * lonDegrees);
            positionTaken = true;
        }
        if (timeSource == NavigationConfig::TimeRmc) {
            hour = r.hour;
            minute = r.minute;
            second = r.second;
            day = r.day;
            month = r.month;
            year = r.year;
        }
    }
    if (moved(GroupB, fix.gga.stamp)) {
        if (latLonSource == NavigationConfig::LatLonGga) takeSplit(fix.gga);
        if (timeSource == NavigationConfig::TimeGga) takeTimeOfDay(fix.gga);
    }
    if (moved(GroupC, fix.gll.stamp)) {
        if (latLonSource == NavigationConfig::LatLonGll) takeSplit(fix.gll);
        if (timeSource == NavigationConfig::TimeGll) takeTimeOfDay(fix.gll);
    }
    if (moved(GroupD, fix.zda.stamp) && timeSource == NavigationConfig::TimeZda) {
        hour = fix.zda.hour;
        minute = fix.zda.minute;
        second = fix.zda.second;
        day = fix.zda.day;
        month = fix.zda.month;
        year = fix.zda.year;
    }
    if (moved(GroupE, fix.vtg.stamp)) {
        heading = fix.vtg.trueCourse;
        course = fix.vtg.magneticCourse;
        speed = fix.vtg.speedKnots;
        speedKmh = fix.vtg.speedKmh;
    }
    if (moved(GroupF, fix.evt.stamp)) text = fix.evt.text;
    if (moved(GroupG, fix.psimsns.stamp)) psimsns = fix.psimsns.value;

    if (positionTaken) {
        positionTick = tick;
        hasPosition = true;
    }
    // Any accepted sentence keeps navigation fresh, whether or not it changed anything.
    updateTick = tick;
    hasUpdate = true;
}

}  // namespace halvo

// Parsers of the vendor sentences and of the combined TWC record. Values they carry are also
// forwarded into the fix's sensor values, as the binary messages would be.

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "nav/SentenceReaders.h"

namespace halvo {

using namespace fields;

namespace {

constexpr double kAny = std::numeric_limits<double>::max();

}  // namespace

bool ReadPsimssb(FieldCursor f, NavigationFix& fix, TimeValue time) {
    PsimssbRecord r;
    if (!Good(Float(f, r.values[0])) || !Usable(Float(f, r.values[1])) ||
        !Usable(Float(f, r.values[2])))
        return false;
    r.stamp = time.seconds;
    fix.psimssb = r;
    return true;
}

bool ReadPsimsns(FieldCursor f, NavigationFix& fix, TimeValue time) {
    PsimsnsRecord r;
    if (!Good(Float(f, r.value))) return false;
    r.stamp = time.seconds;
    fix.psimsns = r;
    return true;
}

bool ReadAtitud(FieldCursor f, NavigationFix& fix, TimeValue time) {
    AtitudRecord r;
    if (!Good(Float(f, r.roll)) || !Good(Float(f, r.pitch))) return false;
    r.stamp = time.seconds;
    fix.atitud = r;
    Forward(fix.sensors.roll, r.roll, time);
    Forward(fix.sensors.pitch, r.pitch, time);
    return true;
}

bool ReadPositi(FieldCursor f, NavigationFix& fix, TimeValue time) {
    PositiRecord r;
    if (!Good(Double(f, r.latitude, -kAny, kAny)) || !Good(Double(f, r.longitude, -kAny, kAny)))
        return false;
    const Read height = Float(f, r.height);
    if (!Usable(height)) return false;
    r.stamp = time.seconds;
    fix.positi = r;
    Forward(fix.sensors.latitude, r.latitude, time);
    Forward(fix.sensors.longitude, r.longitude, time);
    if (Good(height)) {
        // The top byte of the float (sign and high exponent bits) picks the target.
        const auto signByte =
            static_cast<std::uint8_t>(std::bit_cast<std::uint32_t>(r.height) >> 24);
        Forward(signByte != 0 ? fix.sensors.depth : fix.sensors.altitude, r.height, time);
    }
    return true;
}

bool ReadLogdvl(FieldCursor f, NavigationFix& fix, TimeValue time) {
    TripleRecord r;
    if (!Good(Float(f, r.values[0])) || !Usable(Float(f, r.values[1])) ||
        !Usable(Float(f, r.values[2])))
        return false;
    r.stamp = time.seconds;
    fix.logdvl = r;
    Forward(fix.sensors.altitude, r.values[0], time);
    if (r.values[0] > 1000.0f && r.values[0] <= 2000.0f)
        Forward(fix.sensors.soundSpeed, r.values[0], time);
    return true;
}

bool ReadSpeed(FieldCursor f, NavigationFix& fix, TimeValue time) {
    TripleRecord r;
    for (float& v : r.values)
        if (!Good(Float(f, v))) return false;
    r.stamp = time.seconds;
    fix.speed = r;
    Forward(fix.sensors.speed, std::hypot(double{r.values[0]}, double{r.values[1]}), time);
    return true;
}

bool ReadDepin(FieldCursor f, NavigationFix& fix, TimeValue time) {
    DepinRecord r;
    if (!Good(Float(f, r.depth))) return false;
    if (!Good(Clock(f, r.hour, r.minute, r.second, true))) r.hour = 0, r.minute = 0, r.second = 0;
    r.stamp = time.seconds;
    fix.depin = r;
    Forward(fix.sensors.depth, r.depth, time);
    return true;
}

bool ReadTime(FieldCursor f, NavigationFix& fix, TimeValue time) {
    ClockRecord r;
    if (!Good(Clock(f, r.hour, r.minute, r.second, true))) return false;
    r.stamp = time.seconds;
    fix.time = r;
    return true;
}

bool ReadTwc(FieldCursor f, NavigationFix& fix, TimeValue time) {
    TwcRecord r;
    bool any = false;
    auto mark = [&](Read got, std::uint8_t& has) {
        has = Good(got);
        any = any || has;
        return Usable(got);
    };
    // Time and date are single fields read with "%2d%2d%f" and "%2d%2d%4d".
    std::string_view s;
    if (f.Next(s) && !s.empty()) {
        int h = 0, m = 0;
        float sec = 0;
        if (!ScanClock(s, h, m, sec)) return false;
        r.hour = h, r.minute = m, r.second = sec, r.hasTime = 1, any = true;
    }
    if (f.Next(s) && !s.empty()) {
        int d = 0, mo = 0, y = 0;
        if (!ScanInt(s, d, 2) || !ScanInt(s, mo, 2) || !ScanInt(s, y, 4)) return false;
        r.day = d, r.month = mo, r.year = y, r.hasDate = 1, any = true;
    }
    if (!mark(Char(f, r.status), r.hasStatus)) return false;
    std::uint8_t hasLat = 0, hasLon = 0;
    if (!mark(Double(f, r.latitude, -kAny, kAny), hasLat)) return false;
    if (!mark(Double(f, r.longitude, -kAny, kAny), hasLon)) return false;
    r.hasPosition = hasLat && hasLon;
    for (std::size_t i = 0; i < TwcRecord::kValues; ++i)
        if (!mark(Float(f, r.values[i]), r.hasValue[i])) return false;
    if (!any) return false;
    r.stamp = time.seconds;
    fix.twc = r;

    SensorValues& out = fix.sensors;
    if (r.hasPosition) {
        Forward(out.latitude, r.latitude, time);
        Forward(out.longitude, r.longitude, time);
    }
    TimedValue* targets[TwcRecord::kValues] = {
        &out.heading,    &out.pitch,       &out.roll,  &out.heave,  &out.depth,   &out.altitude,
        &out.soundSpeed, &out.temperature, &out.speed, &out.course, &out.pressure};
    for (std::size_t i = 0; i < TwcRecord::kValues; ++i)
        if (r.hasValue[i]) Forward(*targets[i], r.values[i], time);
    return true;
}

}  // namespace halvo

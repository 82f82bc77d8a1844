// Parsers of the standard sentences. Fields, formats and limits follow the sentence table;
// where a field's rule is not given, a field is read when present and a field whose text cannot
// be read refuses the sentence (docs/navigation-input.md).

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "nav/SentenceReaders.h"

namespace halvo {

namespace fields {

Read Double(FieldCursor& f, double& out, double lo, double hi) {
    std::string_view s;
    if (!f.Next(s) || s.empty()) return Read::Absent;
    double v = 0;
    if (!ScanDouble(s, v) || v < lo || v > hi) return Read::Bad;
    out = v;
    return Read::Good;
}

Read Float(FieldCursor& f, float& out) {
    std::string_view s;
    if (!f.Next(s) || s.empty()) return Read::Absent;
    float v = 0;
    if (!ScanFloat(s, v)) return Read::Bad;
    out = v;
    return Read::Good;
}

Read Int(FieldCursor& f, int& out, int width, int lo, int hi) {
    std::string_view s;
    if (!f.Next(s) || s.empty()) return Read::Absent;
    int v = 0;
    if (!ScanInt(s, v, width) || v < lo || v > hi) return Read::Bad;
    out = v;
    return Read::Good;
}

Read Char(FieldCursor& f, char& out, const char* allowed) {
    std::string_view s;
    if (!f.Next(s) || s.empty()) return Read::Absent;
    char c = 0;
    ScanChar(s, c);
    if (allowed && (c == 0 || !std::strchr(allowed, c))) return Read::Bad;
    out = c;
    return Read::Good;
}

Read Clock(FieldCursor& f, std::int32_t& hour, std::int32_t& minute, float& second, bool vendor) {
    std::string_view s;
    if (!f.Next(s) || s.empty()) return Read::Absent;
    int h = 0, m = 0;
    float sec = 0;
    if (!ScanClock(s, h, m, sec, vendor)) return Read::Bad;
    if (!vendor && (h < 0 || h > 24 || m < 0 || m > 60 || sec < 0 || sec > 60)) return Read::Bad;
    hour = h, minute = m, second = sec;
    return Read::Good;
}

}  // namespace fields

using namespace fields;

namespace {

constexpr const char* kNorthSouth = "NnSs";
constexpr const char* kEastWest = "EeWw";
constexpr double kAny = std::numeric_limits<double>::max();

// Latitude, hemisphere, longitude, hemisphere, each written into the record as it passes.
bool ReadPositionInPlace(FieldCursor& f, LatLonRecord& r) {
    double lat = 0, lon = 0;
    if (!Good(Double(f, lat, 0, 9000))) return false;
    r.latDegrees = static_cast<std::int32_t>(lat / 100);
    r.latMinutes = static_cast<float>(lat - 100.0 * r.latDegrees);
    if (!Good(Char(f, r.latHemisphere, kNorthSouth))) return false;
    if (!Good(Double(f, lon, 0, 18000))) return false;
    r.lonDegrees = static_cast<std::int32_t>(lon / 100);
    r.lonMinutes = static_cast<float>(lon - 100.0 * r.lonDegrees);
    return Good(Char(f, r.lonHemisphere, kEastWest));
}

// A missing or bad time leaves 0 and does not refuse the sentence.
void ReadClockOrZero(FieldCursor& f, std::int32_t& hour, std::int32_t& minute, float& second) {
    if (!Good(Clock(f, hour, minute, second))) hour = 0, minute = 0, second = 0;
}

bool ReadGrid(FieldCursor& f, GridRecord& target, double limit, TimeValue time) {
    GridRecord r;
    if (!Good(Double(f, r.x, -limit, limit)) || !Good(Char(f, r.xFlag))) return false;
    if (!Good(Double(f, r.y, -limit, limit)) || !Good(Char(f, r.yFlag))) return false;
    ReadClockOrZero(f, r.hour, r.minute, r.second);
    r.stamp = time.seconds;
    target = r;
    return true;
}

// Up to ten text fields of at most 80 characters, escape pairs kept as they come.
void ReadEventText(FieldCursor& f, EventRecord& r) {
    std::string_view s;
    for (std::size_t i = 0; i < EventRecord::kFields && f.Next(s, true); ++i) {
        const std::size_t n = std::min(s.size(), EventRecord::kFieldSize);
        std::memcpy(r.text.data() + i * EventRecord::kFieldSize, s.data(), n);
    }
}

}  // namespace

bool ZdaYear(int raw, int& year) {
    if (raw >= 1990 && raw <= 2100) {
        year = raw;
    } else if (raw >= 90 && raw <= 499) {
        year = raw + 1900;
    } else if (raw >= 0 && raw <= 89) {
        year = raw + 2000;
    } else {
        return false;
    }
    return true;
}

bool ReadGll(FieldCursor f, NavigationFix& fix, TimeValue time) {
    if (!ReadPositionInPlace(f, fix.gll)) return false;
    ReadClockOrZero(f, fix.gll.hour, fix.gll.minute, fix.gll.second);
    fix.gll.stamp = time.seconds;
    return true;
}

bool ReadGga(FieldCursor f, NavigationFix& fix, TimeValue time) {
    ReadClockOrZero(f, fix.gga.hour, fix.gga.minute, fix.gga.second);
    if (!ReadPositionInPlace(f, fix.gga)) return false;
    fix.gga.stamp = time.seconds;
    return true;
}

bool ReadZda(FieldCursor f, NavigationFix& fix, TimeValue time) {
    ZdaRecord r;
    // Each field by position; an empty or unreadable one stays 0, only the year decides.
    Clock(f, r.hour, r.minute, r.second);
    Int(f, r.day, 0, 1, 31);
    Int(f, r.month, 0, 1, 12);
    int raw = 0;
    if (!Good(Int(f, raw, 0, -2147483647 - 1, 2147483647)) || !ZdaYear(raw, r.year)) return false;
    Int(f, r.zoneHours, 2, -13, 13);
    Int(f, r.zoneMinutes, 2, -59, 59);
    r.stamp = time.seconds;
    fix.zda = r;
    return true;
}

bool ReadVtg(FieldCursor f, NavigationFix& fix, TimeValue time) {
    VtgRecord r;
    unsigned seen = 0;
    for (int pair = 0; pair < 4; ++pair) {
        float value = 0;
        char letter = 0;
        const Read v = Float(f, value);
        if (!Good(Char(f, letter)) || !Good(v)) continue;
        switch (letter) {
            case 'T':
                r.trueCourse = value, seen |= 1;
                break;
            case 'M':
                r.magneticCourse = value, seen |= 2;
                break;
            case 'N':
                r.speedKnots = value, seen |= 4;
                break;
            case 'K':
                r.speedKmh = value, seen |= 8;
                break;
            default:
                break;
        }
    }
    if (seen != 15) return false;
    r.stamp = time.seconds;
    fix.vtg = r;
    return true;
}

bool ReadGxy(FieldCursor f, NavigationFix& fix, TimeValue time) {
    return ReadGrid(f, fix.gxy, 2147000.0, time);
}

bool ReadGgu(FieldCursor f, NavigationFix& fix, TimeValue time) {
    return ReadGrid(f, fix.ggu, 214700000.0, time);
}

bool ReadEvt(FieldCursor f, NavigationFix& fix, TimeValue time) {
    EventRecord r;
    if (!Good(Char(f, r.type))) return false;
    ReadEventText(f, r);
    r.stamp = time.seconds;
    fix.evt = r;
    return true;
}

bool ReadEma(FieldCursor f, NavigationFix& fix, TimeValue time) {
    EventRecord r;
    int type = 0;
    if (!Good(Int(f, type, 0, -2147483647 - 1, 2147483647))) return false;
    r.numericType = type;
    ReadEventText(f, r);
    r.stamp = time.seconds;
    fix.ema = r;
    return true;
}

bool ReadHdg(FieldCursor f, NavigationFix& fix, TimeValue time) {
    HdgRecord r;
    if (!Good(Float(f, r.heading))) return false;
    if (!Usable(Float(f, r.deviation)) || !Usable(Char(f, r.deviationSide, kEastWest)))
        return false;
    if (!Usable(Float(f, r.variation)) || !Usable(Char(f, r.variationSide, kEastWest)))
        return false;
    r.stamp = time.seconds;
    fix.hdg = r;
    return true;
}

bool ReadRmc(FieldCursor f, NavigationFix& fix, TimeValue time) {
    RmcRecord r;
    // The first eight fields must all read; the date and the variation may fail.
    std::string_view s;
    int h = 0, m = 0;
    float sec = 0;
    if (!f.Next(s) || s.empty() || !ScanClock(s, h, m, sec)) return false;
    r.hour = h, r.minute = m, r.second = sec;
    if (!Good(Char(f, r.status)) || !Good(Double(f, r.latitude, -kAny, kAny)) ||
        !Good(Char(f, r.latHemisphere)) || !Good(Double(f, r.longitude, -kAny, kAny)) ||
        !Good(Char(f, r.lonHemisphere)) || !Good(Float(f, r.speed)) || !Good(Float(f, r.course)))
        return false;
    int d = 0, mo = 0, y = 0;
    if (f.Next(s) && ScanInt(s, d, 2)) {
        r.day = d;
        if (ScanInt(s, mo, 2)) {
            r.month = mo;
            if (ScanInt(s, y, 2)) r.year = y;
        }
    }
    Float(f, r.variation);
    Char(f, r.variationSide);
    r.stamp = time.seconds;
    fix.rmc = r;
    return true;
}

bool ReadRma(FieldCursor f, NavigationFix& fix, TimeValue time) {
    RmaRecord r;
    if (!Usable(Char(f, r.status))) return false;
    if (!Good(Double(f, r.latitude, -kAny, kAny)) || !Good(Char(f, r.latHemisphere, kNorthSouth)) ||
        !Good(Double(f, r.longitude, -kAny, kAny)) || !Good(Char(f, r.lonHemisphere, kEastWest)))
        return false;
    for (float& v : r.values)
        if (!Usable(Float(f, v))) return false;
    Char(f, r.side);
    r.stamp = time.seconds;
    fix.rma = r;
    return true;
}

bool ReadOsd(FieldCursor f, NavigationFix& fix, TimeValue time) {
    OsdRecord r;
    if (!Good(Float(f, r.heading))) return false;
    if (!Usable(Char(f, r.status)) || !Usable(Float(f, r.course)) ||
        !Usable(Char(f, r.courseReference)) || !Usable(Float(f, r.speed)) ||
        !Usable(Char(f, r.speedReference)) || !Usable(Float(f, r.set)) ||
        !Usable(Float(f, r.drift)) || !Usable(Char(f, r.driftReference)))
        return false;
    r.stamp = time.seconds;
    fix.osd = r;
    return true;
}

bool ReadMtw(FieldCursor f, NavigationFix& fix, TimeValue time) {
    MtwRecord r;
    if (!Good(Float(f, r.temperature))) return false;
    r.stamp = time.seconds;
    fix.mtw = r;
    return true;
}

bool ReadHdt(FieldCursor f, NavigationFix& fix, TimeValue time) {
    HdtRecord r;
    if (!Good(Float(f, r.heading))) return false;
    r.stamp = time.seconds;
    fix.hdt = r;
    return true;
}

bool ReadDpt(FieldCursor f, NavigationFix& fix, TimeValue time) {
    DptRecord r;
    if (!Good(Float(f, r.depth)) || !Usable(Float(f, r.offset))) return false;
    r.stamp = time.seconds;
    fix.dpt = r;
    return true;
}

bool ReadDbt(FieldCursor f, NavigationFix& fix, TimeValue time) {
    DbtRecord r;
    int good = 0;
    for (float* v : {&r.feet, &r.metres, &r.fathoms}) {
        const Read got = Float(f, *v);
        if (!Usable(got)) return false;
        good += Good(got);
        f.Skip();  // the unit letter
    }
    if (good == 0) return false;
    r.stamp = time.seconds;
    fix.dbt = r;
    return true;
}

}  // namespace halvo

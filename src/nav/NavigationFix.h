#pragma once
// The latest value of every sentence kind and sensor reading. A plain record, copied by value.
// Each sentence record carries `stamp`, the reading's time in whole seconds: a stamp that differs
// from the last one seen tells a reader that the record is new. Nothing clears a record.

#include <array>
#include <cstdint>
#include <string_view>

#include "core/TimeValue.h"

namespace halvo {

// GGA and GLL: position split into degrees and minutes, and the time of day.
struct LatLonRecord {
    std::int32_t latDegrees = 0;
    float latMinutes = 0;
    char latHemisphere = 0;
    std::int32_t lonDegrees = 0;
    float lonMinutes = 0;
    char lonHemisphere = 0;
    std::int32_t hour = 0;
    std::int32_t minute = 0;
    float second = 0;
    std::int32_t stamp = 0;
};

struct VtgRecord {
    float trueCourse = 0, magneticCourse = 0, speedKnots = 0, speedKmh = 0;
    std::int32_t stamp = 0;
};

struct ZdaRecord {
    std::int32_t hour = 0, minute = 0;
    float second = 0;
    std::int32_t day = 0, month = 0, year = 0, zoneHours = 0, zoneMinutes = 0;
    std::int32_t stamp = 0;
};

// GXY and GGU: grid coordinates with their flag characters.
struct GridRecord {
    double x = 0;
    char xFlag = 0;
    double y = 0;
    char yFlag = 0;
    std::int32_t hour = 0, minute = 0;
    float second = 0;
    std::int32_t stamp = 0;
};

// EVT and EMA: up to ten text fields of at most 80 characters, in one 800-byte block.
struct EventRecord {
    static constexpr std::size_t kFields = 10;
    static constexpr std::size_t kFieldSize = 80;
    char type = 0;                 // EVT
    std::int32_t numericType = 0;  // EMA
    std::array<char, kFields * kFieldSize> text{};
    std::int32_t stamp = 0;

    // Field i up to its first zero byte (a full field has none).
    std::string_view Field(std::size_t i) const;
};

struct HdgRecord {
    float heading = 0, deviation = 0;
    char deviationSide = 0;
    float variation = 0;
    char variationSide = 0;
    std::int32_t stamp = 0;
};

struct PsimssbRecord {
    std::array<float, 3> values{};
    std::int32_t stamp = 0;
};

struct PsimsnsRecord {
    float value = 0;
    std::int32_t stamp = 0;
};

struct RmcRecord {
    std::int32_t hour = 0, minute = 0;
    float second = 0;
    char status = 0;
    double latitude = 0;  // ddmm.mmmm as received
    char latHemisphere = 0;
    double longitude = 0;  // dddmm.mmmm as received
    char lonHemisphere = 0;
    float speed = 0, course = 0;
    std::int32_t day = 0, month = 0, year = 0;
    float variation = 0;
    char variationSide = 0;
    std::int32_t stamp = 0;
};

// Whole degrees of a ddmm.mmmm value as an RMC record holds it; a value no sentence could carry
// (too large, or not a number) gives 0 rather than an undefined conversion.
std::int32_t WholeDegrees(double ddmm);

struct RmaRecord {
    char status = 0;
    double latitude = 0;
    char latHemisphere = 0;
    double longitude = 0;
    char lonHemisphere = 0;
    std::array<float, 5> values{};
    char side = 0;
    std::int32_t stamp = 0;
};

struct OsdRecord {
    float heading = 0;
    char status = 0;
    float course = 0;
    char courseReference = 0;
    float speed = 0;
    char speedReference = 0;
    float set = 0, drift = 0;
    char driftReference = 0;
    std::int32_t stamp = 0;
};

struct MtwRecord {
    float temperature = 0;
    std::int32_t stamp = 0;
};

struct HdtRecord {
    float heading = 0;
    std::int32_t stamp = 0;
};

struct DptRecord {
    float depth = 0, offset = 0;
    std::int32_t stamp = 0;
};

struct DbtRecord {
    float feet = 0, metres = 0, fathoms = 0;
    std::int32_t stamp = 0;
};

// Vendor records, one per sentence.
struct PositiRecord {
    double latitude = 0, longitude = 0;
    float height = 0;
    std::int32_t stamp = 0;
};

struct TripleRecord {  // SPEED_ and LOGDVL
    std::array<float, 3> values{};
    std::int32_t stamp = 0;
};

struct AtitudRecord {
    float roll = 0, pitch = 0;
    std::int32_t stamp = 0;
};

struct DepinRecord {
    float depth = 0;
    std::int32_t hour = 0, minute = 0;
    float second = 0;
    std::int32_t stamp = 0;
};

struct ClockRecord {  // TIME__
    std::int32_t hour = 0, minute = 0;
    float second = 0;
    std::int32_t stamp = 0;
};

// The combined vendor record. Each part has its own presence byte.
struct TwcRecord {
    std::uint8_t hasTime = 0, hasDate = 0, hasStatus = 0, hasPosition = 0;
    std::int32_t hour = 0, minute = 0;
    float second = 0;
    std::int32_t day = 0, month = 0, year = 0;
    char status = 0;
    double latitude = 0, longitude = 0;
    // heading, pitch, roll, heave, depth, altitude, sound speed, temperature, speed, course,
    // pressure, in this order
    static constexpr std::size_t kValues = 11;
    std::array<float, kValues> values{};
    std::array<std::uint8_t, kValues> hasValue{};
    std::int32_t stamp = 0;
};

// A value decoded from a binary message or forwarded by a vendor sentence, with its time.
struct TimedValue {
    double value = 0;
    TimeValue time{};
    bool seen = false;
};

// Binary values in the system's units: degrees, metres, PSI, metres per second.
struct SensorValues {
    TimedValue latitude, longitude;  // decimal degrees
    TimedValue heading, pitch, roll, heave, speed, course;
    TimedValue temperature, altitude, pressure, depth, soundSpeed, salinity, conductivity;
    TimedValue positionX, positionY, positionWord, positionExtra;
    TimedValue auxiliary1, auxiliary2;
    std::array<std::int16_t, 12> analog{};
    TimeValue analogTime{};
};

// Kinds ever parsed.
enum MaskA : std::uint32_t {
    MaskDbt = 0x01,
    MaskDpt = 0x02,
    MaskMtw = 0x04,
    MaskRma = 0x08,
    MaskGll = 0x10,
    MaskGga = 0x20,
    MaskRmc = 0x40,
    MaskVtg = 0x80,
    MaskHdg = 0x100,
    MaskHdt = 0x200,
    MaskGxy = 0x400,
    MaskGgu = 0x800,
    MaskZda = 0x1000,
};

enum MaskB : std::uint32_t {
    MaskPsimssb = 0x100,
    MaskPsimsns = 0x200,
    MaskOsd = 0x40000,
    MaskEvt = 0x80000,
    MaskEma = 0x100000,
    MaskTwc = 0x800000,
    MaskPositi = 0x4000000,
    MaskSpeed = 0x8000000,
    MaskAtitud = 0x10000000,
    MaskDepin = 0x20000000,
    MaskLogdvl = 0x40000000,
    MaskTime = 0x80000000,
};

struct NavigationFix {
    LatLonRecord gga;
    LatLonRecord gll;
    VtgRecord vtg;
    ZdaRecord zda;
    GridRecord gxy;
    GridRecord ggu;
    EventRecord evt;
    EventRecord ema;
    HdgRecord hdg;
    PsimssbRecord psimssb;
    PsimsnsRecord psimsns;
    RmcRecord rmc;
    RmaRecord rma;
    OsdRecord osd;
    MtwRecord mtw;
    HdtRecord hdt;
    DptRecord dpt;
    DbtRecord dbt;
    PositiRecord positi;
    TripleRecord speed;
    AtitudRecord atitud;
    DepinRecord depin;
    TripleRecord logdvl;
    ClockRecord time;
    TwcRecord twc;

    SensorValues sensors;
    std::uint32_t maskA = 0;
    std::uint32_t maskB = 0;
};

}  // namespace halvo

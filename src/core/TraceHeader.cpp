#include "core/TraceHeader.h"

#include <array>
#include <cmath>
#include <limits>

#include "core/ByteOrder.h"

namespace halvo {

namespace {

using K = FieldKind;

constexpr std::array<TraceFieldInfo, kTraceFieldCount> kFields = {{
    {"Time Since 1970", 0, K::Int32},
    {"Start Depth", 4, K::Int32},
    {"Ping Number", 8, K::Int32},
    {"Channel Number", 12, K::Int32},
    {"MSB1", 16, K::Int16},
    {"LSB1", 18, K::Int16},
    {"LSB2", 20, K::Int16},
    {"Unused1A", 22, K::Int16},
    {"Unused1B", 24, K::Int16},
    {"Unused1C", 26, K::Int16},
    {"Trace ID Code", 28, K::Int16},
    {"Validity Flags", 30, K::Int16},
    {"Reserved1", 32, K::Int16},
    {"Data Format", 34, K::Int16},
    {"NMEA AntennaeR", 36, K::Int16},
    {"NMEA AntennaeO", 38, K::Int16},
    {"AttitudeMilliseconds", 40, K::Int16},
    {"NavFixMilliseconds", 42, K::Int16},
    {"KP", 44, K::Flt32},
    {"Reserved3A", 48, K::Int32},
    {"Reserved3B", 52, K::Int32},
    {"Reserved3C", 56, K::Int32},
    {"Reserved3AD", 60, K::Int32},
    {"PulseGenInfo0", 64, K::Flt32},
    {"PulseGenInfo1", 68, K::Flt32},
    {"Source CoordX", 72, K::Int32},
    {"Source CoordY", 76, K::Int32},
    {"Group CoordX", 80, K::Int32},
    {"Group CoordY", 84, K::Int32},
    {"Coord Units", 88, K::Int16},
    {"Annotation Word 0", 90, K::Int16},
    {"Annotation Word 1", 92, K::Int16},
    {"Annotation Word 2", 94, K::Int16},
    {"Annotation Word 3", 96, K::Int16},
    {"Annotation Word 4", 98, K::Int16},
    {"Annotation Word 5", 100, K::Int16},
    {"Annotation Word 6", 102, K::Int16},
    {"Annotation Word 7", 104, K::Int16},
    {"Annotation Word 8", 106, K::Int16},
    {"Annotation Word 9", 108, K::Int16},
    {"Annotation Word 10", 110, K::Int16},
    {"Annotation Word 11", 112, K::Int16},
    {"Samples", 114, K::Int16},
    {"Sample Interval in NS", 116, K::Int32},
    {"ADC Gain", 120, K::Int16},
    {"Pulse Power (0-100)", 122, K::Int16},
    {"Reserved3A", 124, K::Int16},
    {"Start Freq 10 * Hz", 126, K::Int16},
    {"End Freq 10 * Hz", 128, K::Int16},
    {"Sweep Length MS", 130, K::Int16},
    {"Pressure PSI * 1000", 132, K::Int32},
    {"Depth mM", 136, K::Int32},
    {"Alias Freq", 140, K::Int16},
    {"Pulse ID", 142, K::Int16},
    {"Altitude", 144, K::Int32},
    {"Sound Speed", 148, K::Flt32},
    {"MixerFrequency", 152, K::Flt32},
    {"Year (CPU Time)", 156, K::Int16},
    {"Day", 158, K::Int16},
    {"Hour", 160, K::Int16},
    {"Minute", 162, K::Int16},
    {"Second", 164, K::Int16},
    {"Time Basis", 166, K::Int16},
    {"Weighting Factor", 168, K::Int16},
    {"Num of Pulses", 170, K::Int16},
    {"Heading 100 * Degrees", 172, K::Int16},
    {"Pitch 180 Degrees / 32768", 174, K::Int16},
    {"Roll 180 Degrees / 32768", 176, K::Int16},
    {"Temperature 10 * Deg C", 178, K::Int16},
    {"Heave Compensation Samples", 180, K::Int16},
    {"Trigger Source", 182, K::Int16},
    {"Mark Number", 184, K::Int16},
    {"NMEA Hour", 186, K::Int16},
    {"NMEA Minute", 188, K::Int16},
    {"NMEA Second", 190, K::Int16},
    {"NMEA Course", 192, K::Int16},
    {"NMEA Speed", 194, K::Int16},
    {"NMEA Day", 196, K::Int16},
    {"NMEA Year", 198, K::Int16},
    {"Milliseconds Today", 200, K::Int32},
    {"ADC Max", 204, K::Int16},
    {"Cal Const", 206, K::Int16},
    {"Vehicle ID", 208, K::Int16},
    {"Software Version Word 0", 210, K::Chars2},
    {"Software Version Word 1", 212, K::Chars2},
    {"Software Version Word 2", 214, K::Chars2},
    {"Spherical Correction", 216, K::Int32},
    {"Packet Number", 220, K::Int16},
    {"ADC Decimation PRE (1)", 222, K::Int16},
    {"ADC Decimation POST (2)", 224, K::Int16},
    {"Water Temperature", 226, K::Int16},
    {"Layback Float", 228, K::Flt32},
    {"FoundBottomOffset", 232, K::Int32},
    {"Cable Out", 236, K::Int16},
    {"PulseGenType", 238, K::Int16},
}};

template <class Bytes>
std::int32_t ReadInt(Bytes b, TraceField f) {
    if (b.size() < kTraceHeaderSize) return 0;
    const TraceFieldInfo& i = InfoOf(f);
    switch (i.kind) {
        case K::Int16:
            return LoadLE<std::int16_t>(b.data() + i.offset);
        case K::Chars2:
            return LoadLE<std::uint16_t>(b.data() + i.offset);
        case K::Int32:
            return LoadLE<std::int32_t>(b.data() + i.offset);
        case K::Flt32: {
            const float v = LoadLE<float>(b.data() + i.offset);
            if (!std::isfinite(v) || std::fabs(v) >= 2147483647.0f) return 0;
            return static_cast<std::int32_t>(v);
        }
    }
    return 0;
}

template <class Bytes>
float ReadFloat(Bytes b, TraceField f) {
    if (b.size() < kTraceHeaderSize) return 0.0f;
    const TraceFieldInfo& i = InfoOf(f);
    if (i.kind == K::Flt32) return LoadLE<float>(b.data() + i.offset);
    return static_cast<float>(ReadInt(b, f));
}

template <class Bytes>
double ReadNumber(Bytes b, TraceField f) {
    if (InfoOf(f).kind == K::Flt32) return ReadFloat(b, f);
    return ReadInt(b, f);
}

}  // namespace

const TraceFieldInfo& InfoOf(TraceField f) {
    return kFields[static_cast<std::size_t>(f) % kTraceFieldCount];
}

std::span<const TraceFieldInfo> AllTraceFields() {
    return kFields;
}

std::optional<TraceField> FindTraceField(std::string_view name) {
    for (std::size_t i = 0; i < kFields.size(); ++i) {
        if (kFields[i].name == name) return static_cast<TraceField>(i);
    }
    return std::nullopt;
}

DataFormatInfo DataFormatOf(int format) {
    switch (format) {
        case 0:
            return {"Envelope", 2, 1, false};
        case 1:
            return {"Complex", 2, 2, false};
        case 2:
            return {"RAW", 2, 1, false};
        case 7:
            return {"", 4, 2, true};
        case 9:
            return {"", 2, 2, false};
        case 10:
            return {"", 4, 1, true};
        default:
            return {"", 2, 1, false};
    }
}

std::int32_t TraceHeaderView::GetInt(TraceField f) const {
    return ReadInt(bytes_, f);
}
float TraceHeaderView::GetFloat(TraceField f) const {
    return ReadFloat(bytes_, f);
}
double TraceHeaderView::GetNumber(TraceField f) const {
    return ReadNumber(bytes_, f);
}

void TraceHeaderView::SetInt(TraceField f, std::int32_t v) {
    if (!valid()) return;
    const TraceFieldInfo& i = InfoOf(f);
    std::uint8_t* p = bytes_.data() + i.offset;
    switch (i.kind) {
        case K::Int16:
        case K::Chars2:
            StoreLE<std::uint16_t>(p, static_cast<std::uint16_t>(v));
            break;
        case K::Int32:
            StoreLE<std::int32_t>(p, v);
            break;
        case K::Flt32:
            StoreLE<float>(p, static_cast<float>(v));
            break;
    }
}

void TraceHeaderView::SetFloat(TraceField f, float v) {
    if (!valid()) return;
    const TraceFieldInfo& i = InfoOf(f);
    if (i.kind == K::Flt32) {
        StoreLE<float>(bytes_.data() + i.offset, v);
    } else {
        SetNumber(f, v);
    }
}

void TraceHeaderView::SetNumber(TraceField f, double v) {
    if (!valid()) return;
    if (InfoOf(f).kind == K::Flt32) {
        StoreLE<float>(bytes_.data() + InfoOf(f).offset, static_cast<float>(v));
        return;
    }
    // Out-of-range or non-finite numbers are held rather than converted with undefined results.
    if (!std::isfinite(v)) v = 0.0;
    v = std::fmax(std::fmin(v, 2147483647.0), -2147483648.0);
    SetInt(f, static_cast<std::int32_t>(v));
}

std::int32_t ConstTraceHeaderView::GetInt(TraceField f) const {
    return ReadInt(bytes_, f);
}
float ConstTraceHeaderView::GetFloat(TraceField f) const {
    return ReadFloat(bytes_, f);
}
double ConstTraceHeaderView::GetNumber(TraceField f) const {
    return ReadNumber(bytes_, f);
}

}  // namespace halvo

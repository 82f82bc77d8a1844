#include "nav/SentenceParser.h"

#include <array>

#include "core/MessageTypes.h"
#include "nav/SentenceReaders.h"

namespace halvo {

namespace {

using Reader = bool (*)(FieldCursor, NavigationFix&, TimeValue);

struct Route {
    std::string_view name;
    SentenceKind kind;
    Reader read;
    std::uint32_t maskA;
    std::uint32_t maskB;
};

// Characters 3 to 5, tested in this order.
constexpr std::array<Route, 17> kStandard{{
    {"GLL", SentenceKind::GLL, ReadGll, MaskGll, 0},
    {"GGA", SentenceKind::GGA, ReadGga, MaskGga, 0},
    {"ZDA", SentenceKind::ZDA, ReadZda, MaskZda, 0},
    {"VTG", SentenceKind::VTG, ReadVtg, MaskVtg, 0},
    {"GXY", SentenceKind::GXY, ReadGxy, MaskGxy, 0},
    {"GGU", SentenceKind::GGU, ReadGgu, MaskGgu, 0},
    {"EVT", SentenceKind::EVT, ReadEvt, 0, MaskEvt},
    {"EMA", SentenceKind::EMA, ReadEma, 0, MaskEma},
    {"HDG", SentenceKind::HDG, ReadHdg, MaskHdg, 0},
    {"RMC", SentenceKind::RMC, ReadRmc, MaskRmc, 0},
    {"RMA", SentenceKind::RMA, ReadRma, MaskRma, 0},
    {"OSD", SentenceKind::OSD, ReadOsd, 0, MaskOsd},
    {"MTW", SentenceKind::MTW, ReadMtw, MaskMtw, 0},
    {"HDT", SentenceKind::HDT, ReadHdt, MaskHdt, 0},
    {"DPT", SentenceKind::DPT, ReadDpt, MaskDpt, 0},
    {"DBT", SentenceKind::DBT, ReadDbt, MaskDbt, 0},
    {"TWC", SentenceKind::TWC, ReadTwc, 0, MaskTwc},
}};

// Compared with the text from character 1, in this order.
constexpr std::array<Route, 9> kVendor{{
    {"PSIMSSB", SentenceKind::PSIMSSB, ReadPsimssb, 0, MaskPsimssb},
    {"PSIMSNS", SentenceKind::PSIMSNS, ReadPsimsns, 0, MaskPsimsns},
    {"PIXSE,ATITUD", SentenceKind::ATITUD, ReadAtitud, 0, MaskAtitud},
    {"PIXSE,POSITI", SentenceKind::POSITI, ReadPositi, 0, MaskPositi},
    {"PIXSE,LOGDVL", SentenceKind::LOGDVL, ReadLogdvl, 0, MaskLogdvl},
    {"PIXSE,SPEED_", SentenceKind::SPEED_, ReadSpeed, 0, MaskSpeed},
    {"PIXSE,DEPIN_", SentenceKind::DEPIN_, ReadDepin, 0, MaskDepin},
    {"PIXSE,TIME__", SentenceKind::TIME__, ReadTime, 0, MaskTime},
    {"TIME__", SentenceKind::TIME__, ReadTime, 0, MaskTime},
}};

void Put(TimedValue& v, double value, TimeValue time) {
    fields::Forward(v, value, time);
}

template <class T>
void PutIf(TimedValue& v, const Flagged<T>& f, TimeValue time, double scale = 1.0) {
    if (f.valid) Put(v, static_cast<double>(f.value) * scale, time);
}

}  // namespace

std::string_view SentenceKindName(SentenceKind kind) {
    for (const Route& r : kStandard)
        if (r.kind == kind) return r.name;
    switch (kind) {
        case SentenceKind::PSIMSSB:
            return "PSIMSSB";
        case SentenceKind::PSIMSNS:
            return "PSIMSNS";
        case SentenceKind::ATITUD:
            return "ATITUD";
        case SentenceKind::POSITI:
            return "POSITI";
        case SentenceKind::LOGDVL:
            return "LOGDVL";
        case SentenceKind::SPEED_:
            return "SPEED_";
        case SentenceKind::DEPIN_:
            return "DEPIN_";
        case SentenceKind::TIME__:
            return "TIME__";
        default:
            return "";
    }
}

SentenceResult SentenceParser::ParseSentence(std::string_view text, std::int32_t seconds,
                                             std::int32_t ms, std::uint8_t port) {
    const std::string_view body = SentenceBody(text);
    const TimeValue time{seconds, ms};
    SentenceResult result;
    const Route* route = nullptr;
    std::size_t fieldsFrom = 0;
    if (!body.empty() && body.front() == '$') {
        // The talker characters 1 and 2 are never looked at.
        if (body.size() >= 6) {
            for (const Route& r : kStandard) {
                if (body.substr(3, 3) == r.name) {
                    route = &r;
                    fieldsFrom = 6;
                    break;
                }
            }
        }
        if (!route) {
            for (const Route& r : kVendor) {
                if (body.substr(1).starts_with(r.name)) {
                    route = &r;
                    fieldsFrom = 1 + r.name.size();
                    break;
                }
            }
        }
    }
    if (route) {
        result.kind = route->kind;
        result.accepted = route->read(FieldCursor(body, fieldsFrom), fix_, time);
        if (result.accepted) {
            fix_.maskA |= route->maskA;
            fix_.maskB |= route->maskB;
        }
    }
    history_.Add(text, result.accepted, port, static_cast<std::uint8_t>(result.kind));
    return result;
}

SentenceResult SentenceParser::ProcessMessage(const SensorMessageView& m, TimeValue now) {
    SentenceResult result;
    if (m.type == MsgNmea) {
        if (auto r = ReadNmea(m.payload)) {
            const TimeValue time = container_.ReadingTime(r->stamp, now);
            lastNmeaTime_ = time;
            if (r->Parsable()) result = ParseSentence(r->text, time.seconds, time.ms, m.channel);
        }
    } else if (m.type == MsgTrace) {
        traceVersion_ = m.version;
    } else {
        ProcessSensor(m, now);
    }
    container_.AfterMessage(m.type, m.payload);
    return result;
}

void SentenceParser::ProcessSensor(const SensorMessageView& m, TimeValue now) {
    SensorValues& s = fix_.sensors;
    const auto p = m.payload;
    auto timeOf = [&](const SensorStamp& stamp) { return container_.ReadingTime(stamp, now); };
    switch (m.type) {
        case MsgPitchRoll:
            if (auto r = ReadPitchRoll(p)) {
                const TimeValue t = timeOf(r->stamp);
                Put(s.pitch, r->pitchDegrees, t);
                Put(s.roll, r->rollDegrees, t);
                PutIf(s.heave, r->heaveMm, t, 0.001);
                PutIf(s.heading, r->headingCentiDegrees, t, 0.01);
            }
            break;
        case MsgAnalog:
            if (auto r = ReadAnalog(p)) {
                s.analog = r->values;
                s.analogTime = timeOf(r->stamp);
            }
            break;
        case MsgPressure:
            if (auto r = ReadPressure(p)) {
                const TimeValue t = timeOf(r->stamp);
                PutIf(s.pressure, r->pressurePsi, t);
                PutIf(s.temperature, r->temperature, t);
                PutIf(s.salinity, r->salinity, t);
                PutIf(s.conductivity, r->conductivity, t);
                PutIf(s.soundSpeed, r->soundSpeed, t);
                PutIf(s.depth, r->depth, t);
            }
            break;
        case MsgAltitude:
            if (auto r = ReadAltitude(p)) PutIf(s.altitude, r->altitudeMm, timeOf(r->stamp), 0.001);
            break;
        case MsgSituation:
            if (auto r = ReadSituation(p)) {
                const TimeValue t = timeOf(r->stamp);
                PutIf(s.latitude, r->latitude, t);
                PutIf(s.longitude, r->longitude, t);
                PutIf(s.depth, r->depth, t);
                PutIf(s.heading, r->heading, t);
                PutIf(s.pitch, r->pitch, t);
                PutIf(s.roll, r->roll, t);
                PutIf(s.heave, r->heave, t);
                PutIf(s.speed, r->speed, t);
                PutIf(s.course, r->course, t);
            }
            break;
        case kTypeCompactSituation:
            if (auto r = ReadCompactSituation(p)) {
                const TimeValue t = timeOf(r->stamp);
                PutIf(s.latitude, r->latitude, t);
                PutIf(s.longitude, r->longitude, t);
                PutIf(s.depth, r->depth, t);
                PutIf(s.altitude, r->altitude, t);
                PutIf(s.heave, r->heave, t);
                PutIf(s.pitch, r->pitch, t);
                PutIf(s.roll, r->roll, t);
                PutIf(s.heading, r->heading, t);
                PutIf(s.soundSpeed, r->soundSpeed, t);
                PutIf(s.temperature, r->temperature, t);
                PutIf(s.speed, r->speed, t);
                if (r->courseRule.valid && r->courseRule.value <= 1) {
                    // Rule 1 adds the heading: this message's when it has one, else the last.
                    const double heading = r->courseRule.value == 0 ? 0.0 : s.heading.value;
                    Put(s.course,
                        CourseFromVelocity(r->velocityX.value, r->velocityY.value, heading), t);
                }
            }
            break;
        case kTypeAuxiliary1:
        case kTypeAuxiliary2:
        case kTypeAuxiliaryTimed:
            if (auto r = ReadAuxiliary(m.type, p)) {
                const TimeValue t = r->timedByNmea ? lastNmeaTime_ : timeOf(r->stamp);
                Put(r->slot == 1 ? s.auxiliary1 : s.auxiliary2, r->value, t);
            }
            break;
        case kTypeAttitude:
            if (auto r = ReadAttitude(p)) {
                const TimeValue t = timeOf(r->stamp);
                PutIf(s.heading, r->heading, t);
                PutIf(s.heave, r->heave, t);
                PutIf(s.pitch, r->pitch, t);
                PutIf(s.roll, r->roll, t);
            }
            break;
        case kTypeEnvironment:
            if (auto r = ReadEnvironment(p)) {
                const TimeValue t = timeOf(r->stamp);
                PutIf(s.pressure, r->pressure, t);
                PutIf(s.temperature, r->temperature, t);
                PutIf(s.salinity, r->salinity, t);
                PutIf(s.conductivity, r->conductivity, t);
                PutIf(s.soundSpeed, r->soundSpeed, t);
                PutIf(s.depth, r->depth, t);
            }
            break;
        case kTypeRange:
            if (auto r = ReadRange(p)) {
                const TimeValue t = timeOf(r->stamp);
                PutIf(s.altitude, r->altitude, t);
                PutIf(s.speed, r->speed, t);
                PutIf(s.heading, r->heading, t);
            }
            break;
        case kTypePosition:
            if (auto r = ReadPosition(p)) {
                const TimeValue t = timeOf(r->stamp);
                PutIf(s.positionWord, r->word, t);
                PutIf(s.positionX, r->x, t);
                PutIf(s.positionY, r->y, t);
                PutIf(s.latitude, r->latitude, t);
                PutIf(s.longitude, r->longitude, t);
                PutIf(s.speed, r->speed, t);
                PutIf(s.heading, r->heading, t);
                PutIf(s.positionExtra, r->extra, t);
            }
            break;
        default:
            break;  // 2000, 2080, 2111 and all others carry nothing for the fix
    }
}

}  // namespace halvo

#pragma once
// A stamping observer on a fake tick and a fake wall clock, with builders for the messages it
// reads. Everything it touches is the real product code; only time is faked.

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "app/GeneralSettings.h"
#include "app/Notifier.h"
#include "app/ProgramClock.h"
#include "app/SystemCoordinator.h"
#include "core/ByteOrder.h"
#include "core/MessageTypes.h"
#include "core/SonarMessage.h"
#include "core/TraceHeader.h"
#include "platform/FakeSystemClock.h"
#include "platform/FakeTickSource.h"
#include "stamping/SegyDataProcessor.h"

namespace halvo::test {

constexpr std::int32_t kNoon = 1709208000;  // 2024-02-29 12:00:00 UTC

struct StampingRig : Notifier {
    StampingRig() {
        clock.SetSource(0);  // plain tick count: the fake tick drives it
        wall.SetNow(kNoon, 0);
        ticks.SetTick(100000);
        clock.SyncFromSystem();
    }
    void Notify(std::string_view title, std::string_view text) override {
        boxes.emplace_back(std::string(title) + "|" + std::string(text));
    }
    SonarMessage Stamp(SonarMessage m, int source = SourceSonarData) {
        processor.ProcessMessage(&m, source, 0);
        return m;
    }

    FakeTickSource ticks;
    FakeSystemClock wall;
    ProgramClock clock{ticks, wall};
    SystemCoordinator coordinator;
    GeneralSettings general{coordinator};
    NavigationConfigStore navStore{coordinator};
    std::vector<std::string> boxes;
    SegyDataProcessor processor{clock, general, navStore, *this};
};

// A message with a zeroed payload and the given fields: {offset, value, bytes (2 or 4)}.
struct Put {
    std::size_t at;
    std::int32_t value;
    int bytes = 2;
};
inline SonarMessage Msg(std::uint16_t type, std::int32_t size, std::initializer_list<Put> puts) {
    SonarMessage m = SonarMessage::Build(type, DirReply, 101, 0, size);
    for (const Put& p : puts) {
        if (p.bytes == 4)
            PutLE<std::int32_t>(m.Payload(), p.at, p.value);
        else
            PutLE<std::int16_t>(m.Payload(), p.at, static_cast<std::int16_t>(p.value));
    }
    return m;
}
inline SonarMessage PitchRoll(int pitch, int roll, int heaveMm, int heading) {
    return Msg(MsgPitchRoll, 44,
               {{24, pitch}, {26, roll}, {32, heaveMm}, {34, heading}, {36, 0x340, 4}});
}
inline SonarMessage Nmea(const std::string& text, std::int32_t seconds = kNoon) {
    SonarMessage m = Msg(MsgNmea, static_cast<std::int32_t>(13 + text.size()), {{0, seconds, 4}});
    std::memcpy(m.Payload().data() + 12, text.data(), text.size());
    return m;
}
// Trace header fields to preset, by field.
inline SonarMessage Trace(std::uint8_t sub = 0, std::uint8_t ch = 0,
                          std::initializer_list<std::pair<TraceField, std::int32_t>> set = {}) {
    SonarMessage m = SonarMessage::Build(MsgTrace, DirReply, sub, ch,
                                         static_cast<std::int32_t>(kTraceHeaderSize));
    TraceHeaderView th(m.Payload());
    th.SetInt(TraceField::ChannelNumber, ch);
    th.SetInt(TraceField::SampleIntervalNS, 40000);  // 0.03 m per sample at 1500 m/s
    for (const auto& [f, v] : set) th.SetInt(f, v);
    return m;
}
inline std::int32_t Field(const SonarMessage& m, TraceField f) {
    return ConstTraceHeaderView(m.Payload()).GetInt(f);
}

}  // namespace halvo::test

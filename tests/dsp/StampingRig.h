#pragma once
// A stamping observer on a fake tick and a fake wall clock, with builders for the messages it
// reads. Everything it touches is the real product code; only time is faked.

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
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
#include "dsp/SegyDataProcessor.h"
#include "nav/NavigationConfig.h"
#include "platform/FakeSystemClock.h"
#include "platform/FakeTickSource.h"

namespace halvo::test {

class RecordingNotifier final : public Notifier {
  public:
    void Notify(std::string_view title, std::string_view text) override {
        boxes.emplace_back(std::string(title), std::string(text));
    }
    std::vector<std::pair<std::string, std::string>> boxes;
};

// 2024-02-29 12:00:00 UTC.
constexpr std::int64_t kWallSeconds = 1709208000;

struct StampingRig {
    StampingRig() {
        clock.SetSource(0);  // plain tick count: the fake tick drives it
        wall.SetNow(kWallSeconds, 0);
        ticks.SetTick(100000);
        clock.SyncFromSystem();
    }

    void SetGeneral(const GeneralValues& v) { general.Update(v); }
    void SetNav(const NavigationConfig& c) { navStore.Set(c); }

    // Stamps a trace and returns its header bytes.
    SonarMessage Stamp(SonarMessage m, int source = SourceSonarData) {
        processor.ProcessMessage(&m, source, 0);
        return m;
    }
    void Feed(SonarMessage m, int source = SourceSonarData) {
        processor.ProcessMessage(&m, source, 0);
    }

    FakeTickSource ticks;
    FakeSystemClock wall;
    ProgramClock clock{ticks, wall};
    SystemCoordinator coordinator;
    GeneralSettings general{coordinator};
    NavigationConfigStore navStore{coordinator};
    RecordingNotifier notifier;
    SegyDataProcessor processor{clock, general, navStore, notifier};
};

inline SonarMessage Sensor(std::uint16_t type, std::int32_t size, std::uint8_t subsystem = 101) {
    return SonarMessage::Build(type, DirReply, subsystem, 0, size);
}

template <class T>
void Put(SonarMessage& m, std::size_t offset, T v) {
    PutLE<T>(m.Payload(), offset, v);
}

inline SonarMessage Nmea(std::string_view text, std::int32_t seconds = 0, std::int32_t ms = 0,
                         std::uint8_t port = 0) {
    SonarMessage m = Sensor(MsgNmea, static_cast<std::int32_t>(12 + text.size() + 1), 100);
    m.set_channel(port);
    Put<std::int32_t>(m, 0, seconds);
    Put<std::int32_t>(m, 4, ms);
    std::memcpy(m.Payload().data() + 12, text.data(), text.size());
    return m;
}

inline SonarMessage PitchRoll(std::int16_t pitch, std::int16_t roll, std::int16_t heaveMm,
                              std::uint16_t heading) {
    SonarMessage m = Sensor(MsgPitchRoll, 44);
    Put<std::int16_t>(m, 24, pitch);
    Put<std::int16_t>(m, 26, roll);
    Put<std::int16_t>(m, 32, heaveMm);
    Put<std::uint16_t>(m, 34, heading);
    Put<std::uint32_t>(m, 36, 0x40 | 0x100 | 0x200);
    return m;
}

// flags: 0x01 pressure, 0x10 sound speed.
inline SonarMessage Pressure(std::int32_t psiTimes1000, std::int32_t soundSpeedMmPerS,
                             std::uint32_t flags) {
    SonarMessage m = Sensor(MsgPressure, 76);
    Put<std::int32_t>(m, 12, psiTimes1000);
    Put<std::uint32_t>(m, 24, flags);
    Put<std::int32_t>(m, 32, soundSpeedMmPerS);
    return m;
}

inline SonarMessage Altitude(std::int32_t mm) {
    SonarMessage m = Sensor(MsgAltitude, 44);
    Put<std::uint32_t>(m, 12, 1);
    Put<std::int32_t>(m, 16, mm);
    return m;
}

inline SonarMessage Analog(const std::int16_t (&values)[12], std::int32_t size = 36) {
    SonarMessage m = Sensor(MsgAnalog, size, 102);
    for (int i = 0; i < 12; ++i) Put<std::int16_t>(m, 12 + 2 * i, values[i]);
    return m;
}

inline SonarMessage Trace(std::uint8_t subsystem = 0, std::uint8_t channel = 0,
                          std::int32_t intervalNs = 40000) {
    SonarMessage m = SonarMessage::Build(MsgTrace, DirReply, subsystem, channel,
                                         static_cast<std::int32_t>(kTraceHeaderSize + 8));
    TraceHeaderView th(m.Payload());
    th.SetInt(TraceField::ChannelNumber, channel);
    th.SetInt(TraceField::Samples, 4);
    th.SetInt(TraceField::SampleIntervalNS, intervalNs);
    return m;
}

inline std::int32_t Field(const SonarMessage& m, TraceField f) {
    return ConstTraceHeaderView(m.Payload()).GetInt(f);
}
inline float FloatField(const SonarMessage& m, TraceField f) {
    return ConstTraceHeaderView(m.Payload()).GetFloat(f);
}

}  // namespace halvo::test

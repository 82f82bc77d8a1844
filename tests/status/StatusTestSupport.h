#pragma once
// Shared pieces of the status tests: traces and sensor messages built field by field, a beeper
// that records what it was asked to sound, and a rig with the real settings owners, an idle
// data bus and a fake tick.

#include <cstdint>
#include <cstring>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "app/EventLog.h"
#include "app/GeneralSettings.h"
#include "app/SystemCoordinator.h"
#include "app/TempWorkDir.h"
#include "core/AcquireFilter.h"
#include "core/ByteOrder.h"
#include "core/MessageProcessor.h"
#include "core/MessageTypes.h"
#include "core/RunFlag.h"
#include "core/SonarMessage.h"
#include "core/TraceHeader.h"
#include "platform/FakeTickSource.h"
#include "status/Beeper.h"
#include "status/StatusControl.h"
#include "status/StatusDataProcessor.h"
#include "storage/StorageControl.h"

namespace halvo::test {

using Fields = std::vector<std::pair<TraceField, double>>;

inline SonarMessage MakeTrace(const Fields& fields, std::uint8_t direction = DirReply) {
    SonarMessage m = SonarMessage::Build(MsgTrace, direction, 0, 0, kTraceHeaderSize + 16);
    TraceHeaderView th(m.Payload());
    th.SetInt(TraceField::SampleIntervalNS, 1000);
    for (const auto& [field, value] : fields) th.SetNumber(field, value);
    return m;
}

// Message 2060 with the given flags and values (thousandths) at their payload offsets.
inline SonarMessage MakePressure(std::uint32_t flags, std::int32_t psiMilli = 0,
                                 std::int32_t size = 76) {
    SonarMessage m = SonarMessage::Build(MsgPressure, DirReply, SubSonarSensors, 0, size);
    PutLE<std::int32_t>(m.Payload(), 12, psiMilli);
    PutLE<std::uint32_t>(m.Payload(), 24, flags);
    return m;
}

inline SonarMessage MakePitchRoll() {
    SonarMessage m = SonarMessage::Build(MsgPitchRoll, DirReply, SubSonarSensors, 0, 44);
    PutLE<std::uint32_t>(m.Payload(), 36, 0x40);
    return m;
}

// Records every tone with the fake tick it was asked for at.
class RecordingBeeper final : public Beeper {
  public:
    struct Tone {
        int hz;
        int ms;
        std::uint32_t tick;
    };
    explicit RecordingBeeper(FakeTickSource& ticks) : ticks_(ticks) {}
    void Beep(int toneHz, int durationMs) override {
        std::lock_guard lock(mutex_);
        tones_.push_back({toneHz, durationMs, ticks_.TickCount()});
    }
    std::vector<Tone> Tones() {
        std::lock_guard lock(mutex_);
        return tones_;
    }

  private:
    FakeTickSource& ticks_;
    std::mutex mutex_;
    std::vector<Tone> tones_;
};

class StatusRig : public TempWorkDir {
  protected:
    StatusRig()
        : bus_("test-data", run_, filter_, [] { return std::int64_t{1'700'000'000}; }),
          general_(coordinator_),
          control_(coordinator_),
          storage_(coordinator_),
          log_([] {
              return TimeValue{1'700'000'000, 0};
          }),
          beeper_(ticks_),
          processor_({control_, bus_, general_, log_, beeper_, run_,
                      [this] { return ticks_.TickCount(); }}) {}

    // Lets the next trace rebuild texts and alerts, then hands it to the bus's stages.
    void Feed(SonarMessage m) {
        processor_.getRecord();
        bus_.Dispatch(std::move(m), SourceSonarData, 0);
    }
    void Send(SonarMessage m) { bus_.Dispatch(std::move(m), SourceSonarData, 0); }
    void IdleAt(std::uint32_t tick) {
        ticks_.SetTick(tick);
        processor_.DeliverMessage(nullptr, SourceIdle, 0);
    }

    RunFlag run_;  // left clear: the beep thread ends at once, tests walk its steps by hand
    AcquireFilter filter_;
    MessageProcessor bus_;
    SystemCoordinator coordinator_;
    GeneralSettings general_;
    StatusControl control_;
    StorageControl storage_;
    EventLog log_;
    FakeTickSource ticks_;
    RecordingBeeper beeper_;
    StatusDataProcessor processor_;
};

}  // namespace halvo::test

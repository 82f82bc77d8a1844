#pragma once
// What playback does to a record between the file and the displays, for `dump --stamp`: the
// recorder's preparation steps (sensor hiding, range hiding, marks at file start), then the
// program's own message pipeline (normalisation, stamping in the processing stage, and any
// consumers the caller puts ahead of stamping, as the displays are on the program's bus), with
// settings from one settings file. Time runs on the file's own
// clock: the tick follows the record times, so a sensor is fresh or stale exactly as it was when
// the file was recorded, however fast the tool reads.

#include <cstdint>
#include <string>
#include <vector>

#include "app/GeneralSettings.h"
#include "app/Notifier.h"
#include "app/ProgramClock.h"
#include "app/SystemCoordinator.h"
#include "core/MessageObserver.h"
#include "core/Pipeline.h"
#include "core/SonarMessage.h"
#include "nav/NavigationConfig.h"
#include "platform/SystemClock.h"
#include "platform/TickSource.h"
#include "stamping/SegyDataProcessor.h"
#include "storage/PlaybackPreparer.h"
#include "storage/StorageSettings.h"

namespace halvo::hsf {

// Tick and wall clock both driven by record times: the tick is milliseconds since the first
// dated record and never runs backward; the wall clock reads the first record's time plus the
// tick. Nothing is ever set.
class FileTimeClock final : public TickSource, public SystemClock {
  public:
    // Moves to a record time (ms since 1970); true the first time a time is seen.
    bool Advance(std::int64_t recordMs);

    std::uint32_t TickCount() override { return static_cast<std::uint32_t>(tick_); }
    bool PerformanceCounter(std::int64_t&) override { return false; }
    bool PerformanceFrequency(std::int64_t&) override { return false; }
    SystemTimeReading Read() override;
    bool Set(const UtcDateTime&) override { return false; }

  private:
    bool started_ = false;
    std::int64_t startMs_ = 0;
    std::int64_t tick_ = 0;
};

class StampPipeline {
  public:
    // An empty name gives the built-in defaults; a missing key gives its default. `ahead` are
    // consumers that sit on the pipeline before stamping, in their order.
    explicit StampPipeline(const std::string& settingsFile,
                           const std::vector<MessageObserver*>& ahead = {});

    // Runs the record through every stage; returns it as the consumers left it (type 41 when
    // playback hid it).
    SonarMessage Process(SonarMessage message);

    // The record's own time in ms since 1970, or -1 when it carries none.
    static std::int64_t RecordTimeMs(const SonarMessage& message);

  private:
    // Moves the file clock to each record's time before stamping reads the clock: the first
    // consumer on the pipeline, so it sees the record normalised.
    class ClockStage final : public MessageObserver {
      public:
        explicit ClockStage(StampPipeline& owner) : owner_(owner) {}
        void ProcessMessage(SonarMessage* message, int source, std::uint32_t extra) override;

      private:
        StampPipeline& owner_;
    };

    FileTimeClock fileClock_;
    ProgramClock clock_{fileClock_, fileClock_};
    SystemCoordinator coordinator_;
    GeneralSettings general_{coordinator_};
    NavigationConfigStore navigation_{coordinator_};
    SilentNotifier notifier_;
    SegyDataProcessor processor_{clock_, general_, navigation_, notifier_};
    StorageSettings storage_;
    PlaybackPreparer preparer_;
    PlaybackContext context_;
    ClockStage clockStage_{*this};
    Pipeline pipeline_;
};

}  // namespace halvo::hsf

#pragma once
// Records and plays back data files from inside the data bus. It has no thread of its own:
// playback reads on the bus's idle ticks and posts with source 5, recording takes messages from
// the first observer stage (SegyOnly 0) or the last (SegyOnly 1 and above). Every field is
// touched only on the bus thread, so it takes no lock; it meets the rest of the system through
// StorageControl.

#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string>

#include "core/MessageObserver.h"
#include "storage/BathyWriter.h"
#include "storage/HsfReader.h"
#include "storage/HsfRecorder.h"
#include "storage/PerFileLog.h"
#include "storage/PlaybackPreparer.h"
#include "storage/StorageSettings.h"
#include "storage/StorageStatus.h"

namespace halvo {

class EventLog;
class LoggingControl;
class MessageProcessor;
class Notifier;
class StorageControl;
class TickSource;

class StorageDataProcessor : public MessageObserver {
  public:
    static constexpr std::uint32_t kStallMs = 5000;  // a longer stall is not made up
    static constexpr std::int64_t kMaxRecordsPerTick = 400;
    static constexpr std::uint32_t kStatusPeriodMs = 2000;
    // Live traces of this subsystem stay visible during playback.
    static constexpr std::uint8_t kVisibleLiveSubsystem = 44;

    struct Hooks {
        PlaybackContext playback;
        // Every played record on its way to the bus (the event log).
        std::function<void(const SonarMessage&)> eventLog;
        // Free bytes at a directory; unset means the file system is asked.
        std::function<std::int64_t(const std::string&)> freeBytes;

        // The "RECORD : " lines. Unset: none.
        EventLog* events = nullptr;
        // The Logging settings (the per-file log switch and comments). Unset: no per-file log.
        LoggingControl* logging = nullptr;
        // The blank-comment box. Unset: none.
        Notifier* notifier = nullptr;
        // What a per-file log snapshot shows.
        PerFileLogSources snapshot;
        // Which traces the first display shows, and where their bottom lies (Bathy.dat).
        BathyWriter::Source bathy;
        std::string bathyPath = "Bathy.dat";
        // The restricted mode of the licence check: true ends the recording. Unset: never.
        std::function<bool()> recordingRestricted;
    };

    StorageDataProcessor(MessageProcessor& dataBus, StorageControl& control, TickSource& ticks);
    StorageDataProcessor(MessageProcessor& dataBus, StorageControl& control, TickSource& ticks,
                         Hooks hooks);

    // Publishes a first status and attaches to the data bus; only the first call does anything.
    void Start();
    bool Started() const { return started_; }

    void PreviewMessage(SonarMessage* message, int source, std::uint32_t extra) override;
    void ProcessMessage(SonarMessage* message, int source, std::uint32_t extra) override;
    void DeliverMessage(SonarMessage* message, int source, std::uint32_t extra) override;

    // For inspection on the bus thread (and by tests that drive the stages directly).
    std::int32_t State() const { return state_; }
    std::uint32_t RunStartTick() const { return runStartTick_; }
    const HsfReader& Reader() const { return reader_; }
    const HsfRecorder& Recorder() const { return recorder_; }
    const PerFileLog& FileLog() const { return fileLog_; }

  private:
    void NoticeChange(std::uint32_t now);
    void Begin(std::uint32_t now);
    void OpenPlayback(std::uint32_t now);
    void OpenRecording(std::uint32_t now);
    void CloseRecording(std::uint32_t now);
    void CloseFiles(std::uint32_t now);
    void Record(const SonarMessage& message, std::uint32_t now);
    void WriteData(std::span<const std::uint8_t> bytes, std::uint32_t now);
    void WriteSideLine(const SonarMessage& trace, std::uint32_t now);
    void Pace(std::uint32_t now);
    bool ReadOne();
    void IdleStatus(std::uint32_t now);
    void Publish(std::uint32_t now);

    MessageProcessor& bus_;
    StorageControl& control_;
    TickSource& ticks_;
    Hooks hooks_;

    std::once_flag startOnce_;
    bool started_ = false;

    StorageSettings settings_;
    bool haveCount_ = false;
    int changeCount_ = 0;
    std::int32_t previousMode_ = -1;
    std::int32_t previousAcquireMode_ = -1;

    std::int32_t state_ = StateIdleRecord;
    StorageStatus status_;
    bool changed_ = true;  // something to publish at the next chance

    HsfReader reader_;
    PlaybackPreparer preparer_;
    HsfRecorder recorder_;
    PerFileLog fileLog_;
    BathyWriter bathy_;
    std::uint32_t anchor_ = 0;
    std::int64_t sentSinceAnchor_ = 0;
    std::uint32_t runStartTick_ = 0;
    std::uint32_t lastStatusTick_ = 0;
};

}  // namespace halvo

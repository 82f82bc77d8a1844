#include "storage/StorageDataProcessor.h"

#include "app/EventLog.h"
#include "core/MessageProcessor.h"
#include "core/MessageTypes.h"
#include "platform/TickSource.h"
#include "storage/DiskSpace.h"
#include "storage/RecordNames.h"
#include "storage/StorageControl.h"

namespace halvo {

StorageDataProcessor::StorageDataProcessor(MessageProcessor& dataBus, StorageControl& control,
                                           TickSource& ticks)
    : StorageDataProcessor(dataBus, control, ticks, Hooks{}) {}

StorageDataProcessor::StorageDataProcessor(MessageProcessor& dataBus, StorageControl& control,
                                           TickSource& ticks, Hooks hooks)
    : bus_(dataBus),
      control_(control),
      ticks_(ticks),
      hooks_(std::move(hooks)),
      fileLog_(hooks_.snapshot, hooks_.logging, hooks_.notifier, hooks_.events),
      bathy_(hooks_.bathyPath) {}

void StorageDataProcessor::Start() {
    std::call_once(startOnce_, [this] {
        // Published before attaching: from then on only the bus thread touches the fields.
        settings_ = control_.getSettings();
        Publish(ticks_.TickCount());
        started_ = true;
        bus_.Attach(this);
    });
}

void StorageDataProcessor::PreviewMessage(SonarMessage* message, int source, std::uint32_t) {
    // In playback mode live data is hidden from every stage, whatever its type.
    if (message && source == SourceSonarData && settings_.acquireMode != 0 &&
        message->type() != MsgAlive) {
        message->set_type(MsgAlive);
    }
    // The raw form is stored exactly as it arrived, before any conversion.
    if (message && state_ == StateRecord && settings_.recordForm == 0 && source != SourceDerived &&
        message->type() != MsgAlive) {
        Record(*message, ticks_.TickCount());
    }
}

void StorageDataProcessor::ProcessMessage(SonarMessage* message, int source, std::uint32_t) {
    if (message && state_ == StatePlayback && source == SourceSonarData &&
        message->type() == MsgTrace && message->subsystem() != kVisibleLiveSubsystem) {
        message->set_type(MsgAlive);
    }
}

void StorageDataProcessor::DeliverMessage(SonarMessage* message, int source, std::uint32_t) {
    const std::uint32_t now = ticks_.TickCount();
    NoticeChange(now);
    if (!message) {
        bathy_.Idle(settings_.saveBathy != 0);
        Pace(now);
        IdleStatus(now);
        return;
    }
    const std::uint16_t type = message->type();
    if (state_ == StateRecord && settings_.recordForm > 0 && type != MsgAlive &&
        source != SourceDerived && (settings_.recordForm == 1 || type == MsgTrace)) {
        Record(*message, now);
    }
    if (type != MsgTrace) return;
    if (state_ == StateRecord && settings_.diagnostics != 0) WriteSideLine(*message, now);
    // Outside the recording test on purpose: the bathymetry file is written during playback too.
    if (settings_.saveBathy != 0) bathy_.Trace(*message, hooks_.bathy);
}

void StorageDataProcessor::Record(const SonarMessage& message, std::uint32_t now) {
    WriteData(message.Wire(), now);
}

void StorageDataProcessor::WriteData(std::span<const std::uint8_t> bytes, std::uint32_t now) {
    if (bytes.empty() || !recorder_.IsRecording()) return;
    if (hooks_.recordingRestricted && hooks_.recordingRestricted()) {
        CloseRecording(now);
        StorageSettings stopped = settings_;
        stopped.mode = ModeStop;
        control_.setSettings(stopped);
        // Take our own request at once: otherwise the next message would see a new mode and turn
        // the END OF FILE into an idle state before anyone could read it.
        int count = 0;
        settings_ = control_.getSettings(count);
        changeCount_ = count;
        previousMode_ = settings_.mode;
        previousAcquireMode_ = settings_.acquireMode;
        state_ = StateEndOfFile;
        Publish(now);
        return;
    }
    if (recorder_.RollDue(settings_.maxRecordSize)) {
        CloseRecording(now);
        OpenRecording(now);
        if (state_ != StateRecord) return;
    } else {
        recorder_.ReopenIfDue();
    }
    switch (recorder_.Write(bytes, HsfRecorder::Target::Data)) {
        case HsfRecorder::WriteResult::Written:
            fileLog_.Activity(now);
            break;
        case HsfRecorder::WriteResult::Skipped:
            break;
        case HsfRecorder::WriteResult::Failed:
            if (hooks_.events) hooks_.events->Add("RECORD : File write error");
            state_ = StateError;
            CloseRecording(now);
            break;
    }
}

void StorageDataProcessor::WriteSideLine(const SonarMessage& trace, std::uint32_t now) {
    if (!recorder_.SideLineDue(now)) return;
    const std::optional<std::string> line = HsfRecorder::SideLine(trace);
    if (!line) return;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(line->data());
    recorder_.Write({bytes, line->size()}, HsfRecorder::Target::Side);
    recorder_.SideLineWritten(now);
}

void StorageDataProcessor::NoticeChange(std::uint32_t now) {
    if (haveCount_ && control_.ChangeCount() == changeCount_) return;
    const bool wasPaused = settings_.mode == ModePause;
    int count = 0;
    const StorageSettings next = control_.getSettings(count);
    const bool newFile = next.mode == ModePlayback && next.playbackFile != settings_.playbackFile;
    settings_ = next;
    haveCount_ = true;
    changeCount_ = count;
    changed_ = true;
    if (!newFile && next.mode == previousMode_ && next.acquireMode == previousAcquireMode_) {
        Publish(now);
        return;
    }
    previousMode_ = next.mode;
    previousAcquireMode_ = next.acquireMode;
    // A pause keeps the file open where it is; the resume goes on from there, so a name
    // changed during the pause takes effect only at the next stop and start.
    const bool hold = next.mode == ModePause || (next.mode == ModePlayback && wasPaused);
    if (!hold) {
        CloseFiles(now);
        state_ = next.acquireMode != 0 ? StateIdlePlayback : StateIdleRecord;
        status_.file = StorageStatus::kNoFile;
        status_.sizeMB = 0;
        Begin(now);
    }
    Publish(now);
}

void StorageDataProcessor::Begin(std::uint32_t now) {
    runStartTick_ = now;
    if (settings_.mode == ModePlayback) OpenPlayback(now);
    if (settings_.mode == ModeRecord) OpenRecording(now);
}

void StorageDataProcessor::OpenRecording(std::uint32_t now) {
    status_.sizeMB = 0;
    if (!recorder_.Open(RecordNames::Base(settings_), settings_.diagnostics != 0)) {
        // Every name taken: no file, and none is tried again until a stop and a start.
        state_ = StateError;
        status_.file = StorageStatus::kNoFile;
        Publish(now);
        return;
    }
    state_ = StateRecord;
    status_.file = recorder_.Name();
    status_.fileNumber = recorder_.Number();
    fileLog_.Opened(recorder_.Name(), now);
    Publish(now);
}

void StorageDataProcessor::CloseRecording(std::uint32_t now) {
    if (!recorder_.IsRecording()) return;
    const std::int64_t size = recorder_.FileSize();
    if (size >= 0) status_.sizeMB = static_cast<std::int32_t>(size >> 20);
    recorder_.Close();
    fileLog_.Closed(now);
    Publish(now);
}

void StorageDataProcessor::OpenPlayback(std::uint32_t now) {
    const std::string path = settings_.PlaybackPath();
    status_.file = path;
    if (reader_.Open(path)) {
        state_ = StatePlayback;
        preparer_.ResetMarks();
    } else {
        state_ = StateError;
    }
    // A fresh file starts with no credit, whatever the last one left.
    anchor_ = now;
    sentSinceAnchor_ = 0;
}

void StorageDataProcessor::CloseFiles(std::uint32_t now) {
    reader_.Close();
    CloseRecording(now);
}

void StorageDataProcessor::Pace(std::uint32_t now) {
    if (state_ != StatePlayback || settings_.mode == ModePause || settings_.playbackRate <= 0) {
        return;
    }
    // Unsigned differences: a tick that went backward counts as a long stall.
    if (now - anchor_ > kStallMs) anchor_ = now;
    const std::uint32_t target =
        (now - anchor_) * static_cast<std::uint32_t>(settings_.playbackRate) / 1000u;
    std::int64_t due = static_cast<std::int64_t>(target) - sentSinceAnchor_;
    if (due > kMaxRecordsPerTick) due = kMaxRecordsPerTick;
    // No credit yet: keep the anchor so it builds up over the following ticks.
    if (due <= 0) return;
    for (std::int64_t i = 0; i < due; ++i) {
        if (!ReadOne()) break;
        ++sentSinceAnchor_;
    }
    anchor_ = now;
    sentSinceAnchor_ = 0;
}

bool StorageDataProcessor::ReadOne() {
    // Hold off while the bus is three quarters full; nothing is consumed.
    const std::size_t limit = (3 * bus_.QueueCapacity()) / 4;
    if (bus_.QueueDepth() > limit) return false;
    SonarMessage message;
    switch (reader_.Next(message)) {
        case ReadStatus::Record:
            break;
        case ReadStatus::EndOfFile:
            state_ = StateEndOfFile;
            changed_ = true;
            return false;
        case ReadStatus::Error:
            state_ = StateError;
            changed_ = true;
            return false;
        case ReadStatus::Deferred:
        case ReadStatus::Closed:
            return false;
    }
    preparer_.Prepare(message, settings_, hooks_.playback);
    if (hooks_.eventLog) hooks_.eventLog(message);
    // A refused message is freed with the handle and still counts as read.
    bus_.Post(message, SourcePlayback);
    return true;
}

void StorageDataProcessor::IdleStatus(std::uint32_t now) {
    if (changed_) {
        Publish(now);
        return;
    }
    if (state_ == StateIdleRecord || state_ == StateIdlePlayback) return;
    if (now - lastStatusTick_ >= kStatusPeriodMs) Publish(now);
}

void StorageDataProcessor::Publish(std::uint32_t now) {
    status_.state = state_;
    if (reader_.IsOpen() && reader_.FileSize() >= 0) {
        status_.sizeMB = static_cast<std::int32_t>(reader_.FileSize() >> 20);
    }
    if (recorder_.HasDataHandle()) {
        const std::int64_t size = recorder_.FileSize();
        if (size >= 0) status_.sizeMB = static_cast<std::int32_t>(size >> 20);
    }
    if (settings_.recordDir.empty()) {
        status_.freeMB = -1;
    } else {
        const std::int64_t free = hooks_.freeBytes ? hooks_.freeBytes(settings_.recordDir)
                                                   : FreeBytesAt(settings_.recordDir);
        status_.freeMB = free < 0 ? -1 : static_cast<std::int32_t>(free / 1'000'000);
    }
    control_.PublishStatus(status_);
    lastStatusTick_ = now;
    changed_ = false;
}

}  // namespace halvo

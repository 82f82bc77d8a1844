#include "storage/StorageDataProcessor.h"

#include "core/MessageProcessor.h"
#include "core/MessageTypes.h"
#include "platform/TickSource.h"
#include "storage/DiskSpace.h"
#include "storage/StorageControl.h"

namespace halvo {

StorageDataProcessor::StorageDataProcessor(MessageProcessor& dataBus, StorageControl& control,
                                           TickSource& ticks, Hooks hooks)
    : bus_(dataBus), control_(control), ticks_(ticks), hooks_(std::move(hooks)) {}

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
    // Recording of the raw form (SegyOnly 0) takes the message here.
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
        Pace(now);
        IdleStatus(now);
        return;
    }
    // Recording of the decompressed forms (SegyOnly 1 and above) takes the message here.
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
        CloseFiles();
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
    // Mode 0 opens a recording here once the recording side is in; mode 2 opens nothing.
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

void StorageDataProcessor::CloseFiles() {
    reader_.Close();
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

#include "halvo-hsf/StampPipeline.h"

#include <optional>
#include <utility>
#include <vector>

#include "app/IniFile.h"
#include "core/MessageTypes.h"
#include "core/TraceHeader.h"
#include "stamping/SonarChannelSettings.h"

namespace halvo::hsf {

bool FileTimeClock::Advance(std::int64_t recordMs) {
    if (!started_) {
        started_ = true;
        startMs_ = recordMs;
        return true;
    }
    // Never backward: a record out of order keeps the tick where it was.
    if (recordMs - startMs_ > tick_) tick_ = recordMs - startMs_;
    return false;
}

SystemTimeReading FileTimeClock::Read() {
    const std::int64_t ms = startMs_ + tick_;
    return SystemTimeReading{ms / 1000, static_cast<std::int32_t>(ms % 1000)};
}

StampPipeline::StampPipeline(const std::string& settingsFile,
                             const std::vector<MessageObserver*>& ahead)
    : pipeline_([this] { return static_cast<std::int64_t>(clock_.Now().seconds); }) {
    std::vector<SonarChannelBase> sonars = SegyDataProcessor::DefaultSonarChannels();
    // Without a file nothing is read at all: not even a Defaults.ini lying in the working folder.
    if (!settingsFile.empty()) {
        coordinator_.SetActiveProfile(settingsFile);
        general_.Load();
        navigation_.Load();
        IniFile ini(coordinator_);
        ini.Open("Storage");
        storage_ = StorageSettings::Load(ini);
        sonars = LoadSonarChannels(coordinator_);
    }
    processor_.SetSonarChannels(sonars);
    context_.firstChannelOf = [sonars](std::uint8_t subsystem) -> std::optional<int> {
        for (const SonarChannelBase& s : sonars) {
            if (s.subsystem == subsystem) return s.firstChannel;
        }
        return std::nullopt;
    };
    context_.gpsFlags = [this] { return general_.Snapshot().GPSFlags; };
    clock_.SetSource(0);  // the plain tick count: the file clock
    pipeline_.Attach(&clockStage_);
    for (MessageObserver* o : ahead) pipeline_.Attach(o);
    pipeline_.Attach(&processor_);
}

std::int64_t StampPipeline::RecordTimeMs(const SonarMessage& m) {
    const auto payload = m.Payload();
    if (m.type() == MsgTrace) {
        const ConstTraceHeaderView th(payload);
        if (!th.valid()) return -1;
        const std::int64_t seconds = th.GetInt(TraceField::TimeSince1970);
        const std::int64_t ms = th.GetInt(TraceField::MillisecondsToday);
        if (seconds <= 0) return -1;
        return seconds * 1000 + (ms >= 0 ? ms % 1000 : 0);
    }
    // Sensor messages open with their stamp: seconds and milliseconds.
    if (m.type() >= MsgSerial && m.type() < MsgContainerTime) {
        const auto seconds = GetLE<std::int32_t>(payload, 0);
        const auto ms = GetLE<std::int32_t>(payload, 4);
        if (seconds <= 0) return -1;
        return static_cast<std::int64_t>(seconds) * 1000 + (ms >= 0 && ms < 1000 ? ms : 0);
    }
    return -1;
}

void StampPipeline::ClockStage::ProcessMessage(SonarMessage* message, int, std::uint32_t) {
    if (message == nullptr) return;
    const std::int64_t at = RecordTimeMs(*message);
    if (at >= 0 && owner_.fileClock_.Advance(at)) owner_.clock_.SyncFromSystem();
}

SonarMessage StampPipeline::Process(SonarMessage message) {
    preparer_.Prepare(message, storage_, context_);
    pipeline_.Dispatch(message, SourcePlayback, 0);
    return message;
}

}  // namespace halvo::hsf

#include "status/StatusDataProcessor.h"

#include <algorithm>
#include <utility>

#include "app/GeneralSettings.h"
#include "core/ByteOrder.h"
#include "core/MessageProcessor.h"
#include "core/MessageTypes.h"
#include "core/SonarMessage.h"
#include "status/CustomFormat.h"
#include "status/StatusControl.h"
#include "status/StatusText.h"
#include "status/Truncate.h"

namespace halvo {

namespace {

constexpr std::size_t kPressureMinSize = 76;  // as the sensor parsers take it
constexpr std::size_t kCtdOffset = 12;
constexpr std::uint32_t kPressureFlagPsi = 0x01;
constexpr std::uint32_t kPressureFlagSvs = 0x10;

std::string CutText(std::string text) {
    if (text.size() >= StatusRecord::kTextBytes) text.resize(StatusRecord::kTextBytes - 1);
    return text;
}

std::string HeaderText(const StatusSources::HeaderText& fn, const ConstTraceHeaderView& th) {
    return fn ? CutText(fn(th)) : std::string();
}

std::int16_t Annotation(const ConstTraceHeaderView& th, int n) {
    const auto f = static_cast<TraceField>(static_cast<int>(TraceField::AnnotationWord0) + n);
    return static_cast<std::int16_t>(th.GetInt(f));
}

}  // namespace

StatusDataProcessor::StatusDataProcessor(Parts parts)
    : parts_(std::move(parts)),
      announcer_(
          parts_.beeper, parts_.log, parts_.running, [this] { return alerts_.Word(); },
          [this] { return parts_.control.getAlertSettings(); }) {}

StatusDataProcessor::~StatusDataProcessor() {
    announcer_.Stop();
    if (started()) parts_.dataBus.Detach(this);
}

bool StatusDataProcessor::SetSources(StatusSources sources) {
    if (started()) return false;
    sources_ = std::move(sources);
    return true;
}

void StatusDataProcessor::start() {
    std::call_once(startOnce_, [this] {
        parts_.control.Start();
        settings_ = parts_.control.getSettings(settingsChanges_);
        alertSettings_ = parts_.control.getAlertSettings(alertChanges_);
        windowAlertChanges_ = alertChanges_;
        general_ = parts_.general.Snapshot();
        generalChanges_ = parts_.general.ChangeCount();
        alerts_.StartWindow(parts_.tick ? parts_.tick() : 0);
        started_.store(true, std::memory_order_release);
        parts_.dataBus.Attach(this);
        announcer_.Start();
    });
}

StatusRecord StatusDataProcessor::getRecord() {
    start();
    reads_.fetch_add(1, std::memory_order_acq_rel);
    std::lock_guard lock(recordMutex_);
    return record_;
}

std::int32_t StatusDataProcessor::MarkNumber() const {
    std::lock_guard lock(recordMutex_);
    return record_.markNumber;
}

StatusSettings StatusDataProcessor::getSettings() {
    return parts_.control.getSettings();
}

void StatusDataProcessor::setSettings(const StatusSettings& record) {
    parts_.control.setSettings(record);
}

AlertSettings StatusDataProcessor::getAlertSettings() {
    return parts_.control.getAlertSettings();
}

void StatusDataProcessor::setAlertSettings(const AlertSettings& record) {
    parts_.control.setAlertSettings(record);
}

std::string StatusDataProcessor::statusLine() {
    const StatusRecord record = getRecord();
    return BuildStatusLine(record, parts_.control.getSettings(), parts_.general.Snapshot(),
                           sources_);
}

std::string StatusDataProcessor::pingText(std::size_t limit, const PingView* element) {
    return BuildPingText(element, limit, parts_.control.getSettings(), parts_.general.Snapshot(),
                         sources_);
}

void StatusDataProcessor::DeliverMessage(SonarMessage* message, int source, std::uint32_t extra) {
    if (message == nullptr) {
        Idle();
        return;
    }
    RefreshSettings();
    const std::span<const std::uint8_t> payload = std::as_const(*message).Payload();
    switch (message->type()) {
        case MsgPitchRoll:
            alerts_.Seen(AlertNoPitchRoll);
            return;
        case MsgPressure:
            Pressure(payload);
            return;
        case MsgTrace:
            if (message->direction() == DirReply) Trace(payload);
            return;
        default:
            return;
    }
}

void StatusDataProcessor::Idle() {
    if (!parts_.tick) return;
    const std::uint32_t tick = parts_.tick();
    if (!alerts_.WindowDue(tick)) return;
    int changes = 0;
    const AlertSettings current = parts_.control.getAlertSettings(changes);
    const bool changed = changes != windowAlertChanges_;
    if (changed) {
        windowAlertChanges_ = changes;
        alertSettings_ = current;
    }
    alerts_.CloseWindow(tick, current, changed);
}

void StatusDataProcessor::RefreshSettings() {
    int changes = 0;
    StatusSettings status = parts_.control.getSettings(changes);
    if (changes != settingsChanges_) {
        settingsChanges_ = changes;
        settings_ = std::move(status);
    }
    const AlertSettings alerts = parts_.control.getAlertSettings(changes);
    if (changes != alertChanges_) {
        alertChanges_ = changes;
        alertSettings_ = alerts;
        alerts_.Clear();
    }
    const int generalChanges = parts_.general.ChangeCount();
    if (generalChanges != generalChanges_) {
        generalChanges_ = generalChanges;
        general_ = parts_.general.Snapshot();
    }
}

void StatusDataProcessor::Pressure(std::span<const std::uint8_t> payload) {
    // A short message is ignored whole, as the sensor parsers do.
    if (payload.size() < kPressureMinSize) return;
    const auto flags = GetLE<std::uint32_t>(payload, 24);
    if (flags & kPressureFlagSvs) alerts_.Seen(AlertNoSvs);
    if ((flags & kPressureFlagPsi) == 0) return;
    alerts_.Seen(AlertNoPressure);
    std::lock_guard lock(recordMutex_);
    for (std::size_t i = 0; i < record_.ctd.size(); ++i) {
        record_.ctd[i] = GetLE<std::int32_t>(payload, kCtdOffset + 4 * i);
    }
    ++record_.ctdCount;
}

void StatusDataProcessor::Trace(std::span<const std::uint8_t> payload) {
    const ConstTraceHeaderView th(payload);
    if (!th.valid()) return;  // shorter than a header: nothing to read
    const std::int32_t channel = th.GetInt(TraceField::ChannelNumber);

    std::int32_t overflow = 0;
    {
        std::lock_guard lock(recordMutex_);
        if (channel >= 0 && channel < StatusRecord::kChannels) {
            const auto ping = static_cast<std::uint32_t>(th.GetInt(TraceField::PingNumber));
            // Any gap counts, a repeat too, and the first trace after a restart.
            if (record_.ping[channel] != ping - 1u) ++record_.overflow;
            record_.ping[channel] = ping;
            record_.gain[channel] = static_cast<std::uint16_t>(th.GetInt(TraceField::ADCGain));
            record_.signal[channel] = static_cast<std::uint16_t>(th.GetInt(TraceField::ADCMax));
            const auto interval =
                static_cast<std::uint32_t>(th.GetInt(TraceField::SampleIntervalNS));
            record_.sampleRate[channel] = interval == 0 ? 0.0f : static_cast<float>(1e9 / interval);
        }
        for (int n = 0; n < StatusSettings::kCustomCount; ++n) {
            const CustomField& c = settings_.custom[n];
            if (c.channel != -1 && c.channel != channel) continue;
            if (const auto v = ReadCustomField(payload, c.field)) record_.custom[n] = *v;
        }
        const std::int32_t mark = th.GetInt(TraceField::MarkNumber);
        if (mark != 0) {
            record_.markNumber = mark;
            std::copy_n(payload.begin() + StatusRecord::kMarkTextOffset,
                        StatusRecord::kMarkTextBytes, record_.markText.begin());
        }
        overflow = record_.overflow;
    }

    const std::uint32_t reads = reads_.load(std::memory_order_acquire);
    if (reads == lastReads_) return;
    lastReads_ = reads;
    Rebuild(th, channel);
    alerts_.Evaluate(alertSettings_, th, general_, overflow, sources_);
}

// The texts come from other parts of the program, so they are made before the lock is taken.
void StatusDataProcessor::Rebuild(const ConstTraceHeaderView& th, int channel) {
    std::string position = HeaderText(sources_.positionText, th);
    std::string time = HeaderText(sources_.timeText, th);
    std::string speed = HeaderText(sources_.speedText, th);
    std::string attitude = HeaderText(sources_.attitudeText, th);
    const int shown = sources_.display ? sources_.display(0).channel : -1;
    const int bottle = general_.BottleTemperatureChannel;

    std::lock_guard lock(recordMutex_);
    StatusRecord& r = record_;
    r.position = std::move(position);
    r.time = std::move(time);
    r.speed = std::move(speed);
    r.attitude = std::move(attitude);
    for (int n = 0; n < 8; ++n) r.analog[n] = Annotation(th, n);
    r.pressure = th.GetInt(TraceField::PressurePSI);
    r.soundSpeed = TruncateToInt32(th.GetFloat(TraceField::SoundSpeed) + 0.5);
    r.depth = th.GetInt(TraceField::DepthMM);
    r.temperature = th.GetInt(TraceField::Temperature);
    if (bottle >= 0 && bottle < 12) {
        const float t = Annotation(th, bottle) * general_.BottleTemperatureGain +
                        general_.BottleTemperatureOffset;
        r.bottleTemperature = TruncateToInt32(t * 10.0);
    }
    if (channel == shown) r.altitude = th.GetInt(TraceField::Altitude);
}

}  // namespace halvo

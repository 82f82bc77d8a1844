#include "sonar/SonarController.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "app/OverallConfig.h"
#include "core/ByteOrder.h"
#include "core/MessageHub.h"
#include "core/MessageTypes.h"
#include "core/SonarMessage.h"
#include "platform/TickSource.h"
#include "sonar/SonarWindow.h"

namespace halvo {

namespace {

// A tick that moved backward counts as expired, so a clock jump never stalls the checks.
bool Expired(std::uint32_t now, std::uint32_t since, std::uint32_t period, bool orEqual) {
    const auto elapsed = static_cast<std::int32_t>(now - since);
    if (elapsed < 0) return true;
    return orEqual ? static_cast<std::uint32_t>(elapsed) >= period
                   : static_cast<std::uint32_t>(elapsed) > period;
}

}  // namespace

SonarController::SonarController(MessageHub& hub, TickSource& ticks, int configType)
    : hub_(hub), ticks_(ticks), configType_(configType) {
    for (int i = 0; i < kSonars; ++i) {
        current_[i] = SonarConfig::Defaults(i);
        sent_[i] = current_[i];
    }
    pingRateBack_.fill(kDefaultRate);
    adcRateBack_.fill(kDefaultRate);
    hub_.CommandBus().Attach(this);
}

SonarController::~SonarController() {
    // Detach waits for a running burst, so the bus never calls into a destroyed controller.
    hub_.CommandBus().Detach(this);
}

void SonarController::SetConnectionCount(ConnectionCountFn count) {
    std::lock_guard lock(mutex_);
    connectionCount_ = std::move(count);
}

void SonarController::SetLiveVideo(LiveVideoFn apply) {
    std::lock_guard lock(mutex_);
    liveVideo_ = std::move(apply);
}

void SonarController::SetConfigType(int configType) {
    std::lock_guard lock(mutex_);
    configType_ = configType;
}

int SonarController::ConfigType() const {
    std::lock_guard lock(mutex_);
    return configType_;
}

// ---- sending ----

void SonarController::Send(int type, int direction, int subsystem, int channel, Bytes payload) {
    // A failed post is not retried: the last sent copy moves on regardless, and the next
    // forced send repairs what was lost.
    (void)hub_.SendCommand(payload.data(), payload.size(), type, channel, direction, subsystem,
                           SourceLocal);
}

void SonarController::SendWord(int type, int subsystem, int channel, std::int32_t word) {
    std::array<std::uint8_t, 4> b{};
    PutLE<std::int32_t>(b, 0, word);
    Send(type, DirSet, subsystem, channel, b);
}

void SonarController::Query(int type, int subsystem, int channel) {
    Send(type, DirQuery, subsystem, channel, {});
}

void SonarController::SendText(int type, int subsystem, const std::string& text) {
    std::array<std::uint8_t, kTextBytes> b{};
    // Always terminated: at most 255 characters go out.
    std::memcpy(b.data(), text.data(), std::min(text.size(), kTextBytes - 1));
    Send(type, DirSet, subsystem, 0, b);
}

// ---- the tick ----

void SonarController::Tick() {
    ConnectionCountFn countFn;
    LiveVideoFn video;
    {
        std::lock_guard lock(mutex_);
        countFn = connectionCount_;
        video = liveVideo_;
    }
    // Asked outside the lock: the network's count takes the network's own lock.
    const int count = countFn ? countFn() : 0;
    const bool connected = (count & 1) != 0;
    const std::uint32_t now = ticks_.TickCount();

    bool forced = false;
    {
        std::lock_guard lock(mutex_);
        const bool firstConnectionRule =
            (recorder_.flags & RecorderConfig::kFlagFirstConnection) != 0;
        if (connected &&
            (count != lastConnectionCount_ || Expired(now, lastCheckMs_, kCheckPeriodMs, true))) {
            lastCheckMs_ = now;
            forced = count != lastConnectionCount_;
            if (firstConnectionRule && firstConnection_) forced = true;
            lastConnectionCount_ = count;
            if (forced) {
                firstConnection_ = false;
                handshake_ = kHandshakeNone;
                Query(MsgOptionCheck, 0);
            }
        }
        if (!firstConnectionRule) firstConnection_ = true;
        if (!connected) lastConnectionCount_ = count;
        // The second full send comes two ticks after the sonar answered the handshake.
        if (handshake_ == kHandshakeOneTick) {
            handshake_ = kHandshakeDone;
            forced = true;
        } else if (handshake_ == kHandshakeReplied) {
            handshake_ = kHandshakeOneTick;
        }
    }

    if (video) video(forced);

    std::lock_guard lock(mutex_);
    if ((changeCount_ != sentChangeCount_ || forced) && connected) {
        sentChangeCount_ = changeCount_;
        const int sonars = std::clamp(numSonars_, 0, kSonars);
        for (int i = 0; i < sonars; ++i) {
            if (active_[i]) SendSubsystem(i, forced);
        }
        SendSensorsAndRecorder(forced);
    }
    if (connected && Expired(now, lastStatusMs_, kStatusPeriodMs, false)) {
        Query(MsgSystemStatus, 0);
        lastStatusMs_ = now;
    }
}

void SonarController::SendSubsystem(int index, bool forced) {
    const SonarConfig cur = current_[index];
    const SonarConfig& last = sent_[index];
    const int sub = cur.subsystem;
    if (!active_[index] || sub < 0 || sub > 128) return;

    bool f = forced;
    if (cur.transducers != last.transducers || cur.inputChannels != last.inputChannels ||
        cur.subsystem != last.subsystem ||
        (cur.flags & SonarConfig::kFlagInUse) != (last.flags & SonarConfig::kFlagInUse)) {
        f = true;
    }
    // "Changed": differs from the last sent copy, or everything is being sent.
    auto changed = [f](const auto& a, const auto& b) { return f || !(a == b); };
    const bool inUse = cur.InUse();

    if (f) {
        if (inUse) SendWord(MsgBeginConfigure, sub, 0, 0);
        std::array<std::uint8_t, 4> word{};
        PutLE<std::int32_t>(word, 0, kPulseListQuery);
        Send(MsgPulseList, DirQuery, sub, 0, word);
        Query(MsgSubsystemValue, sub);
    }
    if (inUse && changed(qc_[index].changeCount, qcSent_[index])) {
        const auto payload = qc_[index].Payload();
        Send(MsgQCSetup, DirSet, sub, 0, payload);
        qcSent_[index] = qc_[index].changeCount;
    }
    const int channels = cur.ChannelCount();
    for (int c = 0; c < channels; ++c) {
        if (changed(cur.enable[c], last.enable[c]))
            SendWord(MsgChannelEnable, sub, c, cur.enable[c]);
        if (inUse && changed(cur.enableStorage, last.enableStorage)) {
            SendWord(MsgChannelStoreEnable, sub, c, cur.enableStorage);
        }
    }
    if (inUse) {
        if (changed(cur.pingRate, last.pingRate) || changed(cur.rangeOrRate, last.rangeOrRate)) {
            // The settings are floats and are scaled as floats: 4.1 goes out as 4100, where the
            // same product in double gives 4099.
            const std::int32_t v = TruncToInt32(cur.pingRate * 1000.0f);
            SendWord(cur.rangeOrRate == SonarConfig::RateHz ? MsgPingRate : MsgPingRange, sub, 0,
                     v);
        }
        if (changed(cur.specialOptions, last.specialOptions) && cur.specialOptions != 0) {
            SendWord(MsgSpecialOptions, sub, 0, cur.specialOptions);
        }
        const int transducers = cur.TransducerCount();
        for (int t = 0; t < transducers; ++t) {
            if (changed(cur.pulsePower[t], last.pulsePower[t]) ||
                changed(cur.overallPower, last.overallPower)) {
                const float power = cur.overallPower * cur.pulsePower[t] / 100.0f * 10.0f;
                SendWord(MsgPulsePower, sub, t, TruncToInt32(power));
            }
        }
        for (int c = 0; c < channels; ++c) {
            if (changed(cur.gain[c], last.gain[c]) || changed(cur.agc[c], last.agc[c])) {
                SendWord(MsgChannelGain, sub, c, TruncToInt32(cur.gain[c] * 1000.0f));
                SendWord(MsgChannelAGC, sub, c, cur.agc[c]);
            }
            if (changed(cur.dataType, last.dataType)) {
                SendWord(MsgChannelDataType, sub, c, cur.dataType);
            }
        }
        if (changed(cur.trigger, last.trigger)) SendWord(MsgTrigger, sub, 0, cur.trigger);
        if (changed(cur.couplingSystem, last.couplingSystem) ||
            changed(cur.couplingDecimator, last.couplingDecimator) ||
            changed(cur.couplingDelay, last.couplingDelay)) {
            std::array<std::uint8_t, 12> b{};
            PutLE<std::int32_t>(b, 0, cur.couplingSystem);
            PutLE<std::int32_t>(b, 4, cur.couplingDecimator);
            PutLE<std::int32_t>(b, 8,
                                TruncToInt32(static_cast<double>(cur.couplingDelay) * 1000.0));
            Send(MsgCoupling, DirSet, sub, 0, b);
            Query(MsgCoupling, sub);
        }
        if (!cur.pulse.empty() && changed(cur.pulse, last.pulse)) {
            SendText(MsgPulseName, sub, cur.pulse);
        }
        // Sent even when empty: clearing the text is a change the sonar must hear.
        if (changed(cur.secondPulseText, last.secondPulseText)) {
            SendText(MsgSecondPulseText, sub, cur.secondPulseText);
        }
        if (changed(cur.sonarOn, last.sonarOn)) SendWord(MsgSonarOn, sub, 0, cur.sonarOn);
        if (changed(cur.delay, last.delay) || changed(cur.depth, last.depth) ||
            changed(cur.windowUnits, last.windowUnits) ||
            changed(cur.frameDecimator, last.frameDecimator) ||
            changed(cur.pixelDecimator, last.pixelDecimator) ||
            changed(cur.storageDelay, last.storageDelay) ||
            changed(cur.storageDepth, last.storageDepth)) {
            // The windows go out when the sonar answers the rate query below: they depend on
            // the ADC rate it reports.
            windowDirty_[index] = true;
        }
    }
    if (changed(cur.flags, last.flags) && configType_ == OverallConfig::kConfigR90 && inUse) {
        SendWord(MsgStreamFlagLow, sub, 0, (cur.flags & SonarConfig::kFlagStreamLow) ? 1 : 0);
        SendWord(MsgStreamFlagHigh, sub, 0, (cur.flags & SonarConfig::kFlagStreamHigh) ? 1 : 0);
    }
    Query(MsgPingRate, sub);
    Query(MsgSampleRate, sub);
    sent_[index] = cur;
}

void SonarController::SendSensorsAndRecorder(bool forced) {
    const SensorConfig s = sensor_;
    if (forced || s.enableLowRateAnalogInputs != sensorSent_.enableLowRateAnalogInputs) {
        SendWord(MsgChannelEnable, SubAnalogInputs, 0, s.enableLowRateAnalogInputs);
    }
    if (s.pitchRollChannel >= 0 && s.pitchRollSelect != sensorSent_.pitchRollSelect) {
        Send(MsgPitchRollSelect, DirSet, SubSonarSensors, s.pitchRollChannel, {});
    }
    const std::int32_t inputs = s.flags & SensorConfig::kFlagSensorInputs;
    if (forced || inputs != (sensorSent_.flags & SensorConfig::kFlagSensorInputs)) {
        for (int c = 0; c < SensorConfig::kSensorInputs; ++c) {
            SendWord(MsgChannelEnable, SubSonarSensors, c, inputs != 0 ? 1 : 0);
        }
    }
    sensorSent_ = s;

    const RecorderConfig r = recorder_;
    if ((r.flags & RecorderConfig::kFlagRecorderOn) != 0) {
        if ((forced || r.recordFile != recorderSent_.recordFile) && !r.recordFile.empty()) {
            SendText(MsgStorageFileName, 0, r.recordFile);
        }
        if (forced || r.masterEnable != recorderSent_.masterEnable) {
            SendWord(MsgStorageMasterEnable, 0, 0, r.masterEnable);
        }
    }
    recorderSent_ = r;
}

// ---- windows ----

void SonarController::SendWindow(int index) {
    std::lock_guard lock(mutex_);
    SendWindowLocked(index);
}

void SonarController::SendWindowLocked(int index) {
    if (index >= numSonars_) return;
    index = ClampIndex(index);
    if (!windowDirty_[index]) return;
    const SonarConfig& cur = current_[index];
    const int sub = cur.subsystem;
    if (cur.InUse()) {
        const int channels = cur.ChannelCount();
        const auto storage = SonarWindow::Storage(cur, adcRateBack_[index]).Payload();
        for (int c = 0; c < channels; ++c) Send(MsgStorageWindow, DirSet, sub, c, storage);
        const auto display = SonarWindow::Display(cur, adcRateBack_[index], configType_).Payload();
        for (int c = 0; c < channels; ++c) {
            Send(MsgWindow, DirSet, sub, c, display);
            // The R90 unit has a second window one subsystem number up.
            if (configType_ == OverallConfig::kConfigR90)
                Send(MsgWindow, DirSet, sub + 1, c, display);
        }
    }
    Query(MsgPingRate, sub);
    windowDirty_[index] = false;
}

// ---- replies ----

int SonarController::Match(int subsystem, bool activeOnly) const {
    const int sonars = std::clamp(numSonars_, 0, kSonars);
    for (int i = 0; i < sonars; ++i) {
        if (current_[i].subsystem != subsystem) continue;
        if (activeOnly && !active_[i]) continue;
        return i;
    }
    return -1;
}

void SonarController::ReadPulseList(int index, Bytes payload, std::int32_t size) {
    pulseBlock_[index].assign(payload.begin(), payload.end());
    ++pulseVersion_[index];
    pulseNames_[index].clear();
    // Count by the header's size, but read only entries that lie wholly in the block.
    const std::size_t declared = size > 0 ? static_cast<std::size_t>(size) / kPulseEntryBytes : 0;
    pulseCount_[index] = static_cast<int>(declared);
    const std::size_t whole = std::min(declared, payload.size() / kPulseEntryBytes);
    for (std::size_t e = 0; e < whole; ++e) {
        const Bytes entry = payload.subspan(e * kPulseEntryBytes, kPulseEntryBytes);
        const auto end = std::find(entry.begin(), entry.end(), std::uint8_t{0});
        if (end == entry.begin()) break;  // an empty name ends the list
        pulseNames_[index].emplace_back(entry.begin(), end);
    }
    ++replyChangeCount_;
}

void SonarController::DeliverMessage(SonarMessage* message, int source, std::uint32_t extra) {
    if (message == nullptr || source != SourceSonarCommand) return;
    if (message->direction() != DirReply) return;
    const Bytes payload = message->Payload();
    const int sub = message->subsystem();
    std::int32_t word = 0;
    const bool hasWord = ReadLE<std::int32_t>(payload, 0, word);

    std::lock_guard lock(mutex_);
    ++replyCount_;
    switch (message->type()) {
        case MsgOptionCheck:
            handshake_ = kHandshakeReplied;
            break;
        case MsgPulseList:
            if (const int i = Match(sub, true); i >= 0) ReadPulseList(i, payload, message->size());
            break;
        case MsgSubsystemValue:
            if (const int i = Match(sub, true); i >= 0 && hasWord) {
                current_[i].subsystemValue = word;
                ++changeCount_;
            }
            break;
        case MsgPingRate:
            if (const int i = Match(sub, false); i >= 0 && hasWord) {
                pingRateBack_[i] = word;
                ++replyChangeCount_;
            }
            break;
        case MsgSampleRate:
            if (const int i = Match(sub, false); i >= 0 && hasWord) {
                if (word != adcRateBack_[i]) windowDirty_[i] = true;
                adcRateBack_[i] = word;
                ++replyChangeCount_;
                SendWindowLocked(i);
            }
            break;
        case MsgSystemStatus:
            if (payload.size() >= kStatusWords * 4) {
                for (std::size_t w = 0; w < kStatusWords; ++w) {
                    status_[w] = GetLE<std::int32_t>(payload, w * 4);
                }
                statusSeen_ = true;
            }
            lastStatusMs_ = ticks_.TickCount();
            break;
        case MsgStorageStatus:
            if (message->size() == static_cast<std::int32_t>(kRecorderStatusBytes) &&
                payload.size() == kRecorderStatusBytes) {
                recorderStatus_.assign(payload.begin(), payload.end());
            }
            break;
        default:
            // 129 and everything else: nothing to keep.
            break;
    }
}

// ---- records ----

int SonarController::ClampIndex(int index) {
    return (index < 0 || index >= kSonars) ? kSonars - 1 : index;
}

int SonarController::NumSonars() const {
    std::lock_guard lock(mutex_);
    return numSonars_;
}

void SonarController::SetNumSonars(int count) {
    std::lock_guard lock(mutex_);
    numSonars_ = count;
}

SonarConfig SonarController::GetSonar(int index) const {
    std::lock_guard lock(mutex_);
    return current_[ClampIndex(index)];
}

void SonarController::SetSonar(const SonarConfig& record, int index) {
    const int i = ClampIndex(index);
    std::lock_guard lock(mutex_);
    active_[i] = true;
    current_[i] = record;
    ++changeCount_;
}

bool SonarController::IsActive(int index) const {
    std::lock_guard lock(mutex_);
    return active_[ClampIndex(index)];
}

bool SonarController::GetQC(QCConfig& record, int index) const {
    std::lock_guard lock(mutex_);
    const QCConfig& stored = qc_[ClampIndex(index)];
    if (record.changeCount == stored.changeCount) return false;
    record = stored;
    return true;
}

void SonarController::SetQC(const QCConfig& record, int index) {
    const int i = ClampIndex(index);
    std::lock_guard lock(mutex_);
    const std::int32_t count = qc_[i].changeCount;
    qc_[i] = record;
    qc_[i].changeCount = count + 1;
    // Raise the settings count too, so the next tick looks at the subsystem.
    ++changeCount_;
}

QCConfig SonarController::QCRecord(int index) const {
    std::lock_guard lock(mutex_);
    return qc_[ClampIndex(index)];
}

SensorConfig SonarController::GetSensor() const {
    std::lock_guard lock(mutex_);
    return sensor_;
}

void SonarController::SetSensor(const SensorConfig& record) {
    std::lock_guard lock(mutex_);
    sensor_ = record;
    ++changeCount_;
}

RecorderConfig SonarController::GetRecorder() const {
    std::lock_guard lock(mutex_);
    return recorder_;
}

void SonarController::SetRecorder(const RecorderConfig& record) {
    std::lock_guard lock(mutex_);
    recorder_ = record;
    if (recorder_.recordFile.size() > RecorderConfig::kRecordFileChars) {
        recorder_.recordFile.resize(RecorderConfig::kRecordFileChars);
    }
    ++changeCount_;
}

int SonarController::GetChangeCount() const {
    std::lock_guard lock(mutex_);
    return changeCount_;
}

int SonarController::GetReplyChangeCount() const {
    std::lock_guard lock(mutex_);
    return replyChangeCount_;
}

int SonarController::GetReplyCount() const {
    std::lock_guard lock(mutex_);
    return replyCount_;
}

int SonarController::HandshakeState() const {
    std::lock_guard lock(mutex_);
    return handshake_;
}

std::vector<std::string> SonarController::GetPulseNames(int index) const {
    std::lock_guard lock(mutex_);
    return pulseNames_[ClampIndex(index)];
}

std::vector<std::uint8_t> SonarController::GetPulseBlock(int index) const {
    std::lock_guard lock(mutex_);
    return pulseBlock_[ClampIndex(index)];
}

int SonarController::GetPulseBlockVersion(int index) const {
    std::lock_guard lock(mutex_);
    return pulseVersion_[ClampIndex(index)];
}

int SonarController::GetPulseCount(int index) const {
    std::lock_guard lock(mutex_);
    return pulseCount_[ClampIndex(index)];
}

std::array<std::int32_t, SonarController::kStatusWords> SonarController::GetStatus() const {
    std::lock_guard lock(mutex_);
    return status_;
}

bool SonarController::HasStatus() const {
    std::lock_guard lock(mutex_);
    return statusSeen_;
}

std::vector<std::uint8_t> SonarController::GetRecorderStatus() const {
    std::lock_guard lock(mutex_);
    return recorderStatus_;
}

std::int32_t SonarController::PingRateReadBack(int index) const {
    std::lock_guard lock(mutex_);
    return pingRateBack_[ClampIndex(index)];
}

std::int32_t SonarController::AdcRateReadBack(int index) const {
    std::lock_guard lock(mutex_);
    return adcRateBack_[ClampIndex(index)];
}

std::string SonarController::RateText(int index) const {
    std::lock_guard lock(mutex_);
    const int i = ClampIndex(index);
    char text[128];
    std::snprintf(text, sizeof text, "Ping Rate %f, ADC Rate %f", pingRateBack_[i] / 1000.0,
                  adcRateBack_[i] / 1000.0);
    return text;
}

}  // namespace halvo

#include "halvo-sim/SimSonarState.h"

#include <algorithm>
#include <cstring>

#include "core/ByteOrder.h"
#include "core/MessageTypes.h"

namespace halvo {

namespace {

std::vector<SimPulse> SubBottomPulses() {
    return {{"Chirp 2-12kHz 20ms", 2000, 12000, 20000},
            {"Chirp 2-16kHz 20ms", 2000, 16000, 20000},
            {"Chirp 1-10kHz 30ms", 1000, 10000, 30000},
            {"Chirp 0.5-7.2kHz 40ms", 500, 7200, 40000},
            {"Chirp 4-12kHz 10ms", 4000, 12000, 10000}};
}

std::vector<SimPulse> SideScanPulses(int number) {
    if (number == 20) {
        return {{"Chirp 90-110kHz 5ms", 90000, 110000, 5000},
                {"CW 100kHz 0.2ms", 100000, 100000, 200},
                {"Chirp 95-105kHz 10ms", 95000, 105000, 10000}};
    }
    return {{"Chirp 380-420kHz 2ms", 380000, 420000, 2000},
            {"CW 400kHz 0.05ms", 400000, 400000, 50},
            {"Chirp 390-410kHz 4ms", 390000, 410000, 4000}};
}

SimSubsystem MakeSubsystem(int number, int channels, int transducers, std::int32_t dataType) {
    SimSubsystem s;
    s.number = number;
    s.kind = number == 0 ? SimSubsystemKind::SubBottom : SimSubsystemKind::SideScan;
    s.inputChannels = channels;
    s.transducers = transducers;
    s.adcRateHz = number == 0 ? 25000 : (number == 20 ? 20000 : 40000);
    s.pingRateMilli = number == 0 ? 4000 : 8000;
    s.pulses = s.kind == SimSubsystemKind::SubBottom ? SubBottomPulses() : SideScanPulses(number);
    for (auto& c : s.channels) c.dataType = dataType;
    s.pulsePower.fill(1000);
    return s;
}

bool Word(const SonarMessage& m, std::int32_t& out) {
    return m.size() >= 4 && ReadLE<std::int32_t>(m.Payload(), 0, out);
}

SonarMessage WordReply(const MessageHeader& q, std::int32_t v) {
    SonarMessage r = SimReply(q, 4);
    PutLE<std::int32_t>(r.Payload(), 0, v);
    return r;
}

void PutText(std::span<std::uint8_t> p, std::size_t offset, const std::string& text,
             std::size_t room) {
    if (offset >= p.size() || room == 0) return;
    const std::size_t n = std::min({text.size(), room - 1, p.size() - offset - 1});
    std::memcpy(p.data() + offset, text.data(), n);
}

SimWindow ReadWindow(std::span<const std::uint8_t> p) {
    SimWindow w;
    w.frameDecimator = GetLE<std::uint16_t>(p, 0);
    w.pixelDecimator = GetLE<std::uint16_t>(p, 2);
    w.delay = GetLE<std::int32_t>(p, 4);
    w.width = GetLE<std::int32_t>(p, 8);
    w.last = GetLE<std::int32_t>(p, 12);
    return w;
}

}  // namespace

SonarMessage SimReply(const MessageHeader& q, std::int32_t size) {
    return SonarMessage::Build(q.type, DirReply, q.subsystem, q.channel, size);
}

std::string SimText(std::span<const std::uint8_t> bytes, std::size_t limit) {
    std::string s;
    for (std::size_t i = 0; i < bytes.size() && i < limit && bytes[i] != 0; ++i)
        s.push_back(static_cast<char>(bytes[i]));
    return s;
}

double SimSubsystem::PingRateHz() const {
    if (rangeMode) {
        const double range = rangeMilli / 1000.0;
        return range > 0 ? 750.0 / range : 1.0;
    }
    return pingRateMilli > 0 ? pingRateMilli / 1000.0 : 0.0;
}

SimSonarState::SimSonarState(SimConfig config, SimDeviceClock& clock)
    : config_(config), clock_(clock), startMs_(clock.NowMs()) {
    switch (config) {
        case SimConfig::SBSS:
            subsystems_ = {MakeSubsystem(0, 1, 1, 1), MakeSubsystem(20, 2, 2, 0),
                           MakeSubsystem(21, 2, 2, 0)};
            break;
        case SimConfig::SB:
            subsystems_ = {MakeSubsystem(0, 1, 1, 1)};
            break;
        case SimConfig::SBRC900:
            subsystems_ = {MakeSubsystem(0, 1, 1, 1)};
            break;
        case SimConfig::R90:
            subsystems_ = {MakeSubsystem(20, 2, 2, 0)};
            break;
        case SimConfig::MPX:
            subsystems_ = {MakeSubsystem(20, 4, 2, 0)};
            break;
    }
    // A plausible multi-ping block: two phases, meter counts, powers and gains.
    auto& b = device_.multiPing;
    const std::span<std::uint8_t> mp(b);
    PutLE<std::int16_t>(mp, 82, 2);
    for (int i = 0; i < 16; ++i) PutLE<std::int16_t>(mp, 342 + 2 * i, std::int16_t(180 + 5 * i));
    for (int i = 0; i < 4; ++i) PutLE<std::int16_t>(mp, 406 + 2 * i, std::int16_t(14000 + 900 * i));
    for (int i = 0; i < 4; ++i) PutLE<std::int16_t>(mp, 424 + 2 * i, 1000);
    for (int i = 0; i < 4; ++i) PutLE<std::int16_t>(mp, 432 + 2 * i, 16000);
}

SimSubsystem SimSonarState::Subsystem(int index) const {
    std::lock_guard lock(mutex_);
    return subsystems_.at(static_cast<std::size_t>(std::clamp(index, 0, SubsystemCount() - 1)));
}

bool SimSonarState::Transmitting(int index, double& rateHz) const {
    std::lock_guard lock(mutex_);
    if (index < 0 || index >= SubsystemCount()) return false;
    const SimSubsystem& s = subsystems_[static_cast<std::size_t>(index)];
    rateHz = s.PingRateHz();
    return s.sonarOn;
}

std::optional<int> SimSonarState::IndexOf(int number) const {
    for (std::size_t i = 0; i < subsystems_.size(); ++i)
        if (subsystems_[i].number == number) return static_cast<int>(i);
    return std::nullopt;
}

SimDevice SimSonarState::Device() const {
    std::lock_guard lock(mutex_);
    return device_;
}

void SimSonarState::SetSonarOnAll(bool on) {
    std::lock_guard lock(mutex_);
    for (auto& s : subsystems_) s.sonarOn = on;
}

void SimSonarState::NoteMultiPingStatistics() {
    std::lock_guard lock(mutex_);
    const std::span<std::uint8_t> mp(device_.multiPing);
    const std::int16_t n = GetLE<std::int16_t>(mp, 84);
    if (n < 32767) PutLE<std::int16_t>(mp, 84, static_cast<std::int16_t>(n + 1));
}

void SimSonarState::Handle(const SonarMessage& m, std::vector<SonarMessage>& replies) {
    std::lock_guard lock(mutex_);
    const auto index = IndexOf(m.subsystem());
    if (index) {
        HandleSubsystem(subsystems_[static_cast<std::size_t>(*index)], m, replies);
    } else {
        HandleDevice(m, replies);
    }
}

void SimSonarState::HandleSubsystem(SimSubsystem& s, const SonarMessage& m,
                                    std::vector<SonarMessage>& replies) {
    const MessageHeader h = m.Header();
    const auto p = m.Payload();
    const bool query = h.direction == DirQuery;
    const bool set = h.direction == DirSet;
    const int ch = h.channel;
    SimChannel* channel =
        ch < kSimMaxChannels ? &s.channels[static_cast<std::size_t>(ch)] : nullptr;
    std::int32_t v = 0;
    switch (h.type) {
        case MsgChannelEnable:
            if (set && channel && Word(m, v)) channel->enabled = v != 0;
            return;
        case MsgSonarOn:
            if (set && Word(m, v)) s.sonarOn = v != 0;
            return;
        case MsgPulsePower:
            if (set && ch < kSimMaxChannels && Word(m, v))
                s.pulsePower[static_cast<std::size_t>(ch)] = v;
            return;
        case MsgPulseList:
            if (query) replies.push_back(PulseListReply(s, h));
            return;
        case MsgPulseName:
            if (set) {
                const std::string name = SimText(p, kSimTextSize);
                for (std::size_t i = 0; i < s.pulses.size(); ++i)
                    if (s.pulses[i].name == name) s.pulseIndex = i;
            }
            return;
        case MsgSecondPulseText:
            if (set) s.secondPulseText = SimText(p, kSimTextSize);
            return;
        case MsgPingRate:
            if (set && Word(m, v)) {
                s.pingRateMilli = v;
                s.rangeMode = false;
            } else if (query) {
                replies.push_back(WordReply(h, static_cast<std::int32_t>(s.PingRateHz() * 1000)));
            }
            return;
        case MsgPingRange:
            if (set && Word(m, v)) {
                s.rangeMilli = v;
                s.rangeMode = true;
            }
            return;
        case MsgTrigger:
            if (set && Word(m, v)) s.trigger = v;
            return;
        case MsgCoupling:
            if (set && m.size() >= 12) {
                for (int i = 0; i < 3; ++i) s.coupling[i] = GetLE<std::int32_t>(p, 4 * i);
            } else if (query) {
                SonarMessage r = SimReply(h, 12);
                for (int i = 0; i < 3; ++i) PutLE<std::int32_t>(r.Payload(), 4 * i, s.coupling[i]);
                replies.push_back(std::move(r));
            }
            return;
        case MsgBeginConfigure:
            if (set) ++s.beginConfigureCount;
            return;
        case MsgChannelGain:
            if (set && channel && Word(m, v)) channel->gainMilli = v;
            return;
        case MsgChannelAGC:
            if (set && channel && Word(m, v)) channel->agc = v;
            return;
        case MsgSampleRate:
            if (query) replies.push_back(WordReply(h, s.adcRateHz * 1000));
            return;
        case MsgWindow:
            if (set && channel && m.size() >= 16) channel->window = ReadWindow(p);
            return;
        case MsgStorageWindow:
            if (set && channel && m.size() >= 16) channel->storageWindow = ReadWindow(p);
            return;
        case MsgChannelStoreEnable:
            if (set && channel && Word(m, v)) channel->storeEnable = v;
            return;
        case MsgChannelDataType:
            if (set && channel && Word(m, v) && v >= 0 && v <= 2) channel->dataType = v;
            return;
        case MsgSubsystemValue:
            if (set && Word(m, v)) {
                s.subsystemValue = v;
            } else if (query) {
                replies.push_back(WordReply(h, s.subsystemValue));
            }
            return;
        case MsgSpecialOptions:
            if (set && Word(m, v)) s.specialOptions = v;
            return;
        case MsgQCSetup:
            if (set && m.size() >= 10)
                for (int i = 0; i < 5; ++i) s.qc[i] = GetLE<std::uint16_t>(p, 2 * i);
            return;
        case MsgStreamFlagHigh:
            if (set && Word(m, v)) s.streamFlagHigh = v;
            return;
        case MsgStreamFlagLow:
            if (set && Word(m, v)) s.streamFlagLow = v;
            return;
        case MsgDynamicFocus:
            if (set && Word(m, v)) s.dynamicFocus = v;
            return;
        default:
            HandleDevice(m, replies);
            return;
    }
}

void SimSonarState::HandleDevice(const SonarMessage& m, std::vector<SonarMessage>& replies) {
    const MessageHeader h = m.Header();
    const auto p = m.Payload();
    const bool query = h.direction == DirQuery;
    const bool set = h.direction == DirSet;
    std::int32_t v = 0;
    switch (h.type) {
        case MsgClock:
            if (query) {
                const TimeValue t = clock_.Now();
                SonarMessage r = SimReply(h, 8);
                PutLE<std::int32_t>(r.Payload(), 0, t.seconds);
                PutLE<std::int32_t>(r.Payload(), 4, t.ms);
                replies.push_back(std::move(r));
            } else if (set && m.size() >= 8) {
                clock_.Set(NormaliseTime(GetLE<std::int32_t>(p, 0), GetLE<std::int32_t>(p, 4)));
                ++device_.clockSets;
            }
            return;
        case MsgClockSlew:
            if (set && Word(m, v)) {
                clock_.Slew(v);
                ++device_.clockSlews;
            }
            return;
        case MsgAlive: {
            // Any traffic keeps the topside's link timer happy; answer in kind.
            SonarMessage r = SimReply(h, 4);
            if (m.size() >= 4) PutLE<std::int32_t>(r.Payload(), 0, GetLE<std::int32_t>(p, 0));
            replies.push_back(std::move(r));
            return;
        }
        case MsgSystemStatus:
            if (query) replies.push_back(StatusReply(h));
            return;
        case MsgStorageStatus:
            if (query) replies.push_back(StorageStatusReply(h));
            return;
        case MsgStorageMasterEnable:
            if (set && Word(m, v)) {
                if (v != 0 && device_.storageMasterEnable == 0)
                    device_.recordStartMs = clock_.NowMs();
                device_.storageMasterEnable = v;
            }
            return;
        case MsgStorageFileName:
            if (set) device_.storageFile = SimText(p, kSimTextSize);
            return;
        case MsgOptionCheck:
            ++device_.optionChecks;
            if (query) {
                // Opaque to the topside; a fixed tag and a counter.
                SonarMessage r = SimReply(h, 16);
                std::memcpy(r.Payload().data(), "HSIMOPT1", 8);
                PutLE<std::int32_t>(r.Payload(), 8, device_.optionChecks);
                replies.push_back(std::move(r));
            }
            return;
        case MsgChannelEnable:
            if (set && Word(m, v)) {
                if (h.subsystem == SubAnalogInputs) device_.analogEnable = v;
                if (h.subsystem == SubSonarSensors && h.channel < device_.serialEnable.size())
                    device_.serialEnable[h.channel] = v;
            }
            return;
        case MsgPitchRollSelect:
            if (set && h.subsystem == SubSonarSensors) device_.pitchRollPort = h.channel;
            return;
        case MsgSensorReset:
            if (set) ++device_.sensorResets;
            return;
        case MsgVideoControl:
            if (set && m.size() >= 24) {
                for (int i = 0; i < 6; ++i) device_.videoControl[i] = GetLE<std::int32_t>(p, 4 * i);
                ++device_.videoControlCount;
            }
            return;
        case 1180:
            if (query) {
                SonarMessage r = SimReply(h, kSimMultiPingBlockSize);
                std::memcpy(r.Payload().data(), device_.multiPing.data(), kSimMultiPingBlockSize);
                replies.push_back(std::move(r));
            } else if (set && m.size() >= static_cast<std::int32_t>(kSimMultiPingBlockSize)) {
                // The calibration part is what the topside edits; statistics stay ours.
                std::memcpy(device_.multiPing.data() + 424, p.data() + 424,
                            kSimMultiPingBlockSize - 424);
            }
            return;
        case 1181:
            if (query) replies.push_back(WordReply(h, device_.multiPingMode));
            return;
        case 1182:
            if (set) {
                ++device_.multiPingResets;
                PutLE<std::int16_t>(std::span<std::uint8_t>(device_.multiPing), 84, 0);
            }
            return;
        case 1183:
            if (set) ++device_.multiPingSaves;
            return;
        case 1184:
            if (set && Word(m, v)) device_.calibrationAction = v;
            return;
        case 1185:
            if (set && Word(m, v)) device_.calibrationAction2 = v;
            return;
        case 1186:
            if (query) {
                replies.push_back(WordReply(h, device_.gainBalance));
            } else if (set && Word(m, v)) {
                device_.gainBalance = v;
            }
            return;
        case 1188:
            if (query) {
                SonarMessage r = SimReply(h, kSimTextSize);
                PutText(r.Payload(), 0, device_.focusTable, kSimTextSize);
                replies.push_back(std::move(r));
            } else if (set) {
                device_.focusTable = SimText(p, 99);
            }
            return;
        default:
            return;
    }
}

SonarMessage SimSonarState::StatusReply(const MessageHeader& q) const {
    SonarMessage r = SimReply(q, kSimStatusSize);
    auto p = r.Payload();
    const std::int64_t now = clock_.NowMs();
    std::int32_t onMask = 0;
    for (std::size_t i = 0; i < subsystems_.size(); ++i)
        if (subsystems_[i].sonarOn) onMask |= 1 << i;
    const std::int32_t words[] = {
        static_cast<std::int32_t>(now / 1000),               // device time
        static_cast<std::int32_t>((now - startMs_) / 1000),  // seconds up
        static_cast<std::int32_t>(Pings()),                  // pings made
        onMask,                                              // subsystems transmitting
        312,                                                 // electronics temperature x 10
        24100,                                               // supply, mV
        0,                                                   // leak detector
        static_cast<std::int32_t>(subsystems_.size()),
        device_.storageMasterEnable,
    };
    for (std::size_t i = 0; i < std::size(words); ++i) PutLE<std::int32_t>(p, 4 * i, words[i]);
    return r;
}

SonarMessage SimSonarState::StorageStatusReply(const MessageHeader& q) const {
    SonarMessage r = SimReply(q, kSimStorageStatusSize);
    auto p = r.Payload();
    PutText(p, 0, device_.storageFile, kSimTextSize);
    const std::int64_t recordedMs =
        device_.storageMasterEnable ? clock_.NowMs() - device_.recordStartMs : 0;
    // About 200 kB/s while recording, on a 64 GB store.
    const std::int32_t sizeKb =
        static_cast<std::int32_t>(std::max<std::int64_t>(0, recordedMs / 5));
    PutLE<std::int32_t>(p, 256, sizeKb);
    PutLE<std::int32_t>(p, 260, 65536 - sizeKb / 1024);
    PutLE<std::int32_t>(p, 264, device_.storageMasterEnable ? 1 : 0);
    return r;
}

SonarMessage SimSonarState::PulseListReply(const SimSubsystem& s, const MessageHeader& q) const {
    const std::size_t n = s.pulses.size();
    SonarMessage r = SimReply(q, static_cast<std::int32_t>(n * kSimPulseEntrySize));
    auto p = r.Payload();
    for (std::size_t i = 0; i < n; ++i) {
        const std::size_t at = i * kSimPulseEntrySize;
        PutText(p, at, s.pulses[i].name, 80);
        PutLE<std::int32_t>(p, at + 80, s.pulses[i].startHz);
        PutLE<std::int32_t>(p, at + 84, s.pulses[i].endHz);
        PutLE<std::int32_t>(p, at + 88, s.pulses[i].lengthUs);
        PutLE<std::int32_t>(p, at + 92, static_cast<std::int32_t>(i));
    }
    return r;
}

}  // namespace halvo

#include "stamping/SegyDataProcessor.h"

#include "app/GeneralSettings.h"
#include "app/ProgramClock.h"
#include "core/MessageTypes.h"
#include "core/SonarMessage.h"
#include "core/TraceHeader.h"
#include "stamping/SeawaterDepth.h"
#include "stamping/TraceStampSteps.h"

namespace halvo {

namespace {

constexpr std::size_t kLatchFrom = 12;           // sensor blocks start behind the stamp
constexpr std::size_t kAnalogMinPayload = 36;    // stamp plus twelve readings
constexpr std::uint32_t kPressureFlag = 0x01;    // 2060 flags bit 0
constexpr std::uint32_t kSoundSpeedFlag = 0x10;  // 2060 flags bit 4
constexpr std::int16_t kLaybackEnable = 0x01;    // GPSFlags bit 0
constexpr std::int16_t kSaveCorrected = 0x10;    // GPSFlags bit 4

// Payload offsets of the fields read.
constexpr std::size_t kPitchAt = 24, kRollAt = 26, kHeaveAt = 32, kHeadingAt = 34;
constexpr std::size_t kPressureAt = 12, kPressureFlagsAt = 24, kSoundSpeedAt = 32;
constexpr std::size_t kAltitudeAt = 16;

}  // namespace

SegyDataProcessor::SegyDataProcessor(ProgramClock& clock, GeneralSettings& general,
                                     NavigationConfigStore& navigation, Notifier& notifier)
    : clock_(clock),
      generalStore_(general),
      navStore_(navigation),
      sonars_(DefaultSonarChannels()),
      navigation_(notifier) {}

std::vector<SonarChannelBase> SegyDataProcessor::DefaultSonarChannels() {
    return {{0, 0}, {20, 2}, {21, 4}, {3, 6}};
}

void SegyDataProcessor::SetSonarChannels(std::vector<SonarChannelBase> sonars) {
    std::lock_guard lock(sonarMutex_);
    sonars_ = std::move(sonars);
}

int SegyDataProcessor::getNavStatus() {
    return navigation_.getNavStatus(clock_.Tick());
}

NavigationFix SegyDataProcessor::CopyFix() {
    NavigationLock lock(navigation_);
    return parser_.Fix();
}

SentenceHistory SegyDataProcessor::CopyHistory() {
    NavigationLock lock(navigation_);
    return parser_.History();
}

void SegyDataProcessor::RefreshSettings() {
    const int generalCount = generalStore_.ChangeCount();
    if (generalCount != generalCount_) {
        generalCount_ = generalCount;
        general_ = generalStore_.Snapshot();
    }
    const int navCount = navStore_.ChangeCount();
    if (navCount != navCount_) {
        navCount_ = navCount;
        RefreshNavigationConfig();
    }
}

void SegyDataProcessor::ProcessMessage(SonarMessage* message, int source, std::uint32_t) {
    RefreshSettings();
    // 1. Marks that exist at start-up must not stamp the first traces.
    if (marks_[0] == 0 && general_.MarkNumber != 0) marks_.fill(general_.MarkNumber);
    // 2.
    if (refresh_.exchange(false, std::memory_order_acq_rel)) navConfig_ = navStore_.Get();
    // 3.
    if (message == nullptr || message->empty()) return;
    SonarMessage& m = *message;
    // 4. Every message goes to the parser: sentences as text, sensors field by field.
    ParseMessage(m, source);
    // 5.
    if (source == SourcePlayback && m.type() == MsgTrace) PlaybackAttitude(m);
    // 6.
    const std::uint32_t now = clock_.Tick();
    LatchSensor(m, now);
    if (m.type() == MsgTrace) StampTrace(m, source, now);
}

void SegyDataProcessor::ParseMessage(const SonarMessage& m, int source) {
    SensorMessageView view;
    view.type = m.type();
    view.version = m.version();
    view.channel = m.channel();
    view.payload = m.Payload();
    SentenceResult result;
    {
        // The pages copy the fix under this lock, so the parser writes it under the same one.
        NavigationLock lock(navigation_);
        result = parser_.ProcessMessage(view, clock_.Now());
        if (result) {
            navigation_.Update(parser_.Fix(), navConfig_.latLonSource, navConfig_.timeSource,
                               clock_.Tick(), clock_.Now());
        }
    }
    // The fix is written on this thread only, so it can be read here without the lock.
    if (result && source != SourcePlayback && navConfig_.tsEnable != 0) {
        steering_.Steer(parser_.Fix(), navConfig_.timeSource, parser_.LastNmeaTime(), clock_);
    }
}

void SegyDataProcessor::PlaybackAttitude(const SonarMessage& m) {
    const ConstTraceHeaderView th(m.Payload());
    if (!th.valid() || (th.GetInt(TraceField::ValidityFlags) & stamping::kAttitudeValid) == 0) {
        return;
    }
    // A played file passes the bias correction again, as settled.
    attitude_.Clear(kLatchFrom, clock_.Tick());
    attitude_.Put<std::int16_t>(kPitchAt, static_cast<std::int16_t>(th.GetInt(TraceField::Pitch)));
    attitude_.Put<std::int16_t>(kRollAt, static_cast<std::int16_t>(th.GetInt(TraceField::Roll)));
    attitude_.Put<std::uint16_t>(kHeadingAt,
                                 static_cast<std::uint16_t>(th.GetInt(TraceField::Heading)));
    const auto interval = static_cast<std::uint32_t>(th.GetInt(TraceField::SampleIntervalNS));
    const std::int32_t heave = stamping::HeaveMillimetres(
        general_.WaterSoundSpeed, interval, th.GetInt(TraceField::HeaveCompensationSamples));
    attitude_.Put<std::int16_t>(kHeaveAt, static_cast<std::int16_t>(heave));
}

void SegyDataProcessor::LatchSensor(const SonarMessage& m, std::uint32_t now) {
    const auto payload = m.Payload();
    switch (m.type()) {
        case MsgPitchRoll:
            attitude_.Take(payload, kLatchFrom, now);
            break;
        case MsgAltitude:
            altitude_.Take(payload, kLatchFrom, now);
            break;
        case MsgPressure: {
            const auto flags = GetLE<std::uint32_t>(payload, kPressureFlagsAt);
            if (flags & kPressureFlag) pressure_.Take(payload, kLatchFrom, now);
            if (flags & kSoundSpeedFlag) soundSpeed_.Take(payload, kLatchFrom, now);
            break;
        }
        case MsgAnalog:
            if (payload.size() >= kAnalogMinPayload) analog_.Take(payload, kLatchFrom, now);
            break;
        default:
            break;
    }
}

void SegyDataProcessor::AbsoluteChannel(const SonarMessage& m, TraceHeaderView& th) {
    std::lock_guard lock(sonarMutex_);
    // Every match applies; the search does not stop at the first.
    for (const SonarChannelBase& s : sonars_) {
        if (s.subsystem == m.subsystem()) {
            th.SetInt(TraceField::ChannelNumber, m.channel() + s.firstChannel);
        }
    }
}

void SegyDataProcessor::StampTrace(SonarMessage& m, int source, std::uint32_t now) {
    TraceHeaderView th(m.Payload());
    if (!th.valid()) return;  // too short for a header: nothing to stamp into
    const GeneralValues& g = general_;

    // 7.
    AbsoluteChannel(m, th);
    const std::int32_t channel = th.GetInt(TraceField::ChannelNumber);
    const bool channelKept = channel >= 0 && channel < kChannels;
    // 8. A new mark lands on the next trace of every channel, once each.
    if (channelKept && g.MarkNumber != 0 && g.MarkNumber != marks_[channel]) {
        marks_[channel] = g.MarkNumber;
        th.SetInt(TraceField::MarkNumber, g.MarkNumber);
    }

    const auto interval = static_cast<std::uint32_t>(th.GetInt(TraceField::SampleIntervalNS));
    const double soundSpeed = g.WaterSoundSpeed;
    // 9.
    if (analog_.Fresh(now, kFreshMs)) {
        stamping::StampAnalog(th, analog_.Bytes(), g.TemperatureChannel, g.TemperatureGain,
                              g.TemperatureOffset);
    }
    // 10.
    if (attitude_.Fresh(now, kFreshMs)) {
        th.SetInt(TraceField::Pitch,
                  stamping::BiasedAngle(attitude_.Get<std::int16_t>(kPitchAt), g.PitchBias));
        th.SetInt(TraceField::Roll,
                  stamping::BiasedAngle(attitude_.Get<std::int16_t>(kRollAt), g.RollBias));
        th.SetInt(TraceField::ValidityFlags,
                  th.GetInt(TraceField::ValidityFlags) | stamping::kAttitudeValid);
        th.SetInt(TraceField::Heading, attitude_.Get<std::uint16_t>(kHeadingAt));
        if (soundSpeed > 0 && interval != 0) {
            const double metres = attitude_.Get<std::int16_t>(kHeaveAt) / 1000.0;
            th.SetInt(TraceField::HeaveCompensationSamples,
                      stamping::Trunc(stamping::HeaveSamples(metres, soundSpeed, interval)));
        }
    }
    // 11.
    if (pressure_.Fresh(now, kFreshMs)) {
        const std::int32_t psi = stamping::PressureField(pressure_.Get<std::int32_t>(kPressureAt),
                                                         g.PressureGain, g.PressureOffset);
        th.SetInt(TraceField::PressurePSI, psi);
        th.SetInt(TraceField::DepthMM,
                  SeawaterDepth::DepthMillimetres(psi, th.GetInt(TraceField::Temperature) / 10.0,
                                                  g.PressureMountingOffsetMeters));
    }
    // 12.
    if (soundSpeed_.Fresh(now, kFreshMs)) {
        th.SetFloat(TraceField::SoundSpeed,
                    static_cast<float>(soundSpeed_.Get<std::int32_t>(kSoundSpeedAt) / 1000.0));
    }
    // 13. Whatever the freshness of any source; overwrites the heave of step 10.
    if (g.HeaveSensorSource == 1 && channelKept) {
        th.SetInt(TraceField::HeaveCompensationSamples,
                  stamping::DepthHeave(depthFilter_[channel], th.GetInt(TraceField::DepthMM),
                                       g.HeaveScale, soundSpeed, interval));
    }
    // 14.
    if (altitude_.Fresh(now, kFreshMs)) {
        th.SetInt(TraceField::Altitude, altitude_.Get<std::int32_t>(kAltitudeAt));
    }
    // 15.
    const NavigationSnapshot nav = navigation_.Copy();
    if (NavigationSnapshot::Within(nav.hasUpdate, nav.updateTick, now, kFreshMs)) {
        stamping::StampNavigation(th, nav);
    }
    // 16. Live traces only: a played file keeps the offsets it was recorded with.
    if (source == SourceSonarData && (g.GPSFlags & kLaybackEnable) != 0) {
        th.SetInt(TraceField::NMEAAntennaeO, g.NMEAantennaeO);
        th.SetInt(TraceField::NMEAAntennaeR, g.NMEAantennaeR);
    }
    // 17.
    if ((g.GPSFlags & kSaveCorrected) != 0) stamping::StampLayback(th, g.GPSFlags);
}

}  // namespace halvo

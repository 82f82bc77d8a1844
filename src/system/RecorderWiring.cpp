#include "system/RecorderWiring.h"

#include "app/GeneralSettings.h"
#include "app/ProgramClock.h"
#include "core/SonarMessage.h"
#include "sonar/SonarIF.h"
#include "status/StatusDataProcessor.h"
#include "system/DisplayStateReader.h"

namespace halvo {

StorageDataProcessor::Hooks MakeRecorderHooks(const RecorderWiring& parts) {
    GeneralSettings& general = parts.general;
    const DisplayStateReader& displays = parts.displays;
    ProgramClock& clock = parts.clock;
    StatusDataProcessor& status = parts.status;
    const SonarIF* const& sonar = parts.sonar;
    // The hooks keep the references above, to parts of the system that outlive the recorder.
    StorageDataProcessor::Hooks hooks;
    hooks.playback.gpsFlags = [&] { return general.Snapshot().GPSFlags; };
    hooks.playback.firstChannelOf = [&](std::uint8_t subsystem) -> std::optional<int> {
        if (sonar == nullptr) return std::nullopt;
        for (int i = 0; i < SonarIF::kSonars; ++i) {
            const SonarConfig s = sonar->GetSonar(i);
            if (s.subsystem == subsystem) return s.channelOffset;
        }
        return std::nullopt;
    };
    hooks.bathy = [&](const SonarMessage& trace) { return displays.Bathy(trace); };
    hooks.events = &parts.events;
    hooks.logging = &parts.logging;
    hooks.notifier = &parts.notifier;
    hooks.snapshot.now = [&] { return clock.Now(); };
    hooks.snapshot.markNumber = [&] { return status.MarkNumber(); };
    hooks.snapshot.parameterChanges = [&] {
        return sonar != nullptr ? sonar->GetChangeCount() : 0;
    };
    hooks.snapshot.gps = [&] {
        const StatusRecord r = status.getRecord();
        return GpsSnapshot{r.time, r.position, r.speed, r.markNumber};
    };
    hooks.snapshot.sensors = [&] {
        const StatusRecord r = status.getRecord();
        return SensorSnapshot{r.attitude, r.depth / 1000.0, r.pressure / 1000.0};
    };
    hooks.snapshot.sonars = [&] {
        std::vector<SonarSnapshot> out;
        if (sonar == nullptr) return out;
        const StatusRecord r = status.getRecord();
        for (int i = 0; i < sonar->GetNumSonars() && i < SonarIF::kSonars; ++i) {
            const SonarConfig s = sonar->GetSonar(i);
            SonarSnapshot snap;
            snap.index = i;
            snap.firstChannel = s.InUse() ? s.channelOffset : 63;
            snap.on = s.sonarOn;
            if (snap.firstChannel >= 0 && snap.firstChannel < StatusRecord::kChannels) {
                snap.pingNumber = static_cast<int>(r.ping[snap.firstChannel]);
                snap.adcRate = r.sampleRate[snap.firstChannel];
            }
            snap.dataType = s.dataType == SonarConfig::DataRaw        ? 2
                            : s.dataType == SonarConfig::DataAnalytic ? 1
                                                                      : 0;
            snap.rangeMode = s.rangeOrRate == SonarConfig::RangeMeters;
            snap.rateOrRange = s.pingRate;
            snap.trigger = s.trigger;
            snap.delay = s.delay;
            snap.depth = s.depth;
            snap.decimationPre = s.frameDecimator;
            snap.decimationPost = s.pixelDecimator;
            snap.mux = static_cast<unsigned>(s.specialOptions);
            for (int c = 0; c < s.ChannelCount(); ++c) {
                ChannelGainSnapshot g;
                g.automatic = s.agc[c] != 0;
                g.manualGain = s.gain[c];
                const int abs = s.channelOffset + c;
                if (abs >= 0 && abs < StatusRecord::kChannels) g.measuredGain = r.gain[abs];
                snap.gains.push_back(g);
            }
            snap.dacGain = s.overallPower;
            // "of" is followed by each transducer's own share of the overall power.
            for (int t = 0; t < s.TransducerCount(); ++t) snap.dac.push_back(s.pulsePower[t]);
            snap.pulse = s.pulse;
            out.push_back(std::move(snap));
        }
        return out;
    };
    return hooks;
}

}  // namespace halvo

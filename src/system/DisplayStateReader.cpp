#include "system/DisplayStateReader.h"

#include "app/GeneralSettings.h"
#include "core/SonarMessage.h"
#include "core/TraceHeader.h"
#include "display/DisplayProcessingSet.h"
#include "display/DisplayUnits.h"
#include "dsp/HalvoDisplaysDataProcessor.h"

namespace halvo {

std::optional<DisplayStateReader::Bottom> DisplayStateReader::ReadBottom(int display) const {
    if (display < 0 || display >= DisplayProcessingSet::kDisplays) return std::nullopt;
    if (display >= displays_.DisplaysInUse()) return std::nullopt;
    const GeneralValues general = general_.Snapshot();
    Bottom b;
    float tvgStart = 0;
    {
        auto record = displays_.Lock(display);
        b.channel = record->Channel;
        b.sampleRate = record->sampleRate;
        tvgStart = record->TVGStart;
    }
    b.bottomSample = ToSamples(tvgStart, b.sampleRate, general);
    b.soundSpeed = general.WaterSoundSpeed;
    return b;
}

DisplayState DisplayStateReader::State(int display) const {
    DisplayState state;
    const std::optional<Bottom> b = ReadBottom(display);
    if (!b) return state;
    state.channel = b->channel;
    state.bottomSample = b->bottomSample;
    // Half the two-way travel to the tracked bottom; no rate yet means no altitude yet.
    if (b->sampleRate > 0)
        state.trackedAltitude =
            b->bottomSample / static_cast<double>(b->sampleRate) * b->soundSpeed * 0.5;
    // The chain publishes the reflection level of display 0 only.
    if (display == 0) state.reflection = chain_.LatestReflection();
    return state;
}

std::optional<BathyTrace> DisplayStateReader::Bathy(const SonarMessage& trace) const {
    const ConstTraceHeaderView th(trace.Payload());
    if (!th.valid()) return std::nullopt;
    const std::optional<Bottom> b = ReadBottom(0);
    if (!b || b->channel != th.GetInt(TraceField::ChannelNumber)) return std::nullopt;
    return BathyTrace{static_cast<double>(b->bottomSample), b->sampleRate, b->soundSpeed};
}

}  // namespace halvo

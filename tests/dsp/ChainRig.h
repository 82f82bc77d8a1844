#pragma once
// A whole display chain on real parts (settings, record set, queue, output, processor) with a
// fake sleep, and a builder of trace messages with chosen samples.

#include <functional>
#include <memory>
#include <vector>

#include "app/GeneralSettings.h"
#include "app/SystemCoordinator.h"
#include "core/MessageTypes.h"
#include "core/SonarMessage.h"
#include "core/TraceHeader.h"
#include "display/DisplayProcessingSet.h"
#include "dsp/DisplayLineOutput.h"
#include "dsp/HalvoDisplaysDataProcessor.h"
#include "dsp/SonarChannelMap.h"

namespace halvo::test {

struct TraceBuild {
    int format = 0;
    int ping = 1;
    int channel = 0;  // `Channel Number` and the header's channel byte
    int subsystem = 7;
    int direction = DirReply;
    int intervalNs = 40000;  // 25 kHz
    int startDepth = 0;
    int weighting = 0;
    int heave = 0;
};

// 16-bit samples (values; complex formats interleave real and imaginary).
inline SonarMessage MakeTrace(const TraceBuild& b, const std::vector<std::int16_t>& values) {
    const std::int32_t size = static_cast<std::int32_t>(kTraceHeaderSize + 2 * values.size());
    SonarMessage m = SonarMessage::Build(MsgTrace, static_cast<std::uint8_t>(b.direction),
                                         static_cast<std::uint8_t>(b.subsystem),
                                         static_cast<std::uint8_t>(b.channel), size);
    auto p = m.Payload();
    TraceHeaderView h(p);
    h.SetInt(TraceField::DataFormat, b.format);
    h.SetInt(TraceField::PingNumber, b.ping);
    h.SetInt(TraceField::ChannelNumber, b.channel);
    h.SetInt(TraceField::SampleIntervalNS, b.intervalNs);
    h.SetInt(TraceField::StartDepth, b.startDepth);
    h.SetInt(TraceField::WeightingFactor, b.weighting);
    h.SetInt(TraceField::HeaveCompensationSamples, b.heave);
    for (std::size_t i = 0; i < values.size(); ++i) {
        StoreLE<std::int16_t>(p.data() + kTraceHeaderSize + 2 * i, values[i]);
    }
    return m;
}

using Lines = std::vector<std::unique_ptr<SonarDataCacheElement>>;

class ChainRig {
  public:
    explicit ChainRig(std::vector<FixedSonarChannelMap::Sonar> sonars = {})
        : sonars_(std::move(sonars)) {
        // Samples as user units keep the hand computations free of sound speeds.
        general.Modify([](GeneralValues& g) { g.UserUnits = 2; });
        set.UseDisplay();
        coordinator.Running().Raise();
    }

    // Sets a display to the loader's defaults on the given channel, then applies the change.
    void Configure(int display, int channel,
                   const std::function<void(DisplayProcessingConfig&)>& change = {}) {
        while (set.DisplaysInUse() <= display) set.UseDisplay();
        auto r = set.Lock(display);
        r->Gain = 0, r->TVGLimit = 60, r->Channel = channel;
        if (change) change(*r);
        r.Bump();
    }

    Lines TakeLines() {
        Lines out;
        DisplayQueueEntry e;
        while (set.Queue().Take(e)) out.push_back(std::move(e.element));
        return out;
    }

    void Deliver(SonarMessage& m, int source = SourcePlayback) {
        processor.DeliverMessage(&m, source, 0);
    }
    // Builds a trace, delivers it and returns the lines it made.
    Lines Send(const TraceBuild& b, const std::vector<std::int16_t>& v,
               int source = SourcePlayback) {
        SonarMessage m = MakeTrace(b, v);
        Deliver(m, source);
        return TakeLines();
    }

    SystemCoordinator coordinator;
    GeneralSettings general{coordinator};
    DisplayProcessingSet set{coordinator, general};
    bool playback = false;
    std::function<void()> onSleep;
    DisplayLineOutput output{set.Queue(), [this] { return playback; }, coordinator.Running(),
                             [this](int) {
                                 if (onSleep) onSleep();
                             }};

  private:
    FixedSonarChannelMap sonars_;

  public:
    HalvoDisplaysDataProcessor processor{set, general, output, &sonars_};
};

}  // namespace halvo::test

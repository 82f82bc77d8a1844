#pragma once
// Playback's own steps (preparation, then the program's pipeline: normalisation, stamping on the
// file's clock, and the display chain ahead of stamping as on the program's bus), with the
// settings of one file: the road a played record takes to become
// display lines. `lines` prints what comes out, `render` draws it.

#include <memory>
#include <string>

#include "app/GeneralSettings.h"
#include "app/SystemCoordinator.h"
#include "core/MessageTypes.h"
#include "display/DisplayProcessingSet.h"
#include "dsp/DisplayLineOutput.h"
#include "dsp/HalvoDisplaysDataProcessor.h"
#include "dsp/SonarChannelMap.h"
#include "halvo-hsf/StampPipeline.h"

namespace halvo {
class SonarDataCacheElement;
}

namespace halvo::hsf {

class LinePlayer {
  public:
    // Settings of the file named; an empty name gives the built-in defaults.
    explicit LinePlayer(const std::string& settings);

    // Plays one record; every finished line goes to take, in order. The queue is drained after
    // every record, so it never fills and playback never waits.
    template <typename Take>
    void Play(SonarMessage m, Take&& take) {
        stamping_.Process(std::move(m));
        DisplayQueueEntry entry;
        while (set_.Queue().Take(entry)) {
            if (entry.element) take(*entry.element);
        }
    }

    DisplayProcessingSet& Set() { return set_; }
    GeneralValues General() const { return general_.Snapshot(); }

  private:
    SystemCoordinator coordinator_;
    GeneralSettings general_;
    DisplayProcessingSet set_;
    DisplayLineOutput output_;
    FixedSonarChannelMap sonars_;
    HalvoDisplaysDataProcessor displays_;
    StampPipeline stamping_;
};

}  // namespace halvo::hsf

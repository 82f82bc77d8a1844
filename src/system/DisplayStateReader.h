#pragma once
// What the displays know about the bottom, read for the parts that report it: the status line
// and alerts, the altitude pane and the bathymetry file. The display chain keeps the tracked
// bottom in each display's `TVGStart`, so this reads the shared records rather than the chain's
// private state, and works from any thread.

#include <optional>

#include "status/StatusSources.h"
#include "storage/BathyWriter.h"

namespace halvo {

class DisplayProcessingSet;
class GeneralSettings;
class HalvoDisplaysDataProcessor;
class SonarMessage;

class DisplayStateReader {
  public:
    DisplayStateReader(DisplayProcessingSet& displays, const GeneralSettings& general,
                       const HalvoDisplaysDataProcessor& chain)
        : displays_(displays), general_(general), chain_(chain) {}

    // A display that is not in use, or out of range, shows no channel and no bottom.
    DisplayState State(int display) const;
    // The tracked bottom as a height above it, metres, with the sign of the tracked side.
    double TrackedAltitude(int display) const { return State(display).trackedAltitude; }
    // For a trace of the channel display 0 shows: where its bottom lies. Empty otherwise.
    std::optional<BathyTrace> Bathy(const SonarMessage& trace) const;

  private:
    struct Bottom {
        int channel = -1;
        int bottomSample = 0;
        float sampleRate = 0;
        double soundSpeed = 0;
    };
    std::optional<Bottom> ReadBottom(int display) const;

    DisplayProcessingSet& displays_;
    const GeneralSettings& general_;
    const HalvoDisplaysDataProcessor& chain_;
};

}  // namespace halvo

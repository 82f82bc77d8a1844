#pragma once
// The display chain on the data bus: every trace of every displayed channel becomes a line for
// the displays that show it, and the sonar's sound speed reports may set the water speed.

#include <array>
#include <atomic>
#include <memory>

#include "app/GeneralValues.h"
#include "core/MessageObserver.h"
#include "dsp/HalvoDisplayChannelProcessor.h"
#include "dsp/SummedChannelAccumulator.h"

namespace halvo {

class DisplayLineOutput;
class DisplayProcessingSet;
class GeneralSettings;
class SonarChannelMapIF;
class SonarMessage;

class HalvoDisplaysDataProcessor : public MessageObserver {
  public:
    static constexpr int kDisplays = 10;
    static constexpr int kSummedChannel0 = 50;
    static constexpr int kFirstQcChannel = 52;
    // Differing reports tolerated before a small change of sound speed is taken.
    static constexpr int kSoundSpeedPatience = 50;

    // sonars may be null: then no trace matches a sonar.
    HalvoDisplaysDataProcessor(DisplayProcessingSet& set, GeneralSettings& general,
                               DisplayLineOutput& output, const SonarChannelMapIF* sonars);

    void DeliverMessage(SonarMessage* message, int source, std::uint32_t extra) override;

    // Entry points, also called directly by tools.
    void OnTrace(SonarMessage& message);
    void OnSoundSpeed(const SonarMessage& message);
    // Runs the displays that show channel c on this trace.
    void ProcessAsChannel(SonarMessage& message, int c);

    // The reflection level of display 0, for the status lines.
    float LatestReflection() const { return reflection_.load(); }
    int SoundSpeedDifferences() const { return soundSpeedDifferences_; }
    HalvoDisplayChannelProcessor& Channel(int display) { return *channels_[display]; }

  private:
    const GeneralValues& General();

    DisplayProcessingSet& set_;
    GeneralSettings& general_;
    const SonarChannelMapIF* sonars_;
    std::array<SummedChannelAccumulator, 2> summed_{};
    std::array<std::unique_ptr<HalvoDisplayChannelProcessor>, kDisplays> channels_{};
    std::atomic<float> reflection_{0.0f};
    int soundSpeedDifferences_ = 0;
    GeneralValues generalCopy_;
    int generalCount_ = -1;
};

}  // namespace halvo

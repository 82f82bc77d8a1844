#pragma once
// One display's line procedure: the samples of one side of one ping become one half (dual) or
// all of a finished line. Runs on the bus thread only, on a private snapshot of its record; the
// shared record is locked only to write back what the procedure learns (sample rate, auto gain
// reference, tracked bottom).

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "display/DisplayProcessingConfig.h"
#include "display/SonarDataCacheElement.h"
#include "dsp/LineStages.h"

namespace halvo {

class DisplayProcessingSet;
class DisplayLineOutput;
struct GeneralValues;

class HalvoDisplayChannelProcessor {
  public:
    static constexpr int kHeaveRing = 500;

    // reflectionOut receives the reflection level of display 0 for the status lines; may be null.
    HalvoDisplayChannelProcessor(int displayIndex, DisplayProcessingSet& set,
                                 DisplayLineOutput& output, std::atomic<float>* reflectionOut);
    virtual ~HalvoDisplayChannelProcessor() = default;

    // Refreshes the snapshot of the record; the dispatcher reads `Channel` and `DualChannel`.
    const DisplayProcessingConfig& Refresh();
    const DisplayProcessingConfig& Config() const { return snap_; }

    // The line procedure for side 0 or 1. header is the 240-byte trace header (the interval may
    // be rewritten in it), samples the bytes behind it.
    void ProcessLine(int side, std::span<std::uint8_t> header,
                     std::span<const std::uint8_t> samples, const GeneralValues& general);

    // Finds the bottom in the float line and moves `TVGStart` to it; feeds the bottom average.
    virtual void TrackBottom(SonarDataCacheElement& element);

    // For inspection by tests and tools.
    int SmoothedBottom() const { return smoothed_; }
    float ReflectionState() const { return reflectionState_; }
    int SideMask() const { return sideMask_; }
    std::span<const float> FloatLine() const { return line_; }

  private:
    void AutoGain(int side, const TraceSamples& samples, int weighting);
    void DirectPath();
    bool HeaveShift(const ConstTraceHeaderView& h, int& d) const;
    void Reflection(SonarDataCacheElement& element, const TraceSamples& samples, int weighting);
    void Complete(int width, int n);
    int Samples(double userValue) const;

    int index_;
    DisplayProcessingSet& set_;
    DisplayLineOutput& output_;
    std::atomic<float>* reflectionOut_;
    const GeneralValues* general_ = nullptr;  // valid during ProcessLine

    std::unique_ptr<SonarDataCacheElement> element_;
    int sideMask_ = 0;
    DisplayProcessingConfig snap_;
    std::vector<float> line_;
    std::vector<std::uint8_t> raw_;
    std::vector<float> medianScratch_;  // working room of the median filter
    std::vector<float> directPath_;
    std::int64_t directPathSize_ = 0;  // the window's nominal length; the array may be shorter

    std::array<std::int32_t, kHeaveRing> ring_{};
    std::int64_t ringCount_ = 0;
    int ringWindow_ = 0;
    std::int64_t ringSum_ = 0;
    int smoothed_ = 0;

    float reflectionState_ = 0.0f;
    int side_ = 0;
    int autoGainMask_ = 0;
};

}  // namespace halvo

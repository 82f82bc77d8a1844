#pragma once
// One graph page's work at each timer pass, without a window: it takes the slots the bus has
// filled (and gives them back), removes the mean, and fills the time plot and the frequency plot
// (spectra, or the correlation of the two channels). The Qt page draws the two plot models; the
// file tool prints them.

#include <array>
#include <optional>

#include "display/PlotModel.h"
#include "dsp/graph/GraphCompute.h"
#include "dsp/graph/GraphSettings.h"

namespace halvo {

class GraphTaker;

class GraphSession {
  public:
    GraphSession() : time_(false), freq_(true) {}

    // True when a new trace was taken and the plots changed.
    bool Step(GraphTaker& taker, const GraphValues& values, const GraphUnits& units);

    PlotModel& Time() { return time_; }
    PlotModel& Frequency() { return freq_; }
    // The trace last taken in a slot, after mean removal; null before the first.
    const GraphTrace* Last(int slot) const;
    const std::optional<GraphCompute::Spectrum>& SpectrumOf(int slot) const {
        return spectra_[static_cast<std::size_t>(slot & 1)];
    }
    const std::optional<GraphCurve>& Correlation() const { return correlation_; }
    const GraphCurve& TimeCurve(int slot) const {
        return curves_[static_cast<std::size_t>(slot & 1)];
    }
    // The gate used for the last spectrum, in samples of the trace (from its start depth).
    std::pair<int, int> Gate() const { return gate_; }

    // "Save To" of slot 0 with the page's name and "Gated Only", over the time plot's visible
    // part. Nothing without data.
    GraphCompute::Saved Save(const GraphValues& values) const;

  private:
    void Redraw(const GraphValues& values, const GraphUnits& units);

    GraphCompute compute_;
    PlotModel time_;
    PlotModel freq_;
    std::array<std::optional<GraphTrace>, 2> traces_;
    std::array<GraphCurve, 2> curves_;
    std::array<std::optional<GraphCompute::Spectrum>, 2> spectra_;
    std::optional<GraphCurve> correlation_;
    std::pair<int, int> gate_{0, 0};
};

}  // namespace halvo

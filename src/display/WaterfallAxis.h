#pragma once
// The waterfall's vertical axis: the title over it, the units of one sample, labels for sample
// positions and the way back from a label to a sample, and the ruler's number format.

#include <cstdint>
#include <string>

namespace halvo {

struct DisplayProcessingConfig;
struct GeneralValues;

// Upper-case name of `UserUnits`: "METERS", "MILLISECONDS" or "SAMPLES".
const char* UserUnitName(std::int32_t userUnits);

class WaterfallAxis {
  public:
    // Returned by SampleOf for a label above the line and below it.
    static constexpr int kAboveLine = -1000000;
    static constexpr int kBelowLine = -100000;

    // The unit name and " D%d:C%d", or " D%d:C%d-%d" with the partner channel when dual.
    static std::string Title(int display, const DisplayProcessingConfig& config,
                             const GeneralValues& general);

    // Geometry in force: line length in samples, its start depth and whether it is dual.
    void SetGeometry(int lineLength, int startDepth, bool dual);
    // User units per sample; 0 leaves the rulers out together with an empty label.
    void SetScale(double scale) { scale_ = scale; }
    double Scale() const { return scale_; }

    // Label at a sample. Dual lines count away from the centre line on both sides.
    double LabelOf(int sample) const;
    // Sample of a label; on a dual line `left` picks the mirrored side. kAboveLine or kBelowLine
    // when it falls outside the line.
    int SampleOf(double label, bool left = false) const;

    // printf format for the ruler labels: "%-W.Pf" wide enough for every label of the line, or
    // "%-7.2e" when the labels are too large or too small for fixed point.
    std::string LabelFormat() const;
    std::string FormatLabel(double label) const;

  private:
    int lineLength_ = 0;
    int startDepth_ = 0;
    bool dual_ = false;
    double scale_ = 1.0;
};

}  // namespace halvo

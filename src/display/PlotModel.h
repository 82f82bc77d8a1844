#pragma once
// What a plot window shows, decided without a window: up to two curves over one x range, the y
// range (fixed, or found by auto scale), the option word of its options dialog, and the
// statistics of the visible part of the first curve with their caption texts. The Qt window only
// draws the points and texts this gives it.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

// The options dialog's switches, one bit each, in the order the dialog lists them.
enum PlotOption : std::uint32_t {
    kPlotAutoScale = 1u << 0,
    kPlotDbScale = 1u << 1,
    kPlotCursor = 1u << 2,
    kPlotMean = 1u << 3,
    kPlotStdDev = 1u << 4,
    kPlotXMinMax = 1u << 5,
    kPlotHorizontalMarkers = 1u << 6,
    kPlotRms = 1u << 7,
    kPlotSampleSize = 1u << 8,
    kPlotPsd = 1u << 9,
    kPlotMaxVal = 1u << 10,
    kPlotFftShift = 1u << 11,
    kPlotTimeConstantPings = 1u << 12,
};

// A plot's stored state: its option word, zoom, y range and visible x fractions. Kept as one line
// of text under the page's `PlotTime` and `PlotFreq` keys.
struct PlotState {
    std::uint32_t options = kPlotAutoScale;
    float xZoom = 1.0f;
    float yMin = 0.0f;
    float yMax = 1.0f;
    double xFracFirst = 0.0;  // visible part of the x range, 0 to 1
    double xFracLast = 1.0;

    std::string ToText() const;
    // Missing or bad items keep their defaults; the fractions are held to 0..1 and ordered.
    static PlotState FromText(const std::string& text);
    friend bool operator==(const PlotState&, const PlotState&) = default;
};

struct PlotStatistics {
    int n = 0;
    double sum = 0.0;
    double sumSquares = 0.0;
    double max = 0.0;
};

// The statistics captions' numbers: AVG, RMS (on a frequency plot scaled by the x span and the
// spectral scale), SDEV, N, PSD and MAX.
struct PlotFigures {
    int n = 0;
    double avg = 0.0;
    double rms = 0.0;
    double sdev = 0.0;
    double psd = 0.0;
    double max = 0.0;
};

class PlotModel {
  public:
    static constexpr int kMaxCurves = 2;
    static constexpr std::size_t kCaptionLimit = 200;

    explicit PlotModel(bool frequencyPlot = false) : frequency_(frequencyPlot) {}

    void SetCurves(int count);
    int Curves() const { return curves_; }
    void SetXRange(double first, double last);
    void SetCurve(int index, std::vector<float> values);
    const std::vector<float>& Curve(int index) const;
    void SetSpectralScale(float scale) { spectralScale_ = scale; }
    // Drops every curve: a graph with no data draws nothing.
    void Clear();
    bool Empty() const;

    PlotState& State() { return state_; }
    const PlotState& State() const { return state_; }
    bool Frequency() const { return frequency_; }
    double XFirst() const { return xFirst_; }
    double XLast() const { return xLast_; }

    // The value a curve point is drawn at: 20 log10 under "DB Scale" (nothing for 0 or less).
    std::optional<double> Shown(float value) const;
    // "Rescale": the y range from the shown values of every curve.
    void Rescale();
    // "Expand Y": the range twice as wide about its middle.
    void ExpandY();

    // The visible part of the first curve, in double precision.
    PlotStatistics Statistics() const;
    // Nothing without a visible value.
    std::optional<PlotFigures> Figures() const;
    // The statistics the options ask for, then the cursor, within 200 characters.
    std::string Caption(std::optional<std::pair<double, double>> cursor = std::nullopt) const;
    // "Y = (%f .. %f)" and "X = %s".
    std::string RangeText() const;

    // Height in pixels of a value on a plot of this height (0 at the top); and the scale and
    // offset that map a value to a height from the bottom, for a hook that draws a fit.
    double YPixel(double shown, int height) const;
    void Mapping(int height, float& scale, float& offset) const;
    // x pixel of point i of a curve of count points, over width pixels, within the visible part.
    double XPixel(int i, int count, int width) const;
    // The x value at a pixel, and the point index under it (-1 outside the curve).
    double XAt(int pixel, int width) const;
    int IndexAt(int pixel, int width, int count) const;

  private:
    bool frequency_;
    int curves_ = 1;
    std::vector<float> data_[kMaxCurves];
    double xFirst_ = 0.0;
    double xLast_ = 1.0;
    float spectralScale_ = 1.0f;
    PlotState state_;
};

}  // namespace halvo

#pragma once
// What the graph page computes from a taken trace, without a window: the time curve of each plot
// type, the spectrum of a gate with its window and scaling, the cross-correlation of two
// channels, mean removal, and the numbered trace files of "Save To". The page and
// `halvo-hsf graph` both call this, so the numbers a recording gives on the command line are the
// ones the page draws.

#include <complex>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

class DSPLibIF;
struct GraphSlot;

// A copy of one slot, taken by the page while the slot's counters differ.
struct GraphTrace {
    std::vector<float> values;
    int format = 0;
    std::uint32_t interval = 0;
    int startDepth = 0;
    int adcGain = 0;
    float scale = 1.0f;
    std::uint32_t ping = 0;

    static GraphTrace From(const GraphSlot& slot);
    bool Complex() const { return format == 1; }
    // Samples: half the values for complex data.
    int Samples() const;
};

struct GraphCurve {
    std::vector<float> y;
    double xFirst = 0.0;
    double xLast = 0.0;
};

// How sample indices become the x axis: `UserUnits` 0 metres at `WaterSoundSpeed` (halved as an
// integer), 1 milliseconds, anything else the index itself.
struct GraphUnits {
    int userUnits = 2;
    int waterSoundSpeed = 1500;
    double FromIndex(double index, std::uint32_t intervalNs) const;
};

class GraphCompute {
  public:
    static constexpr int kMinLog2 = 9;
    static constexpr int kMaxLog2 = 15;
    enum TimeType { Envelope, Real, Imag, Angle, Phase0, Phase90, RelativeAngle };
    enum WindowKind { NoWindow, Hann, Hamming, Blackman };

    GraphCompute();
    ~GraphCompute();

    // Subtracts the mean in place: real and imaginary parts separately for complex data.
    static void RemoveMean(GraphTrace& trace);

    // The time curve of one slot. The reference of the relative types is the sample at the
    // middle of the plot's visible x fractions, and only slot 0 uses it.
    static GraphCurve TimeCurve(const GraphTrace& trace, int type, int slot, double xFracFirst,
                                double xFracLast, const GraphUnits& units);

    struct Spectrum {
        GraphCurve curve;
        float spectralScale = 1.0f;
        int length = 0;  // transform length L
    };
    // The gate is in samples from the trace's start, `Start Depth` taken off when above 0.
    Spectrum SpectrumOf(const GraphTrace& trace, int gateFirst, int gateLast, bool norm,
                        int window);

    // Nothing unless both traces hold the same number of values.
    std::optional<GraphCurve> CrossCorrelation(const GraphTrace& a, const GraphTrace& b,
                                               int gateFirst, int gateLast, bool norm,
                                               const GraphUnits& units);

    // The transform length for a gate span: the smallest power of two above it, 2^9 to 2^15.
    static int TransformLength(int span);

    struct Saved {
        bool written = false;
        std::string file;      // the file written (or tried)
        std::string saveFile;  // the name for the page's field afterwards
    };
    // "Save To": a name with a dot is used as it stands, otherwise the first free "%s%03d.dat"
    // (trailing digits of the name stripped). The visible fractions a, b pick the gated part.
    static Saved Save(const GraphTrace& trace, const std::string& name, bool gatedOnly, double a,
                      double b);

  private:
    // Steps shared by the spectrum and the correlation: the gate copied into work_ with the gain.
    int FillGate(const GraphTrace& trace, int gateFirst, int gateLast, bool norm, float& scale,
                 int& length);
    DSPLibIF& Dsp();

    std::unique_ptr<DSPLibIF> dsp_;
    std::vector<std::complex<float>> work_;
    std::vector<std::complex<float>> work2_;
};

}  // namespace halvo

#pragma once
// Turns one channel of one ping into a trace message in the chosen form (80, 82, 84, 85) and
// packing code, with the header a sonar would fill in.

#include <cstdint>
#include <vector>

#include "core/SonarMessage.h"
#include "core/TimeValue.h"
#include "halvo-sim/SimScene.h"
#include "halvo-sim/SimSonarState.h"

namespace halvo {

// What the builder chose for a trace: enough for a test to know what to expect after
// normalisation.
struct SimTraceInfo {
    int format = 0;  // data format of the header (low byte of the format word)
    int code = 0;    // packing code
    std::int64_t startSample = 0;
    std::size_t samples = 0;
    int valuesPerSample = 1;
    std::int32_t intervalNs = 0;
    int weighting = 0;  // Weighting Factor: values carry 2^weighting on top of the signal
    int gainCode = 0;   // n, with ADC Gain = 2^(n/16) rounded
    int adcGain = 1;
    int adcMax = 0;
    int exponent = 0;  // block exponent of the float codes
};

// The block exponent a float packing code is sent with: the largest that lets a full-scale
// value fit the layout's field at its largest shift (layout A even needs -1 when signed).
int SimFloatExponent(int code);
// No trace payload grows beyond this, so every message stays under the topside's block limit.
constexpr std::size_t kSimMaxTracePayload = 1900000;

class SimTraceBuilder {
  public:
    SimTraceBuilder(const SimScene& scene, int form, int packing);

    // The values as they go into the packer: 16-bit counts for codes 0 to 6, the same scaled
    // by 2^SimFloatExponent(code) for codes 7 to 12. Valid until the next call.
    const std::vector<std::int32_t>& Values(const SimSubsystem& s, int channel,
                                            const SimPingPlace& place, SimTraceInfo& info);

    // The whole message. `now` dates the header; `mark` goes into Mark Number.
    SonarMessage Build(const SimSubsystem& s, int channel, const SimPingPlace& place, TimeValue now,
                       int mark);

    int form() const { return form_; }
    int packing() const { return packing_; }

  private:
    void FillTraceHeader(std::span<std::uint8_t> h, const SimSubsystem& s, int channel,
                         const SimPingPlace& place, TimeValue now, int mark,
                         const SimTraceInfo& info) const;
    void FillSideScanHeader(std::span<std::uint8_t> h, const SimSubsystem& s, int channel,
                            const SimPingPlace& place, TimeValue now, int mark,
                            const SimTraceInfo& info) const;

    const SimScene& scene_;
    int form_;
    int packing_;
    std::vector<float> re_, im_;
    std::vector<std::int32_t> values_;
};

}  // namespace halvo

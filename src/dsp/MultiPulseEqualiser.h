#pragma once
// Evens out the levels of the pings of a multi-pulse sequence: with several pulses in the water,
// each ping phase has its own level, and a waterfall of them stripes. Per group and phase it
// keeps the energy of six equal segments over the last 15 pings, and scales each phase up toward
// the loudest phase by at most 1.3, interpolated between segment centres. The display chain does
// not call it; it is kept, and tested, for the chains that may.

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "core/TraceHeader.h"

namespace halvo {

class MultiPulseEqualiser {
  public:
    static constexpr int kGroups = 2;
    static constexpr int kMaxPulses = 4;
    static constexpr int kSegments = 6;
    static constexpr int kHistory = 15;
    static constexpr double kMaxCorrection = 1.3;
    static constexpr double kHeadroom = 1.31;

    // Writes the equalised samples into out and returns true; false (out untouched) unless the
    // trace is format 0 with 2 to 4 pulses (0 counts as 3) and at least one sample. A group
    // outside 0 and 1 counts as 0.
    bool Apply(const ConstTraceHeaderView& header, std::span<const std::uint8_t> samples, int group,
               std::vector<std::int16_t>& out);

  private:
    struct Segment {
        std::array<double, kHistory> ring{};  // in arrival order
        int count = 0;
        int next = 0;
        double Median() const;
        void Add(double energy);
    };
    using Phase = std::array<Segment, kSegments>;

    void Reset(int pulses, std::size_t samples);

    int pulses_ = 0;
    std::size_t samples_ = 0;
    std::array<std::array<Phase, kMaxPulses>, kGroups> history_{};
};

}  // namespace halvo

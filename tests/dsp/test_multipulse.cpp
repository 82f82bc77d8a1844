// The multi-pulse equaliser: which traces it takes, the levels it evens out, and its resets.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "ChainRig.h"
#include "dsp/MultiPulseEqualiser.h"

namespace halvo::test {
namespace {

SonarMessage PulseTrace(int format, int pulses, int ping, std::vector<std::int16_t> v) {
    TraceBuild b;
    b.format = format;
    b.ping = ping;
    SonarMessage m = MakeTrace(b, v);
    TraceHeaderView(m.Payload()).SetInt(TraceField::NumOfPulses, pulses);
    return m;
}

bool Equalise(MultiPulseEqualiser& eq, SonarMessage& m, std::vector<std::int16_t>& out) {
    const auto p = m.Payload();
    return eq.Apply(ConstTraceHeaderView(p), p.subspan(kTraceHeaderSize), 0, out);
}

TEST(MultiPulseEqualiser, TakesOnlyEnvelopesOfTwoToFourPulses) {
    struct {
        int format, pulses;
        bool applies;
    } cases[] = {{0, 2, true},  {0, 4, true},  {0, 0, true},
                 {0, 1, false}, {0, 5, false}, {2, 2, false}};
    for (const auto& c : cases) {
        MultiPulseEqualiser eq;
        std::vector<std::int16_t> out = {42};
        SonarMessage m = PulseTrace(c.format, c.pulses, 1, std::vector<std::int16_t>(12, 100));
        EXPECT_EQ(Equalise(eq, m, out), c.applies) << c.format << " " << c.pulses;
        EXPECT_EQ(out.size(), c.applies ? 12u : 1u);
    }
    MultiPulseEqualiser eq;
    std::vector<std::int16_t> out;
    SonarMessage empty = PulseTrace(0, 2, 1, {});
    EXPECT_FALSE(Equalise(eq, empty, out));
}

TEST(MultiPulseEqualiser, LiftsTheQuietPhaseTowardTheLoudOne) {
    MultiPulseEqualiser eq;
    std::vector<std::int16_t> out;
    // Phase 0 at 1000, phase 1 at 900 (needs 1.111) and, later, at 500 (needs 2, held at 1.3).
    SonarMessage loud = PulseTrace(0, 2, 0, std::vector<std::int16_t>(60, 1000));
    SonarMessage quiet = PulseTrace(0, 2, 1, std::vector<std::int16_t>(60, 900));
    ASSERT_TRUE(Equalise(eq, loud, out));
    EXPECT_EQ(out[0], static_cast<std::int16_t>(1000 / 1.31));
    ASSERT_TRUE(Equalise(eq, quiet, out));
    EXPECT_EQ(out[30], static_cast<std::int16_t>(900 * (1000.0 / 900.0) / 1.31));
    MultiPulseEqualiser eq2;
    SonarMessage faint = PulseTrace(0, 2, 1, std::vector<std::int16_t>(60, 500));
    Equalise(eq2, loud, out);
    Equalise(eq2, faint, out);
    EXPECT_EQ(out[59], static_cast<std::int16_t>(500 * 1.3 / 1.31));
}

TEST(MultiPulseEqualiser, InterpolatesBetweenSegmentCentres) {
    MultiPulseEqualiser eq;
    std::vector<std::int16_t> out;
    std::vector<std::int16_t> half(60, 1000);
    for (int i = 0; i < 30; ++i) half[static_cast<std::size_t>(i)] = 909;  // 1.1 below
    SonarMessage loud = PulseTrace(0, 2, 0, std::vector<std::int16_t>(60, 1000));
    SonarMessage mixed = PulseTrace(0, 2, 1, half);
    Equalise(eq, loud, out);
    Equalise(eq, mixed, out);
    // Segments of 10 samples have centres at 5, 15, 25 (1.1) and 35 (1.0); the middle of sample
    // 29, at 29.5, lies 0.45 of the way from 25 to 35.
    const double c = std::sqrt(1000.0 * 1000.0 / (909.0 * 909.0));
    EXPECT_EQ(out[20], static_cast<std::int16_t>(909 * c / 1.31));
    EXPECT_EQ(out[29], static_cast<std::int16_t>(909 * (c + (1.0 - c) * 0.45) / 1.31));
    EXPECT_EQ(out[40], static_cast<std::int16_t>(1000 / 1.31));
}

TEST(MultiPulseEqualiser, ChangeOfPulsesOrLengthForgets) {
    MultiPulseEqualiser eq;
    std::vector<std::int16_t> out;
    SonarMessage loud = PulseTrace(0, 2, 0, std::vector<std::int16_t>(60, 1000));
    SonarMessage quiet = PulseTrace(0, 3, 1, std::vector<std::int16_t>(60, 900));
    Equalise(eq, loud, out);
    Equalise(eq, quiet, out);  // three pulses now: the loud phase of two is forgotten
    EXPECT_EQ(out[0], static_cast<std::int16_t>(900 / 1.31));
    SonarMessage shorter = PulseTrace(0, 3, 0, std::vector<std::int16_t>(30, 2000));
    Equalise(eq, shorter, out);
    Equalise(eq, quiet, out);
    EXPECT_EQ(out[0], static_cast<std::int16_t>(900 / 1.31));
}

}  // namespace
}  // namespace halvo::test

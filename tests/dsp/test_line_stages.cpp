// Hand-computed lines for each stage of the display line.

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <vector>

#include "core/ByteOrder.h"
#include "dsp/LineStages.h"

namespace halvo {
namespace {

std::vector<std::uint8_t> Int16Bytes(const std::vector<int>& v) {
    std::vector<std::uint8_t> b(v.size() * 2);
    for (std::size_t i = 0; i < v.size(); ++i) {
        StoreLE<std::int16_t>(b.data() + 2 * i, static_cast<std::int16_t>(v[i]));
    }
    return b;
}

TEST(LineStages, ScaleAndGainTruncatesAndClamps) {
    const std::tuple<const char*, int, std::vector<int>, ScaleParams, float, int> cases[] = {
        {"full scale gives 255", 0, {32767}, {}, 255.0f, 255},
        {"weighting 1 halves: 127.5 truncates", 0, {32767}, {1, 0, 0, false}, 127.5f, 127},
        {"254.9 truncates, never rounds", 0, {32754}, {}, 32754.0f * (255.0f / 32767.0f), 254},
        {"format 0 reads signed: 0x8001 is negative", 0, {-32767}, {}, -255.0f, 0},
        {"complex magnitude 3,4 is 5", 1, {3 * 4000, 4 * 4000}, {}, 20000.0f * 255 / 32767, 155},
        {"gain 20 dB scales the line, not the raw copy", 2, {3276}, {0, 20, 0, false}, 254.96f, 25},
        {"raw after gain clamps at 255", 2, {3276}, {0, 20, 0, true}, 254.96f, 254},
        {"RefGain0 6.0206 dB doubles", 2, {16380}, {0, 0, 6.0206f, false}, 254.945f, 254},
    };
    for (const auto& [what, format, values, params, line0, raw0] : cases) {
        const auto bytes = Int16Bytes(values);
        std::vector<float> line(1);
        std::vector<std::uint8_t> raw(1);
        ScaleAndGain(TraceSamples::Of(bytes, format), params, line, raw);
        EXPECT_NEAR(line[0], line0, 0.02f) << what;
        EXPECT_EQ(raw[0], raw0) << what;
    }
}

TEST(LineStages, ScaleGivesDisplayGainAndSilenceBehindShortTraces) {
    const auto bytes = Int16Bytes({100});
    std::vector<float> line(3, 7.0f);
    std::vector<std::uint8_t> raw(3, 7);
    const float g = ScaleAndGain(TraceSamples::Of(bytes, 0), {0, 20, 0, false}, line, raw);
    EXPECT_NEAR(g, 255.0f * 10.0f / 32767.0f, 1e-6f);
    EXPECT_EQ(line[1], 0.0f);
    EXPECT_EQ(line[2], 0.0f);
    EXPECT_EQ(raw[2], 0);
}

TEST(LineStages, SampleCountFollowsFormatAndLimits) {
    const std::vector<std::uint8_t> none;
    const std::tuple<int, std::size_t, int> cases[] = {
        {0, 100, 50}, {1, 100, 25}, {7, 100, 12},        {10, 100, 25},
        {2, 0, 1},    {0, 1, 1},    {0, 2000000, 500000}};
    for (const auto& [format, bytes, count] : cases) {
        EXPECT_EQ(LineSampleCount(TraceSamples::Of(none, format), bytes), count)
            << format << " " << bytes;
    }
}

TEST(LineStages, DCFilterSubtractsOddMeanWithHeadAndTail) {
    // k 3: half 1; means over original samples 0..2, 1..3, ... for i 1 to N-3.
    const std::vector<float> in = {0, 0, 9, 0, 0, 0, 0, 0};
    const std::vector<float> want = {-3, -3, 6, -3, 0, 0, 0, 0};
    for (int k : {0, 1, 2, 3}) {  // 2 acts as 3, below is off
        std::vector<float> x = in;
        ApplyDCFilter(x, k);
        EXPECT_EQ(x, k < 2 ? in : want) << "k " << k;
    }
    // k is held to N - 3 = 5: half 2, rows 2..3 use the five-sample mean.
    std::vector<float> x = {0, 0, 10, 0, 0, 5, 0, 0};
    ApplyDCFilter(x, 300);
    const std::vector<float> held = {8, 8, 8, -3, -3, -3, -3, -3};
    EXPECT_EQ(x, held);
}

TEST(LineStages, MedianFilterRunsSortedWindowWithHeadAndTail) {
    const std::vector<float> in = {5, 1, 4, 2, 3, 9, 0, 7};
    const std::vector<float> want = {4, 4, 2, 3, 3, 3, 3, 3};
    for (int m : {1, 2, 3, 6}) {  // 2 acts as 3; 6 exceeds N - 3
        std::vector<float> x = in;
        ApplyMedianFilter(x, m);
        EXPECT_EQ(x, m == 2 || m == 3 ? want : in) << "m " << m;
    }
    // 128 acts as 127.
    std::vector<float> a(400), b(400);
    for (std::size_t i = 0; i < a.size(); ++i) a[i] = b[i] = static_cast<float>((i * 7919) % 251);
    ApplyMedianFilter(a, 128);
    ApplyMedianFilter(b, 127);
    EXPECT_EQ(a, b);
    EXPECT_NE(a[200], static_cast<float>((200 * 7919) % 251));
}

TEST(LineStages, MedianLanesAgreeWithTheSortedWindow) {
    // Short windows go through the lane network when given working room; every odd length, line
    // lengths that leave every possible tail, ties and infinities must give the same line.
    std::vector<float> scratch;
    std::uint32_t seed = 7;
    for (int n : {5, 8, 19, 40, 41, 47, 200}) {
        std::vector<float> in(static_cast<std::size_t>(n));
        for (float& v : in) {
            seed = seed * 1664525u + 1013904223u;
            v = static_cast<float>((seed >> 20) % 9) - 4.0f;
        }
        in[static_cast<std::size_t>(n / 2)] = INFINITY;
        in[static_cast<std::size_t>(n / 3)] = -INFINITY;
        for (int m = 2; m <= 17; ++m) {
            std::vector<float> a = in, b = in;
            ApplyMedianFilter(a, m);
            ApplyMedianFilter(b, m, &scratch);
            EXPECT_EQ(a, b) << "n " << n << " m " << m;
        }
    }
}

TEST(LineStages, TvgGrowsAfterStartUntilLimitThenHolds) {
    const TvgParams p{
        .r = 2.0f, .step = float(20.0 * std::log10(2.0)), .limit = 12.0f, .start = 1.5f};
    const std::vector<float> x(6, 10.0f);
    std::vector<std::uint8_t> d(8, 99);
    ApplyTvg(x, d, p);
    // i 2 is the first past the start; 12 dB allows two doublings.
    EXPECT_EQ(d, (std::vector<std::uint8_t>{10, 10, 10, 20, 40, 40, 0, 0}));

    const TvgParams flat = TvgRatio(0, 1500, 25000.0f);
    EXPECT_EQ(flat.r, 1.0f);
    EXPECT_EQ(flat.step, 0.0f);
}

TEST(LineStages, TvgBytesClampTruncateAndWrap) {
    const std::tuple<float, bool, int> cases[] = {
        {255.9f, false, 255}, {300.0f, false, 255}, {254.9f, false, 254}, {-20.5f, false, 20},
        {-20.5f, true, 0},    {-300.0f, false, 44}, {-3.0e9f, false, 0},  {NAN, false, 0}};
    TvgParams p;
    for (const auto& [v, clamp, byte] : cases) {
        p.clampAtZero = clamp;
        const std::vector<float> x = {v};
        std::vector<std::uint8_t> d(1);
        ApplyTvg(x, d, p);
        EXPECT_EQ(d[0], byte) << v << " clamp " << clamp;
    }
}

TEST(LineStages, ShiftLineMovesWholeSamplesAndLeavesWidthAlone) {
    const std::vector<std::uint8_t> in = {1, 2, 3, 4, 5};
    const std::tuple<int, std::vector<std::uint8_t>> cases[] = {
        {-2, {0, 0, 1, 2, 3}}, {2, {3, 4, 5, 0, 0}}, {0, in}, {5, in}, {-5, in}, {INT32_MIN, in}};
    for (const auto& [d, want] : cases) {
        std::vector<std::uint8_t> x = in;
        ShiftLine(x, d);
        EXPECT_EQ(x, want) << d;
    }
}

TEST(LineStages, DirectPathAveragesOverTracesAndFreezes) {
    // Alpha 0.5 over samples 1 to 2; a frozen average is used but not updated.
    const std::tuple<bool, std::vector<float>, std::vector<float>> steps[] = {
        {false, {1, 2, 4, 1}, {2, 4}}, {false, {1, 1, 2, 1}, {3, 6}}, {true, {1, 1, 2, 1}, {3, 6}}};
    std::vector<float> avg(2, 0.0f);
    for (const auto& [freeze, line, average] : steps) {
        std::vector<float> x = {1, 4, 8, 1};
        SubtractDirectPath(x, avg, 1, 3, freeze);
        EXPECT_EQ(x, line);
        EXPECT_EQ(avg, average);
    }
    std::vector<float> x = {1, 4, 8, 1};
    // A window running past the trace stops at its end.
    std::vector<float> wide(10, 0.0f);
    SubtractDirectPath(x, wide, 3, 1, false);
    EXPECT_EQ(x[3], 0.0f);
}

TEST(LineStages, ReflectionPeakFollowsTheEcho) {
    const auto real = Int16Bytes({0, 10, -20, 30, 25, 40});
    EXPECT_EQ(ReflectionPeak(TraceSamples::Of(real, 2), 1, 6, 25000.0f), 30.0f);
    EXPECT_EQ(ReflectionPeak(TraceSamples::Of(real, 2), 6, 6, 25000.0f), 0.0f);
    // Complex: the search stops below a tenth of the peak, or after 10 ms (here 2 samples).
    const auto cplx = Int16Bytes({0, 0, 30, 40, 2, 0, 300, 400});
    EXPECT_EQ(ReflectionPeak(TraceSamples::Of(cplx, 1), 1, 4, 25000.0f), 50.0f);
    EXPECT_EQ(ReflectionPeak(TraceSamples::Of(cplx, 1), 1, 4, 200.0f), 50.0f);
    EXPECT_EQ(ReflectionPeak(TraceSamples::Of(cplx, 1), 2, 4, 200.0f), 500.0f);
}

}  // namespace
}  // namespace halvo

// Known-good vectors: fixed traces through the whole chain with every stage on, compared with
// the lines stored in vectors/display_chain.txt.
//
// How the stored file was made and checked: written once by this test with
// HALVO_UPDATE_VECTORS=1, after the stage tests (hand-computed lines) passed, and reviewed by
// hand before it was committed: the dual line carries 255 0 | 0 255 at its centre, the RAW
// display's raw line is zero wherever its samples are negative (ClampAtZero 1), the tracked
// bottom settles on the echo at sample 300 and moves to 310 when the echo does, the heave of
// the smoothed bottom shifts ping 4's line left by 7 (310 against the mean 303 of 300, 300 and
// 310), so its echo starts at 296 as the pings before started at 293 (the DC filter's half
// width ahead of the echo), and the reflection level climbs toward 20 log10 of the echo peak
// with the 0.37 filter. Bytes may differ by one where the math
// library rounds pow or log10 differently; nothing else may change.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "ChainRig.h"

namespace halvo::test {
namespace {

constexpr int kSamples = 512;

// A deterministic ping: noise, a direct arrival, and a bottom echo at `bottom` that decays.
std::vector<std::int16_t> Ping(int ping, int bottom, bool complex, bool signedWave) {
    std::uint32_t seed = 99u + static_cast<std::uint32_t>(ping) * 7u;
    auto noise = [&seed] {
        seed = seed * 1664525u + 1013904223u;
        return static_cast<int>((seed >> 16) % 301) - 150;
    };
    std::vector<std::int16_t> v;
    for (int i = 0; i < kSamples; ++i) {
        double a = noise();
        if (i >= 10 && i < 30) a += 9000;
        if (i >= bottom) a += 24000 * std::exp(-(i - bottom) / 60.0);
        if (complex) {
            v.push_back(static_cast<std::int16_t>(a * std::cos(0.7 * i)));
            v.push_back(static_cast<std::int16_t>(a * std::sin(0.7 * i)));
        } else {
            v.push_back(
                static_cast<std::int16_t>(signedWave ? a * std::cos(0.9 * i) : std::fabs(a)));
        }
    }
    return v;
}

std::string Hex(const std::vector<std::uint8_t>& b) {
    static const char digits[] = "0123456789abcdef";
    std::string s;
    for (std::uint8_t x : b) s += {digits[x >> 4], digits[x & 15]};
    return s;
}

std::string Describe(const SonarDataCacheElement& e) {
    char head[200];
    std::snprintf(head, sizeof head, "%d %d %d %d %d %d %.4f %.6g", e.displayIndex,
                  e.Header().GetInt(TraceField::PingNumber), e.size, e.dualChannel, e.bottomSample,
                  e.heaveSamples, e.reflection, e.gain);
    return std::string(head) + " " + Hex(e.pixels) + " " + Hex(e.rawPixels);
}

std::vector<std::string> RunChain() {
    ChainRig rig;
    // Display 0: envelope, every stage on, heave from the smoothed bottom.
    rig.Configure(0, 0, [](DisplayProcessingConfig& r) {
        r.Gain = 6, r.TVG = 3000, r.TVGLimit = 20, r.TVGStart = 290, r.TrackRange = 40,
        r.TrackThreshold = 40, r.Holdoff = 100, r.HeaveSource = 1, r.HeaveTimeConst = 3,
        r.DCFilter = 15, r.MedianFilter = 5, r.DirectPathEnable = 1, r.DirectPath0 = 5,
        r.DirectPathn = 40, r.DirectPathTraces = 4, r.RCTimeConst = 2, r.ReflectionCoefDBGain = 3;
    });
    // Display 1: analytic pair side by side, with the side gain and header heave.
    rig.Configure(1, 2, [](DisplayProcessingConfig& r) {
        r.DualChannel = 1, r.SSGain = 6, r.RefGain0 = 6, r.HeaveSource = 2, r.MedianFilter = 3;
    });
    // Display 2: RAW, negative half-cycles at zero, falling TVG.
    rig.Configure(2, 4, [](DisplayProcessingConfig& r) {
        r.ClampAtZero = 1, r.DCFilter = 9, r.TVG = -200, r.TVGStart = 100, r.TrackEnabled = 0;
    });
    std::vector<std::string> out;
    auto send = [&](const TraceBuild& b, const std::vector<std::int16_t>& v) {
        for (const auto& e : rig.Send(b, v)) out.push_back(Describe(*e));
    };
    for (int ping = 1; ping <= 6; ++ping) {
        const int bottom = ping <= 3 ? 300 : 310, heave = ping - 3;
        send({.ping = ping, .heave = heave}, Ping(ping, bottom, false, false));
        send({.format = 1, .ping = ping, .channel = 2, .heave = heave},
             Ping(ping, bottom, true, false));
        send({.format = 1, .ping = ping, .channel = 3, .heave = heave},
             Ping(ping + 50, bottom + 20, true, false));
        send({.format = 2, .ping = ping, .channel = 4, .heave = heave},
             Ping(ping, bottom, false, true));
    }
    return out;
}

// A stored line: display, ping, size, dual, bottom and heave; reflection and gain; both lines.
struct Fields {
    std::array<int, 6> ints;
    double reflection, gain;
    std::string hex[2];
};

Fields Parse(const std::string& line) {
    std::istringstream in(line);
    Fields f;
    for (int& x : f.ints) in >> x;
    in >> f.reflection >> f.gain >> f.hex[0] >> f.hex[1];
    return f;
}

TEST(ChainVectors, MatchTheStoredLines) {
    const std::string path = std::string(HALVO_SOURCE_DIR) + "/tests/dsp/vectors/display_chain.txt";
    const std::vector<std::string> got = RunChain();
    ASSERT_EQ(got.size(), 18u);
    if (std::getenv("HALVO_UPDATE_VECTORS")) {
        std::ofstream f(path);
        for (const auto& l : got) f << l << "\n";
        GTEST_SKIP() << "wrote " << path;
    }
    std::ifstream f(path);
    ASSERT_TRUE(f) << path;
    std::vector<std::string> want;
    for (std::string l; std::getline(f, l);) want.push_back(l);
    ASSERT_EQ(want.size(), got.size());
    for (std::size_t i = 0; i < got.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "line " << i);
        const Fields a = Parse(got[i]), b = Parse(want[i]);
        EXPECT_EQ(a.ints, b.ints);
        EXPECT_NEAR(a.reflection, b.reflection, 1e-3);
        EXPECT_NEAR(a.gain, b.gain, 1e-5 * std::fabs(b.gain));
        for (int k = 0; k < 2; ++k) {
            ASSERT_EQ(a.hex[k].size(), b.hex[k].size());
            for (std::size_t j = 0; j + 1 < a.hex[k].size(); j += 2) {
                const long x = std::strtol(a.hex[k].substr(j, 2).c_str(), nullptr, 16);
                const long y = std::strtol(b.hex[k].substr(j, 2).c_str(), nullptr, 16);
                ASSERT_LE(std::labs(x - y), 1) << (k ? "raw" : "pixels") << " byte " << j / 2;
            }
        }
    }
}

}  // namespace
}  // namespace halvo::test

// Palette files and the scope's computations: interpolation, every rule that ends a load, the
// scope's sound speed fallback, its trace and markers, readout and drags.

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "app/TempWorkDir.h"
#include "display/DisplayUnits.h"
#include "display/Palette.h"
#include "display/ScopeDrag.h"
#include "display/ScopeTrace.h"
#include "display/WaterfallRig.h"

namespace halvo {
namespace {

PaletteColour Rgb(int r, int g, int b) {
    return PaletteColour{static_cast<std::uint8_t>(b), static_cast<std::uint8_t>(g),
                         static_cast<std::uint8_t>(r), 0};
}

// The default ramp's tinted bottom end and grey middle are checked after the loads below.
TEST(Palette, DefaultRampHasTintedEnds) {
    const Palette p;
    EXPECT_EQ(p[255], Rgb(255, 255, 200));
    EXPECT_EQ(ColourOfSetting(255), Rgb(255, 0, 0));
    EXPECT_EQ(ColourOfSetting(65280), Rgb(0, 255, 0));
}

TEST(Palette, FilesInterpolateAndStopAtTheFirstBadLine) {
    const Palette def;
    const auto done = Palette::Load::Complete, stop = Palette::Load::Stopped;
    const struct {
        const char* text;
        Palette::Load result;
        std::vector<std::pair<int, PaletteColour>> entries;
    } cases[] = {
        {"0 0 0 0\n255 255 0 0\n", done, {{128, Rgb(128, 0, 0)}, {255, Rgb(255, 0, 0)}}},
        // One line ramps up from black below entry 0.
        {"255 255 255 255\n",
         done,
         {{0, Rgb(0, 0, 0)}, {127, Rgb(127, 127, 127)}, {255, Rgb(255, 255, 255)}}},
        // 256 ends the load: the entries before stay, from it onward the default.
        {"0 10 20 30\n100 256 0 0\n200 0 0 0\n", stop, {{0, Rgb(10, 20, 30)}, {100, def[100]}}},
        {"0 10 20 30\n100 -1 0 0\n", stop, {{50, def[50]}}},
        {"0 10 20 30\n100 1 2\n", stop, {{100, def[100]}}},
        {"0 10 20 30\nred 1 2 3\n", stop, {{1, def[1]}}},
        // A lower index writes nothing but becomes the start of the next ramp.
        {"10 100 100 100\n5 0 0 0\n20 0 0 0\n", done, {{3, Rgb(36, 36, 36)}, {10, Rgb(0, 0, 0)}}},
        {"99999999999999999999 0 0 0\n", stop, {{0, def[0]}}},
        {"", done, {{7, def[7]}}},
    };
    for (const auto& c : cases) {
        Palette p;
        EXPECT_EQ(p.LoadText(c.text), c.result) << c.text;
        for (const auto& [entry, colour] : c.entries)
            EXPECT_EQ(p[entry], colour) << c.text << " entry " << entry;
    }
}

class PaletteFile : public test::TempWorkDir {};

TEST_F(PaletteFile, NameWithOrWithoutExtensionAndMissingFiles) {
    std::ofstream("red.hsp") << "0 0 0 0\n255 255 0 0\n";
    Palette p;
    EXPECT_EQ(p.LoadFile("red"), Palette::Load::Complete);
    EXPECT_EQ(p[64], Rgb(64, 0, 0));
    EXPECT_EQ(p.LoadFile("red.hsp"), Palette::Load::Complete);
    EXPECT_EQ(p.LoadFile("missing"), Palette::Load::NotFound);
    EXPECT_EQ(p[64], Rgb(64, 64, 64));  // a failed load leaves the default ramp
    p.LoadFile("red");
    EXPECT_EQ(p.LoadFile(""), Palette::Load::Default);
    EXPECT_EQ(p[0], Rgb(0, 0, 100));
}

struct ScopeRig {
    ScopeRig() {
        cfg.sampleRate = 25000;
        line.startDepth = 10;
    }
    DisplayProcessingConfig cfg;
    GeneralValues g;
    SonarDataCacheElement line = test::MakeLine(std::vector<std::uint8_t>(400, 51), 20000);
};

TEST(Scope, SoundSpeedOutsideItsRangeFallsBackOn1500) {
    ScopeRig r;
    r.cfg.MaxDepth = 50;
    for (int speed : {0, 500, 3001, -1500}) {
        r.g.WaterSoundSpeed = speed;
        EXPECT_EQ(ScopeOffset(r.line, r.cfg, r.g), 666 + 10) << speed;
    }
    r.g.WaterSoundSpeed = 1000;
    EXPECT_EQ(ScopeOffset(r.line, r.cfg, r.g), 1000 + 10);
    r.cfg.DualChannel = 1;
    EXPECT_EQ(ScopeOffset(r.line, r.cfg, r.g), 0);
}

TEST(Scope, TraceRowsAndMarkers) {
    ScopeRig r;
    r.line.pixels[2] = 255;
    const ScopeArea area{102, 0, 50};
    // Zoom 1: a point per sample, x scaled to the width.
    const ScopeTraceShape one = ScopeTrace::Shape(r.line, 0, 1.0, area);
    ASSERT_EQ(one.points.size(), 51u);
    EXPECT_EQ(one.points[2].x, 102);
    EXPECT_EQ(one.points[3].x, 20);
    EXPECT_EQ(one.points[50].y, 50);
    // Zoom 0.25: four samples a row; the span shows the row's extremes.
    const ScopeTraceShape quarter = ScopeTrace::Shape(r.line, 0, 0.25, area);
    ASSERT_FALSE(quarter.spans.empty());
    EXPECT_EQ(quarter.spans[0].y, 1);
    EXPECT_EQ(quarter.spans[0].x0, 20);
    EXPECT_EQ(quarter.spans[0].x1, 102);
    EXPECT_EQ(quarter.spans[1].x1, 21);  // a flat row is widened to show
    EXPECT_TRUE(ScopeTrace::Shape(r.line, 0, 0.0, area).spans.empty());

    r.cfg.TrackThreshold = 25;
    r.cfg.TVGStart = 3;        // 100 samples
    r.cfg.TrackRange = 0.15f;  // 5 samples
    ScopeMarkers m = ScopeTrace::Markers(r.line, r.cfg, r.g, 0, 2.0, 200);
    EXPECT_EQ(m.thresholdX, 50);
    EXPECT_EQ(m.tvgY, (100 - 10) * 2);
    EXPECT_EQ(m.rangeHalf, 10);
    r.line.dualChannel = 1;
    m = ScopeTrace::Markers(r.line, r.cfg, r.g, 0, 1.0, 200);
    EXPECT_EQ(m.tvgY, 200 - 100 + 10);
}

TEST(Scope, DragsSwitchTheTrackerOffSetTheWindowOrClick) {
    ScopeRig r;
    ScopeDrag drag;
    EXPECT_FALSE(drag.Release(0, 0, {0, 100}, 0, &r.line, r.cfg, r.g));
    drag.Press(10, 40);
    auto off = drag.Release(40, 45, {0, 100}, 0, &r.line, r.cfg, r.g);
    ASSERT_TRUE(off);
    EXPECT_EQ(off->kind, ScopeEdit::Kind::TrackerOff);
    EXPECT_FALSE(drag.Pressed());

    drag.Press(10, 40);
    auto range = drag.Release(10, 60, {0, 100}, 0, &r.line, r.cfg, r.g);
    ASSERT_TRUE(range);
    EXPECT_EQ(range->kind, ScopeEdit::Kind::TrackRange);
    EXPECT_FLOAT_EQ(range->trackRange, 10 * 1500.0f / 50000.0f);

    // A click sets the threshold from x and the TVG start from y, here at zoom 2 and scrolled.
    r.cfg.Zoom = 2;
    r.g.UserUnits = 2;
    drag.Press(25, 30);
    auto click = drag.Release(25, 30, {0, 100}, 40, &r.line, r.cfg, r.g);
    ASSERT_TRUE(click);
    EXPECT_EQ(click->kind, ScopeEdit::Kind::Click);
    EXPECT_FLOAT_EQ(click->trackThreshold, 25.0f);
    ASSERT_TRUE(click->tvgStart);
    EXPECT_FLOAT_EQ(*click->tvgStart, 35 + 10);
    // With `MaxDepth` the tow depth comes off, at 1500 m/s even with a speed of 0.
    r.cfg.MaxDepth = 100;
    r.g.WaterSoundSpeed = 0;
    drag.Press(25, 30);
    click = drag.Release(25, 30, {0, 100}, 1400, &r.line, r.cfg, r.g);
    EXPECT_FLOAT_EQ(*click->tvgStart, 715 - 666);
    click->ApplyTo(r.cfg);
    EXPECT_FLOAT_EQ(r.cfg.TVGStart, 49);
    off->ApplyTo(r.cfg);
    EXPECT_EQ(r.cfg.TrackThreshold, 0.0f);
}

TEST(Scope, ReadoutInDecibelsOrPlain) {
    ScopeRig r;
    r.line.gain = 2.56f;
    EXPECT_EQ(ScopeDrag::Readout(50, 20, 102, 0, 1.0, &r.line, r.cfg, r.g),
              "  0.9 METERS | 50.00% | N   30  Value   33.98 DB");
    TraceHeaderView(r.line.header).SetInt(TraceField::DataFormat, 2);
    EXPECT_EQ(ScopeDrag::Readout(50, 20, 102, 0, 1.0, &r.line, r.cfg, r.g),
              "  0.9 METERS | 50.00% | N   30  Value 50");
    EXPECT_EQ(ScopeDrag::Readout(50, 20, 102, 0, 1.0, nullptr, r.cfg, r.g),
              "  0.6 METERS | 50.00% | N   20  : Value NONE");
}

}  // namespace
}  // namespace halvo

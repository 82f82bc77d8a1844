// End to end: a generated data file drawn by `halvo-hsf render`, the PNG read back with the
// library a viewer would use, and its columns compared with the plot's own columns of the lines
// `halvo-hsf lines` reports.

#include <cairo.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "app/TempWorkDir.h"
#include "display/SonarDataCacheElement.h"
#include "display/WaterfallImage.h"
#include "display/WaterfallPlot.h"
#include "dsp/HsfTool.h"
#include "storage/HsfTestWriter.h"

namespace halvo {
namespace {

// Read through the library a viewer would use.
struct Png {
    std::uint32_t width = 0, height = 0;
    std::vector<std::uint8_t> rgb;
    bool Read(const std::string& path) {
        cairo_surface_t* s = cairo_image_surface_create_from_png(path.c_str());
        const bool ok = cairo_surface_status(s) == CAIRO_STATUS_SUCCESS;
        if (ok) {
            width = static_cast<std::uint32_t>(cairo_image_surface_get_width(s));
            height = static_cast<std::uint32_t>(cairo_image_surface_get_height(s));
            const int stride = cairo_image_surface_get_stride(s);
            const unsigned char* d = cairo_image_surface_get_data(s);
            for (std::uint32_t y = 0; y < height; ++y) {
                for (std::uint32_t x = 0; x < width; ++x) {
                    std::uint32_t v = 0;
                    std::memcpy(&v, d + y * stride + 4 * x, 4);
                    rgb.insert(rgb.end(),
                               {static_cast<std::uint8_t>(v >> 16),
                                static_cast<std::uint8_t>(v >> 8), static_cast<std::uint8_t>(v)});
                }
            }
        }
        cairo_surface_destroy(s);
        return ok;
    }
    std::uint32_t At(int x, int y) const {
        const std::uint8_t* p = rgb.data() + (std::size_t(y) * width + x) * 3;
        return (std::uint32_t{p[0]} << 16) | (std::uint32_t{p[1]} << 8) | p[2];
    }
};

// The render subcommand's exit status for display 0 of `file` with the test's settings; `out`
// is the picture's path and any options after it.
int Render(const std::string& file, const std::string& out) {
    return test::RunHsf("render " + file + " --settings view.Hni --display 0 --out " + out).status;
}

class RenderCommand : public test::TempWorkDir {};

TEST_F(RenderCommand, PictureColumnsAreThePlotsColumnsOfEachLine) {
    HsfTestWriter w;
    for (int ping = 1; ping <= 12; ++ping) {
        TraceSpec t;
        t.ping = ping;
        t.samples = 40;
        t.timeSince1970 = 1'700'000'000 + ping;
        w.Add(HsfTestWriter::MakeTrace(t));
    }
    ASSERT_TRUE(w.Save("line.hsf"));
    std::ofstream("view.Hni") << "[General]\nBottomTrackIndicatorOffset=0\nNoDataGreyLevel2=90\n"
                                 "[DisplayProcessing0]\nChannel=0\nGain=20\nZoom=2.7\n"
                                 "TraceZoomFactor=2\nPalInvert=1\n";
    ASSERT_EQ(Render("line.hsf", "wf.png --height 100"), 0);
    Png png;
    ASSERT_TRUE(png.Read("wf.png"));
    ASSERT_EQ(png.height, 100u);
    const test::ToolRun lines = test::RunHsf("lines line.hsf --settings view.Hni --display 0");
    ASSERT_EQ(lines.status, 0);
    std::vector<SonarDataCacheElement> made;
    for (const nlohmann::json& j : lines.lines) {
        SonarDataCacheElement e(j["size"].get<int>());
        e.pixels = test::FromBase64(j["pixels"].get<std::string>());
        e.startDepth = j["startDepth"];
        made.push_back(e);
    }
    ASSERT_EQ(png.width, made.size() * 2);

    DisplayProcessingConfig cfg;
    cfg.Zoom = 2.7;
    cfg.PalInvert = 1;
    GeneralValues g;
    g.NoDataGreyLevel2 = 90;
    const Palette palette;
    for (std::size_t i : {std::size_t{0}, made.size() / 2, made.size() - 1}) {
        std::vector<std::uint8_t> col(100);
        RenderWaterfallColumn(&made[i], {&cfg, &g, NormaliseZoom(cfg.Zoom), 0, 100, 0},
                              {col.data(), 1});
        for (int r = 0; r < 2; ++r) {
            for (int y = 0; y < 100; ++y) {
                ASSERT_EQ(png.At(static_cast<int>(2 * i) + r, y), palette[col[y]].Rgb())
                    << "line " << i << " row " << y;
            }
        }
    }
    // Zoom 2: the first 40 samples fill 80 rows, the rest is the no-data level.
    EXPECT_EQ(png.At(0, 99), palette[90].Rgb());
    // A missing file and an unwritable picture are errors.
    EXPECT_NE(Render("none.hsf", "x.png"), 0);
    EXPECT_EQ(Render("line.hsf", "no/such/dir.png"), 1);
    EXPECT_FALSE(std::filesystem::exists("no/such/dir.png"));
}

}  // namespace
}  // namespace halvo

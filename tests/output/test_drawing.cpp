// Drawing without a window and the PNG files it makes, read back through the library a viewer
// would use.

#include <cairo.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <vector>

#include "app/TempWorkDir.h"
#include "output/drawing/CairoCanvas.h"
#include "output/drawing/PngWriter.h"

namespace halvo {
namespace {

constexpr DrawColour kWhite{255, 255, 255};
constexpr DrawColour kRed{200, 0, 0};
constexpr DrawColour kBlue{0, 0, 255};

// The pixels of a PNG file as red, green, blue, row after row; empty if it does not read.
std::vector<DrawColour> ReadPng(const std::string& path, int& width, int& height) {
    std::vector<DrawColour> out;
    cairo_surface_t* s = cairo_image_surface_create_from_png(path.c_str());
    if (cairo_surface_status(s) == CAIRO_STATUS_SUCCESS) {
        width = cairo_image_surface_get_width(s);
        height = cairo_image_surface_get_height(s);
        const int stride = cairo_image_surface_get_stride(s);
        const unsigned char* d = cairo_image_surface_get_data(s);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                std::uint32_t v = 0;
                std::memcpy(&v, d + y * stride + 4 * x, 4);
                out.push_back({static_cast<std::uint8_t>(v >> 16),
                               static_cast<std::uint8_t>(v >> 8), static_cast<std::uint8_t>(v)});
            }
        }
    }
    cairo_surface_destroy(s);
    return out;
}

class DrawingTest : public test::TempWorkDir {};

TEST_F(DrawingTest, ShapesLandOnWholePixelsAndTextInItsBox) {
    CairoCanvas c(40, 30, kWhite);
    ASSERT_TRUE(c.Valid());
    c.Fill(2, 3, 4, 5, kBlue);
    c.SetPen(kRed);
    c.Line(10, 1, 20, 1);
    c.Rectangle(25, 10, 30, 14);
    c.Pixel(39, 29, kBlue);
    c.Pixel(40, 29, kBlue);  // outside: nothing, and no fault
    const struct {
        int x, y;
        DrawColour colour;
    } expected[] = {{2, 3, kBlue},    {4, 5, kBlue},   {5, 5, kWhite},  {1, 3, kWhite},
                    {10, 1, kRed},    {20, 1, kRed},   {21, 1, kWhite}, {9, 1, kWhite},
                    {15, 0, kWhite},  {15, 2, kWhite}, {25, 10, kRed},  {30, 14, kRed},
                    {27, 12, kWhite}, {25, 12, kRed},  {39, 29, kBlue}};
    for (const auto& e : expected) EXPECT_EQ(c.At(e.x, e.y), e.colour) << e.x << "," << e.y;

    // Text: ink only inside the box it was given, and some of it there.
    CairoCanvas t(200, 40, kWhite);
    t.Text(10, 10, "Ping 1234", 16, {0, 0, 0});
    int inked = 0;
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 200; ++x) {
            if (t.At(x, y) == kWhite) continue;
            ++inked;
            EXPECT_TRUE(x >= 10 && y >= 10 && y < 10 + 20) << x << "," << y;
        }
    }
    EXPECT_GT(inked, 50);

    CairoCanvas none(0, 10);
    EXPECT_FALSE(none.Valid());
    none.Line(0, 0, 5, 5);
    EXPECT_FALSE(none.WritePng("none.png"));
}

TEST_F(DrawingTest, PicturesReadBackPixelForPixel) {
    CairoCanvas c(7, 5, kWhite);
    c.Fill(0, 0, 2, 4, kRed);
    c.Pixel(6, 4, kBlue);
    ASSERT_TRUE(c.WritePng("canvas.png"));
    int w = 0, h = 0;
    const auto canvas = ReadPng("canvas.png", w, h);
    ASSERT_EQ(canvas.size(), 35u);
    EXPECT_EQ(canvas[0], kRed);
    EXPECT_EQ(canvas[3], kWhite);
    EXPECT_EQ(canvas[34], kBlue);

    // Row by row, as a long waterfall is written; each row read back from the canvas.
    PngWriter png;
    ASSERT_TRUE(png.Open("rows.png", 7, 5)) << png.Error();
    std::array<std::uint8_t, 21> row{};
    for (int y = 0; y < 5; ++y) {
        ASSERT_TRUE(c.Row(y, row));
        ASSERT_TRUE(png.WriteRow(row)) << png.Error();
    }
    EXPECT_FALSE(png.WriteRow(row));  // one more than the picture holds
    ASSERT_TRUE(png.Finish()) << png.Error();
    EXPECT_EQ(ReadPng("rows.png", w, h), canvas);

    // A picture left short, a row of the wrong length, a folder that is not there: an error,
    // and no file that a viewer would take for a whole picture.
    {
        PngWriter shortPicture;
        ASSERT_TRUE(shortPicture.Open("short.png", 7, 5));
        EXPECT_FALSE(shortPicture.WriteRow(std::span(row).first(20)));
        ASSERT_TRUE(shortPicture.WriteRow(row));
        EXPECT_FALSE(shortPicture.Finish());
    }
    EXPECT_FALSE(std::filesystem::exists("short.png"));
    PngWriter nowhere;
    EXPECT_FALSE(nowhere.Open("no/such/dir.png", 7, 5));
    EXPECT_FALSE(nowhere.Error().empty());
    EXPECT_FALSE(PngWriter().Open("zero.png", 0, 5));
}

}  // namespace
}  // namespace halvo

#include "halvo-hsf/RenderCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/GeneralSettings.h"
#include "core/MessageTypes.h"
#include "display/DisplayProcessingSet.h"
#include "display/DisplayUnits.h"
#include "display/SonarDataCache.h"
#include "display/WaterfallImage.h"
#include "display/WaterfallPlot.h"
#include "halvo-hsf/LinePlayer.h"
#include "halvo-hsf/Progress.h"
#include "halvo-hsf/RecordJson.h"
#include "output/drawing/PngWriter.h"
#include "storage/HsfReader.h"

namespace halvo::hsf {

namespace {

struct RenderOptions {
    std::string file;
    std::string settings;
    std::string out;
    int display = 0;
    int height = 0;  // 0: as deep as the longest line at the zoom
};

// The whole waterfall, oldest column first, each column the full column height. A live view
// draws each new line as column 0 with the geometry of that moment; so does this.
class WaterfallStrip final : public WaterfallColumnTarget {
  public:
    // Room for the columns of one new line, at the right end.
    void Grow(int columns) {
        columns_ += columns;
        pixels_.resize(static_cast<std::size_t>(columns_) * kMaxColumnHeight);
        overlays_.resize(static_cast<std::size_t>(columns_));
    }
    ColumnSpan Column(int column) override {
        return {pixels_.data() + Index(column) * kMaxColumnHeight, 1};
    }
    void Drawn(int column, int, const ColumnOverlay& overlay) override {
        overlays_[Index(column)] = overlay;
    }
    int Columns() const { return columns_; }

    // Row y of the picture in red, green, blue.
    void Row(int y, const Palette& palette, std::vector<std::uint8_t>& rgb) const {
        for (int x = 0; x < columns_; ++x) {
            const PaletteColour& c =
                palette[pixels_[static_cast<std::size_t>(x) * kMaxColumnHeight +
                                static_cast<std::size_t>(y)]];
            rgb[3 * static_cast<std::size_t>(x)] = c.red;
            rgb[3 * static_cast<std::size_t>(x) + 1] = c.green;
            rgb[3 * static_cast<std::size_t>(x) + 2] = c.blue;
        }
    }
    // The indicators of every column that fall on row y.
    void Indicators(int y, const GeneralValues& general, std::vector<std::uint8_t>& rgb) const {
        for (int x = 0; x < columns_; ++x) {
            ColumnOverlay o = overlays_[static_cast<std::size_t>(x)];
            // One row at a time: move the overlay so that row y is row 0 of a 1-row column.
            if (o.bottomRow != ColumnOverlay::kNoRow) o.bottomRow -= y;
            if (o.heaveRow != ColumnOverlay::kNoRow) o.heaveRow -= y;
            DrawIndicators(o, general, rgb.data() + 3 * static_cast<std::size_t>(x), 0, 1);
        }
    }

  private:
    std::size_t Index(int column) const { return static_cast<std::size_t>(columns_ - 1 - column); }

    int columns_ = 0;
    std::vector<std::uint8_t> pixels_;
    std::vector<ColumnOverlay> overlays_;
};

int RunRender(const RenderOptions& o) {
    HsfReader reader;
    if (!reader.Open(o.file)) {
        std::fprintf(stderr, "halvo-hsf render: %s\n", reader.Error().c_str());
        return 1;
    }
    auto player = std::make_unique<LinePlayer>(o.settings);
    // Room for the ten slots the cache never offers, and one line.
    SonarDataCache cache(SonarDataCache::kGuardSlots + 2);
    WaterfallPlot plot(o.display);
    plot.SetCache(&cache);
    DisplayProcessingConfig config;
    GeneralValues general = player->General();
    int generalCount = -1;
    WaterfallStrip strip;
    int deepest = 0;
    Progress progress(o.file, reader.FileSize());
    for (;;) {
        SonarMessage m;
        const ReadStatus status = reader.Next(m);
        if (status == ReadStatus::Deferred) continue;
        if (status != ReadStatus::Record) {
            if (status == ReadStatus::EndOfFile) break;
            std::fprintf(stderr, "halvo-hsf render: %s at offset %lld: %s\n",
                         std::string(StateWord(status)).c_str(),
                         static_cast<long long>(reader.RecordOffset()), reader.Error().c_str());
            return 1;
        }
        progress.Update(reader.Position());
        player->Play(std::move(m), [&](const SonarDataCacheElement& line) {
            if (line.displayIndex != o.display) return;
            // Settings as the view's refresh takes them: a changed snapshot is adopted.
            if (player->Set().Snapshot(o.display, config) || generalCount != config.generalStamp) {
                generalCount = config.generalStamp;
                general = player->General();
                plot.Adopt(config, general);
                plot.SetImageRect(0, 0, plot.TraceZoomFactor(), kMaxColumnHeight);
            }
            cache.Add(line);
            const WaterfallPlot::NewLines step = plot.TakeNewLines();
            strip.Grow(step.shiftColumns);
            plot.DrawNewColumns(step, strip);
            deepest = std::max<int>(deepest, TruncCount(plot.LineLength() * plot.Zoom()));
        });
    }
    progress.Done();
    if (strip.Columns() == 0) {
        std::fprintf(stderr, "halvo-hsf render: no lines for display %d in %s\n", o.display,
                     o.file.c_str());
        return 1;
    }
    const int height = o.height > 0 ? o.height : std::clamp(deepest, 1, kMaxColumnHeight);
    PngWriter png;
    if (!png.Open(o.out, static_cast<std::uint32_t>(strip.Columns()),
                  static_cast<std::uint32_t>(height))) {
        std::fprintf(stderr, "halvo-hsf render: %s\n", png.Error().c_str());
        return 1;
    }
    std::vector<std::uint8_t> rgb(static_cast<std::size_t>(strip.Columns()) * 3);
    for (int y = 0; y < height; ++y) {
        strip.Row(y, plot.Colours(), rgb);
        strip.Indicators(y, general, rgb);
        if (!png.WriteRow(rgb)) break;
    }
    if (!png.Finish()) {
        std::fprintf(stderr, "halvo-hsf render: %s\n", png.Error().c_str());
        return 1;
    }
    std::fprintf(stderr, "halvo-hsf render: %d columns, %d rows to %s\n", strip.Columns(), height,
                 o.out.c_str());
    return 0;
}

}  // namespace

void AddRenderCommand(CLI::App& app, int& exitCode) {
    auto options = std::make_shared<RenderOptions>();
    CLI::App* cmd = app.add_subcommand(
        "render", "Play a data file through the display chain and draw one display's waterfall");
    cmd->add_option("FILE", options->file, "data file")->required()->check(CLI::ExistingFile);
    cmd->add_option("--settings", options->settings,
                    "operator settings file (.Hni) with the display and general sections")
        ->required()
        ->check(CLI::ExistingFile);
    cmd->add_option("--display", options->display, "the display to draw (0-9)")
        ->required()
        ->check(CLI::Range(0, 9));
    cmd->add_option("--out", options->out, "PNG file to write")->required();
    cmd->add_option("--height", options->height,
                    "picture height in pixels (1-2048); default the deepest line at the zoom")
        ->check(CLI::Range(1, kMaxColumnHeight));
    cmd->footer(
        "One column per line, `TraceZoomFactor` columns with that setting, the newest at the\n"
        "right. Exit status 0 when the picture was written, 1 when reading or writing failed\n"
        "or the display had no lines.");
    cmd->callback([options, &exitCode] { exitCode = RunRender(*options); });
}

}  // namespace halvo::hsf

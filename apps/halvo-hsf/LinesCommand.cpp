#include "halvo-hsf/LinesCommand.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/MessageTypes.h"
#include "halvo-hsf/LinePlayer.h"
#include "halvo-hsf/RecordJson.h"
#include "halvo-hsf/RecordLoop.h"
#include "storage/HsfReader.h"

namespace halvo::hsf {

namespace {

struct LinesOptions {
    std::string file;
    std::string settings;
    int display = -1;
};

std::string Base64(const std::vector<std::uint8_t>& bytes) {
    static constexpr char kDigits[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    std::size_t i = 0;
    for (; i + 2 < bytes.size(); i += 3) {
        const std::uint32_t v = (bytes[i] << 16) | (bytes[i + 1] << 8) | bytes[i + 2];
        out += kDigits[(v >> 18) & 63];
        out += kDigits[(v >> 12) & 63];
        out += kDigits[(v >> 6) & 63];
        out += kDigits[v & 63];
    }
    if (i < bytes.size()) {
        const bool two = i + 1 < bytes.size();
        const std::uint32_t v = (bytes[i] << 16) | (two ? bytes[i + 1] << 8 : 0);
        out += kDigits[(v >> 18) & 63];
        out += kDigits[(v >> 12) & 63];
        out += two ? kDigits[(v >> 6) & 63] : '=';
        out += '=';
    }
    return out;
}

void PrintLine(const SonarDataCacheElement& e) {
    Json j;
    j["display"] = e.displayIndex;
    j["ping"] = e.Header().GetInt(TraceField::PingNumber);
    j["size"] = e.size;
    j["startDepth"] = e.startDepth;
    j["dualChannel"] = e.dualChannel;
    j["bottomSample"] = e.bottomSample;
    j["heaveSamples"] = e.heaveSamples;
    j["reflection"] = e.reflection;
    j["gain"] = e.gain;
    j["pixels"] = Base64(e.pixels);
    j["rawPixels"] = Base64(e.rawPixels);
    std::fputs(Line(j).c_str(), stdout);
    std::fputc('\n', stdout);
}

int RunLines(const LinesOptions& o) {
    HsfReader reader;
    if (!reader.Open(o.file)) {
        std::fprintf(stderr, "halvo-hsf lines: %s\n", reader.Error().c_str());
        return 1;
    }
    auto player = std::make_unique<LinePlayer>(o.settings);
    const bool whole = ForEachRecord(reader, "lines", [&](SonarMessage m) {
        player->Play(std::move(m), [&](const SonarDataCacheElement& line) {
            if (o.display < 0 || line.displayIndex == o.display) PrintLine(line);
        });
    });
    std::fflush(stdout);
    return whole ? 0 : 1;
}

}  // namespace

void AddLinesCommand(CLI::App& app, int& exitCode) {
    auto options = std::make_shared<LinesOptions>();
    CLI::App* cmd = app.add_subcommand(
        "lines", "Play a data file through the display chain; one JSON object per display line");
    cmd->add_option("FILE", options->file, "data file")->required()->check(CLI::ExistingFile);
    cmd->add_option("--settings", options->settings,
                    "operator settings file (.Hni) with the display and general sections")
        ->required()
        ->check(CLI::ExistingFile);
    cmd->add_option("--display", options->display, "print only the lines of this display (0-9)")
        ->check(CLI::Range(0, 9));
    cmd->footer(
        "Fields: display, ping (Ping Number of the line's header), size, startDepth, dualChannel,\n"
        "bottomSample, heaveSamples, reflection, gain, pixels and rawPixels (base64). Exit status\n"
        "0 at the end of the file, 1 when reading fails.");
    cmd->callback([options, &exitCode] { exitCode = RunLines(*options); });
}

}  // namespace halvo::hsf

#include "halvo-hsf/InfoCommand.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "core/MessageTypes.h"
#include "core/TraceHeader.h"
#include "halvo-hsf/FileSummary.h"
#include "halvo-hsf/RecordJson.h"

namespace halvo::hsf {

namespace {

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
};

std::string LayoutName(HsfLayout layout) {
    switch (layout) {
        case HsfLayout::Hsf:
            return "hsf";
        case HsfLayout::Legacy:
            return "legacy";
        default:
            return "unknown";
    }
}

std::string Utc(std::int64_t seconds) {
    const std::time_t t = static_cast<std::time_t>(seconds);
    std::tm tm{};
    if (!gmtime_r(&t, &tm)) return std::to_string(seconds);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &tm);
    return text;
}

std::string FormatName(int format) {
    const std::string_view name = DataFormatOf(format).name;
    return name.empty() ? std::string() : std::string(name);
}

Json ToJson(const FileSummary& s) {
    Json j;
    j["file"] = s.file;
    if (!s.opened) {
        j["error"] = s.openError;
        return j;
    }
    j["size"] = s.size;
    j["layout"] = LayoutName(s.layout);
    j["records"] = s.records;
    Json types = Json::array();
    for (const auto& [key, count] : s.byTypeDirection) {
        types.push_back({{"type", key.first},
                         {"name", std::string(MessageTypeName(key.first))},
                         {"direction", key.second},
                         {"records", count}});
    }
    j["types"] = std::move(types);
    Json channels = Json::array();
    for (const auto& [key, c] : s.channels) {
        Json e = {{"subsystem", key.first},
                  {"channel", key.second},
                  {"records", c.records},
                  {"traces", c.traces}};
        if (c.pings.seen) e["pings"] = {c.pings.min, c.pings.max};
        channels.push_back(std::move(e));
    }
    j["channels"] = std::move(channels);
    j["pings"] = s.pings.seen ? Json{s.pings.min, s.pings.max} : Json(nullptr);
    if (s.seconds.seen) {
        j["time"] = {{"first", Utc(s.seconds.min)},
                     {"last", Utc(s.seconds.max)},
                     {"seconds", s.seconds.max - s.seconds.min}};
    } else {
        j["time"] = nullptr;
    }
    Json formats = Json::array();
    for (const auto& [format, f] : s.formats) {
        Json e = {{"format", format}, {"name", FormatName(format)}, {"traces", f.traces}};
        if (f.samples.seen) {
            e["samples"] = {f.samples.min, f.samples.max};
            e["totalSamples"] = f.totalSamples;
        }
        formats.push_back(std::move(e));
    }
    j["formats"] = std::move(formats);
    Json packed = Json::array();
    for (const auto& [key, count] : s.packed) {
        packed.push_back({{"type", key.first}, {"code", key.second}, {"records", count}});
    }
    j["packed"] = std::move(packed);
    j["skipped"] = s.skipped;
    if (s.skipped > 0) j["firstSkipOffset"] = s.firstSkipOffset;
    j["end"] = {
        {"state", std::string(StateWord(s.end))}, {"error", s.endText}, {"offset", s.endOffset}};
    return j;
}

void PrintText(const FileSummary& s) {
    std::printf("%s\n", s.file.c_str());
    if (!s.opened) {
        std::printf("  cannot read: %s\n", s.openError.c_str());
        return;
    }
    std::printf("  size          %lld bytes, %s layout\n", static_cast<long long>(s.size),
                LayoutName(s.layout).c_str());
    std::printf("  records       %llu\n", static_cast<unsigned long long>(s.records));
    std::printf("  by type and direction\n");
    for (const auto& [key, count] : s.byTypeDirection) {
        const std::string_view name = MessageTypeName(key.first);
        std::printf("    %5u %-24.*s dir %u  %llu\n", key.first, static_cast<int>(name.size()),
                    name.data(), key.second, static_cast<unsigned long long>(count));
    }
    std::printf("  subsystem/channel\n");
    for (const auto& [key, c] : s.channels) {
        std::printf("    %3u/%-3u  %llu records, %llu traces", key.first, key.second,
                    static_cast<unsigned long long>(c.records),
                    static_cast<unsigned long long>(c.traces));
        if (c.pings.seen) {
            std::printf(", pings %lld to %lld", static_cast<long long>(c.pings.min),
                        static_cast<long long>(c.pings.max));
        }
        std::printf("\n");
    }
    if (s.pings.seen) {
        std::printf("  pings         %lld to %lld\n", static_cast<long long>(s.pings.min),
                    static_cast<long long>(s.pings.max));
    }
    if (s.seconds.seen) {
        std::printf("  time          %s to %s (%lld s)\n", Utc(s.seconds.min).c_str(),
                    Utc(s.seconds.max).c_str(),
                    static_cast<long long>(s.seconds.max - s.seconds.min));
    }
    std::printf("  sample formats\n");
    for (const auto& [format, f] : s.formats) {
        std::printf("    %3d %-10s %llu traces", format, FormatName(format).c_str(),
                    static_cast<unsigned long long>(f.traces));
        if (f.samples.seen) {
            std::printf(", %lld to %lld samples, %llu in all",
                        static_cast<long long>(f.samples.min),
                        static_cast<long long>(f.samples.max),
                        static_cast<unsigned long long>(f.totalSamples));
        }
        std::printf("\n");
    }
    if (s.packed.empty()) {
        std::printf("  packed forms  none\n");
    } else {
        std::printf("  packed forms\n");
        for (const auto& [key, count] : s.packed) {
            std::printf("    type %u code %d  %llu\n", key.first, key.second,
                        static_cast<unsigned long long>(count));
        }
    }
    if (s.skipped > 0) {
        std::printf("  skipped       %llu legacy records too large, first at offset %lld\n",
                    static_cast<unsigned long long>(s.skipped),
                    static_cast<long long>(s.firstSkipOffset));
    }
    std::printf("  end           %s at offset %lld: %s\n", std::string(StateWord(s.end)).c_str(),
                static_cast<long long>(s.endOffset), s.endText.c_str());
}

int RunInfo(const InfoOptions& o) {
    int status = 0;
    for (const std::string& file : o.files) {
        const FileSummary s = Summarise(file);
        if (!s.opened || s.end == ReadStatus::Error) status = 1;
        if (o.json) {
            std::printf("%s\n", Line(ToJson(s)).c_str());
        } else {
            PrintText(s);
        }
        std::fflush(stdout);
    }
    return status;
}

}  // namespace

void AddInfoCommand(CLI::App& app, int& exitCode) {
    auto options = std::make_shared<InfoOptions>();
    CLI::App* cmd = app.add_subcommand("info", "What one or more data files hold");
    cmd->add_option("FILE", options->files, "data files (any names; the contents decide)")
        ->required();
    cmd->add_flag("--json", options->json, "one JSON object per file, one per line");
    cmd->footer(
        "Exit status 0 when every file reads to its end, 1 when a file cannot be opened or\n"
        "ends in ERROR (the offset of the failing record is shown).");
    cmd->callback([options, &exitCode] { exitCode = RunInfo(*options); });
}

}  // namespace halvo::hsf

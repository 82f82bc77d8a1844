#include "halvo-hsf/DumpCommand.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>

#include "core/MessageHub.h"
#include "core/MessageTypes.h"
#include "core/Normalise.h"
#include "core/TraceHeader.h"
#include "halvo-hsf/Progress.h"
#include "halvo-hsf/RecordJson.h"
#include "halvo-hsf/StampPipeline.h"
#include "storage/HsfReader.h"

namespace halvo::hsf {

namespace {

struct DumpOptions {
    std::string file;
    bool normalise = false;
    bool samples = false;
    bool json = false;
    bool stamp = false;
    std::string settings;
};

// The trace header of a type 80 record as it stands, or of a type 82 record as the bus maps it.
bool TraceHeaderOf(const SonarMessage& m, Json& out) {
    if (m.type() == MsgTrace) {
        if (m.Payload().size() < kTraceHeaderSize) return false;
        out = TraceJson(m.Payload());
        return true;
    }
    if (m.type() == MsgSideScanTrace) {
        const SonarMessage mapped = Normalise(m, SystemUtcSeconds);
        if (!mapped || mapped.type() != MsgTrace || mapped.Payload().size() < kTraceHeaderSize) {
            return false;
        }
        out = TraceJson(mapped.Payload());
        return true;
    }
    return false;
}

void PrintJson(const SonarMessage& m, std::size_t index, std::int64_t offset,
               const DumpOptions& o) {
    Json j;
    j["index"] = index;
    j["offset"] = offset;
    j["marker"] = m.marker();
    j["version"] = m.version();
    j["session"] = m.session();
    j["type"] = m.type();
    j["direction"] = m.direction();
    j["subsystem"] = m.subsystem();
    j["channel"] = m.channel();
    j["sequence"] = m.sequence();
    j["reserved"] = m.reserved();
    j["size"] = m.size();
    Json trace;
    if (TraceHeaderOf(m, trace)) j["trace"] = std::move(trace);
    Json samples;
    if (o.samples && SamplesJson(m, samples)) j["samples"] = std::move(samples);
    std::fputs(Line(j).c_str(), stdout);
    std::fputc('\n', stdout);
}

void PrintText(const SonarMessage& m, std::size_t index, std::int64_t offset,
               const DumpOptions& o) {
    const std::string_view name = MessageTypeName(m.type());
    std::printf("%8zu %12lld  type %4u %-24.*s dir %u sub %3u chan %3u size %7d", index,
                static_cast<long long>(offset), m.type(), static_cast<int>(name.size()),
                name.data(), m.direction(), m.subsystem(), m.channel(), m.size());
    Json trace;
    if (TraceHeaderOf(m, trace)) {
        std::printf("  ping %d format %d samples %d interval %d", trace["Ping Number"].get<int>(),
                    trace["Data Format"].get<int>(), trace["Samples"].get<int>(),
                    trace["Sample Interval in NS"].get<int>());
    }
    Json samples;
    if (o.samples && SamplesJson(m, samples)) std::printf("  samples %s", Line(samples).c_str());
    std::fputc('\n', stdout);
}

int RunDump(const DumpOptions& o) {
    HsfReader reader;
    if (!reader.Open(o.file)) {
        std::fprintf(stderr, "halvo-hsf dump: %s\n", reader.Error().c_str());
        return 1;
    }
    Progress progress(o.file, reader.FileSize());
    std::unique_ptr<StampPipeline> stamping;
    if (o.stamp) stamping = std::make_unique<StampPipeline>(o.settings);
    std::size_t index = 0;
    for (;;) {
        SonarMessage m;
        const ReadStatus status = reader.Next(m);
        const std::int64_t offset = reader.RecordOffset();
        if (status == ReadStatus::Deferred) {
            // The file stays open and reading goes on behind the header, as playback does.
            if (o.json) {
                Json j;
                j["skipped"] = reader.Error();
                j["offset"] = offset;
                std::printf("%s\n", Line(j).c_str());
            } else {
                std::printf("%8s %12lld  skipped: %s\n", "-", static_cast<long long>(offset),
                            reader.Error().c_str());
            }
            continue;
        }
        if (status != ReadStatus::Record) {
            progress.Done();
            if (o.json) {
                Json j;
                j["error"] = reader.Error();
                j["state"] = StateWord(status);
                j["offset"] = offset;
                std::printf("%s\n", Line(j).c_str());
            } else {
                std::printf("%s at offset %lld: %s\n", std::string(StateWord(status)).c_str(),
                            static_cast<long long>(offset), reader.Error().c_str());
            }
            return status == ReadStatus::EndOfFile ? 0 : 1;
        }
        if (stamping) {
            m = stamping->Process(std::move(m));
        } else if (o.normalise) {
            SonarMessage n = Normalise(m, SystemUtcSeconds);
            if (n) m = std::move(n);
        }
        if (o.json) {
            PrintJson(m, index, offset, o);
        } else {
            PrintText(m, index, offset, o);
        }
        ++index;
        progress.Update(reader.Position());
    }
}

}  // namespace

void AddDumpCommand(CLI::App& app, int& exitCode) {
    auto options = std::make_shared<DumpOptions>();
    CLI::App* cmd = app.add_subcommand("dump", "One line per record of a data file");
    cmd->add_option("FILE", options->file, "data file (any name; the contents decide)")
        ->required()
        ->check(CLI::ExistingFile);
    cmd->add_flag("--normalise", options->normalise,
                  "pass each record through the bus normalisation first (unpack, 82 to 80)");
    CLI::Option* stamp = cmd->add_flag(
        "--stamp", options->stamp,
        "pass each record through playback's preparation, normalisation and trace stamping");
    cmd->add_option("--settings", options->settings,
                    "settings file (.Hni) for --stamp; without it the built-in defaults")
        ->check(CLI::ExistingFile)
        ->needs(stamp);
    cmd->add_flag("--samples", options->samples, "add the sample values (pairs interleaved)");
    cmd->add_flag("--json", options->json, "one JSON object per line");
    cmd->footer(
        "The last line tells how reading ended: END OF FILE (exit status 0) or ERROR (exit\n"
        "status 1), with the byte offset of the record where it happened.");
    cmd->callback([options, &exitCode] { exitCode = RunDump(*options); });
}

}  // namespace halvo::hsf

#include "halvo-hsf/GraphCommand.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "app/GeneralSettings.h"
#include "app/SystemCoordinator.h"
#include "dsp/SonarChannelMap.h"
#include "dsp/graph/GraphSession.h"
#include "dsp/graph/GraphTaker.h"
#include "halvo-hsf/RecordJson.h"
#include "halvo-hsf/RecordLoop.h"
#include "halvo-hsf/StampPipeline.h"
#include "stamping/SonarChannelSettings.h"
#include "storage/HsfReader.h"

namespace halvo::hsf {

namespace {

struct GraphOptions {
    std::string file;
    std::string settings;
    std::optional<int> channel;
    std::optional<int> channel2;
    std::vector<int> gate;
    std::optional<int> window;
    std::optional<int> type;
    bool xcorr = false;
    bool json = false;
};

Json CurveJson(const GraphCurve& c) {
    Json j;
    j["xFirst"] = c.xFirst;
    j["xLast"] = c.xLast;
    j["y"] = c.y;
    return j;
}

Json FiguresJson(const PlotModel& plot) {
    const auto f = plot.Figures();
    if (!f) return nullptr;
    Json j;
    j["AVG"] = f->avg;
    j["RMS"] = f->rms;
    j["SDEV"] = f->sdev;
    j["N"] = f->n;
    j["PSD"] = f->psd;
    j["MAX"] = f->max;
    return j;
}

void Print(GraphSession& session, const GraphValues& v) {
    Json j;
    const GraphTrace* t = session.Last(0) != nullptr ? session.Last(0) : session.Last(1);
    j["ping"] = t != nullptr ? t->ping : 0;
    j["channel"] = v.Channel;
    j["channel2"] = v.Channel2;
    j["format"] = t != nullptr ? t->format : 0;
    j["gate"] = {session.Gate().first, session.Gate().second};
    Json time = Json::array();
    Json spectra = Json::array();
    for (int s = 0; s < 2; ++s) {
        if (session.Last(s) == nullptr || session.TimeCurve(s).y.empty()) continue;
        Json c = CurveJson(session.TimeCurve(s));
        c["slot"] = s;
        time.push_back(c);
        if (const auto& sp = session.SpectrumOf(s)) {
            Json f = CurveJson(sp->curve);
            f["slot"] = s;
            f["length"] = sp->length;
            f["spectralScale"] = sp->spectralScale;
            spectra.push_back(f);
        }
    }
    j["time"] = time;
    j["spectrum"] = spectra;
    if (session.Correlation()) j["correlation"] = CurveJson(*session.Correlation());
    j["stats"] = {{"time", FiguresJson(session.Time())},
                  {"frequency", FiguresJson(session.Frequency())}};
    std::fputs(Line(j).c_str(), stdout);
    std::fputc('\n', stdout);
}

int RunGraph(const GraphOptions& o) {
    HsfReader reader;
    if (!reader.Open(o.file)) {
        std::fprintf(stderr, "halvo-hsf graph: %s\n", reader.Error().c_str());
        return 1;
    }
    SystemCoordinator coordinator;
    coordinator.SetActiveProfile(o.settings);
    GeneralSettings general(coordinator);
    general.Load();
    GraphSettings settings(coordinator);
    settings.Load();
    GraphValues v = settings.Snapshot();
    if (o.channel) v.Channel = *o.channel;
    if (o.channel2) v.Channel2 = *o.channel2;
    if (o.window) v.Window = *o.window;
    if (o.type) v.TimePlotType = *o.type;
    v.XCorrelate = o.xcorr;
    if (o.gate.size() == 2) {
        v.GateSet = true;
        v.GateFirst = o.gate[0];
        v.GateLast = o.gate[1];
    }
    const GeneralValues g = general.Snapshot();
    const GraphUnits units{g.UserUnits, g.WaterSoundSpeed};

    std::vector<FixedSonarChannelMap::Sonar> map;
    for (const SonarChannelBase& s : LoadSonarChannels(coordinator))
        map.push_back({s.subsystem, s.firstChannel});
    const FixedSonarChannelMap sonars(std::move(map));
    GraphTaker taker(&sonars);
    taker.SetChannels(v.Channel, v.Channel2);
    taker.SetAdcGainScaling(v.xADCGain);
    auto pipeline =
        std::make_unique<StampPipeline>(o.settings, std::vector<MessageObserver*>{&taker});
    GraphSession session;
    session.Time().State() = PlotState::FromText(v.PlotTime);
    session.Frequency().State() = PlotState::FromText(v.PlotFreq);
    const bool whole = ForEachRecord(reader, "graph", [&](SonarMessage m) {
        pipeline->Process(std::move(m));
        // With two channels the page draws whenever either slot brought a trace; the file tool
        // prints at the same moments.
        if (session.Step(taker, v, units)) Print(session, v);
    });
    std::fflush(stdout);
    return whole ? 0 : 1;
}

}  // namespace

void AddGraphCommand(CLI::App& app, int& exitCode) {
    auto o = std::make_shared<GraphOptions>();
    CLI::App* cmd = app.add_subcommand(
        "graph",
        "Play a data file through the graph page's computation; one JSON object per trace");
    cmd->add_option("FILE", o->file, "data file")->required()->check(CLI::ExistingFile);
    cmd->add_option("--settings", o->settings, "operator settings file (.Hni) with section Graph0")
        ->required()
        ->check(CLI::ExistingFile);
    cmd->add_option("--channel", o->channel, "first channel (Graph0 Channel)");
    cmd->add_option("--channel2", o->channel2, "second channel, below 0 for none");
    cmd->add_option("--gate", o->gate, "first and last sample of the spectrum's gate")->expected(2);
    cmd->add_option("--window", o->window, "0 none, 1 Hann, 2 Hamming, 3 Blackman")
        ->check(CLI::Range(0, 3));
    cmd->add_option("--type", o->type, "time plot type 0-6")->check(CLI::Range(0, 6));
    cmd->add_flag("--xcorr", o->xcorr, "the correlation of the two channels for the spectrum");
    cmd->add_flag("--json", o->json, "JSON lines (the only output form)")->required();
    cmd->footer(
        "Fields: ping, channel, channel2, format, gate, time (per slot: xFirst, xLast, y),\n"
        "spectrum (per slot: xFirst, xLast, length, spectralScale, y), correlation, and stats\n"
        "(time and frequency: AVG, RMS, SDEV, N, PSD, MAX). Exit status 0 at the end of the\n"
        "file, 1 when reading fails.");
    cmd->callback([o, &exitCode] { exitCode = RunGraph(*o); });
}

}  // namespace halvo::hsf

#pragma once
// halvo-hsf render: plays a data file through the display chain and draws the whole waterfall of
// one display into a PNG, one column per line (or `TraceZoomFactor`), with the view's column
// rules and palette. For reports, quick looks on a server, and checks.

namespace CLI {
class App;
}

namespace halvo::hsf {

// Adds the subcommand; its exit status is written to exitCode when it runs.
void AddRenderCommand(CLI::App& app, int& exitCode);

}  // namespace halvo::hsf

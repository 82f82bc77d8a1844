#pragma once
// halvo-hsf dump: one line per record, as text or as one JSON object per line.

namespace CLI {
class App;
}

namespace halvo::hsf {

// Adds the subcommand; its exit status is written to exitCode when it runs.
void AddDumpCommand(CLI::App& app, int& exitCode);

}  // namespace halvo::hsf

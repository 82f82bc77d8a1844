#pragma once
// halvo-hsf lines: plays a data file through normalisation, stamping and the display chain, as
// fast as it can, and prints every finished display line as one JSON object.

namespace CLI {
class App;
}

namespace halvo::hsf {

// Adds the subcommand; its exit status is written to exitCode when it runs.
void AddLinesCommand(CLI::App& app, int& exitCode);

}  // namespace halvo::hsf

#pragma once
// halvo-hsf info: what one or more data files hold.

namespace CLI {
class App;
}

namespace halvo::hsf {

// Adds the subcommand; its exit status is written to exitCode when it runs.
void AddInfoCommand(CLI::App& app, int& exitCode);

}  // namespace halvo::hsf

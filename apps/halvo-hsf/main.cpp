// halvo-hsf: the command-line tool for data files. Each subcommand lives in its own file pair
// and adds itself to the application here.

#include <CLI/CLI.hpp>

#include "halvo-hsf/DumpCommand.h"
#include "halvo-hsf/GraphCommand.h"
#include "halvo-hsf/InfoCommand.h"
#include "halvo-hsf/LinesCommand.h"
#include "halvo-hsf/RenderCommand.h"

int main(int argc, char** argv) {
    CLI::App app{"halvo-hsf: look into sonar data files (.hsf and the legacy trace layout)"};
    app.require_subcommand(1);
    int exitCode = 0;
    halvo::hsf::AddInfoCommand(app, exitCode);
    halvo::hsf::AddDumpCommand(app, exitCode);
    halvo::hsf::AddLinesCommand(app, exitCode);
    halvo::hsf::AddGraphCommand(app, exitCode);
    halvo::hsf::AddRenderCommand(app, exitCode);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        const int code = app.exit(e);
        // Help is a success; every other parse failure is a usage error.
        return code == 0 ? 0 : 2;
    }
    return exitCode;
}

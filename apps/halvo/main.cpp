// halvo: the operator program. By default it opens its windows; the options below let tests and
// the demo run it on Qt's offscreen platform, take a picture of the main window and end by
// themselves through the normal Ending.

#include <CLI/CLI.hpp>
#include <string>

#include "GuiProgram.h"

int main(int argc, char** argv) {
    CLI::App cli{"halvo: topside program of the sub-bottom profiler and side-scan sonar"};
    halvo::GuiOptions gui;
    cli.add_flag("--offscreen", gui.offscreen, "run on Qt's offscreen platform");
    cli.add_option("--screenshot", gui.screenshot, "save a picture of the main window to FILE")
        ->type_name("FILE");
    cli.add_option("--after", gui.screenshotAfter, "seconds before the picture (default 2)")
        ->check(CLI::Range(0.0, 3600.0));
    cli.add_option("--quit-after", gui.quitAfter, "end normally after S seconds")
        ->type_name("S")
        ->check(CLI::Range(0.0, 1e6));
    // --headless goes here: the windowless run over the same System (HeadlessRunner).
    cli.allow_extras();  // Qt's own options (-platform, -style ...) pass through
    try {
        cli.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return cli.exit(e);
    }
    return halvo::RunGui(argc, argv, gui);
}

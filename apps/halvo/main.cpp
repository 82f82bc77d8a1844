// halvo: the operator program. By default it opens its windows; the options below let tests and
// the demo run it on Qt's offscreen platform, take a picture of the main window and end by
// themselves through the normal Ending. With --headless it runs the same system without a window.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>

#include "HeadlessProgram.h"
#ifdef HALVO_WITH_GUI
#include "GuiProgram.h"
#endif

int main(int argc, char** argv) {
    CLI::App cli{
        "halvo: topside program of the sub-bottom profiler and side-scan sonar.\n"
        "Without options it opens the operator's windows. With --headless it runs acquisition,\n"
        "recording, playback, navigation, status and alerts without a window and prints the\n"
        "event log to stdout; Ctrl-C or SIGTERM ends it with the settings saved."};
    bool headless = false;
    halvo::HeadlessOptions run;
    cli.add_flag("--headless", headless, "run without a window");
    cli.add_option("--settings", run.settings, "settings file to load and save")
        ->type_name("FILE.Hni");
    cli.add_option("--duration", run.durationSeconds, "end after S seconds (headless)")
        ->type_name("S")
        ->check(CLI::Range(0.0, 1e7));
    cli.add_flag("--record", run.record, "press Record once started");
    cli.add_flag("--ping", run.ping, "switch the sonars in use on once started");
    cli.add_option("--alarm-file", run.alarmFile,
                   "write the alert tones to this WAV file instead of the sound system")
        ->type_name("FILE.wav");
    cli.add_option("--play", run.play, "play these files in turn (headless)")
        ->type_name("FILE...")
        ->check(CLI::ExistingFile);
#ifdef HALVO_WITH_GUI
    halvo::GuiOptions gui;
    cli.add_flag("--offscreen", gui.offscreen, "run on Qt's offscreen platform");
    cli.add_option("--screenshot", gui.screenshot, "save a picture of the main window to FILE")
        ->type_name("FILE");
    cli.add_option("--after", gui.screenshotAfter, "seconds before the picture (default 2)")
        ->check(CLI::Range(0.0, 3600.0));
    cli.add_option("--quit-after", gui.quitAfter, "end normally after S seconds")
        ->type_name("S")
        ->check(CLI::Range(0.0, 1e6));
    cli.add_option("--screenshot-sheet", gui.sheetScreenshot,
                   "save a picture of the \"Status And Control\" sheet to FILE (with --after)")
        ->type_name("FILE");
    cli.add_option("--screenshot-graph", gui.graphScreenshot,
                   "save a picture of the sheet's \"Graph\" page to FILE (with --after)")
        ->type_name("FILE");
    cli.add_option("--sheet-page", gui.sheetPage, "show this tab of the sheet first (\"Disk\" ...)")
        ->type_name("CAPTION");
    cli.add_option("--event-log", gui.eventLog, "append the event log to FILE")->type_name("FILE");
    cli.allow_extras();  // Qt's own options (-platform, -style ...) pass through
#endif
    try {
        cli.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return cli.exit(e);
    }
#ifdef HALVO_WITH_GUI
    gui.settings = run.settings;
    gui.ping = run.ping;
    gui.record = run.record;
    gui.alarmFile = run.alarmFile;
    if (!headless) return halvo::RunGui(argc, argv, gui);
#else
    if (!headless) {
        std::fprintf(stderr, "halvo: built without windows; use --headless\n");
        return 2;
    }
#endif
    return halvo::RunHeadless(run);
}

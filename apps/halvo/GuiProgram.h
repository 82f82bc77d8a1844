#pragma once
// The operator program with its windows: one System, the main window over it, the "Status And
// Control" sheet, and the options that let tests and the demo look at it.

#include <string>

namespace halvo {

struct GuiOptions {
    bool offscreen = false;       // Qt's offscreen platform; message boxes go to the event log
    std::string screenshot;       // a picture of the main window, when set
    double screenshotAfter = 2;   // seconds
    double quitAfter = 0;         // seconds; 0: until the operator ends
    std::string settings;         // defaults file instead of ./HalvoDefaults.Hni
    bool ping = false;            // switch the sonars in use on once started
    bool record = false;          // press Record once started
    std::string eventLog;         // append every event log line to this file
    std::string alarmFile;        // alert tones into this WAV file instead of the sound system
    std::string sheetScreenshot;  // a picture of the "Status And Control" sheet, with the other
    std::string sheetPage;        // the sheet's tab to show first, by caption
    std::string graphScreenshot;  // a picture of the sheet's "Graph" page, with the others
};

int RunGui(int argc, char** argv, const GuiOptions& options);

}  // namespace halvo

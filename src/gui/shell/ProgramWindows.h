#pragma once
// The windows of the operator program over one System: the main window with its commands, the
// "Status And Control" sheet with the pages of every subsystem, and the display windows. The
// program and its acceptance tests assemble them through this one class, so a test drives the
// windows the operator sees.

#include <QString>
#include <memory>
#include <string_view>

#include "app/Housekeeping.h"
#include "gui/dialogs/MainOptions.h"
#include "gui/shell/CMainFrame.h"

namespace halvo {

class CfgSheet;
class DisplayWindows;
class System;
struct SheetContext;

class ProgramWindows {
  public:
    // The main window and the pages that go in before the settings load.
    ProgramWindows(System& system, SheetContext& context, const QString& title);
    // Run the system's Ending first: its save still writes through the display windows.
    ~ProgramWindows();
    ProgramWindows(const ProgramWindows&) = delete;
    ProgramWindows& operator=(const ProgramWindows&) = delete;

    // The system's start-up with the defaults file (empty: ./HalvoDefaults.Hni), then the pages
    // and windows that depend on the loaded settings.
    void Start(std::string_view settings);
    // Shows the window (maximised unless the settings or the caller showed it), the sheet, and
    // starts the 250 ms timer with a first pass.
    void Show();

    CMainFrame& Frame() { return frame_; }
    CfgSheet& Sheet() { return *sheet_; }
    DisplayWindows* Displays() { return displays_.get(); }

  private:
    ShellCommands Commands();

    System& system_;
    SheetContext& context_;
    Housekeeping housekeeping_;
    MainOptionsStore optionsStore_;
    CMainFrame frame_;
    CfgSheet* sheet_ = nullptr;
    std::unique_ptr<DisplayWindows> displays_;
};

}  // namespace halvo

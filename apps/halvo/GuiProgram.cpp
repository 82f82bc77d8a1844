#include "GuiProgram.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QTimer>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

#include "app/EventLog.h"
#include "app/Housekeeping.h"
#include "app/SystemCoordinator.h"
#include "gui/dialogs/MainOptions.h"
#include "gui/pages/NavigationPages.h"
#include "gui/pages/RecordPages.h"
#include "gui/pages/SonarPages.h"
#include "gui/sheets/CfgSheet.h"
#include "gui/sheets/EnableTable.h"
#include "gui/sheets/EnterKeyFilter.h"
#include "gui/sheets/SetupWizard.h"
#include "gui/shell/CMainFrame.h"
#include "gui/shell/MessageBoxPrompts.h"
#include "gui/views/DisplayWindows.h"
#include "platform/LinuxSystemClock.h"
#include "platform/MonotonicTickSource.h"
#include "storage/StorageControl.h"
#include "system/System.h"

#ifndef HALVO_VERSION
#define HALVO_VERSION "0"
#endif

namespace halvo {
namespace {

// With nobody to click a box (offscreen), a box's text goes to the event log and a question is
// answered No, the answer that changes nothing.
class LoggedPrompts final : public OperatorPrompts {
  public:
    void SetLog(EventLog* log) { log_ = log; }
    void Notify(std::string_view title, std::string_view text) override {
        if (log_ == nullptr) return;
        log_->Add(std::string(title) + " : " + std::string(text));
    }
    bool AskYesNo(std::string_view title, std::string_view text) override {
        Notify(title, text);
        return false;
    }

  private:
    EventLog* log_ = nullptr;
};

ShellCommands Commands(System& system, std::unique_ptr<DisplayWindows>& windows) {
    ShellCommands c;
    c.applySplitSizes = [&windows](std::span<const int> rows, std::span<const int> columns) {
        if (windows) windows->ApplySplitSizes(rows, columns);
    };
    c.collectSplitSizes = [&windows](std::vector<int>& rows, std::vector<int>& columns) {
        if (windows) windows->CollectSplitSizes(rows, columns);
    };
    c.loadConfiguration = [&system](const std::string& f) { system.LoadFile(f); };
    c.saveConfiguration = [&system](const std::string& f) { system.SaveFile(f); };
    c.ending = [&system](bool save) { system.Ending(save); };
    c.recentFiles = [&system] { return system.RecentFiles(); };
    c.addRecentFile = [&system](const std::string& f) { system.AddRecentFile(f); };
    c.playFile = [&system](const std::string& file) {
        StorageControl& storage = system.Storage();
        const std::filesystem::path path(file);
        // A new file opens only through a stop and a start, as the disk page's chaining does.
        storage.RequestStop();
        StorageSettings s = storage.getSettings();
        s.playbackDir = path.has_parent_path() ? path.parent_path().string() : std::string();
        s.playbackFile = path.filename().string();
        s.mode = ModeStop;
        storage.setSettings(s);
        // The recorder notices the stop on its next pass before it is asked to play.
        QTimer::singleShot(300, [&storage] { storage.RequestPlayback(); });
        system.Log().Add("PLAY : " + file);
    };
    c.changePause = [&system] { system.Storage().ChangePause(); };
    c.playbackSlower = [&system] { system.Storage().PlaybackSlower(); };
    c.playbackFaster = [&system] { system.Storage().PlaybackFaster(); };
    return c;
}

}  // namespace

int RunGui(int argc, char** argv, const GuiOptions& options) {
    if (options.offscreen) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    MonotonicTickSource ticks;
    LinuxSystemClock systemClock;
    MessageBoxPrompts boxes;
    LoggedPrompts logged;
    OperatorPrompts& prompts = options.offscreen ? static_cast<OperatorPrompts&>(logged)
                                                 : static_cast<OperatorPrompts&>(boxes);
    System system(System::Platform{ticks, systemClock, &prompts});
    logged.SetLog(&system.Log());
    std::FILE* eventFile = nullptr;
    if (!options.eventLog.empty()) {
        eventFile = std::fopen(options.eventLog.c_str(), "a");
        if (eventFile == nullptr) {
            std::fprintf(stderr, "halvo: cannot write %s\n", options.eventLog.c_str());
            return 2;
        }
        system.Log().SetListener([eventFile](const EventLog::Line& line) {
            std::fprintf(eventFile, "%s\n", line.text.c_str());
            std::fflush(eventFile);
        });
    }

    EnterKeyFilter enterKeys(system.Coordinator());
    app.installEventFilter(&enterKeys);
    EnableTable enables;
    SheetContext context{system.Coordinator(), prompts, enables};

    // The window's timer pass holds the display timer's guard while it runs the housekeeping,
    // so the drain inside it must not ask for the guard again.
    system.SetDrainInsideTimerPass(true);
    std::unique_ptr<DisplayWindows> displayWindows;
    system.SetCacheSizeHooks(
        [&displayWindows] {
            if (displayWindows) displayWindows->LoadCacheSizes();
        },
        [&displayWindows] {
            if (displayWindows) displayWindows->SaveCacheSizes();
        });
    Housekeeping housekeeping(system.HousekeepingSources(), &system.Log());
    CMainFrame frame(context, housekeeping, Commands(system, displayWindows),
                     QString("Halvo ") + HALVO_VERSION);
    boxes.SetParent(&frame);

    MainOptionsStore optionsStore(system.Overall(), system.General());
    frame.SetOptionsStore(&optionsStore);

    // The control bar is made before the settings load, as at every start.
    CfgSheet* sheet = frame.ControlBar(0);
    sheet->AddPage(new SetupWizard(context, *sheet), CfgSheet::SetupWizard);
    // --- Pages of the subsystems go in here as they land (storage, sonars, displays ...). ---
    AddRecordPages(*sheet, system, context);
    AddNavigationPages(*sheet, frame.Setup(), system, context);

    // Loads the installation and the defaults; the stored placement shows the window.
    system.Startup(&frame, options.settings);
    AddSonarPages(*sheet, system, context);
    optionsStore.SetSonarAccess(SonarOptionsAccess(system.Sonar()));
    displayWindows = OpenDisplayWindows(frame, sheet, system, context);
    if (options.ping) system.SwitchSonarsOn();
    if (options.record) system.Storage().RequestRecord();
    if (!frame.isVisible()) frame.showMaximized();
    frame.AcceptDroppedFiles();
    frame.ControlBar(2, sheet);
    frame.StartDisplayTimer();
    frame.TimerPass();

    if (!options.screenshot.empty() || !options.sheetScreenshot.empty()) {
        const auto save = [](QWidget* widget, const std::string& name) {
            if (name.empty()) return;
            const QString file = QString::fromStdString(name);
            QDir().mkpath(QFileInfo(file).absolutePath());
            if (!widget->grab().save(file))
                std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
        };
        QTimer::singleShot(static_cast<int>(options.screenshotAfter * 1000), &frame,
                           [&frame, sheet, save, &options] {
                               save(&frame, options.screenshot);
                               save(sheet, options.sheetScreenshot);
                           });
    }
    if (options.quitAfter > 0) {
        // The normal way out: closing the window saves and runs the Ending.
        QTimer::singleShot(static_cast<int>(options.quitAfter * 1000), &frame,
                           [&frame] { frame.close(); });
    }
    const int rc = app.exec();
    system.Ending(true);  // does nothing when the window's close already ran it
    system.SetCacheSizeHooks({}, {});
    displayWindows.reset();
    system.Log().SetListener({});
    if (eventFile != nullptr) std::fclose(eventFile);
    return rc;
}

}  // namespace halvo

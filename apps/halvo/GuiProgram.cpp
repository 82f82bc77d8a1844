#include "GuiProgram.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QTimer>
#include <algorithm>
#include <cstdio>

#include "HeadlessProgram.h"
#include "app/EventLog.h"
#include "app/Housekeeping.h"
#include "gui/sheets/CfgSheet.h"
#include "gui/sheets/EnableTable.h"
#include "gui/sheets/EnterKeyFilter.h"
#include "gui/sheets/SheetPage.h"
#include "gui/shell/CColorStatusBar.h"
#include "gui/shell/CMainFrame.h"
#include "gui/shell/MessageBoxPrompts.h"
#include "gui/shell/ProgramWindows.h"
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
    std::unique_ptr<Beeper> alarm = AlarmFileBeeper(options.alarmFile);
    System::Platform platform{ticks, systemClock, &prompts, alarm.get()};
    platform.windows = true;
    System system(platform);
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

    ProgramWindows windows(system, context, QString("Halvo ") + HALVO_VERSION);
    CMainFrame& frame = windows.Frame();
    CfgSheet* sheet = &windows.Sheet();
    boxes.SetParent(&frame);
    windows.Start(options.settings);
    if (!options.sheetPage.empty()) {
        if (SheetPage* page = sheet->FindPage(QString::fromStdString(options.sheetPage))) {
            sheet->ShowPage(page);
        } else {
            std::fprintf(stderr, "halvo: no page \"%s\" in the sheet\n", options.sheetPage.c_str());
        }
    }
    if (options.ping) system.SwitchSonarsOn();
    if (options.record) system.Storage().RequestRecord();
    windows.Show();

    if (!options.graphScreenshot.empty()) {
        // The graph page joins the bus when first shown: it is shown two seconds ahead so it
        // holds a ping when the picture is taken, and the page asked for comes back after it.
        const int ahead = static_cast<int>(std::max(0.0, options.screenshotAfter - 2.0) * 1000);
        QTimer::singleShot(ahead, &frame, [sheet] {
            if (SheetPage* page = sheet->FindPage("Graph")) sheet->ShowPage(page);
        });
        QTimer::singleShot(
            static_cast<int>(options.screenshotAfter * 1000) - 1, &frame, [sheet, &options] {
                const QString file = QString::fromStdString(options.graphScreenshot);
                QDir().mkpath(QFileInfo(file).absolutePath());
                if (!sheet->grab().save(file))
                    std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
                SheetPage* back = sheet->FindPage(QString::fromStdString(options.sheetPage));
                if (back != nullptr) sheet->ShowPage(back);
            });
    }
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
                               // What the picture shows in words, for a reader without it.
                               const CColorStatusBar& bar = *frame.ColourBar();
                               std::printf("halvo: status line: %s\nhalvo: alert pane: %s\n",
                                           qPrintable(bar.Message().simplified()),
                                           qPrintable(bar.PaneText(Housekeeping::kAlertPane)));
                               std::fflush(stdout);
                           });
    }
    if (options.quitAfter > 0) {
        // The normal way out: closing the window saves and runs the Ending.
        QTimer::singleShot(static_cast<int>(options.quitAfter * 1000), &frame,
                           [&frame] { frame.close(); });
    }
    const int rc = app.exec();
    system.Ending(true);  // does nothing when the window's close already ran it
    system.Log().SetListener({});
    if (eventFile != nullptr) std::fclose(eventFile);
    return rc;
}

}  // namespace halvo

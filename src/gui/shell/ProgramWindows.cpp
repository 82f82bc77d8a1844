#include "gui/shell/ProgramWindows.h"

#include <QTimer>
#include <optional>
#include <span>
#include <vector>

#include "app/EventLog.h"
#include "dsp/graph/GraphModule.h"
#include "extensions/ExtensionView.h"
#include "gui/pages/CfgGraph.h"
#include "gui/pages/NavigationPages.h"
#include "gui/pages/RecordPages.h"
#include "gui/pages/SonarPages.h"
#include "gui/sheets/CfgSheet.h"
#include "gui/sheets/SetupWizard.h"
#include "gui/views/CWaterfallDoc.h"
#include "gui/views/DisplayWindows.h"
#include "storage/StorageControl.h"
#include "system/System.h"

namespace halvo {

ShellCommands ProgramWindows::Commands() {
    ShellCommands c;
    c.applySplitSizes = [this](std::span<const int> rows, std::span<const int> columns) {
        if (displays_) displays_->ApplySplitSizes(rows, columns);
    };
    c.collectSplitSizes = [this](std::vector<int>& rows, std::vector<int>& columns) {
        if (displays_) displays_->CollectSplitSizes(rows, columns);
    };
    System& system = system_;
    c.loadConfiguration = [&system](const std::string& f) { system.LoadFile(f); };
    c.saveConfiguration = [&system](const std::string& f) { system.SaveFile(f); };
    c.ending = [&system](bool save) { system.Ending(save); };
    c.recentFiles = [&system] { return system.RecentFiles(); };
    c.addRecentFile = [&system](const std::string& f) { system.AddRecentFile(f); };
    c.playFile = [this](const std::string& file) {
        system_.PrepareToPlay(file);
        // The window carries the delayed request, so it dies with the window and never outlives
        // the system.
        StorageControl& storage = system_.Storage();
        QTimer::singleShot(System::kPlayDelayMs, &frame_,
                           [&storage] { storage.RequestPlayback(); });
    };
    c.changePause = [&system] { system.Storage().ChangePause(); };
    c.playbackSlower = [&system] { system.Storage().PlaybackSlower(); };
    c.playbackFaster = [&system] { system.Storage().PlaybackFaster(); };
    return c;
}

ProgramWindows::ProgramWindows(System& system, SheetContext& context, const QString& title)
    : system_(system),
      context_(context),
      housekeeping_(system.HousekeepingSources(), &system.Log()),
      optionsStore_(system.Overall(), system.General()),
      frame_(context, housekeeping_, Commands(), title) {
    // The window's timer pass holds the display timer's guard while it runs the housekeeping,
    // so the drain inside it must not ask for the guard again.
    system_.SetDrainInsideTimerPass(true);
    system_.SetCacheSizeHooks(
        [this] {
            if (displays_) displays_->LoadCacheSizes();
        },
        [this] {
            if (displays_) displays_->SaveCacheSizes();
        });
    frame_.SetOptionsStore(&optionsStore_);
    // The control bar is made before the settings load, as at every start.
    sheet_ = frame_.ControlBar(0);
    sheet_->AddPage(new SetupWizard(context_, *sheet_), CfgSheet::SetupWizard);
    AddRecordPages(*sheet_, system_, context_);
    AddNavigationPages(*sheet_, frame_.Setup(), system_, context_);
}

ProgramWindows::~ProgramWindows() {
    system_.SetCacheSizeHooks({}, {});
    displays_.reset();
}

void ProgramWindows::Start(std::string_view settings) {
    // Loads the installation and the defaults; the stored placement shows the window.
    system_.Startup(&frame_, settings);
    AddSonarPages(*sheet_, system_, context_);
    if (GraphModule* graph = system_.FindModule<GraphModule>())
        sheet_->AddPage(new CfgGraph(context_, *graph, system_.General()), CfgSheet::CfgGraph);
    optionsStore_.SetSonarAccess(SonarOptionsAccess(system_.Sonar()));
    displays_ = OpenDisplayWindows(frame_, sheet_, system_, context_);
    // What an extension may bind to: the views of the first display document that can serve one.
    system_.SetExtensionViews([this]() -> std::optional<std::vector<ExtensionView*>> {
        CWaterfallDoc* doc = displays_ ? displays_->Document(0) : nullptr;
        if (doc == nullptr) return std::nullopt;
        std::vector<ExtensionView*> views;
        for (WaterfallDocView* v : doc->Views()) {
            if (auto* e = dynamic_cast<ExtensionView*>(v)) views.push_back(e);
        }
        return views;
    });
    system_.FinishStartup();
}

void ProgramWindows::Show() {
    if (!frame_.isVisible()) frame_.showMaximized();
    frame_.AcceptDroppedFiles();
    frame_.ControlBar(2, sheet_);
    frame_.StartDisplayTimer();
    frame_.TimerPass();
}

}  // namespace halvo

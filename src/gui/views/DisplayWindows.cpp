#include "gui/views/DisplayWindows.h"

#include <QMdiArea>
#include <QMdiSubWindow>
#include <algorithm>

#include "app/OverallConfig.h"
#include "display/DisplayProcessingSet.h"
#include "display/SonarDataCache.h"
#include "gui/sheets/CfgSheet.h"
#include "gui/shell/CMainFrame.h"
#include "gui/views/CChildFrameWaterfall.h"
#include "gui/views/CWaterfallDoc.h"
#include "gui/views/CfgDisplay.h"
#include "gui/views/SetupDisplay.h"
#include "status/StatusControl.h"
#include "status/StatusDataProcessor.h"
#include "system/System.h"

namespace halvo {

namespace {

DisplayViewContext MakeContext(CMainFrame& frame, System& system, SheetContext& sheet) {
    DisplayViewContext c{system.Displays(),
                         system.General(),
                         system.Coordinator(),
                         system.Ticks(),
                         sheet.prompts,
                         {},
                         {},
                         {}};
    c.pingText = [&system](std::size_t limit, const SonarDataCacheElement* line) {
        if (line == nullptr) return system.Status().pingText(limit, nullptr);
        const PingView view{line->header, line->bottomSample, line->reflection};
        return system.Status().pingText(limit, &view);
    };
    c.statusFlags = [&system] {
        return static_cast<std::uint32_t>(system.StatusSettings().getSettings().flags);
    };
    c.mainMessage = [&frame](const std::string& text) { frame.ShowMessage(text); };
    return c;
}

}  // namespace

DisplayWindows::DisplayWindows(CMainFrame& frame, CfgSheet* sheet, System& system,
                               SheetContext& sheetContext)
    : system_(system),
      context_(MakeContext(frame, system, sheetContext)),
      documents_(system.Coordinator()) {
    documents_.Load();
    const OverallConfig::Values v = system.Overall().Snapshot();
    const int count = std::clamp(v.displayCount, 1, OverallConfig::kDisplays);
    int display = 0;
    int row = 0;
    int column = 0;
    for (int f = 0; f < count; ++f) {
        auto doc = std::make_unique<CWaterfallDoc>(documents_);
        doc->Open(QString::number(f));
        doc->SetTitle(kTitle);
        documents_.SetDocument(f, doc.get());
        system.AddDocument(doc.get());

        CChildFrameWaterfall::Layout layout;
        layout.rows = std::max(0, v.numSplits[static_cast<std::size_t>(f)]);
        layout.hasPlot = v.hasPlot[static_cast<std::size_t>(f)] != 0;
        layout.firstDisplay = display;
        layout.firstRow = row;
        layout.firstColumn = column;
        auto* content = new CChildFrameWaterfall(context_, *doc, layout);
        QMdiSubWindow* window = frame.Area()->addSubWindow(content);
        window->setWindowTitle(doc->Title());
        content->ApplySizes(v.pixelsRows, v.pixelsColumns);
        // The first frame shown is maximised, once.
        if (f == 0) {
            window->showMaximized();
        } else {
            window->show();
        }
        if (layout.rows > 0) display += layout.rows - (layout.hasPlot ? 1 : 0);
        row += layout.rows;
        column += 2;
        frames_.push_back(content);
        windows_.emplace_back(window);
        docs_.push_back(std::move(doc));
    }

    if (sheet == nullptr) return;
    CWaterfallDoc* first = docs_.front().get();
    for (int d = 0; d < system.Displays().DisplaysInUse(); ++d) {
        auto newest = [first, d]() -> const SonarDataCacheElement* {
            const SonarDataCache* cache = first->ExistingCache(d);
            return cache != nullptr ? cache->Get(0) : nullptr;
        };
        auto advanced = [this, &sheetContext, d](QWidget* parent) {
            return new SetupDisplay(sheetContext, system_.Displays(), documents_, d, parent);
        };
        auto* page =
            new CfgDisplay(sheetContext, system.Displays(), d, std::move(newest), advanced);
        sheet->AddPage(page, CfgSheet::CfgDisplay);
        pages_.push_back(page);
    }
}

DisplayWindows::~DisplayWindows() {
    for (auto& doc : docs_) system_.RemoveDocument(doc.get());
    // Views leave their documents as they go, so the windows go first.
    for (QPointer<QMdiSubWindow>& w : windows_) delete w.data();
}

void DisplayWindows::ApplySplitSizes(std::span<const int> rows, std::span<const int> columns) {
    for (CChildFrameWaterfall* f : frames_) f->ApplySizes(rows, columns);
}

void DisplayWindows::CollectSplitSizes(std::vector<int>& rows, std::vector<int>& columns) const {
    for (CChildFrameWaterfall* f : frames_) f->CollectSizes(rows, columns);
}

void DisplayWindows::LoadCacheSizes() {
    documents_.Load();
    for (int d = 0; d < WaterfallDocSet::kDisplays; ++d) {
        documents_.SetCacheSize(d, documents_.CacheSize(d));
    }
}

CChildFrameWaterfall* DisplayWindows::Frame(int index) const {
    return index >= 0 && index < Frames() ? frames_[static_cast<std::size_t>(index)] : nullptr;
}

CWaterfallDoc* DisplayWindows::Document(int index) const {
    return index >= 0 && index < Frames() ? docs_[static_cast<std::size_t>(index)].get() : nullptr;
}

QMdiSubWindow* DisplayWindows::Window(int index) const {
    return index >= 0 && index < Frames() ? windows_[static_cast<std::size_t>(index)].data()
                                          : nullptr;
}

std::unique_ptr<DisplayWindows> OpenDisplayWindows(CMainFrame& frame, CfgSheet* sheet,
                                                   System& system, SheetContext& context) {
    return std::make_unique<DisplayWindows>(frame, sheet, system, context);
}

}  // namespace halvo

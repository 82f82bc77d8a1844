#pragma once
// The display windows of a running program: one waterfall document per frame the layout lists,
// each in a child window of the main frame, registered with the system's display drain; the
// cache sizes of the displays; and one "D%d" page per display in the "Status And Control"
// sheet. Made after System::Startup, which has opened the displays already.

#include <QMdiSubWindow>
#include <QPointer>
#include <QString>
#include <memory>
#include <span>
#include <vector>

#include "gui/views/DisplayViewContext.h"
#include "gui/views/WaterfallDocSet.h"

namespace halvo {

class CChildFrameWaterfall;
class CMainFrame;
class CWaterfallDoc;
class CfgSheet;
class CfgDisplay;
class System;
struct SheetContext;

class DisplayWindows {
  public:
    static constexpr const char* kTitle = "Halvo : Sonar Data";

    DisplayWindows(CMainFrame& frame, CfgSheet* sheet, System& system, SheetContext& sheetContext);
    ~DisplayWindows();
    DisplayWindows(const DisplayWindows&) = delete;
    DisplayWindows& operator=(const DisplayWindows&) = delete;

    // For the settings' view of the main window: stored sizes to every frame, and back.
    void ApplySplitSizes(std::span<const int> rows, std::span<const int> columns);
    void CollectSplitSizes(std::vector<int>& rows, std::vector<int>& columns) const;
    // `Display%d` `CacheSize`, with the rest of the settings.
    void LoadCacheSizes();
    void SaveCacheSizes() const { documents_.Save(); }

    int Frames() const { return static_cast<int>(frames_.size()); }
    CChildFrameWaterfall* Frame(int index) const;
    CWaterfallDoc* Document(int index) const;
    QMdiSubWindow* Window(int index) const;
    const std::vector<CfgDisplay*>& Pages() const { return pages_; }
    WaterfallDocSet& Documents() { return documents_; }
    DisplayViewContext& Context() { return context_; }

  private:
    System& system_;
    DisplayViewContext context_;
    WaterfallDocSet documents_;
    std::vector<std::unique_ptr<CWaterfallDoc>> docs_;
    std::vector<CChildFrameWaterfall*> frames_;
    std::vector<QPointer<QMdiSubWindow>> windows_;
    std::vector<CfgDisplay*> pages_;
};

// Opens the windows as above; keep the result for as long as the main frame lives.
std::unique_ptr<DisplayWindows> OpenDisplayWindows(CMainFrame& frame, CfgSheet* sheet,
                                                   System& system, SheetContext& context);

}  // namespace halvo

#pragma once
// What the settings of the main window and its display documents need from the GUI. The GUI
// implements it and hands it to OverallConfig; a headless run hands none.

#include <span>
#include <vector>

#include "app/WindowPlacement.h"

namespace halvo {

class MainWindowHost {
  public:
    virtual ~MainWindowHost() = default;

    virtual bool HasMainWindow() const = 0;
    // Apply a stored placement and show the window in the state it gives.
    virtual void ShowPlacement(const WindowPlacement& placement) = 0;
    virtual void ShowMaximised() = 0;
    virtual WindowPlacement CurrentPlacement() const = 0;

    // Each display document applies its splitter sizes from these lists (negative: not stored).
    virtual void ApplySplitSizes(std::span<const int> rows, std::span<const int> columns) = 0;
    // Each open document appends its panes' current sizes in turn.
    virtual void CollectSplitSizes(std::vector<int>& rows, std::vector<int>& columns) const = 0;
};

}  // namespace halvo

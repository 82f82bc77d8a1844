#pragma once
// A tabbed sheet of settings pages with its 300 ms timer. At each firing it runs the pages'
// Tick, sonar pages first, then the R90 page, then display pages, then the rest, and then the
// extension hooks. The application's timer re-entrancy count keeps a modal box opened inside a
// page from running the pages again while it is up, and an exception from a page is reported
// and the timer goes on.
//
// Pages go in by their slot, a number that fixes the tab order whatever order they arrive in;
// within one slot they keep the order they were added in.

#include <QDialog>
#include <QString>
#include <QTimer>
#include <functional>
#include <string>
#include <vector>

#include "gui/sheets/SheetContext.h"

class QTabWidget;

namespace halvo {

class SheetPage;

class PageSheet : public QDialog {
  public:
    static constexpr int kTimerMs = 300;

    // The order in which Tick visits a page.
    enum class TickGroup { Sonar, SonarR90, Display, Other };

    PageSheet(SheetContext& context, QString title, std::string exceptionText,
              QWidget* parent = nullptr);

    // The sheet takes the page (it becomes a child of the tab widget).
    void AddPage(SheetPage* page, int slot, TickGroup group = TickGroup::Other);
    // The page whose tab bears this caption, or null.
    SheetPage* FindPage(const QString& caption) const;
    // Makes this page's tab the current one; false when the page is not in this sheet.
    bool ShowPage(SheetPage* page);
    int PageCount() const { return static_cast<int>(pages_.size()); }
    SheetPage* PageAt(int tab) const;

    // Extension hooks, called after the pages at every firing.
    void AddTimerHook(std::function<void()> hook) { hooks_.push_back(std::move(hook)); }

    // One firing of the timer (the timer calls it; tests call it directly).
    void TimerPass();
    // Firings so far, including those that did nothing because a pass was still running.
    int Firings() const { return firings_; }
    QTimer& Timer() { return timer_; }

  protected:
    SheetContext& context_;

  private:
    struct Entry {
        SheetPage* page = nullptr;
        int slot = 0;
        TickGroup group = TickGroup::Other;
    };
    void TickAll();

    QTabWidget* tabs_ = nullptr;
    std::vector<Entry> pages_;  // in tab order
    std::vector<std::function<void()>> hooks_;
    std::string exceptionText_;
    QTimer timer_;
    int firings_ = 0;
};

}  // namespace halvo

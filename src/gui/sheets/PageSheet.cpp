#include "gui/sheets/PageSheet.h"

#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <exception>

#include "app/SystemCoordinator.h"
#include "gui/sheets/OperatorPrompts.h"
#include "gui/sheets/SheetPage.h"

namespace halvo {

PageSheet::PageSheet(SheetContext& context, QString title, std::string exceptionText,
                     QWidget* parent)
    : QDialog(parent), context_(context), exceptionText_(std::move(exceptionText)) {
    setWindowTitle(title);
    tabs_ = new QTabWidget(this);
    tabs_->setUsesScrollButtons(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(tabs_);
    timer_.setInterval(kTimerMs);
    connect(&timer_, &QTimer::timeout, this, [this] { TimerPass(); });
    timer_.start();
}

void PageSheet::AddPage(SheetPage* page, int slot, TickGroup group) {
    if (page == nullptr) return;
    const auto at = std::upper_bound(pages_.begin(), pages_.end(), slot,
                                     [](int s, const Entry& e) { return s < e.slot; });
    const int index = static_cast<int>(at - pages_.begin());
    pages_.insert(at, Entry{page, slot, group});
    tabs_->insertTab(index, page, page->Caption());
    // The sheet is a dialog: Enter in a field must finish the entry, never press a button
    // somewhere on the page.
    for (QPushButton* button : page->findChildren<QPushButton*>()) {
        button->setAutoDefault(false);
        button->setDefault(false);
    }
}

SheetPage* PageSheet::FindPage(const QString& caption) const {
    for (const Entry& e : pages_) {
        if (e.page->Caption() == caption) return e.page;
    }
    return nullptr;
}

bool PageSheet::ShowPage(SheetPage* page) {
    const int index = tabs_->indexOf(page);
    if (index < 0) return false;
    tabs_->setCurrentIndex(index);
    return true;
}

SheetPage* PageSheet::PageAt(int tab) const {
    if (tab < 0 || tab >= PageCount()) return nullptr;
    return pages_[static_cast<std::size_t>(tab)].page;
}

void PageSheet::TimerPass() {
    ++firings_;
    // A pass already running below us (a modal box inside a page) makes this one a no-op.
    if (context_.coordinator.EnterDisplayTimer() == 0) {
        try {
            TickAll();
            for (const auto& hook : hooks_) {
                if (hook) hook();
            }
        } catch (...) {
            context_.prompts.Notify("Timer Exception", exceptionText_);
        }
    }
    context_.coordinator.LeaveDisplayTimer();
}

void PageSheet::TickAll() {
    // Copied: a page's tick may add pages (an extension's page appearing).
    const std::vector<Entry> pages = pages_;
    for (TickGroup group :
         {TickGroup::Sonar, TickGroup::SonarR90, TickGroup::Display, TickGroup::Other}) {
        for (const Entry& e : pages) {
            if (e.group == group) e.page->Tick();
        }
    }
}

}  // namespace halvo

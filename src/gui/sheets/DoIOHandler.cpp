#include "gui/sheets/DoIOHandler.h"

#include <QWidget>

namespace halvo {

void DoIOHandler::Exchange(int direction) {
    if (!initialised_) {
        initialised_ = true;
        Exchange(kShow);
    }
    if (direction == kRead) dirty_ = false;
    if (DoIO(direction) != 0) DoIO(kShow);
    changeCount_ = GetChangeCount();
}

void DoIOHandler::Tick() {
    BeforeTick();
    QWidget* page = GetPage();
    if (page == nullptr || !page->isVisible()) return;
    const int count = GetChangeCount();
    if (dirty_) Exchange(kRead);
    if (count != changeCount_) {
        changeCount_ = count;
        Exchange(kShow);
    }
    OnTick();
}

}  // namespace halvo

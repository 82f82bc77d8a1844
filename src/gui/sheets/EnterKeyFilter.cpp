#include "gui/sheets/EnterKeyFilter.h"

#include <QKeyEvent>

#include "app/SystemCoordinator.h"

namespace halvo {

bool EnterKeyFilter::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) coordinator_.SetEnterFlag();
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace halvo

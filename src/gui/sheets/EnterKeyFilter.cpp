#include "gui/sheets/EnterKeyFilter.h"

#include <QGuiApplication>
#include <QKeyEvent>

#include "app/SystemCoordinator.h"

namespace halvo {

bool EnterKeyFilter::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        // A key the focus widget ignores travels on to its parents and passes here again; only
        // its first delivery counts, or a flag the field has already taken would come back.
        QObject* focus = QGuiApplication::focusObject();
        if ((key == Qt::Key_Return || key == Qt::Key_Enter) &&
            (focus == nullptr || focus == watched)) {
            coordinator_.SetEnterFlag();
        }
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace halvo

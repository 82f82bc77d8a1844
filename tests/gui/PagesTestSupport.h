#pragma once
// What the page tests share: the sheet's context, operator gestures on single controls, and
// screenshots of a page as the operator would see it.

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QFocusEvent>
#include <QLineEdit>
#include <QWidget>

#include "GuiTestApp.h"
#include "app/SystemCoordinator.h"
#include "gui/sheets/EnableTable.h"
#include "gui/sheets/SheetContext.h"

namespace halvo::test {

struct PageContext {
    QApplication& app = GuiApp();
    SystemCoordinator coordinator;
    ScriptedOperator prompts;
    EnableTable enables;
    SheetContext context{coordinator, prompts, enables};
};

// Types into a field and leaves it, which applies the entry.
inline void TypeAndLeave(QLineEdit* edit, const QString& text) {
    edit->setText(text);
    QFocusEvent out(QEvent::FocusOut, Qt::TabFocusReason);
    QApplication::sendEvent(edit, &out);
}

inline void Choose(QComboBox* combo, int index) {
    combo->setCurrentIndex(index);
    emit combo->activated(index);
}

// Saves the page at a size that fits a 1366 x 768 screen beside the displays.
inline bool Screenshot(QWidget& page, const char* name) {
    page.resize(page.sizeHint().expandedTo(QSize(760, 0)).boundedTo(QSize(1000, 740)));
    QApplication::processEvents();
    const QString file = QString::fromStdString(ScreenshotPath(name));
    QDir().mkpath(QFileInfo(file).absolutePath());
    return page.grab().save(file);
}

}  // namespace halvo::test

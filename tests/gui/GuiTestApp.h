#pragma once
// One QApplication per test binary, on the offscreen platform, and the small helpers the GUI
// tests share: a scripted operator for message boxes, a bounded event pump, the operator's
// gestures on single controls and screenshots under the build folder.

#include <gtest/gtest.h>
#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QFocusEvent>
#include <QLineEdit>
#include <QTest>
#include <functional>
#include <string>
#include <vector>

#include "app/SystemCoordinator.h"
#include "gui/sheets/EnableTable.h"
#include "gui/sheets/OperatorPrompts.h"
#include "gui/sheets/SheetContext.h"

namespace halvo::test {

inline QApplication& GuiApp() {
    static int argc = 1;
    static char name[] = "test_gui";
    static char* argv[] = {name, nullptr};
    static QApplication* app = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return new QApplication(argc, argv);
    }();
    return *app;
}

// Runs the event loop until done() or the time is up; true when done.
inline bool PumpUntil(const std::function<bool()>& done, int maxMs) {
    QElapsedTimer t;
    t.start();
    while (!done()) {
        if (t.elapsed() > maxMs) return false;
        QApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}
inline void PumpFor(int ms) {
    PumpUntil([] { return false; }, ms);
}

// The operator: remembers every box and answers questions as told.
struct ScriptedOperator final : OperatorPrompts {
    struct Box {
        std::string title;
        std::string text;
    };
    std::vector<Box> boxes;
    bool answer = true;

    void Notify(std::string_view title, std::string_view text) override {
        boxes.push_back({std::string(title), std::string(text)});
    }
    bool AskYesNo(std::string_view title, std::string_view text) override {
        boxes.push_back({std::string(title), std::string(text)});
        return answer;
    }
};

// A sheet's context over a coordinator of its own.
struct PageContext {
    QApplication& app = GuiApp();
    SystemCoordinator coordinator;
    ScriptedOperator prompts;
    EnableTable enables;
    SheetContext context{coordinator, prompts, enables};
};

template <class W>
W* Child(QObject* parent, const QString& name) {
    W* w = parent == nullptr ? nullptr : parent->findChild<W*>(name);
    EXPECT_NE(w, nullptr) << name.toStdString();
    return w;
}
// What a line edit or a list shows.
inline QString Shown(QWidget* page, const char* name) {
    if (auto* e = page->findChild<QLineEdit*>(name)) return e->text();
    if (auto* c = page->findChild<QComboBox*>(name)) return c->currentText();
    return QString("<no field %1>").arg(name);
}
// The button that reads `text`, or the one of that object name.
inline QAbstractButton* Button(QWidget* page, const QString& text) {
    for (QAbstractButton* b : page->findChildren<QAbstractButton*>()) {
        if (b->text() == text || b->objectName() == text) return b;
    }
    ADD_FAILURE() << text.toStdString();
    return nullptr;
}

// Types into a field and leaves it, which applies the entry.
inline void TypeAndLeave(QLineEdit* edit, const QString& text) {
    edit->setText(text);
    QFocusEvent out(QEvent::FocusOut, Qt::TabFocusReason);
    QApplication::sendEvent(edit, &out);
}
// Clicks into the field (Enter counts for the field with the focus), types and presses Enter.
inline void TypeAndEnter(QLineEdit* edit, const QString& text) {
    ASSERT_NE(edit, nullptr);
    edit->window()->activateWindow();
    edit->setFocus(Qt::MouseFocusReason);
    QApplication::processEvents();
    edit->clear();
    QTest::keyClicks(edit, text);
    QTest::keyClick(edit, Qt::Key_Return);
}
inline void Choose(QComboBox* combo, int index) {
    combo->setCurrentIndex(index);
    emit combo->activated(index);
}
inline void Choose(QComboBox* combo, const QString& text) {
    const int i = combo->findText(text);
    ASSERT_GE(i, 0) << text.toStdString();
    Choose(combo, i);
}

inline std::string ScreenshotPath(const char* name) {
    return std::string(HALVO_BINARY_DIR) + "/screenshots/" + name;
}
inline bool Screenshot(QWidget& w, const char* name) {
    const QString file = QString::fromStdString(ScreenshotPath(name));
    QDir().mkpath(QFileInfo(file).absolutePath());
    return w.grab().save(file);
}
// A page alone, at a size that fits a 1366 x 768 screen beside the displays.
inline bool PageScreenshot(QWidget& page, const char* name) {
    page.resize(page.sizeHint().expandedTo(QSize(760, 0)).boundedTo(QSize(1000, 740)));
    QApplication::processEvents();
    return Screenshot(page, name);
}

}  // namespace halvo::test

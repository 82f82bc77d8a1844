#pragma once
// One QApplication per test binary, on the offscreen platform, and the small helpers the GUI
// tests share: a scripted operator for message boxes and a bounded event pump.

#include <QApplication>
#include <QElapsedTimer>
#include <QString>
#include <functional>
#include <string>
#include <vector>

#include "gui/sheets/OperatorPrompts.h"

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

inline std::string ScreenshotPath(const char* name) {
    return std::string(HALVO_BINARY_DIR) + "/screenshots/" + name;
}

}  // namespace halvo::test

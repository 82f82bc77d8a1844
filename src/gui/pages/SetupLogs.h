#pragma once
// The "Logs" page: the operator's two comment lines and the per-file log switch, the flags that
// choose what the event log records, and the event log itself, growing as lines arrive. The view
// can be held still for reading and filtered by a piece of text; neither touches the log.

#include <QString>
#include <cstdint>

#include "gui/sheets/SettingsPage.h"
#include "storage/LoggingSettings.h"

class QCheckBox;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace halvo {

class EventLog;
class LoggingControl;

class SetupLogs : public SettingsPage<LoggingSettings> {
  public:
    static constexpr const char* kCaption = "Logs";
    static constexpr int kFlagCount = 9;

    struct Widgets {
        QLineEdit* comment1 = nullptr;
        QLineEdit* comment2 = nullptr;
        QCheckBox* perFileLog = nullptr;
        QCheckBox* flags[kFlagCount] = {};
        QPlainTextEdit* view = nullptr;
        QLineEdit* filter = nullptr;
        QCheckBox* hold = nullptr;
        QPushButton* clearView = nullptr;
    };

    SetupLogs(SheetContext& context, LoggingControl& logging, EventLog& log,
              QWidget* parent = nullptr);

    const Widgets& Ui() const { return ui_; }
    // The bit each flag box stands for, in the order of Widgets::flags.
    static std::uint32_t FlagBit(int index);

  protected:
    void Bind(FieldEditor& ed, int direction, LoggingSettings& v) override;
    void OnTick() override;

  private:
    void BuildLayout();
    // Appends what the log gained since the last line shown.
    void Follow();
    // Shows the whole ring again through the current filter.
    void Refill();
    bool Passes(const QString& line) const;

    EventLog& log_;
    Widgets ui_;
    std::uint64_t lastShown_ = 0;
};

}  // namespace halvo

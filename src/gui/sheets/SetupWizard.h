#pragma once
// The "Wizard" page: help on connecting to the sonar, and a script per subsystem that sets up a
// raw data recording for diagnostics by driving the sonar, display and disk pages.

#include <QString>

#include "gui/sheets/SheetPage.h"

class QPushButton;

namespace halvo {

class PageSheet;

class SetupWizard : public SheetPage {
  public:
    // The directory and file name of a diagnostic recording.
    static constexpr const char* kRecordDirectory = ".";
    static constexpr const char* kRecordFile = "DiagData_";

    SetupWizard(SheetContext& context, PageSheet& sheet, QWidget* parent = nullptr);

    int GetChangeCount() override { return 0; }
    int DoIO(int) override { return 0; }

    // The buttons' work, for the buttons and for tests.
    void ShowConnectionHelp();
    // word: "Subbottom", "SSL" or "SSH"; caption: the sonar tab; subbottom: which failure text.
    void CollectRawData(const QString& word, const QString& caption, bool subbottom);

    static const char* ConnectionHelpText();

  private:
    void Info(const QString& text);

    PageSheet& sheet_;
};

}  // namespace halvo

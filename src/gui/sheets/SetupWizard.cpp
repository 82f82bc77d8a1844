#include "gui/sheets/SetupWizard.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "gui/sheets/OperatorPrompts.h"
#include "gui/sheets/PageSheet.h"
#include "gui/sheets/WizardTargets.h"

namespace halvo {

SetupWizard::SetupWizard(SheetContext& context, PageSheet& sheet, QWidget* parent)
    : SheetPage(context, "Wizard", parent), sheet_(sheet) {
    auto* layout = new QVBoxLayout(this);
    const auto add = [&](const char* text, auto action) {
        auto* b = new QPushButton(text, this);
        b->setAutoDefault(false);
        connect(b, &QPushButton::clicked, this, action);
        layout->addWidget(b);
    };
    add("Set Up Connection to the Sonar", [this] { ShowConnectionHelp(); });
    add("Collect Raw Data for Subbottom", [this] { CollectRawData("Subbottom", "SB", true); });
    add("Collect Raw Data for SSL", [this] { CollectRawData("SSL", "SSL", false); });
    add("Collect Raw Data for SSH", [this] { CollectRawData("SSH", "SSH", false); });
    layout->addStretch(1);
}

const char* SetupWizard::ConnectionHelpText() {
    return "The program talks to the sonar over two network links, one for commands and one "
           "for data.\n\n"
           "While there is no connection the NET box of the status bar blinks red; it turns to "
           "NET:ON as soon as the command link is up.\n\n"
           "Enter the sonar's address on the \"Network\" page of the \"Status And Control\" "
           "sheet, in the \"Host\" and \"Port\" columns of the \"Sonar Command\" and "
           "\"Sonar Data\" rows: the command port is 1600 and the data port 1601 unless the "
           "sonar was set up otherwise.";
}

void SetupWizard::ShowConnectionHelp() {
    Context().prompts.Notify("Sonar Connection Info", ConnectionHelpText());
}

void SetupWizard::Info(const QString& text) {
    Context().prompts.Notify("Wizard Info", text.toStdString());
}

void SetupWizard::CollectRawData(const QString& word, const QString& caption, bool subbottom) {
    OperatorPrompts& prompts = Context().prompts;
    const QString question =
        QString("Do you want to collect a %1 raw data file for diagnostic purposes?").arg(word);
    if (!prompts.AskYesNo("Collect Raw Data", question.toStdString())) return;

    auto* sonar = dynamic_cast<WizardSonarTarget*>(sheet_.FindPage(caption));
    if (sonar == nullptr) {
        prompts.Notify("Wizard Failed", subbottom
                                            ? "I dont see a subbottom configured.  Giving up"
                                            : "I dont see this subsystem configured.  Giving up");
        return;
    }
    sonar->SetupRawDataCollection();
    Info(
        "I am setting up for raw data mode, internally triggered, and pinging on at 1 Hz with a "
        "data window of 100 ms");

    auto* display = dynamic_cast<WizardDisplayTarget*>(sheet_.FindPage("D0"));
    if (display == nullptr) {
        prompts.Notify("Wizard Failed", "I cannot find display 0.  Giving up");
        return;
    }
    const int channel = sonar->FirstDisplayChannel();
    display->ShowChannel(channel);
    Info(QString("I am setting display 0 to show channel %1 of the %2").arg(channel).arg(word));

    auto* disk = dynamic_cast<WizardDiskTarget*>(sheet_.FindPage("Disk"));
    if (disk == nullptr) {
        prompts.Notify("Wizard Failed", "I cannot find a disk tab.  Giving up");
        return;
    }
    disk->StartRecording(kRecordDirectory, kRecordFile);
    Info(
        "I am setting the Disk to record data in DiagData_xxx.hsf. Please press the STOP button "
        "when enough data has been collected.");
}

}  // namespace halvo

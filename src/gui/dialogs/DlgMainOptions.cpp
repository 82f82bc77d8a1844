#include "gui/dialogs/DlgMainOptions.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include "gui/editors/FieldEditor.h"
#include "gui/sheets/OperatorPrompts.h"

namespace halvo {

DlgMainOptions::DlgMainOptions(OperatorPrompts& prompts, MainOptionsStore& store, QWidget* parent)
    : QDialog(parent), prompts_(prompts), store_(store) {
    setWindowTitle("Options");
    tabs_ = new QTabWidget(this);
    tabs_->addTab(BuildGeneral(), "General");
    for (int i = 0; i < MainOptions::kSonars; ++i) {
        tabs_->addTab(BuildSonar(sonars_[static_cast<std::size_t>(i)]), QString("Sonar %1").arg(i));
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &DlgMainOptions::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &DlgMainOptions::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs_);
    layout->addWidget(buttons);
    Reset();
}

QWidget* DlgMainOptions::BuildGeneral() {
    auto* page = new QWidget(this);
    auto* form = new QFormLayout;
    numSonars_ = new QLineEdit(page);
    form->addRow("Number of Sonar Subsystems", numSonars_);
    inBottle_ = new QCheckBox(page);
    form->addRow("In Bottle Storage:", inBottle_);
    displays_ = new QLineEdit(page);
    form->addRow("Number of Waterfall Displays", displays_);
    pitchRoll_ = new QCheckBox("Pitch Roll Strip Chart Above D0", page);
    form->addRow(pitchRoll_);

    auto* group = new QGroupBox("Synthetic (Summed) Channels for Display", page);
    auto* lists = new QHBoxLayout(group);
    for (std::size_t k = 0; k < summed_.size(); ++k) {
        auto* list = new QListWidget(group);
        list->setSelectionMode(QAbstractItemView::MultiSelection);
        for (int c = 0; c < MainOptions::kSummedChannels; ++c) {
            list->addItem(QString::asprintf("Chan%02d", c));
        }
        summed_[k] = list;
        lists->addWidget(list);
    }
    auto* layout = new QVBoxLayout(page);
    layout->addLayout(form);
    layout->addWidget(group, 1);
    return page;
}

QWidget* DlgMainOptions::BuildSonar(SonarFields& f) {
    auto* page = new QWidget(this);
    auto* form = new QFormLayout(page);
    f.tab = page;
    f.name = new QLineEdit(page);
    f.subsystem = new QLineEdit(page);
    f.offset = new QLineEdit(page);
    f.transmit = new QLineEdit(page);
    f.receive = new QLineEdit(page);
    f.enable = new QCheckBox("Enable Control", page);
    form->addRow("Sonar Name", f.name);
    form->addRow("Subsystem #", f.subsystem);
    form->addRow("Channel Offset", f.offset);
    form->addRow("Transmit Channels", f.transmit);
    form->addRow("Receive Channels", f.receive);
    form->addRow(f.enable);
    return page;
}

QLineEdit* DlgMainOptions::SonarNameField(int sonar) const {
    if (sonar < 0 || sonar >= MainOptions::kSonars) return nullptr;
    return sonars_[static_cast<std::size_t>(sonar)].name;
}

QListWidget* DlgMainOptions::SummedList(int which) const {
    if (which < 0 || which > 1) return nullptr;
    return summed_[static_cast<std::size_t>(which)];
}

bool DlgMainOptions::SonarTabEnabled(int sonar) const {
    if (sonar < 0 || sonar >= MainOptions::kSonars) return false;
    return tabs_->isTabEnabled(sonar + 1);
}

int DlgMainOptions::Exchange(int dir) {
    FieldEditor ed;
    MainOptions& v = values_;
    const bool sonar = store_.HasSonarAccess();
    if (sonar) {
        ed.Int(dir, numSonars_, v.numSonars, 0, MainOptions::kSonars);
        ed.Check(dir, inBottle_, v.inBottleStorage);
    }
    ed.Int(dir, displays_, v.waterfallDisplays, 1, MainOptions::kDisplays);
    ed.Check(dir, pitchRoll_, v.pitchRollAbove);
    for (std::size_t k = 0; k < summed_.size(); ++k) {
        QListWidget* list = summed_[k];
        for (int c = 0; c < MainOptions::kSummedChannels; ++c) {
            const std::uint32_t bit = std::uint32_t{1} << c;
            if (dir == FieldEditor::kShow) {
                list->item(c)->setSelected((v.summed[k] & bit) != 0);
            } else {
                v.summed[k] =
                    list->item(c)->isSelected() ? (v.summed[k] | bit) : (v.summed[k] & ~bit);
            }
        }
    }
    for (std::size_t i = 0; i < sonars_.size(); ++i) {
        SonarFields& f = sonars_[i];
        MainOptions::Sonar& s = v.sonars[i];
        ed.Text(dir, f.name, s.name, 79);
        if (!sonar) continue;
        ed.Int(dir, f.subsystem, s.subsystem, 0, 255);
        ed.Int(dir, f.offset, s.channelOffset, 0, 63);
        ed.Int(dir, f.transmit, s.transducers, 0, 16);
        ed.Int(dir, f.receive, s.inputChannels, 0, 16);
        ed.Check(dir, f.enable, s.enableControl);
    }
    return ed.Changes();
}

void DlgMainOptions::Reset() {
    values_ = store_.Read();
    Exchange(FieldEditor::kShow);
    const bool sonar = store_.HasSonarAccess();
    numSonars_->setEnabled(sonar);
    inBottle_->setEnabled(sonar);
    for (SonarFields& f : sonars_) {
        for (QWidget* w : {static_cast<QWidget*>(f.subsystem), static_cast<QWidget*>(f.offset),
                           static_cast<QWidget*>(f.transmit), static_cast<QWidget*>(f.receive),
                           static_cast<QWidget*>(f.enable)}) {
            w->setEnabled(sonar);
        }
    }
    Serve();
}

void DlgMainOptions::Serve() {
    // Tabs of sonars beyond the number typed so far are greyed; with no sonar side every tab
    // stays open for its name.
    int count = MainOptions::kSonars;
    if (store_.HasSonarAccess()) {
        std::uint32_t bits = 0;
        fieldtext::Scanner s(numSonars_->text().toStdString());
        count = s.Int(10, bits) ? static_cast<std::int32_t>(bits) : values_.numSonars;
    }
    for (int i = 0; i < MainOptions::kSonars; ++i) tabs_->setTabEnabled(i + 1, i < count);
}

void DlgMainOptions::accept() {
    Exchange(FieldEditor::kRead);
    store_.Write(values_);
    prompts_.Notify("You Need To Restart Halvo",
                    "Some changes are only applied when Halvo is Restarted");
    QDialog::accept();
}

}  // namespace halvo

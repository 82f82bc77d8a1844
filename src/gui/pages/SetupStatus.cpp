#include "gui/pages/SetupStatus.h"

#include "gui/pages/PageWidgets.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>
#include <QVBoxLayout>

#include "display/WaterfallPlot.h"
#include "gui/pages/FlagCheck.h"
#include "status/StatusControl.h"
#include "status/StatusCustomPresets.h"

namespace halvo {
namespace {

constexpr int kItemColumns = 3;

}  // namespace

SetupStatus::SetupStatus(SheetContext& context, StatusControl& status, std::string presetsFile,
                         QWidget* parent)
    : SettingsPage(context, kCaption,
                   {[&status] { return status.getSettings(); },
                    [&status](const StatusSettings& v) { status.setSettings(v); },
                    [&status] { return status.ChangeCount(); }},
                   parent),
      status_(status),
      presetsFile_(std::move(presetsFile)) {
    BuildLayout();
    for (const Item& item : ui_.items) WatchButton(item.box);
    for (const CustomRow& r : ui_.custom) {
        WatchButton(r.enable);
        for (QLineEdit* e : {r.description, r.field, r.channel, r.label}) WatchEdit(e);
    }
    WatchEdit(ui_.fontSize);
    WatchEdit(ui_.statusLines);
}

void SetupStatus::BuildLayout() {
    auto* top = new QVBoxLayout(this);

    auto* items = new QGroupBox("Status Items", this);
    auto* il = new QGridLayout(items);
    const auto add = [&](std::uint32_t bit, const QString& label) {
        auto* box = new QCheckBox(label, items);
        const int n = static_cast<int>(ui_.items.size());
        il->addWidget(box, n / kItemColumns, n % kItemColumns);
        ui_.items.push_back({bit, box});
    };
    for (const StatusItemLabel& l : StatusItemLabels()) {
        add(l.bit, QString::fromLatin1(l.label.data(), static_cast<int>(l.label.size())));
    }
    add(WaterfallPlot::kCursorDepthBit, "Cursor Depth");
    add(WaterfallPlot::kCursorSampleBit, "Sample #");
    top->addWidget(items);

    auto* custom = new QGroupBox("Custom Fields", this);
    auto* cl = new QGridLayout(custom);
    int col = 0;
    for (const char* head : {"", "Description", "Header Byte", "Channel", "Format", ""}) {
        cl->addWidget(Unit(head, custom), 0, col++);
    }
    for (int n = 0; n < StatusSettings::kCustomCount; ++n) {
        CustomRow& r = ui_.custom[n];
        r.enable = new QCheckBox(QString::number(n), custom);
        r.description = new QLineEdit(custom);
        r.description->setMaxLength(static_cast<int>(CustomField::kDescriptionBytes - 1));
        r.field = NumberEdit(custom, 4);
        r.field->setToolTip(
            "Byte offset in the trace header, 0 to 239: even reads 32 bits, "
            "odd reads 16 bits at the offset less 1");
        r.channel = NumberEdit(custom, 3);
        r.channel->setToolTip("Absolute channel, 0 to 62, or -1 for any channel");
        r.label = new QLineEdit(custom);
        r.label->setMaxLength(static_cast<int>(CustomField::kLabelBytes - 1));
        r.presets = new QToolButton(custom);
        r.presets->setText("...");
        r.presets->setToolTip("Ready-made fields from StatusCustom.ini");
        r.presets->setPopupMode(QToolButton::InstantPopup);
        auto* menu = new QMenu(r.presets);
        r.presets->setMenu(menu);
        connect(menu, &QMenu::aboutToShow, this, [this, n] { FillPresetMenu(n); });
        cl->addWidget(r.enable, n + 1, 0);
        cl->addWidget(r.description, n + 1, 1);
        cl->addWidget(r.field, n + 1, 2);
        cl->addWidget(r.channel, n + 1, 3);
        cl->addWidget(r.label, n + 1, 4);
        cl->addWidget(r.presets, n + 1, 5);
    }
    cl->setColumnStretch(1, 2);
    cl->setColumnStretch(4, 3);
    ui_.help = new QLabel(kFormatHelp, custom);
    ui_.help->setForegroundRole(QPalette::PlaceholderText);
    ui_.help->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    cl->addWidget(ui_.help, 1, 6, StatusSettings::kCustomCount, 1);
    top->addWidget(custom);

    auto* bar = new QGroupBox("Status Bar", this);
    auto* bl = new QHBoxLayout(bar);
    ui_.fontSize = NumberEdit(bar, 4);
    ui_.statusLines = NumberEdit(bar, 2);
    bl->addWidget(new QLabel("Status Font Size:", bar));
    bl->addWidget(ui_.fontSize);
    bl->addWidget(Unit("5 to 100", bar));
    bl->addSpacing(24);
    bl->addWidget(new QLabel("Number of Status Lines:", bar));
    bl->addWidget(ui_.statusLines);
    bl->addWidget(Unit("0 to 3", bar));
    bl->addStretch(1);
    top->addWidget(bar);
    top->addStretch(1);
}

QCheckBox* SetupStatus::ItemBox(std::uint32_t bit) const {
    for (const Item& item : ui_.items) {
        if (item.bit == bit) return item.box;
    }
    return nullptr;
}

void SetupStatus::Bind(FieldEditor& ed, int dir, StatusSettings& v) {
    for (const Item& item : ui_.items) CheckBit(ed, dir, item.box, v.flags, item.bit);
    for (int n = 0; n < StatusSettings::kCustomCount; ++n) {
        CustomRow& r = ui_.custom[n];
        CustomField& c = v.custom[static_cast<std::size_t>(n)];
        ed.Check(dir, r.enable, c.enable);
        ed.Text(dir, r.description, c.description, CustomField::kDescriptionBytes - 1);
        ed.Int(dir, r.field, c.field, 0, kMaxFieldOffset);
        ed.Int(dir, r.channel, c.channel, -1, kMaxChannel);
        ed.Text(dir, r.label, c.label, CustomField::kLabelBytes - 1);
    }
    ed.Int(dir, ui_.fontSize, v.fontSize, 5, 100);
    ed.Int(dir, ui_.statusLines, v.statusLines, 0, 3);
}

std::vector<std::string> SetupStatus::PresetNames() const {
    std::vector<std::string> names;
    for (const auto& p : ReadStatusCustomPresets(presetsFile_)) names.push_back(p.name);
    return names;
}

bool SetupStatus::ChoosePreset(int row, int index) {
    if (row < 0 || row >= StatusSettings::kCustomCount || index < 0) return false;
    const auto presets = ReadStatusCustomPresets(presetsFile_);
    if (index >= static_cast<int>(presets.size())) return false;
    StatusSettings s = status_.getSettings();
    presets[static_cast<std::size_t>(index)].ApplyTo(s.custom[static_cast<std::size_t>(row)]);
    status_.setSettings(s);
    Exchange(kShow);
    return true;
}

void SetupStatus::FillPresetMenu(int row) {
    QMenu* menu = ui_.custom[row].presets->menu();
    menu->clear();
    const auto names = PresetNames();
    if (names.empty()) {
        menu->addAction("(no StatusCustom.ini)")->setEnabled(false);
        return;
    }
    for (int i = 0; i < static_cast<int>(names.size()); ++i) {
        menu->addAction(QString::fromStdString(names[static_cast<std::size_t>(i)]), this,
                        [this, row, i] { ChoosePreset(row, i); });
    }
}

}  // namespace halvo

#include "gui/pages/SetupAlert.h"

#include "gui/pages/PageWidgets.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "gui/pages/FlagCheck.h"
#include "status/StatusControl.h"

namespace halvo {
namespace {

// Ranges the page holds the floats to: wide enough for any sane limit, narrow enough that a
// typing slip (an extra digit or two) is caught at once.
constexpr float kMaxAltitudeM = 10000.0f;
constexpr float kMaxDegrees = 180.0f;
constexpr float kMinDegC = -50.0f;
constexpr float kMaxDegC = 200.0f;

// Label, field and unit on one row of a grid, starting at column `col`.
void Row(QGridLayout* g, int row, int col, const char* label, QLineEdit* field,
         const QString& unit) {
    g->addWidget(new QLabel(label), row, col, Qt::AlignRight);
    g->addWidget(field, row, col + 1);
    if (!unit.isEmpty()) g->addWidget(Unit(unit, field->parentWidget()), row, col + 2);
}

}  // namespace

SetupAlert::SetupAlert(SheetContext& context, StatusControl& status,
                       std::function<std::string()> alertText, QWidget* parent)
    : SettingsPage(context, kCaption,
                   {[&status] { return status.getAlertSettings(); },
                    [&status](const AlertSettings& v) { status.setAlertSettings(v); },
                    [&status] { return status.AlertChangeCount(); }},
                   parent),
      alertText_(std::move(alertText)) {
    BuildLayout();
    for (QCheckBox* b : ui_.enables) WatchButton(b);
    for (QLineEdit* e :
         {ui_.altitudeDisplay, ui_.altitudeWarning, ui_.rollMin, ui_.rollMax, ui_.pitchMin,
          ui_.pitchMax, ui_.temperatureMax, ui_.minDiskFree, ui_.miscMin, ui_.miscMax, ui_.miscChan,
          ui_.beepInterval, ui_.beepTone, ui_.beepDuration}) {
        WatchEdit(e);
    }
}

void SetupAlert::BuildLayout() {
    auto* top = new QVBoxLayout(this);

    ui_.alertText = new QLabel(this);
    ui_.alertText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QFont bold = ui_.alertText->font();
    bold.setBold(true);
    ui_.alertText->setFont(bold);
    top->addWidget(ui_.alertText);

    auto* enables = new QGroupBox("Enable", this);
    auto* el = new QGridLayout(enables);
    const auto table = AlertBitTable();
    for (int i = 0; i < kBitCount && i < static_cast<int>(table.size()); ++i) {
        const auto& info = table[static_cast<std::size_t>(i)];
        ui_.enables[i] = new QCheckBox(
            QString::fromLatin1(info.label.data(), static_cast<int>(info.label.size())), enables);
        el->addWidget(ui_.enables[i], i / 3, i % 3);
    }
    top->addWidget(enables);

    auto* limits = new QGroupBox("Limits", this);
    auto* ll = new QGridLayout(limits);
    ui_.altitudeWarning = NumberEdit(limits, 8);
    ui_.altitudeDisplay = NumberEdit(limits, 3);
    ui_.rollMin = NumberEdit(limits, 8);
    ui_.rollMax = NumberEdit(limits, 8);
    ui_.pitchMin = NumberEdit(limits, 8);
    ui_.pitchMax = NumberEdit(limits, 8);
    ui_.temperatureMax = NumberEdit(limits, 8);
    ui_.minDiskFree = NumberEdit(limits, 8);
    ui_.miscMin = NumberEdit(limits, 7);
    ui_.miscMax = NumberEdit(limits, 7);
    ui_.miscChan = NumberEdit(limits, 3);
    Row(ll, 0, 0, "Altitude Min:", ui_.altitudeWarning, "m");
    Row(ll, 0, 3, "Display # or -1:", ui_.altitudeDisplay, "(-1 to Use Altitude Sensor)");
    Row(ll, 1, 0, "Roll Min:", ui_.rollMin, "deg");
    Row(ll, 1, 3, "Roll Max:", ui_.rollMax, "deg");
    Row(ll, 2, 0, "Pitch Min:", ui_.pitchMin, "deg");
    Row(ll, 2, 3, "Pitch Max:", ui_.pitchMax, "deg");
    Row(ll, 3, 0, "Deg C Max:", ui_.temperatureMax, "bottle, deg C");
    Row(ll, 3, 3, "Min Free MB:", ui_.minDiskFree, "MB at Record Dir");
    ll->addWidget(new QLabel("Misc / Leak", limits), 4, 0, Qt::AlignRight);
    Row(ll, 5, 0, "Min:", ui_.miscMin, "-32768 to 32768");
    Row(ll, 5, 3, "Max:", ui_.miscMax, "-32768 to 32768");
    Row(ll, 6, 0, "IO Chan:", ui_.miscChan, "0 to 7");
    ll->setColumnStretch(6, 1);
    top->addWidget(limits);

    auto* beep = new QGroupBox("Beep", this);
    auto* bl = new QGridLayout(beep);
    ui_.beepInterval = NumberEdit(beep, 7);
    ui_.beepTone = NumberEdit(beep, 6);
    ui_.beepDuration = NumberEdit(beep, 6);
    Row(bl, 0, 0, "Interval ms:", ui_.beepInterval, "0 to 100000, 0 = no beep");
    Row(bl, 1, 0, "Tone in Hz:", ui_.beepTone, "0 to 10000");
    Row(bl, 2, 0, "Duration ms:", ui_.beepDuration, "0 to 10000");
    bl->setColumnStretch(3, 1);
    top->addWidget(beep);
    top->addStretch(1);
}

void SetupAlert::Bind(FieldEditor& ed, int dir, AlertSettings& v) {
    const auto table = AlertBitTable();
    for (int i = 0; i < kBitCount && i < static_cast<int>(table.size()); ++i) {
        CheckBit(ed, dir, ui_.enables[i], v.alertFlags, table[static_cast<std::size_t>(i)].bit);
    }
    ed.Int(dir, ui_.altitudeDisplay, v.altitudeDisplay, -1, 9);
    ed.Float(dir, ui_.altitudeWarning, v.altitudeWarning, 0.0f, kMaxAltitudeM, 1);
    ed.Float(dir, ui_.rollMin, v.rollMin, -kMaxDegrees, kMaxDegrees, 1);
    ed.Float(dir, ui_.rollMax, v.rollMax, -kMaxDegrees, kMaxDegrees, 1);
    ed.Float(dir, ui_.pitchMin, v.pitchMin, -kMaxDegrees, kMaxDegrees, 1);
    ed.Float(dir, ui_.pitchMax, v.pitchMax, -kMaxDegrees, kMaxDegrees, 1);
    ed.Float(dir, ui_.temperatureMax, v.temperatureMax, kMinDegC, kMaxDegC, 1);
    ed.Int(dir, ui_.minDiskFree, v.minDiskFree, 0, 1000000);
    ed.Int(dir, ui_.miscMin, v.miscMin, -32768, 32768);
    ed.Int(dir, ui_.miscMax, v.miscMax, -32768, 32768);
    ed.Int(dir, ui_.miscChan, v.miscChan, 0, 7);
    ed.Int(dir, ui_.beepInterval, v.beepInterval, 0, 100000);
    ed.Int(dir, ui_.beepTone, v.beepTone, 0, 10000);
    ed.Int(dir, ui_.beepDuration, v.beepDuration, 0, 10000);
}

void SetupAlert::OnTick() {
    const QString text = QString::fromStdString(alertText_ ? alertText_() : std::string());
    if (ui_.alertText->text() != text) ui_.alertText->setText(text);
    // Red while anything is raised, as on the status bar's alert pane.
    const bool raised = text.startsWith("ALERTS:");
    ui_.alertText->setStyleSheet(raised ? "color: #c80000;" : QString());
}

}  // namespace halvo

#include "gui/pages/SetupLogs.h"

#include <QCheckBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>
#include <array>

#include "app/EventLog.h"
#include "gui/pages/FlagCheck.h"
#include "storage/LoggingControl.h"

namespace halvo {
namespace {

struct FlagLabel {
    std::uint32_t bit;
    const char* label;
};
constexpr std::array<FlagLabel, SetupLogs::kFlagCount> kFlags{{
    {LoggingSettings::kDataSock, "DataSock"},
    {LoggingSettings::kCmdSock, "CmdSock"},
    {LoggingSettings::kVerbose, "Verbose"},
    {LoggingSettings::kPressure, "Pressure"},
    {LoggingSettings::kPitchRoll, "PitchRoll"},
    {LoggingSettings::kSonarMsg, "SonarMsg"},
    {LoggingSettings::kLowADC, "LowADC"},
    {LoggingSettings::kNmea, "NMEA"},
    {LoggingSettings::kSerial, "Serial"},
}};

}  // namespace

std::uint32_t SetupLogs::FlagBit(int index) {
    if (index < 0 || index >= kFlagCount) return 0;
    return kFlags[static_cast<std::size_t>(index)].bit;
}

SetupLogs::SetupLogs(SheetContext& context, LoggingControl& logging, EventLog& log, QWidget* parent)
    : SettingsPage(context, kCaption,
                   {[&logging] { return logging.getSettings(); },
                    [&logging](const LoggingSettings& v) { logging.setSettings(v); },
                    [&logging] { return logging.ChangeCount(); }},
                   parent),
      log_(log) {
    BuildLayout();
    WatchEdit(ui_.comment1);
    WatchEdit(ui_.comment2);
    WatchButton(ui_.perFileLog);
    for (QCheckBox* b : ui_.flags) WatchButton(b);

    connect(ui_.filter, &QLineEdit::textChanged, this, [this] { Refill(); });
    connect(ui_.hold, &QCheckBox::toggled, this, [this](bool held) {
        if (!held) Follow();
    });
    connect(ui_.clearView, &QPushButton::clicked, this, [this] {
        // Only the view: the ring keeps its lines for the next reader.
        ui_.view->clear();
        lastShown_ = log_.LastSequence();
    });
}

void SetupLogs::BuildLayout() {
    auto* top = new QVBoxLayout(this);

    auto* notes = new QGroupBox("Per File Log", this);
    auto* nl = new QGridLayout(notes);
    ui_.comment1 = new QLineEdit(notes);
    ui_.comment2 = new QLineEdit(notes);
    for (QLineEdit* e : {ui_.comment1, ui_.comment2}) {
        e->setMaxLength(static_cast<int>(LoggingSettings::kMaxCommentBytes));
    }
    ui_.perFileLog = new QCheckBox("Enable Per File Log", notes);
    nl->addWidget(new QLabel("Comment / Notes:", notes), 0, 0);
    nl->addWidget(ui_.comment1, 0, 1);
    nl->addWidget(ui_.comment2, 1, 1);
    nl->addWidget(ui_.perFileLog, 2, 1);
    nl->setColumnStretch(1, 1);
    top->addWidget(notes);

    auto* flags = new QGroupBox("Event Log Records", this);
    auto* fl = new QGridLayout(flags);
    for (int i = 0; i < kFlagCount; ++i) {
        ui_.flags[i] = new QCheckBox(kFlags[static_cast<std::size_t>(i)].label, flags);
        // The two stream switches and Verbose first, the message kinds beneath them.
        const int row = i < 3 ? 0 : 1 + (i - 3) / 3;
        const int col = i < 3 ? i : (i - 3) % 3;
        fl->addWidget(ui_.flags[i], row, col);
    }
    fl->setColumnStretch(3, 1);
    top->addWidget(flags);

    auto* events = new QGroupBox("Event Log", this);
    auto* el = new QVBoxLayout(events);
    auto* bar = new QHBoxLayout;
    ui_.filter = new QLineEdit(events);
    ui_.filter->setPlaceholderText("show only lines containing...");
    ui_.filter->setClearButtonEnabled(true);
    ui_.hold = new QCheckBox("Hold", events);
    ui_.clearView = new QPushButton("Clear View", events);
    bar->addWidget(new QLabel("Filter:", events));
    bar->addWidget(ui_.filter, 1);
    bar->addWidget(ui_.hold);
    bar->addWidget(ui_.clearView);
    el->addLayout(bar);
    ui_.view = new QPlainTextEdit(events);
    ui_.view->setReadOnly(true);
    ui_.view->setLineWrapMode(QPlainTextEdit::NoWrap);
    ui_.view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    ui_.view->setMaximumBlockCount(static_cast<int>(EventLog::kDefaultCapacity));
    el->addWidget(ui_.view, 1);
    top->addWidget(events, 1);
}

void SetupLogs::Bind(FieldEditor& ed, int dir, LoggingSettings& v) {
    ed.Text(dir, ui_.comment1, v.commentLine1, LoggingSettings::kMaxCommentBytes);
    ed.Text(dir, ui_.comment2, v.commentLine2, LoggingSettings::kMaxCommentBytes);
    ed.Check(dir, ui_.perFileLog, v.enablePerFileLog);
    for (int i = 0; i < kFlagCount; ++i) CheckBit(ed, dir, ui_.flags[i], v.flags, FlagBit(i));
}

void SetupLogs::OnTick() {
    if (!ui_.hold->isChecked()) Follow();
}

bool SetupLogs::Passes(const QString& line) const {
    const QString f = ui_.filter->text();
    return f.isEmpty() || line.contains(f, Qt::CaseInsensitive);
}

void SetupLogs::Follow() {
    const auto lines = log_.Since(lastShown_);
    if (lines.empty()) return;
    QScrollBar* sb = ui_.view->verticalScrollBar();
    const bool atEnd = sb->value() == sb->maximum();
    for (const auto& l : lines) {
        const QString text = QString::fromStdString(l.text);
        if (Passes(text)) ui_.view->appendPlainText(text);
    }
    lastShown_ = lines.back().sequence;
    // Keep following the newest line unless the operator scrolled back to read.
    if (atEnd) sb->setValue(sb->maximum());
}

void SetupLogs::Refill() {
    ui_.view->clear();
    lastShown_ = 0;
    Follow();
}

}  // namespace halvo

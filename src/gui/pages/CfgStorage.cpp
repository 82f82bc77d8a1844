#include "gui/pages/CfgStorage.h"

#include "gui/pages/PageWidgets.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "gui/pages/FlagCheck.h"
#include "storage/StorageControl.h"
#include "storage/StorageState.h"

namespace halvo {
namespace {

constexpr std::array<ListEntry, 3> kAcquireModes{{{0, "Acquire"}, {1, "Playback"}, {0, nullptr}}};
// Form 2 and above is kept for settings files that hold it, but not offered.
constexpr std::array<ListEntry, 3> kRecordForms{
    {{0, "Raw (Sonar Data Stream)"}, {1, "Decompressed (Recommended Format)"}, {0, nullptr}}};
constexpr std::array<ListEntry, 5> kRangeTypes{
    {{0, "All Data"}, {1, "Ping Num"}, {2, "Latitude"}, {3, "Longitude"}, {0, nullptr}}};

// Trace coordinates are 10000 times minutes of arc.
constexpr double kCoordPerDegree = 600000.0;
// Degrees and minutes to four decimals, as the position texts of the traces read.
constexpr int kRangePositionUnit = 1;

}  // namespace

CfgStorage::CfgStorage(SheetContext& context, StorageControl& storage, Sources sources,
                       QWidget* parent)
    : SettingsPage(context, kCaption,
                   {[&storage] { return storage.getSettings(); },
                    [&storage](const StorageSettings& v) { storage.setSettings(v); },
                    [&storage] { return storage.ChangeCount(); }},
                   parent),
      storage_(storage),
      sources_(std::move(sources)),
      chain_(storage) {
    BuildLayout();
    for (QLineEdit* e : {ui_.recordDir, ui_.recordFile, ui_.maxRecordSize, ui_.playbackDir,
                         ui_.playbackFile, ui_.playbackRate, ui_.rangeFrom, ui_.rangeTo}) {
        WatchEdit(e);
    }
    for (QComboBox* c : {ui_.acquireMode, ui_.recordForm, ui_.rangeType}) WatchCombo(c);
    for (QCheckBox* b : {ui_.saveBathy, ui_.diagnostics, ui_.reparse, ui_.markFileStart}) {
        WatchButton(b);
    }

    connect(ui_.record, &QPushButton::clicked, this, [this] {
        storage_.RequestRecord();
        AfterRequest();
    });
    connect(ui_.stop, &QPushButton::clicked, this, [this] {
        storage_.RequestStop();
        AfterRequest();
    });
    connect(ui_.playback, &QPushButton::clicked, this, [this] {
        chain_.PlaybackButton();
        AfterRequest();
    });
    connect(ui_.pause, &QCheckBox::clicked, this, [this](bool checked) {
        storage_.SetPauseChecked(checked);
        AfterRequest();
    });
    connect(ui_.autoRepeat, &QCheckBox::toggled, this,
            [this](bool on) { chain_.SetAutoRepeat(on); });
    connect(ui_.browse, &QPushButton::clicked, this, [this] { Browse(); });
}

void CfgStorage::BuildLayout() {
    auto* top = new QVBoxLayout(this);

    // What the operator presses most sits first: the source, the transport and the status.
    auto* control = new QGroupBox("Control", this);
    auto* cl = new QGridLayout(control);
    ui_.acquireMode = new QComboBox(control);
    ui_.record = new QPushButton("Record", control);
    ui_.stop = new QPushButton("Stop", control);
    ui_.playback = new QPushButton("Playback", control);
    ui_.pause = new QCheckBox("Pause", control);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(ui_.record);
    buttons->addWidget(ui_.stop);
    buttons->addWidget(ui_.playback);
    buttons->addWidget(ui_.pause);
    buttons->addStretch(1);
    cl->addWidget(new QLabel("Acquire Mode:", control), 0, 0);
    cl->addWidget(ui_.acquireMode, 0, 1);
    cl->addLayout(buttons, 0, 2);
    ui_.status = new QLabel(control);
    ui_.status->setTextInteractionFlags(Qt::TextSelectableByMouse);
    ui_.status->setWordWrap(true);
    ui_.queues = new QLabel(control);
    cl->addWidget(ui_.status, 1, 0, 1, 3);
    cl->addWidget(ui_.queues, 2, 0, 1, 3);
    cl->setColumnStretch(2, 1);
    top->addWidget(control);

    auto* rec = new QGroupBox("Recording", this);
    auto* rl = new QGridLayout(rec);
    ui_.recordDir = new QLineEdit(rec);
    ui_.recordFile = new QLineEdit(rec);
    ui_.recordForm = new QComboBox(rec);
    ui_.maxRecordSize = NumberEdit(rec, 6);
    ui_.saveBathy = new QCheckBox("Save Bathy Data", rec);
    ui_.diagnostics = new QCheckBox("Diagnostics (.alt side file)", rec);
    rl->addWidget(new QLabel("Record Dir:", rec), 0, 0);
    rl->addWidget(ui_.recordDir, 0, 1, 1, 3);
    rl->addWidget(new QLabel("Record File:", rec), 1, 0);
    rl->addWidget(ui_.recordFile, 1, 1);
    rl->addWidget(Unit("+ ###.hsf", rec), 1, 2, 1, 2);
    rl->addWidget(new QLabel("Format:", rec), 2, 0);
    rl->addWidget(ui_.recordForm, 2, 1, 1, 3);
    rl->addWidget(new QLabel("Max File Size:", rec), 3, 0);
    rl->addWidget(ui_.maxRecordSize, 3, 1);
    rl->addWidget(Unit("MB (0 to 2000, 0 = no limit)", rec), 3, 2, 1, 2);
    rl->addWidget(ui_.saveBathy, 4, 1);
    rl->addWidget(ui_.diagnostics, 4, 2, 1, 2);
    rl->setColumnStretch(3, 1);
    top->addWidget(rec);

    auto* play = new QGroupBox("Playback", this);
    auto* pl = new QGridLayout(play);
    ui_.playbackDir = new QLineEdit(play);
    ui_.playbackFile = new QLineEdit(play);
    ui_.browse = new QPushButton("Browse...", play);
    ui_.playbackRate = NumberEdit(play, 6);
    ui_.rangeType = new QComboBox(play);
    ui_.rangeFrom = NumberEdit(play, 14);
    ui_.rangeTo = NumberEdit(play, 14);
    ui_.rangeUnit = Unit(QString(), play);
    ui_.reparse = new QCheckBox("Reparse Data", play);
    ui_.markFileStart = new QCheckBox("Show Mark At File Start", play);
    ui_.autoRepeat = new QCheckBox("Auto Repeat", play);
    pl->addWidget(new QLabel("Playback Dir:", play), 0, 0);
    pl->addWidget(ui_.playbackDir, 0, 1, 1, 5);
    pl->addWidget(new QLabel("Playback File:", play), 1, 0);
    pl->addWidget(ui_.playbackFile, 1, 1, 1, 4);
    pl->addWidget(ui_.browse, 1, 5);
    pl->addWidget(new QLabel("Playback Rate:", play), 2, 0);
    pl->addWidget(ui_.playbackRate, 2, 1);
    pl->addWidget(Unit("records/s (0 to 10000)", play), 2, 2, 1, 4);
    pl->addWidget(new QLabel("Range:", play), 3, 0);
    // The bounds sit beside their type, so the row reads as one statement.
    auto* range = new QHBoxLayout;
    range->addWidget(ui_.rangeType);
    range->addSpacing(12);
    range->addWidget(new QLabel("From", play));
    range->addWidget(ui_.rangeFrom);
    range->addWidget(new QLabel("To", play));
    range->addWidget(ui_.rangeTo);
    range->addWidget(ui_.rangeUnit, 1);
    pl->addLayout(range, 3, 1, 1, 5);
    pl->addWidget(ui_.reparse, 4, 1);
    pl->addWidget(ui_.markFileStart, 4, 2, 1, 3);
    pl->addWidget(ui_.autoRepeat, 4, 5);
    pl->setColumnStretch(4, 1);
    top->addWidget(play);
    top->addStretch(1);
}

void CfgStorage::Bind(FieldEditor& ed, int dir, StorageSettings& v) {
    ed.List(dir, ui_.acquireMode, v.acquireMode, kAcquireModes);
    ed.Text(dir, ui_.recordDir, v.recordDir, kMaxNameChars);
    ed.Text(dir, ui_.recordFile, v.recordFile, kMaxNameChars);
    ed.List(dir, ui_.recordForm, v.recordForm, kRecordForms);
    ed.Int(dir, ui_.maxRecordSize, v.maxRecordSize, 0, kMaxRecordSizeMB);
    ed.Check(dir, ui_.saveBathy, v.saveBathy);
    ed.Check(dir, ui_.diagnostics, v.diagnostics);
    ed.Text(dir, ui_.playbackDir, v.playbackDir, kMaxNameChars);
    ed.Text(dir, ui_.playbackFile, v.playbackFile, kMaxNameChars);
    ed.Int(dir, ui_.playbackRate, v.playbackRate, 0, StorageSettings::kMaxPlaybackRate);
    CheckBit(ed, dir, ui_.reparse, v.flags, StorageSettings::kReparseData);
    ed.Check(dir, ui_.markFileStart, v.markFileStart);

    // The bounds are read in the form they were shown in, before a new type is taken.
    const std::int32_t type = dir == kRead ? shownRangeType_ : v.playbackRangeType;
    BindRange(ed, dir, ui_.rangeFrom, v.playbackRange0, type);
    BindRange(ed, dir, ui_.rangeTo, v.playbackRange1, type);
    ed.List(dir, ui_.rangeType, v.playbackRangeType, kRangeTypes);

    if (dir == kShow) {
        shownRangeType_ = v.playbackRangeType;
        const bool position = v.playbackRangeType == 2 || v.playbackRangeType == 3;
        ui_.rangeUnit->setText(position ? "deg:min N/S or E/W, inclusive" : "inclusive");
        ui_.rangeFrom->setEnabled(v.playbackRangeType != 0);
        ui_.rangeTo->setEnabled(v.playbackRangeType != 0);
        ApplyModeEnables(v.mode);
    }
}

int CfgStorage::BindRange(FieldEditor& ed, int dir, QLineEdit* field, std::int32_t& value,
                          std::int32_t type) {
    if (type != 2 && type != 3) return ed.Int(dir, field, value, 1, 0);
    const auto axis = type == 2 ? fieldtext::Axis::Latitude : fieldtext::Axis::Longitude;
    double degrees = value / kCoordPerDegree;
    const int r = ed.Position(dir, field, degrees, axis, kRangePositionUnit);
    if (dir == kRead && r != 0) {
        // Positions are held to 90 or 180 degrees by the parse, well inside 32 bits.
        const double coord = std::round(degrees * kCoordPerDegree);
        value = static_cast<std::int32_t>(
            std::clamp(coord, static_cast<double>(std::numeric_limits<std::int32_t>::min()),
                       static_cast<double>(std::numeric_limits<std::int32_t>::max())));
    }
    return r;
}

void CfgStorage::ApplyModeEnables(std::int32_t mode) {
    const bool recording = mode == ModeRecord;
    const bool playing = mode == ModePlayback || mode == ModePause;
    const bool stopped = !recording && !playing;
    ui_.record->setEnabled(stopped);
    ui_.playback->setEnabled(stopped);
    ui_.stop->setEnabled(!stopped);
    ui_.pause->setEnabled(playing);
    ui_.pause->setChecked(mode == ModePause);
    // Choosing files starts a playback; while recording that would end the recording unasked.
    ui_.browse->setEnabled(!recording);
}

void CfgStorage::AfterRequest() {
    Exchange(kShow);
}

void CfgStorage::Browse() {
    const StorageSettings s = storage_.getSettings();
    QString start = QString::fromStdString(s.playbackDir);
    if (start.isEmpty() || !QDir(start).exists()) start = QDir::currentPath();
    QFileDialog dialog(this, "Select Any Halvo Sonar Data File", start, "Data File (*)");
    dialog.setFileMode(QFileDialog::ExistingFiles);
    dialog.selectFile("00000000.000");
    if (dialog.exec() != QDialog::Accepted) return;
    FilesChosen(dialog.selectedFiles());
}

void CfgStorage::FilesChosen(const QStringList& paths) {
    if (paths.isEmpty()) return;
    // The dialog selects within one folder: the first file's folder and the bare names.
    const QString dir = QFileInfo(paths.front()).absolutePath();
    std::vector<std::string> names;
    names.reserve(static_cast<std::size_t>(paths.size()));
    for (const QString& p : paths) names.push_back(QFileInfo(p).fileName().toStdString());
    chain_.Select(dir.toStdString(), names, Now());
    Exchange(kShow);
}

void CfgStorage::StartRecording(const std::string& directory, const std::string& fileName) {
    StorageSettings s = storage_.getSettings();
    s.recordDir = directory;
    s.recordFile = fileName;
    storage_.setSettings(s);
    storage_.RequestRecord();
    AfterRequest();
}

std::uint32_t CfgStorage::Now() const {
    return sources_.tick ? sources_.tick() : 0;
}

void CfgStorage::BeforeTick() {
    // The chain goes on while the page is hidden: a list of files plays through regardless.
    chain_.Tick(Now());
}

void CfgStorage::OnTick() {
    ui_.status->setText(StatusText());
    ui_.queues->setText(QueueText());
}

QString CfgStorage::StatusText() {
    const StorageStatus st = storage_.getStatus();
    return QString::fromLatin1(StorageStateWord(st.state).data(),
                               static_cast<int>(StorageStateWord(st.state).size())) +
           "  File:" + QString::fromStdString(st.file) +
           QString::asprintf("  Size: %d  Free: %d", st.sizeMB, st.freeMB);
}

QString CfgStorage::QueueText() const {
    const auto sonar = sources_.sonarQueue ? sources_.sonarQueue() : 0u;
    const auto display = sources_.displayQueue ? sources_.displayQueue() : 0u;
    return QString::asprintf("Queues : Sonar %d Display %d", static_cast<int>(sonar),
                             static_cast<int>(display));
}

}  // namespace halvo

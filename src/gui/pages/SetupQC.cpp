#include "gui/pages/SetupQC.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>
#include <algorithm>
#include <climits>

#include "core/MessageHub.h"
#include "gui/pages/SonarLists.h"
#include "sonar/SonarIF.h"

namespace halvo {

namespace {

QComboBox* ListBox(QWidget* parent, const QString& name) {
    auto* c = new QComboBox(parent);
    c->setObjectName(name);
    c->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    return c;
}

QLineEdit* NumberEdit(QWidget* parent, const QString& name) {
    auto* e = new QLineEdit(parent);
    e->setObjectName(name);
    e->setAlignment(Qt::AlignRight);
    e->setMaximumWidth(e->fontMetrics().horizontalAdvance("00000") + 16);
    return e;
}

// The QC words are 16 bits on the wire; the editors work in 32.
void Word(FieldEditor& ed, int dir, QComboBox* box, std::uint16_t& word,
          std::span<const ListEntry> table) {
    std::int32_t v = word;
    ed.List(dir, box, v, table);
    if (dir == FieldEditor::kRead) word = static_cast<std::uint16_t>(v);
}

void Word(FieldEditor& ed, int dir, QLineEdit* edit, std::uint16_t& word, std::int32_t lo,
          std::int32_t hi) {
    std::int32_t v = word;
    ed.Int(dir, edit, v, lo, hi);
    word = static_cast<std::uint16_t>(v);
}

}  // namespace

SetupQC::SetupQC(SheetContext& context, MessageHub& hub, SonarIF& sonar,
                 std::function<QString(int)> names, QWidget* parent)
    : SettingsPage(context, "QC",
                   {[this] { return Read(); }, [this](const QCPageValues& v) { Write(v); },
                    [&hub, &sonar] { return hub.Filter().ChangeCount() + sonar.GetChangeCount(); }},
                   parent),
      hub_(hub),
      sonar_(sonar),
      rows_(std::clamp(sonar.GetNumSonars(), 0, QCPageValues::kSonars)) {
    for (QCConfig& c : cache_) c.changeCount = INT_MIN;
    auto* top = new QVBoxLayout(this);

    auto* acquire = new QGroupBox("Data Link", this);
    auto* a = new QGridLayout(acquire);
    filter_ = ListBox(this, "Filter");
    a->addWidget(new QLabel("Acquire Filter:"), 0, 0, Qt::AlignRight);
    a->addWidget(filter_, 0, 1, Qt::AlignLeft);
    auto* note = new QLabel(
        "Which data from the sonar's data link goes on to recording and the displays. Every "
        "start comes up with All Sources.",
        this);
    note->setWordWrap(true);
    a->addWidget(note, 1, 0, 1, 3);
    a->setColumnStretch(2, 1);
    top->addWidget(acquire);

    auto* copy = new QGroupBox("Quality Control Copy", this);
    auto* g = new QGridLayout(copy);
    g->setHorizontalSpacing(12);
    const char* heads[] = {"Sonar",          "Source",          "Subsample",
                           "Long Track 1/N", "Cross Track 1/N", "Blending"};
    for (int c = 0; c < 6; ++c) {
        auto* h = new QLabel(heads[c], this);
        h->setStyleSheet("font-weight: bold");
        g->addWidget(h, 0, c);
    }
    for (int i = 0; i < rows_; ++i) {
        Row& r = row_[static_cast<std::size_t>(i)];
        const QString n = QString::number(i);
        r.name = new QLabel(names ? names(i) : QString("Sonar %1").arg(i), this);
        r.source = ListBox(this, "QCSource" + n);
        r.method = ListBox(this, "QCSubsampleMethod" + n);
        r.longTrack = NumberEdit(this, "QCLongTrackSubSampling" + n);
        r.crossTrack = NumberEdit(this, "QCCrossTrackSubSampling" + n);
        r.blending = ListBox(this, "QCBlendingMask" + n);
        QWidget* cells[] = {r.name, r.source, r.method, r.longTrack, r.crossTrack, r.blending};
        for (int c = 0; c < 6; ++c) g->addWidget(cells[c], i + 1, c, Qt::AlignLeft);
        for (QComboBox* b : {r.source, r.method, r.blending}) WatchCombo(b);
        for (QLineEdit* e : {r.longTrack, r.crossTrack}) WatchEdit(e);
    }
    if (rows_ == 0) g->addWidget(new QLabel("No sonar is configured.", this), 1, 0, 1, 6);
    g->addWidget(new QLabel("Subsampling 1 to 1000: keep one of every N.", this), rows_ + 1, 0, 1,
                 6);
    g->setColumnStretch(6, 1);
    top->addWidget(copy);
    top->addStretch(1);
    WatchCombo(filter_);
}

QCPageValues SetupQC::Read() {
    QCPageValues v;
    v.filter = hub_.Filter().Value();
    for (int i = 0; i < rows_; ++i) {
        const auto k = static_cast<std::size_t>(i);
        sonar_.GetQC(cache_[k], i);
        v.qc[k] = cache_[k];
    }
    return v;
}

void SetupQC::Write(const QCPageValues& v) {
    if (v.filter != hub_.Filter().Value()) hub_.SetFilter(v.filter);
    for (int i = 0; i < rows_; ++i) {
        const auto k = static_cast<std::size_t>(i);
        sonar_.GetQC(cache_[k], i);
        if (!v.qc[k].SameValues(cache_[k])) sonar_.SetQC(v.qc[k], i);
    }
}

void SetupQC::Bind(FieldEditor& ed, int dir, QCPageValues& v) {
    using namespace sonarlists;
    std::int32_t filter = static_cast<std::int32_t>(v.filter);
    ed.List(dir, filter_, filter, kAcquireFilter);
    if (dir == kRead) v.filter = static_cast<std::uint32_t>(filter);
    for (int i = 0; i < rows_; ++i) {
        const Row& r = row_[static_cast<std::size_t>(i)];
        QCConfig& q = v.qc[static_cast<std::size_t>(i)];
        Word(ed, dir, r.source, q.source, kQCSource);
        Word(ed, dir, r.method, q.subsampleMethod, kQCSubsample);
        Word(ed, dir, r.longTrack, q.longTrackSubsampling, kMinSubsampling, kMaxSubsampling);
        Word(ed, dir, r.crossTrack, q.crossTrackSubsampling, kMinSubsampling, kMaxSubsampling);
        Word(ed, dir, r.blending, q.blendingMask, kQCBlending);
    }
}

}  // namespace halvo

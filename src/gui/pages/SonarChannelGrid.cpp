#include "gui/pages/SonarChannelGrid.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>

#include "gui/editors/FieldEditor.h"

namespace halvo {

namespace {

QLineEdit* NumberEdit(QWidget* parent, const QString& name, int chars) {
    auto* e = new QLineEdit(parent);
    e->setObjectName(name);
    e->setAlignment(Qt::AlignRight);
    e->setMaximumWidth(e->fontMetrics().horizontalAdvance(QString(chars, '0')) + 16);
    return e;
}

}  // namespace

SonarChannelGrid::SonarChannelGrid(QWidget* parent) : QWidget(parent) {
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(2);
    const char* heads[] = {"Channel", "Gain", "AGC", "Enable", "Pulse Power %"};
    for (int c = 0; c < 5; ++c) {
        auto* h = new QLabel(heads[c], this);
        h->setStyleSheet("font-weight: bold");
        grid->addWidget(h, 0, c, c == 0 ? Qt::AlignLeft : Qt::AlignHCenter);
    }
    for (int i = 0; i < kRows; ++i) {
        Row& r = rows_[static_cast<std::size_t>(i)];
        const QString n = QString::number(i);
        r.name = new QLabel(n, this);
        r.gain = NumberEdit(this, "ADCGain" + n, 8);
        r.agc = new QCheckBox(this);
        r.agc->setObjectName("AGC" + n);
        r.enable = new QCheckBox(this);
        r.enable->setObjectName("Enable" + n);
        r.power = NumberEdit(this, "PulsePower" + n, 6);
        grid->addWidget(r.name, i + 1, 0);
        grid->addWidget(r.gain, i + 1, 1);
        grid->addWidget(r.agc, i + 1, 2, Qt::AlignHCenter);
        grid->addWidget(r.enable, i + 1, 3, Qt::AlignHCenter);
        grid->addWidget(r.power, i + 1, 4, Qt::AlignHCenter);
    }
    none_ = new QLabel("No channels or transducers are configured.", this);
    grid->addWidget(none_, kRows + 1, 0, 1, 5);
    grid->setRowStretch(kRows + 2, 1);
    grid->setColumnStretch(5, 1);
    ShowRows(0, 0);
}

void SonarChannelGrid::Bind(FieldEditor& ed, int direction, SonarConfig& c) {
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        Row& r = rows_[i];
        ed.Float(direction, r.gain, c.gain[i], 0.0f, kMaxGain, 3);
        ed.Check(direction, r.agc, c.agc[i]);
        ed.Check(direction, r.enable, c.enable[i]);
        ed.Float(direction, r.power, c.pulsePower[i], 0.0f, kMaxPower, 1);
    }
    if (direction == FieldEditor::kShow) ShowRows(c.ChannelCount(), c.TransducerCount());
}

void SonarChannelGrid::ShowRows(int channels, int transducers) {
    if (channels == channels_ && transducers == transducers_) return;
    channels_ = channels;
    transducers_ = transducers;
    for (int i = 0; i < kRows; ++i) {
        Row& r = rows_[static_cast<std::size_t>(i)];
        const bool input = i < channels;
        const bool output = i < transducers;
        r.name->setVisible(input || output);
        r.gain->setVisible(input);
        r.agc->setVisible(input);
        r.enable->setVisible(input);
        r.power->setVisible(output);
    }
    none_->setVisible(channels == 0 && transducers == 0);
}

std::vector<QLineEdit*> SonarChannelGrid::Edits() const {
    std::vector<QLineEdit*> out;
    for (const Row& r : rows_) {
        out.push_back(r.gain);
        out.push_back(r.power);
    }
    return out;
}

std::vector<QAbstractButton*> SonarChannelGrid::Buttons() const {
    std::vector<QAbstractButton*> out;
    for (const Row& r : rows_) {
        out.push_back(r.agc);
        out.push_back(r.enable);
    }
    return out;
}

}  // namespace halvo

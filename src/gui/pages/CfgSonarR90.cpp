#include "gui/pages/CfgSonarR90.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>

namespace halvo {

namespace {

// One bit of Flags through a check box.
void FlagBit(FieldEditor& ed, int dir, QCheckBox* box, std::int32_t& flags, std::int32_t bit) {
    std::int32_t on = (flags & bit) != 0 ? 1 : 0;
    if (ed.Check(dir, box, on) != 0 && dir == FieldEditor::kRead) {
        flags = on != 0 ? (flags | bit) : (flags & ~bit);
    }
}

}  // namespace

CfgSonarR90::CfgSonarR90(SheetContext& context, QString caption, SonarIF& sonar, int index,
                         QWidget* parent)
    : CfgSonar(context, std::move(caption), sonar, index, parent) {
    QGridLayout* g = AddGroup(1, "Data Streams");
    streamLow_ = new QCheckBox("Low Frequency Stream", this);
    streamLow_->setObjectName("StreamFlagLow");
    streamHigh_ = new QCheckBox("High Frequency Stream", this);
    streamHigh_->setObjectName("StreamFlagHigh");
    g->addWidget(streamLow_, 0, 0);
    g->addWidget(streamHigh_, 1, 0);
    auto* note = new QLabel("Sent while the subsystem is in use.", this);
    g->addWidget(note, 2, 0);
    WatchButton(streamLow_);
    WatchButton(streamHigh_);
    SetWindowNote(
        "The unit is always sent a window from 0 over 200000 samples, on both frequencies, "
        "whatever delay and depth say.");
}

void CfgSonarR90::Bind(FieldEditor& ed, int dir, SonarConfig& c) {
    CfgSonar::Bind(ed, dir, c);
    FlagBit(ed, dir, streamLow_, c.flags, SonarConfig::kFlagStreamLow);
    FlagBit(ed, dir, streamHigh_, c.flags, SonarConfig::kFlagStreamHigh);
}

}  // namespace halvo

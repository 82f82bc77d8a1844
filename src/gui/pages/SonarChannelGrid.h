#pragma once
// The per-channel settings of one sonar subsystem as a grid: one row per channel with its gain,
// AGC and enable, and the pulse power of the transducer of the same number. Only the rows the
// subsystem has are shown; a change of the counts shows or hides rows at the next showing.

#include <QWidget>
#include <array>
#include <vector>

#include "sonar/SonarConfig.h"

class QAbstractButton;
class QCheckBox;
class QLabel;
class QLineEdit;

namespace halvo {

class FieldEditor;

class SonarChannelGrid : public QWidget {
  public:
    static constexpr int kRows = SonarConfig::kMaxChannels;
    static constexpr float kMaxGain = 1000.0f;
    static constexpr float kMaxPower = 100.0f;

    explicit SonarChannelGrid(QWidget* parent = nullptr);

    // One editor call per control of every row, shown or not, so the copy stays whole.
    void Bind(FieldEditor& ed, int direction, SonarConfig& config);

    // The controls the page watches.
    std::vector<QLineEdit*> Edits() const;
    std::vector<QAbstractButton*> Buttons() const;
    int VisibleChannelRows() const { return channels_; }
    int VisibleTransducerRows() const { return transducers_; }

  private:
    struct Row {
        QLabel* name = nullptr;
        QLineEdit* gain = nullptr;
        QCheckBox* agc = nullptr;
        QCheckBox* enable = nullptr;
        QLineEdit* power = nullptr;
    };
    void ShowRows(int channels, int transducers);

    std::array<Row, kRows> rows_{};
    QLabel* none_ = nullptr;
    int channels_ = -1;
    int transducers_ = -1;
};

}  // namespace halvo

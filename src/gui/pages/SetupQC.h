#pragma once
// The "QC" page: which data from the sonar's data link reaches recording and the displays (the
// acquire filter), and for each sonar the quality-control copy it makes (source, subsampling,
// blending). The filter belongs to the message hub and the QC records to the sonar model; the
// page shows both and writes back what the operator changed.

#include <QString>
#include <array>
#include <cstdint>
#include <functional>

#include "gui/sheets/SettingsPage.h"
#include "sonar/QCConfig.h"
#include "sonar/SonarController.h"

class QComboBox;
class QLabel;
class QLineEdit;

namespace halvo {

class MessageHub;
class SonarIF;

struct QCPageValues {
    static constexpr int kSonars = SonarController::kSonars;
    std::uint32_t filter = 0;
    std::array<QCConfig, kSonars> qc{};
};

class SetupQC : public SettingsPage<QCPageValues> {
  public:
    static constexpr std::int32_t kMinSubsampling = 1;
    static constexpr std::int32_t kMaxSubsampling = 1000;

    // names gives each sonar's caption; rows are made for the sonars the model has.
    SetupQC(SheetContext& context, MessageHub& hub, SonarIF& sonar,
            std::function<QString(int)> names, QWidget* parent = nullptr);

    int Rows() const { return rows_; }

  protected:
    void Bind(FieldEditor& ed, int direction, QCPageValues& v) override;

  private:
    QCPageValues Read();
    void Write(const QCPageValues& v);

    struct Row {
        QLabel* name = nullptr;
        QComboBox* source = nullptr;
        QComboBox* method = nullptr;
        QLineEdit* longTrack = nullptr;
        QLineEdit* crossTrack = nullptr;
        QComboBox* blending = nullptr;
    };

    MessageHub& hub_;
    SonarIF& sonar_;
    QComboBox* filter_ = nullptr;
    std::array<Row, QCPageValues::kSonars> row_{};
    // The sonar model hands a QC record out only when its count moved; these are the copies.
    std::array<QCConfig, QCPageValues::kSonars> cache_{};
    int rows_ = 0;
};

}  // namespace halvo

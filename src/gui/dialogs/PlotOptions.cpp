#include "gui/dialogs/PlotOptions.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "display/PlotModel.h"

namespace halvo {

namespace {

struct OptionRow {
    const char* text;
    std::uint32_t bit;
};

constexpr OptionRow kRows[PlotOptions::kOptions] = {
    {"Auto Scale", kPlotAutoScale},
    {"DB Scale", kPlotDbScale},
    {"Cursor", kPlotCursor},
    {"Mean: AVG", kPlotMean},
    {"Std Dev: SDEV", kPlotStdDev},
    {"X Min Max", kPlotXMinMax},
    {"Horizontal Markers", kPlotHorizontalMarkers},
    {"Sqrt(Mean Power): RMS", kPlotRms},
    {"Sample Size: N", kPlotSampleSize},
    {"PSD", kPlotPsd},
    {"Max Val", kPlotMaxVal},
    {"FFT Shift", kPlotFftShift},
    {"Time Constant Pings", kPlotTimeConstantPings},
};

constexpr int kFirstOptionRow = 3;  // "XZoom", "Commands", then the options

}  // namespace

PlotOptions::PlotOptions(PlotModel& model, QWidget* parent) : QDialog(parent), model_(model) {
    setWindowTitle("Plot Options");
    auto* box = new QVBoxLayout(this);
    table_ = new QTableWidget(kFirstOptionRow + kOptions, 2, this);
    table_->setHorizontalHeaderLabels({"Parameter", "Value"});
    table_->verticalHeader()->hide();
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->setItem(0, 0, new QTableWidgetItem("XZoom"));
    table_->setItem(0, 1, new QTableWidgetItem(QString::number(model_.State().xZoom)));
    table_->setItem(1, 0, new QTableWidgetItem("Commands"));
    auto* commands = new QWidget(table_);
    auto* row = new QHBoxLayout(commands);
    row->setContentsMargins(0, 0, 0, 0);
    auto* rescale = new QPushButton("Rescale", commands);
    auto* expand = new QPushButton("Expand Y", commands);
    row->addWidget(rescale);
    row->addWidget(expand);
    table_->setCellWidget(1, 1, commands);
    table_->setItem(2, 0, new QTableWidgetItem("Options"));
    for (int i = 0; i < kOptions; ++i) {
        auto* name = new QTableWidgetItem(QString("  ") + kRows[i].text);
        auto* value = new QTableWidgetItem();
        value->setFlags(Qt::ItemIsUserCheckable | Qt::ItemIsEnabled);
        value->setCheckState((model_.State().options & kRows[i].bit) ? Qt::Checked : Qt::Unchecked);
        table_->setItem(kFirstOptionRow + i, 0, name);
        table_->setItem(kFirstOptionRow + i, 1, value);
    }
    table_->resizeColumnsToContents();
    box->addWidget(table_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    box->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::accept);
    connect(rescale, &QPushButton::clicked, this, [this] { model_.Rescale(); });
    connect(expand, &QPushButton::clicked, this, [this] { model_.ExpandY(); });
    connect(table_, &QTableWidget::itemChanged, this, [this] { Apply(); });
    resize(360, 520);
}

void PlotOptions::Apply() {
    PlotState& s = model_.State();
    bool ok = false;
    const float zoom = table_->item(0, 1)->text().toFloat(&ok);
    if (ok && zoom > 0.0f && zoom <= 1000.0f) {
        s.xZoom = zoom;
        // The zoom shows 1 / XZoom of the x range about the middle of what is shown now.
        const double mid = 0.5 * (s.xFracFirst + s.xFracLast);
        const double half = 0.5 / zoom;
        s.xFracFirst = std::max(0.0, mid - half);
        s.xFracLast = std::min(1.0, mid + half);
    }
    for (int i = 0; i < kOptions; ++i) {
        const QTableWidgetItem* v = table_->item(kFirstOptionRow + i, 1);
        if (v == nullptr) continue;
        if (v->checkState() == Qt::Checked) {
            s.options |= kRows[i].bit;
        } else {
            s.options &= ~kRows[i].bit;
        }
    }
}

}  // namespace halvo

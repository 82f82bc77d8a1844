#include "gui/views/CfgDisplay.h"

#include <QComboBox>
#include <QDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "core/TraceHeader.h"
#include "display/DisplayProcessingSet.h"
#include "display/SonarDataCacheElement.h"
#include "display/WaterfallColumn.h"
#include "gui/views/SetupDisplay.h"

namespace halvo {

namespace {

// The channels a display may show: the sonars' channels, then the derived ones from 8 up.
constexpr ListEntry kChannels[] = {
    {0, "0"},   {1, "1"},   {2, "2"},   {3, "3"},   {4, "4"},     {5, "5"},
    {6, "6"},   {7, "7"},   {8, "8"},   {9, "9"},   {10, "10"},   {11, "11"},
    {12, "12"}, {13, "13"}, {14, "14"}, {15, "15"}, {0, nullptr},
};

constexpr float kTVGStartLimit = 5000.0f;
constexpr int kMaxZoomDivisor = 1000;

}  // namespace

CfgDisplay::CfgDisplay(SheetContext& context, DisplayProcessingSet& displays, int display,
                       NewestLine newest, AdvancedMaker advanced, QWidget* parent)
    : DisplayRecordPage(context, QString("D%1").arg(display), displays, display, parent),
      newest_(std::move(newest)),
      advanced_(std::move(advanced)) {
    auto* outer = new QVBoxLayout(this);
    auto* form = new QFormLayout();
    outer->addLayout(form);

    channel_ = new QComboBox(this);
    channel_->setObjectName("Channel");
    form->addRow("Channel", channel_);
    WatchCombo(channel_);
    gain_ = AddField(form, "Gain (dB)", "Gain");
    refGain_ = AddField(form, "Ref Gain (dB)", "RefGain0");
    auto* autoGain = new QPushButton("Auto", this);
    autoGain->setObjectName("Auto");
    form->addRow("", autoGain);
    connect(autoGain, &QPushButton::clicked, this, [this] { AutoGain(); });
    tvg_ = AddField(form, "TVG (dB/100)", "TVG");
    tvgLimit_ = AddField(form, "TVG Limit (dB)", "TVGLimit");
    tvgStart_ = new QLineEdit(this);
    tvgStart_->setObjectName("TVGStart");
    WatchEdit(tvgStart_);
    form->addRow("TVG Start", Spin(tvgStart_, [this](bool up) { SpinTVGStart(up); }));
    trackRange_ = AddField(form, "Track Range", "TrackRange");
    threshold_ = new QLineEdit(this);
    threshold_->setObjectName("TrackThreshold");
    WatchEdit(threshold_);
    form->addRow("Track Threshold (%)", Spin(threshold_, [this](bool up) { SpinThreshold(up); }));
    holdoff_ = AddField(form, "Holdoff", "Holdoff");
    maxDepth_ = AddField(form, "Max Depth", "MaxDepth");
    zoom_ = new QLineEdit(this);
    zoom_->setObjectName("Zoom");
    WatchEdit(zoom_);
    form->addRow("Zoom", Spin(zoom_, [this](bool up) { SpinZoom(up); }));

    ping_ = new QLabel(this);
    form->addRow("", ping_);
    if (advanced_) {
        auto* more = new QPushButton("Advanced", this);
        more->setObjectName("Advanced");
        connect(more, &QPushButton::clicked, this, [this] { OpenAdvanced(); });
        outer->addWidget(more);
    }
    outer->addStretch(1);
}

QLineEdit* CfgDisplay::AddField(QFormLayout* form, const char* label, const char* name) {
    auto* edit = new QLineEdit(this);
    edit->setObjectName(name);
    WatchEdit(edit);
    form->addRow(label, edit);
    return edit;
}

QWidget* CfgDisplay::Spin(QLineEdit* field, std::function<void(bool)> step) {
    auto* box = new QWidget(this);
    auto* row = new QHBoxLayout(box);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(field, 1);
    for (bool up : {true, false}) {
        auto* b = new QToolButton(box);
        b->setArrowType(up ? Qt::UpArrow : Qt::DownArrow);
        b->setObjectName(field->objectName() + (up ? "Up" : "Down"));
        connect(b, &QToolButton::clicked, this, [step, up] { step(up); });
        row->addWidget(b);
    }
    return box;
}

QLineEdit* CfgDisplay::Field(const char* name) const {
    return findChild<QLineEdit*>(QString::fromLatin1(name));
}

void CfgDisplay::Bind(FieldEditor& ed, int dir, DisplayProcessingConfig& r) {
    ed.Float(dir, tvgStart_, r.TVGStart, -kTVGStartLimit, kTVGStartLimit, 2);
    ed.Int(dir, tvg_, r.TVG, -5000, 5000);
    ed.List(dir, channel_, r.Channel, kChannels);
    ed.Int(dir, gain_, r.Gain, -400, 400);
    ed.Float(dir, refGain_, r.RefGain0, -400.0f, 400.0f, 1);
    ed.Float(dir, trackRange_, r.TrackRange, 0.0f, 100.0f, 2);
    ed.Float(dir, threshold_, r.TrackThreshold, 0.0f, 100.0f, 1);
    ed.Int(dir, tvgLimit_, r.TVGLimit, 0, 1000);
    ed.Int(dir, holdoff_, r.Holdoff, 0, 5000);
    ed.Int(dir, maxDepth_, r.MaxDepth, 0, 10000);
    // The record keeps a double; the field works in float, so only a change is written back
    // and a zoom of 1/3 keeps its precision while nobody touches it.
    float zoom = static_cast<float>(r.Zoom);
    if (!std::isfinite(zoom)) zoom = 1.0f;
    if (ed.Float(dir, zoom_, zoom, 0.0f, 100.0f, 4) > 0) r.Zoom = zoom;
    if (dir == kShow) shownTVGStart_ = r.TVGStart;
}

void CfgDisplay::Edit(const std::function<void(DisplayProcessingConfig&)>& change) {
    {
        auto record = Displays().Lock(Display());
        change(*record);
        record.Bump();
    }
    Exchange(kShow);
}

void CfgDisplay::AutoGain() {
    Edit([](DisplayProcessingConfig& r) { r.autoGainRequest += 1; });
}

void CfgDisplay::SpinThreshold(bool up) {
    Edit([up](DisplayProcessingConfig& r) {
        // From the value as it stands: 50.3 steps to 51.3, the tenths the operator typed stay.
        r.TrackThreshold = std::clamp(r.TrackThreshold + (up ? 1.0f : -1.0f), 0.0f, 100.0f);
    });
}

void CfgDisplay::SpinTVGStart(bool up) {
    Edit([up](DisplayProcessingConfig& r) {
        r.TVGStart = std::clamp(r.TVGStart + (up ? 1.0f : -1.0f), -kTVGStartLimit, kTVGStartLimit);
    });
}

double CfgDisplay::ZoomStep(double zoom, bool up) {
    double z = std::isfinite(zoom) ? zoom : 1.0;
    if (!(z > 0.0)) return up ? 1.0 : NormaliseZoom(z);
    // Below 1 the step works on the divisor: 1/2, 1/3, 1/4 ... and back up to 1.
    const int divisor = std::clamp(static_cast<int>(std::lround(1.0 / z)), 1, kMaxZoomDivisor);
    if (up) {
        z = z >= 1.0 ? std::trunc(z) + 1.0 : (divisor <= 2 ? 1.0 : 1.0 / (divisor - 1));
    } else if (z >= 2.0) {
        z = std::trunc(z) - 1.0;
    } else if (z > 1.0) {
        z = 1.0;
    } else {
        z = 1.0 / std::min(divisor + 1, kMaxZoomDivisor);
    }
    return NormaliseZoom(std::min(z, 100.0));
}

void CfgDisplay::SpinZoom(bool up) {
    Edit([up](DisplayProcessingConfig& r) { r.Zoom = ZoomStep(r.Zoom, up); });
}

void CfgDisplay::ShowChannel(int channel) {
    Edit([channel](DisplayProcessingConfig& r) { r.Channel = channel; });
}

QDialog* CfgDisplay::OpenAdvanced() {
    if (!advanced_) return nullptr;
    if (advancedDialog_ == nullptr) {
        advancedDialog_ = new QDialog(this);
        advancedDialog_->setWindowTitle("Display Advanced");
        auto* box = new QVBoxLayout(advancedDialog_);
        SetupDisplay* page = advanced_(advancedDialog_);
        if (page != nullptr) {
            box->addWidget(page);
            // Outside a sheet the dialog runs the page's tick itself.
            auto* timer = new QTimer(advancedDialog_);
            connect(timer, &QTimer::timeout, page, [page] { page->Tick(); });
            timer->start(300);
        }
    }
    advancedDialog_->show();
    advancedDialog_->raise();
    return advancedDialog_;
}

void CfgDisplay::OnTick() {
    if (const SonarDataCacheElement* line = newest_ ? newest_() : nullptr) {
        const ConstTraceHeaderView h = line->Header();
        char text[64];
        std::snprintf(text, sizeof text, "Ping:%d WF:%d", h.GetInt(TraceField::PingNumber),
                      h.GetInt(TraceField::WeightingFactor));
        if (ping_->text() != text) ping_->setText(text);
    }
    // The tracker moves `TVGStart` without a bump; show where it went.
    float tvgStart = 0.0f;
    {
        auto record = Displays().Lock(Display());
        tvgStart = record->TVGStart;
    }
    if (tvgStart != shownTVGStart_) {
        FieldEditor ed;
        ed.Float(kShow, tvgStart_, tvgStart, -kTVGStartLimit, kTVGStartLimit, 2);
        shownTVGStart_ = tvgStart;
    }
}

}  // namespace halvo

#include "gui/pages/SetupNav.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QVBoxLayout>
#include <utility>

#include "app/GeneralSettings.h"
#include "nav/NavigationInput.h"
#include "nav/NavigationStatusText.h"
#include "nav/SentenceHistory.h"
#include "stamping/SegyDataProcessor.h"

namespace halvo {

namespace {

constexpr std::array<ListEntry, 4> kLatLonSources = {{
    {NavigationConfig::LatLonRmc, "RMC"},
    {NavigationConfig::LatLonGll, "GLL"},
    {NavigationConfig::LatLonGga, "GGA"},
    {0, nullptr},
}};

constexpr std::array<ListEntry, 5> kTimeSources = {{
    {NavigationConfig::TimeRmc, "RMC"},
    {NavigationConfig::TimeGll, "GLL"},
    {NavigationConfig::TimeZda, "ZDA"},
    {NavigationConfig::TimeGga, "GGA"},
    {0, nullptr},
}};

// The speeds a port opens at; any other stored value shows as unknown and opens at 2400.
constexpr std::array<ListEntry, 10> kBauds = {{
    {600, "600"},
    {1200, "1200"},
    {2400, "2400"},
    {4800, "4800"},
    {9600, "9600"},
    {19200, "19200"},
    {38400, "38400"},
    {57600, "57600"},
    {115200, "115200"},
    {0, nullptr},
}};

constexpr std::int32_t kMinPort = 1;
constexpr std::int32_t kMaxPort = 255;
constexpr std::int32_t kMaxIoPort = 0xFFFF;
constexpr std::size_t kDeviceChars = 199;

const char* const kPortNames[NavigationConfig::kPorts] = {"Serial 1", "Serial 2", "Serial 3"};

QLineEdit* NumberEdit(QWidget* parent, int width) {
    auto* e = new QLineEdit(parent);
    e->setAlignment(Qt::AlignRight);
    e->setFixedWidth(width);
    return e;
}

QPlainTextEdit* FixedText(QWidget* parent) {
    auto* t = new QPlainTextEdit(parent);
    t->setReadOnly(true);
    t->setLineWrapMode(QPlainTextEdit::NoWrap);
    t->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    return t;
}

void SetIfDifferent(QLabel* label, const QString& text) {
    if (label->text() != text) label->setText(text);
}

// Replaces the text only when it changed, keeping the operator's scroll position.
void SetIfDifferent(QPlainTextEdit* edit, const QString& text) {
    if (edit->toPlainText() == text) return;
    QScrollBar* bar = edit->verticalScrollBar();
    const bool atEnd = bar->value() == bar->maximum();
    const int at = bar->value();
    edit->setPlainText(text);
    bar->setValue(atEnd ? bar->maximum() : at);
}

}  // namespace

SetupNav::SetupNav(SheetContext& context, Sources sources, QWidget* parent)
    : SettingsPage(
          context, "Navigation",
          {[&nav = sources.navigation, &general = sources.general] {
               const GeneralValues g = general.Snapshot();
               return NavPageValues{nav.Get(), g.NMEAantennaeO, g.NMEAantennaeR, g.GPSFlags};
           },
           [&nav = sources.navigation, &general = sources.general](const NavPageValues& v) {
               if (v.nav != nav.Get()) nav.Set(v.nav);
               const GeneralValues g = general.Snapshot();
               // The offsets are typed wider than they are kept: storing cuts them to 16 bits.
               const auto o = static_cast<std::int16_t>(v.antennaO);
               const auto r = static_cast<std::int16_t>(v.antennaR);
               const auto f = static_cast<std::int16_t>(v.gpsFlags);
               if (g.NMEAantennaeO != o || g.NMEAantennaeR != r || g.GPSFlags != f) {
                   general.Modify([&](GeneralValues& w) {
                       w.NMEAantennaeO = o;
                       w.NMEAantennaeR = r;
                       w.GPSFlags = f;
                   });
               }
           },
           [&nav = sources.navigation, &general = sources.general] {
               // Either owner's change moves the sum, since both only count up.
               return static_cast<int>(static_cast<unsigned>(nav.ChangeCount()) +
                                       static_cast<unsigned>(general.ChangeCount()));
           }},
          parent),
      sources_(std::move(sources)) {
    auto* left = new QVBoxLayout;
    left->addWidget(MakeSources());
    left->addWidget(MakeClock());
    left->addWidget(MakePorts());
    left->addWidget(MakeAntenna());
    left->addStretch(1);
    auto* layout = new QHBoxLayout(this);
    layout->addLayout(left, 0);
    layout->addWidget(MakeLive(), 1);
}

QWidget* SetupNav::MakeSources() {
    auto* box = new QGroupBox("Sources", this);
    auto* grid = new QGridLayout(box);
    latLon_ = new QComboBox(box);
    time_ = new QComboBox(box);
    latLon_->setObjectName("LatLonSource");
    time_->setObjectName("TimeSource");
    grid->addWidget(new QLabel("Lat/Lon From", box), 0, 0);
    grid->addWidget(latLon_, 0, 1);
    grid->addWidget(new QLabel("Time From", box), 0, 2);
    grid->addWidget(time_, 0, 3);
    grid->setColumnStretch(4, 1);
    WatchCombo(latLon_);
    WatchCombo(time_);
    return box;
}

QWidget* SetupNav::MakeClock() {
    auto* box = new QGroupBox("Clock", this);
    auto* grid = new QGridLayout(box);
    tsEnable_ = new QCheckBox("Steer Clock By Nav Time", box);
    tsBias_ = NumberEdit(box, 70);
    scopeOut_ = new QCheckBox("Diag Out Enable To Port", box);
    scopePort_ = NumberEdit(box, 70);
    scopePort_->setToolTip("I/O port address, in decimal (888 for 0x378)");
    tsEnable_->setObjectName("TSEnable");
    tsBias_->setObjectName("TSBias");
    scopeOut_->setObjectName("TSScopeOutEnable");
    scopePort_->setObjectName("TSScopeOutPort");
    grid->addWidget(tsEnable_, 0, 0, 1, 2);
    grid->addWidget(new QLabel("Bias ms:", box), 0, 2);
    grid->addWidget(tsBias_, 0, 3);
    grid->addWidget(scopeOut_, 1, 0, 1, 2);
    grid->addWidget(new QLabel("Address", box), 1, 2);
    grid->addWidget(scopePort_, 1, 3);
    grid->setColumnStretch(4, 1);
    WatchButton(tsEnable_);
    WatchEdit(tsBias_);
    WatchButton(scopeOut_);
    WatchEdit(scopePort_);
    return box;
}

QWidget* SetupNav::MakePorts() {
    auto* box = new QGroupBox("Serial Ports", this);
    auto* grid = new QGridLayout(box);
    grid->addWidget(new QLabel("Enable", box), 0, 1);
    grid->addWidget(new QLabel("Port", box), 0, 2);
    grid->addWidget(new QLabel("Baud", box), 0, 3);
    grid->addWidget(new QLabel("Device", box), 0, 4);
    for (int i = 0; i < NavigationConfig::kPorts; ++i) {
        PortRow& r = ports_[i];
        r.enable = new QCheckBox(box);
        r.port = NumberEdit(box, 45);
        r.baud = new QComboBox(box);
        r.device = new QLineEdit(box);
        r.device->setMinimumWidth(130);
        r.device->setToolTip("Device path; empty uses the one the port number names");
        const QString section = QString("Nav%1.").arg(i);
        r.enable->setObjectName(section + "Enable");
        r.port->setObjectName(section + "Port");
        r.baud->setObjectName(section + "Baud");
        r.device->setObjectName(section + "Device");
        grid->addWidget(new QLabel(kPortNames[i], box), i + 1, 0);
        grid->addWidget(r.enable, i + 1, 1, Qt::AlignCenter);
        grid->addWidget(r.port, i + 1, 2);
        grid->addWidget(r.baud, i + 1, 3);
        grid->addWidget(r.device, i + 1, 4);
        WatchButton(r.enable);
        WatchEdit(r.port);
        WatchCombo(r.baud);
        WatchEdit(r.device);
    }
    grid->setColumnStretch(4, 1);
    return box;
}

QWidget* SetupNav::MakeAntenna() {
    auto* box = new QGroupBox("Antenna Offsets", this);
    auto* grid = new QGridLayout(box);
    stbd_ = NumberEdit(box, 80);
    back_ = NumberEdit(box, 80);
    grid->addWidget(new QLabel("Stbd cm", box), 0, 0);
    grid->addWidget(stbd_, 0, 1);
    grid->addWidget(new QLabel("Back cm", box), 1, 0);
    grid->addWidget(back_, 1, 1);
    gps_[LaybackEnable] = new QCheckBox("Layback Enable", box);
    gps_[SaveCorrected] = new QCheckBox("Save Corrected in Segy", box);
    grid->addWidget(gps_[LaybackEnable], 0, 2);
    grid->addWidget(gps_[SaveCorrected], 1, 2);

    auto* ssbl = new QGroupBox("SSBL", box);
    auto* row = new QHBoxLayout(ssbl);
    gps_[SsblEnable] = new QCheckBox("Enable", ssbl);
    gps_[NegateNs] = new QCheckBox("Negate NS", ssbl);
    gps_[NegateEw] = new QCheckBox("Negate EW", ssbl);
    for (int b : {SsblEnable, NegateNs, NegateEw}) row->addWidget(gps_[b]);
    row->addStretch(1);
    grid->addWidget(ssbl, 2, 0, 1, 3);
    grid->setColumnStretch(3, 1);
    stbd_->setObjectName("NMEAantennaeO");
    back_->setObjectName("NMEAantennaeR");
    for (int b = 0; b < kGpsBits; ++b) gps_[b]->setObjectName(QString("GPSFlags.%1").arg(b));
    WatchEdit(stbd_);
    WatchEdit(back_);
    for (QCheckBox* c : gps_) WatchButton(c);
    return box;
}

QWidget* SetupNav::MakeLive() {
    auto* box = new QGroupBox("Live", this);
    auto* layout = new QVBoxLayout(box);
    navStatus_ = new QLabel(box);
    portStatus_ = new QLabel(box);
    portStatus_->setWordWrap(true);
    statusLines_ = FixedText(box);
    statusLines_->setMinimumWidth(420);
    statusLines_->setFixedHeight(150);
    historyPort_ = new QComboBox(box);
    historyPort_->addItem("All Ports", kAllPorts);
    for (int i = 0; i < NavigationConfig::kPorts; ++i) historyPort_->addItem(kPortNames[i], i);
    history_ = FixedText(box);
    historyPort_->setObjectName("HistoryPort");
    auto* filter = new QHBoxLayout;
    filter->addWidget(new QLabel("Recent Sentences", box));
    filter->addStretch(1);
    filter->addWidget(new QLabel("Show", box));
    filter->addWidget(historyPort_);
    layout->addWidget(navStatus_);
    layout->addWidget(portStatus_);
    layout->addWidget(statusLines_);
    layout->addLayout(filter);
    layout->addWidget(history_, 1);
    // The filter is a view of the panel, not a setting: it only redraws the history.
    connect(historyPort_, &QComboBox::currentIndexChanged, this, [this] {
        SetIfDifferent(history_, FilterHistory(sources_.stamping.CopyHistory(),
                                               historyPort_->currentData().toInt()));
    });
    return box;
}

void SetupNav::Bind(FieldEditor& ed, int dir, NavPageValues& v) {
    ed.List(dir, latLon_, v.nav.latLonSource, kLatLonSources);
    ed.List(dir, time_, v.nav.timeSource, kTimeSources);
    ed.Check(dir, tsEnable_, v.nav.tsEnable);
    ed.Int(dir, tsBias_, v.nav.tsBias, -kBiasLimit, kBiasLimit);
    ed.Check(dir, scopeOut_, v.nav.tsScopeOutEnable);
    ed.Int(dir, scopePort_, v.nav.tsScopeOutPort, 0, kMaxIoPort);
    for (int i = 0; i < NavigationConfig::kPorts; ++i) {
        PortRow& r = ports_[i];
        NavigationPortConfig& p = v.nav.ports[i];
        ed.Check(dir, r.enable, p.enable);
        ed.Int(dir, r.port, p.port, kMinPort, kMaxPort);
        ed.List(dir, r.baud, p.baud, kBauds);
        ed.Text(dir, r.device, p.device, kDeviceChars);
        if (dir == kShow) {
            NavigationPortConfig plain = p;
            plain.device.clear();
            r.device->setPlaceholderText(QString::fromStdString(plain.DevicePath()));
        }
    }
    ed.Int(dir, stbd_, v.antennaO, -kAntennaLimit, kAntennaLimit);
    ed.Int(dir, back_, v.antennaR, -kAntennaLimit, kAntennaLimit);
    for (int b = 0; b < kGpsBits; ++b) {
        const std::int32_t mask = 1 << b;
        std::int32_t bit = (v.gpsFlags & mask) != 0 ? 1 : 0;
        ed.Check(dir, gps_[b], bit);
        v.gpsFlags = bit != 0 ? (v.gpsFlags | mask) : (v.gpsFlags & ~mask);
    }
}

void SetupNav::SetHistoryPort(int port) {
    const int index = historyPort_->findData(port);
    if (index >= 0) historyPort_->setCurrentIndex(index);
}

QString SetupNav::FilterHistory(const SentenceHistory& history, int port) {
    const std::uint32_t written = history.WriteIndex();
    // Before the first sentence the ring holds only its placeholder.
    if (written == 0) return QString::fromLatin1(history.At(0).Text());
    const std::uint32_t count =
        written < SentenceHistory::kEntries ? written : SentenceHistory::kEntries;
    QStringList lines;
    for (std::uint32_t n = written - count; n != written; ++n) {
        const SentenceHistory::Entry& e = history.At(n);
        if (port != kAllPorts && e.port != port) continue;
        lines << QString::fromLatin1(e.Text());
    }
    return lines.join('\n');
}

QString SetupNav::StatusLinesText() const {
    return statusLines_->toPlainText();
}
QString SetupNav::HistoryText() const {
    return history_->toPlainText();
}
QString SetupNav::PortStatusText() const {
    return portStatus_->text();
}
QString SetupNav::NavStatusText() const {
    return navStatus_->text();
}

void SetupNav::UpdateLive() {
    const NavigationConfig config = sources_.navigation.Get();
    const NavigationFix fix = sources_.stamping.CopyFix();
    QStringList lines;
    for (const std::string& l : NavigationStatusLines(fix, config.latLonSource, config.timeSource))
        lines << QString::fromStdString(l);
    SetIfDifferent(statusLines_, lines.join('\n'));

    QString status;
    if (sources_.isPlayback && sources_.isPlayback()) {
        status = "NAV : Ignored in Playback";
    } else {
        switch (sources_.stamping.getNavStatus()) {
            case 2:
                status = "NAV : On";
                break;
            case 1:
                status = "NAV : No lat long";
                break;
            default:
                status = "NAV : No data (Off)";
                break;
        }
    }
    SetIfDifferent(navStatus_, status);

    const ClockSteering& steering = sources_.stamping.Steering();
    std::string ports =
        sources_.serial.StatusText(steering.PublishedErrorMs(), steering.PublishedAverageMs());
    if (ports.empty()) ports = "No serial port enabled";
    SetIfDifferent(portStatus_, QString::fromStdString(ports));

    SetIfDifferent(history_, FilterHistory(sources_.stamping.CopyHistory(),
                                           historyPort_->currentData().toInt()));
}

void SetupNav::OnTick() {
    UpdateLive();
}

}  // namespace halvo

#include "gui/pages/SetupTelemetry.h"

#include <QCheckBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <array>
#include <cstdio>
#include <exception>
#include <utility>

#include "app/ProgramClock.h"
#include "core/ByteOrder.h"
#include "core/MessageHub.h"
#include "core/MessageTypes.h"
#include "gui/sheets/OperatorPrompts.h"
#include "net/NetworkHub.h"

namespace halvo {

namespace {

constexpr std::int32_t kMinPort = 1;
constexpr std::int32_t kMaxPort = 65535;
constexpr std::int32_t kMaxQueue = 100000;
constexpr std::int32_t kMaxHandler = 255;
constexpr std::int32_t kMinReconnect = 200;
constexpr std::int32_t kMaxReconnect = 600000;
constexpr std::size_t kHostChars = 99;

constexpr std::array<const char*, NetworkSettings::kEndpoints> kRowLabels = {
    "Sonar Command", "Sonar Data", "Topside Command", "Topside Data"};

// The clock reports keep the difference above the three low bits of their rolling count.
std::int32_t ReportDifference(std::int32_t report) {
    return report >> 3;
}
std::int32_t ReportCount(std::int32_t report) {
    return report & 7;
}

QLineEdit* NumberEdit(QWidget* parent, int width) {
    auto* e = new QLineEdit(parent);
    e->setAlignment(Qt::AlignRight);
    e->setFixedWidth(width);
    return e;
}

QLabel* Unit(const char* text, QWidget* parent) {
    return new QLabel(text, parent);
}

}  // namespace

SetupTelemetry::SetupTelemetry(SheetContext& context, NetworkHub& network, MessageHub& hub,
                               ProgramClock& clock, Addresses addresses, QWidget* parent)
    : SettingsPage(context, "Network",
                   {[&network] { return network.Settings(); },
                    [&network](const NetworkSettings& v) { network.ApplyNetworkSettings(v); },
                    [&hub] { return hub.EndpointChangeCount(); }},
                   parent),
      network_(network),
      hub_(hub),
      clock_(clock),
      addresses_(std::move(addresses)) {
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(MakeEndpointGrid());
    auto* middle = new QHBoxLayout;
    middle->addWidget(MakeSwitches(), 1);
    auto* right = new QVBoxLayout;
    right->addWidget(MakeButtons());
    right->addWidget(MakeClockButtons());
    middle->addLayout(right, 1);
    layout->addLayout(middle);
    layout->addWidget(MakeLatency());
    layout->addStretch(1);
}

QWidget* SetupTelemetry::MakeEndpointGrid() {
    auto* box = new QGroupBox("Endpoints", this);
    auto* grid = new QGridLayout(box);
    const std::array<const char*, 8> heads = {
        "", "Host", "Port", "Xmit Buffer", "Recv Buffer", "No Delay", "Queue", "Handler"};
    for (int c = 0; c < static_cast<int>(heads.size()); ++c) {
        grid->addWidget(new QLabel(heads[c], box), 0, c, Qt::AlignLeft);
    }
    for (int i = 0; i < NetworkSettings::kEndpoints; ++i) {
        EndpointRow& r = rows_[i];
        const int row = i + 1;
        grid->addWidget(new QLabel(kRowLabels[i], box), row, 0);
        r.host = new QLineEdit(box);
        r.host->setMinimumWidth(140);
        r.port = NumberEdit(box, 60);
        r.xmit = NumberEdit(box, 70);
        r.recv = NumberEdit(box, 70);
        r.nagle = new QCheckBox(box);
        r.queue = NumberEdit(box, 60);
        r.handler = NumberEdit(box, 40);
        // Named after the keys they edit, so tools and tests can find them.
        const QString key = QString::fromLatin1(NetworkSettings::kNames[i].data(),
                                                NetworkSettings::kNames[i].size());
        r.host->setObjectName(key + ".HostName");
        r.port->setObjectName(key + ".Port");
        r.xmit->setObjectName(key + ".XmitSize");
        r.recv->setObjectName(key + ".RecvSize");
        r.nagle->setObjectName(key + ".NagleState");
        r.queue->setObjectName(key + ".QueueSize");
        r.handler->setObjectName(key + ".HandlerType");
        grid->addWidget(r.host, row, 1);
        grid->addWidget(r.port, row, 2);
        grid->addWidget(r.xmit, row, 3);
        grid->addWidget(r.recv, row, 4);
        grid->addWidget(r.nagle, row, 5, Qt::AlignCenter);
        grid->addWidget(r.queue, row, 6);
        grid->addWidget(r.handler, row, 7);
        for (QLineEdit* e : {r.host, r.port, r.xmit, r.recv, r.queue, r.handler}) WatchEdit(e);
        WatchButton(r.nagle);
    }
    auto* note = new QLabel(
        "Only the two sonar links are opened; buffers in bytes, 1000 to 200000; queue in "
        "messages.",
        box);
    note->setWordWrap(true);
    grid->addWidget(note, NetworkSettings::kEndpoints + 1, 0, 1, 8);
    grid->setColumnStretch(1, 1);
    return box;
}

QWidget* SetupTelemetry::MakeSwitches() {
    auto* box = new QGroupBox("Links", this);
    auto* grid = new QGridLayout(box);
    enableIO_ = new QCheckBox("Enable Network IO", box);
    timeSync_ = new QCheckBox("Enable Continuous Sync", box);
    alive_ = NumberEdit(box, 70);
    reconnect_ = NumberEdit(box, 70);
    enableIO_->setObjectName("EnableNetworkIO");
    timeSync_->setObjectName("EnableTimeSync");
    alive_->setObjectName("AliveTimeout");
    reconnect_->setObjectName("ReconnectInterval");
    grid->addWidget(enableIO_, 0, 0, 1, 3);
    grid->addWidget(timeSync_, 1, 0, 1, 3);
    grid->addWidget(new QLabel("Alive Timeout", box), 2, 0);
    grid->addWidget(alive_, 2, 1);
    grid->addWidget(Unit("ms", box), 2, 2);
    grid->addWidget(new QLabel("Reconnect Interval", box), 3, 0);
    grid->addWidget(reconnect_, 3, 1);
    grid->addWidget(Unit("ms", box), 3, 2);
    grid->setColumnStretch(3, 1);
    WatchButton(enableIO_);
    WatchButton(timeSync_);
    WatchEdit(alive_);
    WatchEdit(reconnect_);
    return box;
}

QPushButton* SetupTelemetry::DefaultButton(const char* label, std::string address,
                                           std::int32_t commandPort, std::int32_t dataPort) {
    auto* b = new QPushButton(label, this);
    b->setToolTip(QString("%1, ports %2 and %3")
                      .arg(QString::fromStdString(address))
                      .arg(commandPort)
                      .arg(dataPort));
    connect(b, &QPushButton::clicked, this, [this, address, commandPort, dataPort] {
        Guarded([&] { ApplyDefaults(address, commandPort, dataPort); });
    });
    return b;
}

QWidget* SetupTelemetry::MakeButtons() {
    auto* box = new QGroupBox("Connect To", this);
    auto* grid = new QGridLayout(box);
    grid->addWidget(DefaultButton("Via TWSI", addresses_.interfaceUnit, 1800, 1801), 0, 0);
    grid->addWidget(DefaultButton("Std Bottle", addresses_.towedUnit, 1700, 1701), 0, 1);
    grid->addWidget(DefaultButton("Local TWSI", "127.0.0.1", 1800, 1801), 1, 0);
    grid->addWidget(DefaultButton("Local Host", "127.0.0.1", 1700, 1701), 1, 1);

    return box;
}

QWidget* SetupTelemetry::MakeClockButtons() {
    auto* box = new QGroupBox("Sonar Clock", this);
    auto* row = new QHBoxLayout(box);
    auto* setTime = new QPushButton("Set Time", box);
    auto* checkTime = new QPushButton("Check Time", box);
    setTime->setToolTip("Send this computer's time to the sonar, then ask for the sonar's");
    checkTime->setToolTip("Ask for the sonar's time");
    connect(setTime, &QPushButton::clicked, this, [this] { Guarded([this] { SetTime(); }); });
    connect(checkTime, &QPushButton::clicked, this, [this] { Guarded([this] { CheckTime(); }); });
    row->addWidget(setTime);
    row->addWidget(checkTime);
    return box;
}

QWidget* SetupTelemetry::MakeLatency() {
    auto* box = new QGroupBox("Link Status", this);
    auto* layout = new QVBoxLayout(box);
    showLatency_ = new QCheckBox("Show Latency", box);
    latency_ = new QLabel(box);
    counters_ = new QLabel(box);
    showLatency_->setObjectName("ShowLatency");
    latency_->setObjectName("LatencyLine");
    counters_->setObjectName("CountersLine");
    const QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    for (QLabel* l : {latency_, counters_}) {
        l->setFont(fixed);
        l->setTextInteractionFlags(Qt::TextSelectableByMouse);
        l->setWordWrap(true);
        l->setEnabled(false);
    }
    layout->addWidget(showLatency_);
    layout->addWidget(latency_);
    layout->addWidget(counters_);
    // A view switch, not a setting: the lines stand greyed while the timer leaves them.
    connect(showLatency_, &QCheckBox::toggled, this, [this](bool on) {
        latency_->setEnabled(on);
        counters_->setEnabled(on);
        if (on) UpdateLatency();
    });
    return box;
}

void SetupTelemetry::Bind(FieldEditor& ed, int dir, NetworkSettings& v) {
    for (int i = 0; i < NetworkSettings::kEndpoints; ++i) {
        EndpointRow& r = rows_[i];
        EndpointSettings& e = v.endpoints[i];
        ed.Text(dir, r.host, e.HostName, kHostChars);
        ed.Int(dir, r.port, e.Port, kMinPort, kMaxPort);
        ed.Int(dir, r.xmit, e.XmitSize, kMinBuffer, kMaxBuffer);
        ed.Int(dir, r.recv, e.RecvSize, kMinBuffer, kMaxBuffer);
        ed.Check(dir, r.nagle, e.NagleState);
        ed.Int(dir, r.queue, e.QueueSize, 0, kMaxQueue);
        ed.Int(dir, r.handler, e.HandlerType, 0, kMaxHandler);
    }
    ed.Check(dir, enableIO_, v.EnableNetworkIO);
    ed.Check(dir, timeSync_, v.EnableTimeSync);
    ed.Int(dir, alive_, v.AliveTimeout, kMinAlive, kMaxAlive);
    ed.Int(dir, reconnect_, v.ReconnectInterval, kMinReconnect, kMaxReconnect);
}

void SetupTelemetry::ApplyDefaults(const std::string& address, std::int32_t commandPort,
                                   std::int32_t dataPort) {
    // A half-typed field goes in first, so the button does not throw it away.
    Exchange(kRead);
    NetworkSettings v = network_.Settings();
    v.EnableNetworkIO = 1;
    EndpointSettings& command = v.endpoints[NetworkSettings::SonarCommand];
    EndpointSettings& data = v.endpoints[NetworkSettings::SonarData];
    command.HostName = address;
    data.HostName = address;
    command.Port = commandPort;
    data.Port = dataPort;
    command.XmitSize = kDefaultBuffer;
    command.RecvSize = kDefaultBuffer;
    // The data link's transmit buffer stays as set: it carries next to nothing outward.
    data.RecvSize = kDefaultBuffer;
    network_.ApplyNetworkSettings(v);
    Exchange(kShow);
}

void SetupTelemetry::SendClock(int direction) {
    if (direction == 0) {
        const TimeValue now = clock_.Now();
        std::array<std::uint8_t, 8> payload{};
        PutLE<std::int32_t>(payload, 0, now.seconds);
        PutLE<std::int32_t>(payload, 4, now.ms);
        hub_.SendCommand(payload.data(), payload.size(), MsgClock, 0, 0, 0, SourceLocal);
    } else {
        hub_.SendCommand(nullptr, 0, MsgClock, 0, 1, 0, SourceLocal);
    }
}

void SetupTelemetry::SetTime() {
    SendClock(0);
    SendClock(1);
    reportAtSetTime_ = network_.GetStatus()[0].clockToSonar;
}

void SetupTelemetry::CheckTime() {
    SendClock(1);
}

void SetupTelemetry::Guarded(const std::function<void()>& work) {
    try {
        work();
    } catch (const std::exception& e) {
        Context().prompts.Notify("Error", e.what());
    } catch (...) {
        Context().prompts.Notify("Error", "Unknown exception");
    }
}

QString SetupTelemetry::BuildLatency() const {
    std::string text = "Time in ms :: Ping: ";
    for (std::int32_t rt : roundTrips_) text += std::to_string(rt) + " ";
    const SocketStatus& cmd = status_[0];
    const SocketStatus& data = status_[1];
    const TimeValue now = clock_.Now();
    const std::int64_t secondOfDay = ((now.seconds % 86400) + 86400) % 86400;
    char buf[200];
    std::snprintf(buf, sizeof buf,
                  " SyncC: %d(%d) SyncD: %d(%d) Sync Error: %d(%d %d) %02d:%02d:%04d",
                  ReportDifference(cmd.clockFromSonar), ReportCount(cmd.clockFromSonar),
                  ReportDifference(data.clockFromSonar), ReportCount(data.clockFromSonar),
                  ReportDifference(cmd.clockToSonar), ReportCount(cmd.clockToSonar),
                  ReportDifference(reportAtSetTime_), static_cast<int>(secondOfDay / 60 % 60),
                  static_cast<int>(secondOfDay % 60), now.ms);
    return QString::fromStdString(text + buf);
}

QString SetupTelemetry::BuildCounters() const {
    const SocketStatus& c = status_[0];
    const SocketStatus& d = status_[1];
    char buf[200];
    std::snprintf(buf, sizeof buf, "Cmd:(X=%d R=%d C=%d L=%d) Data:(X=%d R=%d C=%d L=%d)", c.sent,
                  c.received, c.connectionCount, c.tick, d.sent, d.received, d.connectionCount,
                  d.tick);
    return QString::fromLatin1(buf);
}

void SetupTelemetry::UpdateLatency() {
    status_ = network_.GetStatus();
    // Each clock reply changes the report; its round trip joins the recent ones.
    const std::int32_t report = status_[0].clockToSonar;
    if (report != lastRoundTripReport_) {
        lastRoundTripReport_ = report;
        roundTrips_.push_back(status_[0].roundTrip);
        while (roundTrips_.size() > kRoundTrips) roundTrips_.pop_front();
    }
    const QString latency = BuildLatency();
    const QString counters = BuildCounters();
    if (latency_->text() != latency) latency_->setText(latency);
    if (counters_->text() != counters) counters_->setText(counters);
}

QString SetupTelemetry::LatencyText() const {
    return latency_->text();
}
QString SetupTelemetry::CountersText() const {
    return counters_->text();
}

void SetupTelemetry::OnTick() {
    if (showLatency_->isChecked()) UpdateLatency();
}

}  // namespace halvo

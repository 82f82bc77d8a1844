#pragma once
// The network page: the four endpoint records, the network switches, the quick set-ups of the
// links and the sonar's clock. A change writes the whole settings back through
// ApplyNetworkSettings, which starts the links again; the endpoint change count brings changes
// made elsewhere back into the fields.

#include <array>
#include <cstdint>
#include <deque>
#include <string>

#include "gui/sheets/SettingsPage.h"
#include "net/NetworkSettings.h"
#include "net/SocketStatus.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace halvo {

class MessageHub;
class NetworkHub;
class ProgramClock;

class SetupTelemetry : public SettingsPage<NetworkSettings> {
  public:
    // Where the quick set-up buttons point the links: addresses of the installation.
    struct Addresses {
        std::string interfaceUnit;  // "Via TWSI"
        std::string towedUnit;      // "Std Bottle"
    };

    static constexpr std::int32_t kMinBuffer = 1000;
    static constexpr std::int32_t kMaxBuffer = 200000;
    static constexpr std::int32_t kMinAlive = 500;
    static constexpr std::int32_t kMaxAlive = 60000;
    static constexpr std::int32_t kDefaultBuffer = 100000;
    // Round trips kept for the latency line.
    static constexpr std::size_t kRoundTrips = 5;

    SetupTelemetry(SheetContext& context, NetworkHub& network, MessageHub& hub, ProgramClock& clock,
                   Addresses addresses, QWidget* parent = nullptr);

    // The quick set-ups: one address for both sonar links, the two ports, the sizes of the
    // buffers reset, and the links started again.
    void ApplyDefaults(const std::string& address, std::int32_t commandPort, std::int32_t dataPort);
    // "Set Time": our time to the sonar, then a query. "Check Time": the query alone.
    void SetTime();
    void CheckTime();

    // The two lines as shown; the timer writes them while "Show Latency" is on.
    QString LatencyText() const;
    QString CountersText() const;

    void OnTick() override;

  protected:
    void Bind(FieldEditor& ed, int dir, NetworkSettings& v) override;

  private:
    struct EndpointRow {
        QLineEdit* host = nullptr;
        QLineEdit* port = nullptr;
        QLineEdit* xmit = nullptr;
        QLineEdit* recv = nullptr;
        QCheckBox* nagle = nullptr;
        QLineEdit* queue = nullptr;
        QLineEdit* handler = nullptr;
    };

    QWidget* MakeEndpointGrid();
    QWidget* MakeSwitches();
    QWidget* MakeButtons();
    QWidget* MakeClockButtons();
    QWidget* MakeLatency();
    QPushButton* DefaultButton(const char* label, std::string address, std::int32_t commandPort,
                               std::int32_t dataPort);
    // Guards a button's work: nothing thrown may leave a Qt slot.
    void Guarded(const std::function<void()>& work);
    void SendClock(int direction);
    void UpdateLatency();
    QString BuildLatency() const;
    QString BuildCounters() const;

    NetworkHub& network_;
    MessageHub& hub_;
    ProgramClock& clock_;
    Addresses addresses_;

    std::array<EndpointRow, NetworkSettings::kEndpoints> rows_{};
    QCheckBox* enableIO_ = nullptr;
    QCheckBox* timeSync_ = nullptr;
    QLineEdit* alive_ = nullptr;
    QLineEdit* reconnect_ = nullptr;
    QCheckBox* showLatency_ = nullptr;
    QLabel* latency_ = nullptr;
    QLabel* counters_ = nullptr;

    std::array<SocketStatus, 2> status_{};
    std::deque<std::int32_t> roundTrips_;
    std::int32_t lastRoundTripReport_ = 0;
    // The command link's clock report when "Set Time" was pressed.
    std::int32_t reportAtSetTime_ = 0;
};

}  // namespace halvo

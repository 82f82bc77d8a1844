#pragma once
// The live digest on the data bus: every reply trace updates pings, gains, signals, the
// overflow count, the custom fields and the mark; sensor messages feed the silence watch. The
// texts and the alerts are rebuilt only when somebody has read the record since the last pass,
// so the work follows the main window's timer rather than the ping rate.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string>

#include "app/GeneralValues.h"
#include "core/MessageObserver.h"
#include "status/AlertAnnouncer.h"
#include "status/AlertMonitor.h"
#include "status/StatusRecord.h"
#include "status/StatusSettings.h"
#include "status/StatusSources.h"

namespace halvo {

class Beeper;
class EventLog;
class GeneralSettings;
class MessageProcessor;
class RunFlag;
class StatusControl;

class StatusDataProcessor final : public MessageObserver {
  public:
    using TickFn = std::function<std::uint32_t()>;

    struct Parts {
        StatusControl& control;
        MessageProcessor& dataBus;
        GeneralSettings& general;  // bottle temperature scaling, water sound speed
        EventLog& log;
        Beeper& beeper;
        const RunFlag& running;
        TickFn tick;  // program ticks in milliseconds
    };

    explicit StatusDataProcessor(Parts parts);
    ~StatusDataProcessor() override;
    StatusDataProcessor(const StatusDataProcessor&) = delete;
    StatusDataProcessor& operator=(const StatusDataProcessor&) = delete;

    // What the rest of the program reports. Only before start: false, and nothing changed,
    // once started.
    bool SetSources(StatusSources sources);

    // Once: loads the settings if need be, takes both records, attaches to the data bus and
    // starts the beep and log thread.
    void start();
    bool started() const { return started_.load(std::memory_order_acquire); }

    // A copy of the digest; starts status on first use and lets the next trace rebuild texts
    // and alerts.
    StatusRecord getRecord();
    // The last mark number seen, without counting as a read of the record: cheap enough for a
    // caller on every recorded write, and it leaves the digest's pacing to its real readers.
    std::int32_t MarkNumber() const;
    StatusSettings getSettings();
    void setSettings(const StatusSettings& record);
    AlertSettings getAlertSettings();
    void setAlertSettings(const AlertSettings& record);

    // The main status line (reads the record, so it paces the digest as getRecord does).
    std::string statusLine();
    // The text for one stored line, to fit `limit` bytes; "NO DATA" for none.
    std::string pingText(std::size_t limit, const PingView* element);

    std::uint32_t getAlerts() const { return alerts_.Word(); }
    std::string alertText() const { return AlertMonitor::AlertText(getAlerts()); }

    void DeliverMessage(SonarMessage* message, int source, std::uint32_t extra) override;

    // The beep and log thread, for the application's shutdown and for tests.
    AlertAnnouncer& Announcer() { return announcer_; }

  private:
    void Idle();
    void RefreshSettings();
    void Pressure(std::span<const std::uint8_t> payload);
    void Trace(std::span<const std::uint8_t> payload);
    void Rebuild(const ConstTraceHeaderView& th, int channel);

    Parts parts_;
    StatusSources sources_;
    std::once_flag startOnce_;
    std::atomic<bool> started_{false};

    // Bus thread only.
    StatusSettings settings_;
    int settingsChanges_ = 0;
    AlertSettings alertSettings_;
    int alertChanges_ = 0;
    int windowAlertChanges_ = 0;  // the silence window keeps its own view of the counter
    GeneralValues general_;
    int generalChanges_ = -1;
    std::uint32_t lastReads_ = 0;

    // Written on the bus thread, copied out under the lock so no reader sees half a trace.
    mutable std::mutex recordMutex_;
    StatusRecord record_;
    std::atomic<std::uint32_t> reads_{0};

    AlertMonitor alerts_;
    AlertAnnouncer announcer_;
};

}  // namespace halvo

#pragma once
// The text log beside each recorded data file: a creation line and a snapshot of the sonar's
// settings at the start, again after each change (no sooner than 4 s after the last), and once
// more when the file closes. Also writes the "RECORD : " open and close lines of the event log.
// Runs on the bus thread.
//
// What a snapshot shows belongs to navigation, sensors and the sonar model; the application
// plugs it in through PerFileLogSources, and an unset source prints its empty form.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "core/TimeValue.h"

namespace halvo {

class EventLog;
class LoggingControl;
class Notifier;
struct LoggingSettings;

struct GpsSnapshot {
    std::string time;      // the navigation time text
    std::string position;  // the position text
    std::string speed;     // the speed text
    std::int32_t markNumber = 0;
};

struct ChannelGainSnapshot {
    bool automatic = false;  // "AGC=>" instead of the manual gain
    double manualGain = 0;
    int measuredGain = 0;
};

struct SonarSnapshot {
    int index = 0;          // printed as "Sonar%d"
    int firstChannel = 63;  // 63 and above: the sonar is not in use and only its name shows
    int on = 0;
    int pingNumber = 0;
    double adcRate = 0;
    int dataType = 0;        // 0 "Envelope ", 1 "Complex ", 2 "RAW ", else the number
    bool rangeMode = false;  // "Range %7.2f M" instead of "Rate %7.2f pps "
    double rateOrRange = 0;
    int trigger = 0;
    double delay = 0;
    double depth = 0;
    int decimationPre = 0;
    int decimationPost = 0;
    unsigned mux = 0;
    std::vector<ChannelGainSnapshot> gains;  // at most 16 are printed
    double dacGain = 0;
    std::vector<double> dac;  // at most 16 are printed
    std::string pulse;
};

struct SensorSnapshot {
    std::string attitude;  // the attitude text
    double depthM = 0;
    double pressurePsi = 0;
};

struct PerFileLogSources {
    std::function<GpsSnapshot()> gps;
    std::function<std::vector<SonarSnapshot>()> sonars;
    std::function<SensorSnapshot()> sensors;
    // Polled after every data write, so these two must be cheap.
    std::function<std::int32_t()> markNumber;
    std::function<int()> parameterChanges;  // the sonar parameter change counter
    // The time of the creation line; unset gives the epoch.
    std::function<TimeValue()> now;
};

class PerFileLog {
  public:
    static constexpr std::uint32_t kHoldBackMs = 4000;
    static constexpr std::size_t kMaxChannelsShown = 16;
    static constexpr const char* kBlankTitle = "Log File Comment / Notes Is Blank";
    static constexpr const char* kBlankText = "Please Enter A Comment or Notes in the LOG Options";

    // Any pointer may be null: no settings means the log is off, no event log means no lines,
    // no notifier means no box.
    PerFileLog(PerFileLogSources sources, LoggingControl* logging, Notifier* notifier,
               EventLog* events);

    // The data file name, with a final ".hsf" made ".txt" when the name is over 3 characters.
    static std::string LogName(const std::string& dataName);
    // "YYYY/MM/DD HH:MM:SS" in UTC.
    static std::string TimeText(const TimeValue& time);
    // The lines of one sonar, from "Sonar%d : " to its line end.
    static std::string SonarText(const SonarSnapshot& sonar);

    // A data file opened: the event line, then with the log on its creation line and a first
    // snapshot.
    void Opened(const std::string& dataName, std::uint32_t tick);
    // After each data write: a snapshot when something changed, held back while the last one
    // is younger than kHoldBackMs.
    void Activity(std::uint32_t tick);
    // The data file closed: a closing snapshot if a log is held, then the event line.
    void Closed(std::uint32_t tick);

    const std::string& Name() const { return name_; }
    int HeldBack() const { return held_; }
    int Snapshots() const { return snapshots_; }

  private:
    void Snapshot(std::uint32_t tick);
    std::string SnapshotText(const LoggingSettings& settings) const;
    void Line(const std::string& text);

    PerFileLogSources sources_;
    LoggingControl* logging_;
    Notifier* notifier_;
    EventLog* events_;

    std::string name_;
    bool anySnapshotYet_ = false;  // in this run of the program, for the blank-comment notice
    std::uint32_t lastTick_ = 0;
    std::int32_t lastMark_ = 0;
    int lastParameters_ = 0;
    int lastLogging_ = 0;
    int held_ = 0;  // changes held back since the last snapshot
    int snapshots_ = 0;
};

}  // namespace halvo

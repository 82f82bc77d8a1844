#pragma once
// The beep and log thread: beeps while the alert word is non-zero and the operator asked for
// beeps, and writes each change of the word to the event log. One pass is beep, sleep, log;
// the passes are public so that tests can walk them without waiting.

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

#include "status/AlertSettings.h"

namespace halvo {

class Beeper;
class EventLog;
class RunFlag;

class AlertAnnouncer {
  public:
    static constexpr int kMinSleepMs = 100;
    static constexpr int kMaxIntervalMs = 100000;  // at or above: no beeps

    using WordFn = std::function<std::uint32_t()>;
    using SettingsFn = std::function<AlertSettings()>;

    AlertAnnouncer(Beeper& beeper, EventLog& log, const RunFlag& running, WordFn word,
                   SettingsFn settings);
    ~AlertAnnouncer();
    AlertAnnouncer(const AlertAnnouncer&) = delete;
    AlertAnnouncer& operator=(const AlertAnnouncer&) = delete;

    // Starts the thread once; it runs while the run flag is set and Stop has not been called.
    void Start();
    // Wakes the thread, cuts a running tone short and joins. Safe to call twice.
    void Stop();

    // Step 1: beeps when the word is non-zero, the interval lies between 0 and 100,000
    // (both excluded), the duration is above 0 and bit 8 of AlertFlags is set.
    bool BeepStep(const AlertSettings& settings);
    // Step 2's length: the interval, but never under 100 ms.
    static int SleepMs(const AlertSettings& settings);
    // Step 3: logs the word when it differs from the one last seen here.
    bool LogStep();

  private:
    void Run();

    Beeper& beeper_;
    EventLog& log_;
    const RunFlag& running_;
    const WordFn word_;
    const SettingsFn settings_;
    std::uint32_t lastLogged_ = 0;

    std::mutex mutex_;
    std::condition_variable wake_;
    bool stop_ = false;
    std::thread thread_;
};

}  // namespace halvo

#pragma once
// The three navigation reader threads. Each owns one SerialInput, follows its section of the
// navigation settings, retries a missing port for ever, keeps silent during playback, and posts
// every line it reads to the data bus as message 2002 with source 4. A full bus drops the line:
// serial input never waits.

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "core/RunFlag.h"
#include "core/SonarMessage.h"
#include "core/TimeValue.h"
#include "nav/DiagnosticPulse.h"
#include "nav/NavigationConfig.h"
#include "nav/SerialInput.h"

namespace halvo {

class MessageProcessor;
class ParallelPort;

// The reader loop's pauses. The defaults are the ones to run with; tests shorten them.
struct NavigationInputTiming {
    std::chrono::milliseconds retry{500};  // between attempts on a missing port; idle extra
    std::chrono::milliseconds idle{50};    // after a read that gave no line
};

class NavigationInput {
  public:
    static constexpr std::uint8_t kDirection = 2;
    static constexpr std::uint8_t kSubsystem = 100;

    using NowFn = std::function<TimeValue()>;
    using PlaybackFn = std::function<bool()>;

    NavigationInput(const NavigationConfigStore& config, MessageProcessor& dataBus, NowFn now,
                    PlaybackFn isPlayback, ParallelPort& parallel, const RunFlag& running,
                    NavigationInputTiming timing = {});
    ~NavigationInput();
    NavigationInput(const NavigationInput&) = delete;
    NavigationInput& operator=(const NavigationInput&) = delete;

    // Starts the three threads; later calls do nothing. They run while `running` is set and
    // until Stop.
    void Start();
    // Wakes the threads from their pauses and joins them.
    void Stop();

    // The port part of the status bar: per enabled port "[Bytes=%d OF=%d] ", "[Playback Mode] "
    // or "[Cannot Open Port] ", then "[Time(Cur=%d Avg=%d)] " when clock steering is on, with
    // the current and average clock error of the stamping step (the average truncated).
    std::string StatusText(std::int32_t currentClockError = 0, double averageClockError = 0) const;

    // Message 2002 for one line of port `index`: the stamp holds `now`, the text follows at
    // offset 12 with its terminating zero, and the size counts that zero.
    static SonarMessage BuildMessage(std::string_view line, int index, TimeValue now);

    // Counters of one port since start: lines posted, and lines the bus refused.
    std::uint64_t LinesPosted(int index) const;
    std::uint64_t LinesDropped(int index) const;
    // The port's reader, for inspection from other threads (the atomic parts only).
    const SerialInput& Input(int index) const;

  private:
    struct Port {
        SerialInput input;
        std::thread thread;
        std::atomic<std::uint64_t> posted{0};
        std::atomic<std::uint64_t> dropped{0};
    };

    void Run(int index);
    // False when the wait ended because the input is stopping.
    bool Pause(std::chrono::milliseconds duration);
    bool Stopping() const;
    bool Playback() const { return isPlayback_ && isPlayback_(); }

    const NavigationConfigStore& config_;
    MessageProcessor& bus_;
    const NowFn now_;
    const PlaybackFn isPlayback_;
    DiagnosticPulse pulse_;
    const RunFlag& running_;
    const NavigationInputTiming timing_;

    std::array<Port, NavigationConfig::kPorts> ports_;
    std::atomic<bool> started_{false};
    std::mutex wakeMutex_;
    std::condition_variable wake_;
    std::atomic<bool> stop_{false};
};

}  // namespace halvo

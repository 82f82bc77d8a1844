#pragma once
// The program without a window: the same System and the same 250 ms housekeeping as the GUI,
// driven from a plain loop, with the display queue drained more often in between. It prints the
// event log to a stream as it grows, presses Record once the system has started if asked, plays
// files in turn as the storage page's chaining would, and ends with the normal ending (with save)
// after a duration or on a stop request.

#include <atomic>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "system/System.h"

namespace halvo {

struct HeadlessOptions {
    std::string settings;           // defaults file; empty: ./HalvoDefaults.Hni
    double durationSeconds = 0;     // 0: until stopped
    bool record = false;            // press Record once started
    bool ping = false;              // switch every sonar in use on once started
    std::vector<std::string> play;  // files to play in turn
    std::uint32_t tickMs = 250;     // the housekeeping period
    std::string alarmFile;          // alarm tones into this WAV file instead of the sound system
};

class HeadlessRunner {
  public:
    static constexpr int kDrainMs = 20;  // display queue drains between housekeeping passes

    HeadlessRunner(System& system, HeadlessOptions options, std::ostream& out);

    // Runs until the duration is over, the stop flag is raised, or (when playing) the last file
    // has ended. Returns the process exit code.
    int Run(const std::atomic<bool>& stop);

  private:
    void PrintNewLogLines();
    void Guarded(const std::function<void()>& pass);
    bool StartNextFile();
    bool PlaybackEnded();

    System& system_;
    HeadlessOptions options_;
    std::ostream& out_;
    std::uint64_t printed_ = 0;
    std::size_t nextFile_ = 0;
    bool playing_ = false;
    std::uint32_t fileStartTick_ = 0;
};

}  // namespace halvo

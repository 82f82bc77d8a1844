#include "HeadlessProgram.h"

#include <signal.h>

#include <atomic>
#include <iostream>

#include "platform/LinuxSystemClock.h"
#include "platform/MonotonicTickSource.h"
#include "platform/WavFileOutput.h"
#include "status/SoundBeeper.h"
#include "system/System.h"

namespace halvo {

namespace {
// A signal handler can only reach a process-wide flag; the runner polls it every tick.
std::atomic<bool> stopRequested{false};

void OnStopSignal(int) {
    stopRequested.store(true);
}
}  // namespace

std::unique_ptr<Beeper> AlarmFileBeeper(const std::string& file) {
    if (file.empty()) return nullptr;
    return std::make_unique<SoundBeeper>(std::make_unique<WavFileOutput>(file));
}

int RunHeadless(const HeadlessOptions& options) {
    struct sigaction sa {};
    sa.sa_handler = OnStopSignal;
    sigemptyset(&sa.sa_mask);
    ::sigaction(SIGINT, &sa, nullptr);
    ::sigaction(SIGTERM, &sa, nullptr);
    ::signal(SIGPIPE, SIG_IGN);

    MonotonicTickSource ticks;
    LinuxSystemClock systemClock;
    std::unique_ptr<Beeper> alarm = AlarmFileBeeper(options.alarmFile);
    System system(System::Platform{ticks, systemClock, nullptr, alarm.get()});
    HeadlessRunner runner(system, options, std::cout);
    return runner.Run(stopRequested);
}

}  // namespace halvo

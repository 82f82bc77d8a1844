#include "system/HeadlessRunner.h"

#include <chrono>
#include <exception>
#include <ostream>
#include <thread>

#include "app/EventLog.h"
#include "app/Housekeeping.h"
#include "app/Notifier.h"
#include "app/ProgramClock.h"
#include "storage/StorageControl.h"

namespace halvo {

HeadlessRunner::HeadlessRunner(System& system, HeadlessOptions options, std::ostream& out)
    : system_(system), options_(std::move(options)), out_(out) {}

void HeadlessRunner::PrintNewLogLines() {
    for (const EventLog::Line& line : system_.Log().Since(printed_)) {
        out_ << line.text << '\n';
        printed_ = line.sequence;
    }
    out_.flush();
}

bool HeadlessRunner::StartNextFile() {
    if (nextFile_ >= options_.play.size()) return false;
    system_.PrepareToPlay(options_.play[nextFile_++]);
    std::this_thread::sleep_for(std::chrono::milliseconds(System::kPlayDelayMs));
    system_.Storage().RequestPlayback();
    playing_ = true;
    fileStartTick_ = system_.Clock().Tick();
    return true;
}

bool HeadlessRunner::PlaybackEnded() {
    const std::int32_t state = system_.Storage().getStatus().state;
    // Give the recorder a moment to open the file before an idle state counts as the end.
    if (system_.Clock().Tick() - fileStartTick_ < 1000) return false;
    return state == StateEndOfFile || state == StateError || state == StateIdlePlayback ||
           state == StateIdleRecord;
}

// The window's timer passes catch what escapes them, say so and go on; a run without a window
// must be as hard to stop by one bad pass.
void HeadlessRunner::Guarded(const std::function<void()>& pass) {
    try {
        pass();
    } catch (const std::exception& e) {
        system_.Notices().Notify("Timer Exception",
                                 std::string("Exception In On Timer Main Frame: ") + e.what());
    } catch (...) {
        system_.Notices().Notify("Timer Exception", "Exception In On Timer Main Frame");
    }
}

int HeadlessRunner::Run(const std::atomic<bool>& stop) {
    system_.Startup(nullptr, options_.settings);
    system_.FinishStartup();
    Housekeeping housekeeping(system_.HousekeepingSources(), &system_.Log());
    PrintNewLogLines();
    if (options_.ping) system_.SwitchSonarsOn();
    if (options_.record) system_.Storage().RequestRecord();
    if (!options_.play.empty()) StartNextFile();

    const auto start = std::chrono::steady_clock::now();
    const auto period = std::chrono::milliseconds(options_.tickMs == 0 ? 250 : options_.tickMs);
    auto next = start + period;
    // With no window to keep responsive, the display queue is drained every few milliseconds
    // between passes rather than once a pass, so that a file played at full speed is held back
    // by the display chain itself and not by the window's drawing pace.
    const auto drainStep = std::chrono::milliseconds(kDrainMs);
    while (!stop.load()) {
        for (auto at = std::chrono::steady_clock::now() + drainStep; at < next && !stop.load();
             at += drainStep) {
            std::this_thread::sleep_until(at);
            Guarded([this] { system_.DrainDisplays(false); });
        }
        std::this_thread::sleep_until(next);
        next += period;
        Guarded([&housekeeping] { housekeeping.Update(); });
        PrintNewLogLines();
        if (playing_ && PlaybackEnded() && !StartNextFile()) break;
        const double elapsed =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (options_.durationSeconds > 0 && elapsed >= options_.durationSeconds) break;
    }
    system_.Ending(true);
    PrintNewLogLines();
    return 0;
}

}  // namespace halvo

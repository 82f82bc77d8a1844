#include "status/AlertAnnouncer.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "app/EventLog.h"
#include "core/RunFlag.h"
#include "status/Beeper.h"

namespace halvo {

AlertAnnouncer::AlertAnnouncer(Beeper& beeper, EventLog& log, const RunFlag& running, WordFn word,
                               SettingsFn settings)
    : beeper_(beeper),
      log_(log),
      running_(running),
      word_(std::move(word)),
      settings_(std::move(settings)) {}

AlertAnnouncer::~AlertAnnouncer() {
    Stop();
}

void AlertAnnouncer::Start() {
    std::lock_guard lock(mutex_);
    if (thread_.joinable() || stop_) return;
    thread_ = std::thread([this] { Run(); });
}

void AlertAnnouncer::Stop() {
    {
        std::lock_guard lock(mutex_);
        stop_ = true;
    }
    wake_.notify_all();
    beeper_.Interrupt();
    if (thread_.joinable() && thread_.get_id() != std::this_thread::get_id()) thread_.join();
}

bool AlertAnnouncer::BeepStep(const AlertSettings& s) {
    const bool wanted = word_() != 0 && s.beepInterval > 0 && s.beepInterval < kMaxIntervalMs &&
                        s.beepDuration > 0 && (s.alertFlags & AlertBeep) != 0;
    if (wanted) beeper_.Beep(s.beepTone, s.beepDuration);
    return wanted;
}

int AlertAnnouncer::SleepMs(const AlertSettings& s) {
    return std::max(s.beepInterval, kMinSleepMs);
}

bool AlertAnnouncer::LogStep() {
    const std::uint32_t word = word_();
    if (word == lastLogged_) return false;
    lastLogged_ = word;
    if (word == 0) {
        log_.Add("ALERTS : No alerts");
    } else {
        log_.Addf("ALERTS : Alerts pending %x", static_cast<unsigned>(word));
    }
    return true;
}

void AlertAnnouncer::Run() {
    while (running_.IsSet()) {
        const AlertSettings s = settings_();
        BeepStep(s);
        {
            std::unique_lock lock(mutex_);
            if (wake_.wait_for(lock, std::chrono::milliseconds(SleepMs(s)),
                               [this] { return stop_; })) {
                return;
            }
        }
        LogStep();
    }
}

}  // namespace halvo

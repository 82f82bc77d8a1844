#include "storage/PlaybackChain.h"

#include "storage/StorageControl.h"

namespace halvo {

void PlaybackChain::Select(const std::string& directory, const std::vector<std::string>& names,
                           std::uint32_t now) {
    if (names.empty()) return;
    slots_.clear();
    slots_.push_back(directory);
    slots_.insert(slots_.end(), names.begin(), names.end());
    position_ = 2;
    if (names.size() == 1 && !autoRepeat_) {
        StorageSettings s = control_.getSettings();
        s.playbackDir = directory;
        s.playbackFile = names.front();
        control_.setSettings(s);
        return;
    }
    auto_ = true;
    StopThenStart(&names.front(), now);
}

void PlaybackChain::PlaybackButton() {
    position_ = 0;
    auto_ = true;
    restartPending_ = false;
    control_.RequestPlayback();
}

void PlaybackChain::Tick(std::uint32_t now) {
    if (restartPending_) {
        if (now - stopTick_ < kRestartDelayMs) return;
        restartPending_ = false;
        control_.RequestPlayback();
        return;
    }
    if (!auto_) return;
    switch (control_.getStatus().state) {
        case StatePlayback:
        case StateIdlePlayback:
        case StatePause:
            break;
        case StateEndOfFile:
            // Unsigned difference: a tick that went backward counts as expired.
            if (!acted_ || now - lastActionTick_ >= kEndOfFileGapMs) AtEndOfFile(now);
            break;
        default:
            auto_ = false;
            break;
    }
}

void PlaybackChain::AtEndOfFile(std::uint32_t now) {
    acted_ = true;
    lastActionTick_ = now;
    if (position_ > 0) {
        if (position_ >= static_cast<int>(slots_.size())) {
            if (!autoRepeat_ || slots_.size() < 2) {
                position_ = -1;
                auto_ = false;
                return;
            }
            position_ = 1;
        }
        const std::string name = slots_[static_cast<std::size_t>(position_)];
        ++position_;
        StopThenStart(&name, now);
        return;
    }
    if (!autoRepeat_) {
        auto_ = false;
        return;
    }
    StopThenStart(nullptr, now);
}

void PlaybackChain::StopThenStart(const std::string* name, std::uint32_t now) {
    StorageSettings s = control_.getSettings();
    if (name) {
        s.playbackDir = slots_.front();
        s.playbackFile = *name;
    }
    s.mode = ModeStop;
    control_.setSettings(s);
    restartPending_ = true;
    stopTick_ = now;
}

}  // namespace halvo

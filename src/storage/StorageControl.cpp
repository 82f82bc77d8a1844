#include "storage/StorageControl.h"

#include <utility>

#include "app/IniFile.h"

namespace halvo {

namespace {
constexpr std::string_view kSection = "Storage";
}

StorageControl::Guard::Guard(StorageControl& owner) : owner_(owner) {
    owner_.Lock();
}

StorageControl::Guard::~Guard() {
    owner_.Unlock();
}

void StorageControl::Lock() {
    mutex_.lock();
    ++holders_;
}

void StorageControl::Unlock() {
    if (holders_ == 0) {
        // Never reached through Guard; kept so that a stray release shows instead of corrupting.
        if (reporter_) reporter_("Storage Data Lock Error", "Lock Error");
        return;
    }
    --holders_;
    mutex_.unlock();
}

void StorageControl::SetProcessorStarter(std::function<void()> starter) {
    Guard g(*this);
    starter_ = std::move(starter);
}

void StorageControl::SetReporter(Reporter reporter) {
    Guard g(*this);
    reporter_ = std::move(reporter);
}

void StorageControl::Load() {
    IniFile ini(coordinator_);
    ini.Open(kSection);
    StorageSettings loaded = StorageSettings::Load(ini);
    Guard g(*this);
    settings_ = std::move(loaded);
    ++changes_;
    lifecycle_.MarkLoaded();
}

void StorageControl::Save() {
    if (!lifecycle_.MaySave()) return;
    StorageSettings copy;
    {
        Guard g(*this);
        copy = settings_;
    }
    IniFile ini(coordinator_);
    ini.Open(kSection);
    copy.Save(ini);
}

void StorageControl::EnsureLoaded() {
    if (lifecycle_.IsLoaded()) return;
    std::call_once(loadOnce_, [this] {
        if (!lifecycle_.IsLoaded()) Load();
    });
}

StorageSettings StorageControl::getSettings() {
    EnsureLoaded();
    Guard g(*this);
    return settings_;
}

StorageSettings StorageControl::getSettings(int& changeCount) {
    EnsureLoaded();
    Guard g(*this);
    changeCount = changes_;
    return settings_;
}

void StorageControl::Store(StorageSettings next) {
    const StorageSettings& cur = settings_;
    if (next.mode != cur.mode) {
        if (next.mode == ModePlayback) next.acquireMode = 1;
        if (next.mode == ModeRecord) next.acquireMode = 0;
    } else if (next.acquireMode != cur.acquireMode) {
        const bool playing = next.mode == ModePlayback || next.mode == ModePause;
        if (next.acquireMode == 0 && playing) next.mode = ModeStop;
        if (next.acquireMode == 1 && next.mode == ModeRecord) next.mode = ModeStop;
    }
    settings_ = std::move(next);
    ++changes_;
    lifecycle_.MarkLoaded();
}

void StorageControl::setSettings(const StorageSettings& record) {
    std::function<void()> starter;
    {
        Guard g(*this);
        Store(record);
        starter = starter_;
    }
    // Outside the lock: starting publishes a first status, which takes the lock again.
    if (starter) std::call_once(startOnce_, starter);
}

template <class Change>
void StorageControl::Modify(Change&& change) {
    EnsureLoaded();
    std::function<void()> starter;
    {
        Guard g(*this);
        StorageSettings next = settings_;
        if (!change(next)) return;
        Store(std::move(next));
        starter = starter_;
    }
    if (starter) std::call_once(startOnce_, starter);
}

int StorageControl::ChangeCount() {
    Guard g(*this);
    return changes_;
}

StorageStatus StorageControl::getStatus() {
    Guard g(*this);
    return status_;
}

void StorageControl::PublishStatus(const StorageStatus& status) {
    Guard g(*this);
    status_ = status;
}

bool StorageControl::isPlaybackMode() {
    EnsureLoaded();
    Guard g(*this);
    return settings_.mode == ModePlayback || settings_.mode == ModePause ||
           settings_.acquireMode == 1;
}

void StorageControl::RequestRecord() {
    Modify([](StorageSettings& s) {
        s.mode = ModeRecord;
        return true;
    });
}

void StorageControl::RequestStop() {
    Modify([](StorageSettings& s) {
        s.mode = ModeStop;
        return true;
    });
}

void StorageControl::RequestPlayback() {
    Modify([](StorageSettings& s) {
        s.mode = ModePlayback;
        return true;
    });
}

void StorageControl::SetPauseChecked(bool checked) {
    Modify([checked](StorageSettings& s) {
        if (s.mode != ModePlayback && s.mode != ModePause) return false;
        s.mode = checked ? ModePause : ModePlayback;
        return true;
    });
}

void StorageControl::ChangePause() {
    Modify([](StorageSettings& s) {
        switch (s.mode) {
            case ModePlayback:
                s.mode = ModePause;
                break;
            case ModePause:
                s.mode = ModePlayback;
                break;
            case ModeRecord:
                s.mode = ModeStop;
                break;
            case ModeStop:
                s.mode = s.acquireMode != 0 ? ModePlayback : ModeRecord;
                break;
            default:
                return false;
        }
        return true;
    });
}

void StorageControl::PlaybackSlower() {
    Modify([](StorageSettings& s) {
        if (s.playbackRate <= 0) return false;
        s.playbackRate /= 2;
        return true;
    });
}

void StorageControl::PlaybackFaster() {
    Modify([](StorageSettings& s) {
        if (s.playbackRate >= StorageSettings::kMaxPlaybackRate) return false;
        const std::int64_t doubled = s.playbackRate <= 0 ? 1 : std::int64_t{s.playbackRate} * 2;
        s.playbackRate = static_cast<std::int32_t>(doubled > StorageSettings::kMaxPlaybackRate
                                                       ? StorageSettings::kMaxPlaybackRate
                                                       : doubled);
        return true;
    });
}

}  // namespace halvo

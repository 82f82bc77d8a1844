#include "storage/LoggingControl.h"

#include <utility>

#include "app/IniFile.h"

namespace halvo {

namespace {
constexpr std::string_view kSection = "Logging";
}

void LoggingControl::Load() {
    IniFile ini(coordinator_);
    ini.Open(kSection);
    LoggingSettings loaded = LoggingSettings::Load(ini);
    std::lock_guard lock(mutex_);
    flags_.store(loaded.flags, std::memory_order_release);
    settings_ = std::move(loaded);
    ++changes_;
    lifecycle_.MarkLoaded();
}

void LoggingControl::Save() {
    if (!lifecycle_.MaySave()) return;
    LoggingSettings copy;
    {
        std::lock_guard lock(mutex_);
        copy = settings_;
    }
    IniFile ini(coordinator_);
    ini.Open(kSection);
    copy.Save(ini);
}

void LoggingControl::EnsureLoaded() {
    if (lifecycle_.IsLoaded()) return;
    std::call_once(loadOnce_, [this] {
        if (!lifecycle_.IsLoaded()) Load();
    });
}

LoggingSettings LoggingControl::getSettings() {
    int ignored = 0;
    return getSettings(ignored);
}

LoggingSettings LoggingControl::getSettings(int& changeCount) {
    EnsureLoaded();
    std::lock_guard lock(mutex_);
    changeCount = changes_;
    return settings_;
}

void LoggingControl::setSettings(LoggingSettings record) {
    record.Clip();
    std::lock_guard lock(mutex_);
    flags_.store(record.flags, std::memory_order_release);
    settings_ = std::move(record);
    ++changes_;
    lifecycle_.MarkLoaded();
}

int LoggingControl::ChangeCount() {
    EnsureLoaded();
    std::lock_guard lock(mutex_);
    return changes_;
}

}  // namespace halvo

#include "status/StatusControl.h"

#include <utility>

#include "app/IniFile.h"

namespace halvo {

StatusControl::Guard::Guard(StatusControl& owner) : owner_(owner) {
    owner_.Lock();
}

StatusControl::Guard::~Guard() {
    owner_.Unlock();
}

void StatusControl::Lock() {
    mutex_.lock();
    ++holders_;
}

void StatusControl::Unlock() {
    if (holders_ == 0) {
        // Never reached through Guard; kept so that a stray release shows instead of corrupting.
        if (reporter_) reporter_("Status Data Lock Error", "Lock Error");
        return;
    }
    --holders_;
    mutex_.unlock();
}

void StatusControl::SetReporter(Reporter reporter) {
    Guard g(*this);
    reporter_ = std::move(reporter);
}

void StatusControl::Start() {
    lifecycle_.Start([this] { EnsureLoaded(); });
}

void StatusControl::Load() {
    IniFile ini(coordinator_);
    ini.Open(kSection);
    StatusSettings status = StatusSettings::Load(ini);
    AlertSettings alerts = AlertSettings::Load(ini);
    Guard g(*this);
    settings_ = std::move(status);
    alerts_ = alerts;
    ++changes_;
    ++alertChanges_;
    lifecycle_.MarkLoaded();
}

void StatusControl::Save() {
    if (!lifecycle_.MaySave()) return;
    StatusSettings status;
    AlertSettings alerts;
    {
        Guard g(*this);
        status = settings_;
        alerts = alerts_;
    }
    IniFile ini(coordinator_);
    ini.Open(kSection);
    status.Save(ini);
    alerts.Save(ini);
}

void StatusControl::EnsureLoaded() {
    if (lifecycle_.IsLoaded()) return;
    std::call_once(loadOnce_, [this] {
        if (!lifecycle_.IsLoaded()) Load();
    });
}

StatusSettings StatusControl::getSettings() {
    int ignored = 0;
    return getSettings(ignored);
}

StatusSettings StatusControl::getSettings(int& changeCount) {
    EnsureLoaded();
    Guard g(*this);
    changeCount = changes_;
    return settings_;
}

AlertSettings StatusControl::getAlertSettings() {
    int ignored = 0;
    return getAlertSettings(ignored);
}

AlertSettings StatusControl::getAlertSettings(int& changeCount) {
    EnsureLoaded();
    Guard g(*this);
    changeCount = alertChanges_;
    return alerts_;
}

void StatusControl::setSettings(const StatusSettings& record) {
    EnsureLoaded();
    Guard g(*this);
    settings_ = record;
    ++changes_;
}

void StatusControl::setAlertSettings(const AlertSettings& record) {
    EnsureLoaded();
    Guard g(*this);
    alerts_ = record;
    ++alertChanges_;
}

int StatusControl::ChangeCount() {
    EnsureLoaded();
    Guard g(*this);
    return changes_;
}

int StatusControl::AlertChangeCount() {
    EnsureLoaded();
    Guard g(*this);
    return alertChanges_;
}

}  // namespace halvo

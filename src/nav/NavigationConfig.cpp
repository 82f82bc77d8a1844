#include "nav/NavigationConfig.h"

#include <cstdio>

#include "app/IniFile.h"

namespace halvo {

std::string NavigationPortConfig::DevicePath() const {
    if (!device.empty()) return device;
    // Port 1 is the first serial line, as on the machines these settings were first made for.
    return "/dev/ttyS" + std::to_string(port - 1);
}

NavigationConfig NavigationConfig::Load(const SystemCoordinator& coordinator) {
    const NavigationConfig d;
    NavigationConfig c;
    IniFile ini(coordinator);
    ini.Open("Nav");
    c.tsEnable = ini.ReadInt("TSEnable", d.tsEnable);
    c.tsBias = ini.ReadInt("TSBias", d.tsBias);
    c.tsScopeOutPort = ini.ReadInt("TSScopeOutPort", d.tsScopeOutPort);
    c.latLonSource = ini.ReadInt("LatLonSource", d.latLonSource);
    c.timeSource = ini.ReadInt("TimeSource", d.timeSource);
    for (int i = 0; i < kPorts; ++i) {
        char section[16];
        std::snprintf(section, sizeof section, "Nav%d", i);
        ini.Open(section);
        NavigationPortConfig& p = c.ports[i];
        p.baud = ini.ReadInt("Baud", d.ports[i].baud);
        p.port = ini.ReadInt("Port", d.ports[i].port);
        p.enable = ini.ReadInt("Enable", d.ports[i].enable);
        p.device = ini.ReadString("Device", "");
    }
    return c;
}

void NavigationConfig::Save(const SystemCoordinator& coordinator) const {
    IniFile ini(coordinator);
    ini.Open("Nav");
    ini.WriteInt("TSEnable", tsEnable);
    ini.WriteInt("TSBias", tsBias);
    ini.WriteInt("TSScopeOutEnable", tsScopeOutEnable);
    ini.WriteInt("TSScopeOutPort", tsScopeOutPort);
    ini.WriteInt("LatLonSource", latLonSource);
    ini.WriteInt("TimeSource", timeSource);
    for (int i = 0; i < kPorts; ++i) {
        char section[16];
        std::snprintf(section, sizeof section, "Nav%d", i);
        ini.Open(section);
        ini.WriteInt("Baud", ports[i].baud);
        ini.WriteInt("Port", ports[i].port);
        ini.WriteInt("Enable", ports[i].enable);
        ini.WriteString("Device", ports[i].device);
    }
}

void NavigationConfigStore::Load() {
    NavigationConfig loaded = NavigationConfig::Load(coordinator_);
    std::lock_guard lock(mutex_);
    config_ = std::move(loaded);
    ++changes_;
    lifecycle_.MarkLoaded();
}

void NavigationConfigStore::Save() {
    if (!lifecycle_.MaySave()) return;
    Get().Save(coordinator_);
}

NavigationConfig NavigationConfigStore::Get() const {
    std::lock_guard lock(mutex_);
    return config_;
}

NavigationConfig NavigationConfigStore::Get(int& changeCount) const {
    std::lock_guard lock(mutex_);
    changeCount = changes_;
    return config_;
}

void NavigationConfigStore::Set(const NavigationConfig& config) {
    std::lock_guard lock(mutex_);
    config_ = config;
    ++changes_;
}

int NavigationConfigStore::ChangeCount() const {
    std::lock_guard lock(mutex_);
    return changes_;
}

}  // namespace halvo

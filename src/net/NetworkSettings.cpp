#include "net/NetworkSettings.h"

#include <algorithm>

#include "app/IniFile.h"
#include "net/NetworkIO.h"
#include "net/SocketIO.h"

namespace halvo {

namespace {
constexpr std::int32_t kMinReconnectMs = 200;
}

std::array<EndpointSettings, NetworkSettings::kEndpoints> NetworkSettings::Defaults() {
    std::array<EndpointSettings, kEndpoints> e;
    e[SonarCommand].HostName = kDefaultSonarHost;
    e[SonarCommand].Port = 1600;
    e[SonarCommand].NagleState = 1;
    e[SonarData].HostName = kDefaultSonarHost;
    e[SonarData].Port = 1601;
    e[TopsideCommand].HostName = kDefaultTopsideHost;
    e[TopsideCommand].Port = 1800;
    e[TopsideCommand].HandlerType = 1;
    e[TopsideData].HostName = kDefaultTopsideHost;
    e[TopsideData].Port = 1801;
    e[TopsideData].HandlerType = 1;
    return e;
}

std::string NetworkSettings::SectionName(int endpoint) {
    const int i = std::clamp(endpoint, 0, kEndpoints - 1);
    return "Message" + std::string(kNames[static_cast<std::size_t>(i)]);
}

void NetworkSettings::Load(IniFile& ini) {
    const auto defaults = Defaults();
    for (int i = 0; i < kEndpoints; ++i) {
        const EndpointSettings& d = defaults[static_cast<std::size_t>(i)];
        EndpointSettings& e = endpoints[static_cast<std::size_t>(i)];
        ini.Open(SectionName(i));
        e.HostName = ini.ReadString("HostName", d.HostName);
        e.Port = ini.ReadInt("Port", d.Port);
        e.HandlerType = ini.ReadInt("HandlerType", d.HandlerType);
        e.XmitSize = ini.ReadInt("XmitSize", d.XmitSize);
        e.RecvSize = ini.ReadInt("RecvSize", d.RecvSize);
        e.NagleState = ini.ReadInt("NagleState", d.NagleState);
        // A huge queue would take its memory up front.
        e.QueueSize = std::min(ini.ReadInt("QueueSize", d.QueueSize), NetworkIO::kMaxQueueSize);
    }
    const NetworkSettings d;
    ini.Open("Message");
    EnableNetworkIO = ini.ReadInt("EnableNetworkIO", d.EnableNetworkIO);
    EnableTimeSync = ini.ReadInt("EnableTimeSync", d.EnableTimeSync);
    ini.Open("Network");
    AliveTimeout = ini.ReadInt("AliveTimeout", d.AliveTimeout);
    ReconnectInterval = ini.ReadInt("ReconnectInterval", d.ReconnectInterval);
}

void NetworkSettings::Save(IniFile& ini) const {
    for (int i = 0; i < kEndpoints; ++i) {
        const EndpointSettings& e = endpoints[static_cast<std::size_t>(i)];
        ini.Open(SectionName(i));
        ini.WriteString("HostName", e.HostName);
        ini.WriteInt("Port", e.Port);
        ini.WriteInt("HandlerType", e.HandlerType);
        ini.WriteInt("XmitSize", e.XmitSize);
        ini.WriteInt("RecvSize", e.RecvSize);
        ini.WriteInt("NagleState", e.NagleState);
        ini.WriteInt("QueueSize", e.QueueSize);
    }
    ini.Open("Message");
    ini.WriteInt("EnableNetworkIO", EnableNetworkIO);
    ini.WriteInt("EnableTimeSync", EnableTimeSync);
    ini.Open("Network");
    ini.WriteInt("AliveTimeout", AliveTimeout);
    ini.WriteInt("ReconnectInterval", ReconnectInterval);
}

std::int32_t NetworkSettings::EffectiveReconnectMs() const {
    static_assert(kMinReconnectMs > SocketIO::kMinReconnectMs);
    return std::max(ReconnectInterval, kMinReconnectMs);
}

}  // namespace halvo

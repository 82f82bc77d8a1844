#include "net/NetworkHub.h"

#include "app/IniFile.h"
#include "core/MessageHub.h"
#include "core/MessageTypes.h"
#include "net/SocketManager.h"

namespace halvo {

NetworkHub::NetworkHub(MessageHub& hub, SocketManager& sockets, ProgramClock& clock,
                       const SystemCoordinator& coordinator)
    : hub_(hub), sockets_(sockets), clock_(clock), coordinator_(coordinator) {}

NetworkHub::~NetworkHub() {
    std::lock_guard lock(mutex_);
    DeleteEndpoints();
}

void NetworkHub::Load() {
    IniFile ini(coordinator_);
    NetworkSettings s;
    s.Load(ini);
    std::lock_guard lock(mutex_);
    settings_ = s;
    lifecycle_.MarkLoaded();
}

void NetworkHub::Save() {
    if (!lifecycle_.MaySave()) return;
    const NetworkSettings s = Settings();
    IniFile ini(coordinator_);
    s.Save(ini);
}

NetworkSettings NetworkHub::Settings() const {
    std::lock_guard lock(mutex_);
    return settings_;
}

void NetworkHub::DeleteEndpoints() {
    for (auto& e : endpoints_) e.reset();
}

void NetworkHub::StartNetwork() {
    if (!lifecycle_.IsLoaded()) Load();
    std::lock_guard lock(mutex_);
    if (!started_) {
        started_ = true;
        lifecycle_.Start([] {});
        hub_.Start();
    }
    DeleteEndpoints();
    if (settings_.EnableNetworkIO == 0) return;
    const int reconnect = settings_.EffectiveReconnectMs();
    const EndpointSettings& cmd = settings_.endpoints[NetworkSettings::SonarCommand];
    auto command =
        std::make_unique<NetworkIO>("SonarCommand", cmd, SourceSonarCommand, hub_.CommandBus(),
                                    status_[0], sockets_, clock_, log_);
    command->SetTimeSync(settings_.EnableTimeSync != 0);
    command->Start(&hub_.CommandBus(), settings_.AliveTimeout, reconnect);
    endpoints_[0] = std::move(command);

    const EndpointSettings& data = settings_.endpoints[NetworkSettings::SonarData];
    auto dataLink = std::make_unique<NetworkIO>("SonarData", data, SourceSonarData, hub_.DataBus(),
                                                status_[1], sockets_, clock_, log_);
    dataLink->Start(nullptr, settings_.AliveTimeout, reconnect);
    endpoints_[1] = std::move(dataLink);
}

void NetworkHub::ApplyNetworkSettings(const NetworkSettings& settings) {
    {
        std::lock_guard lock(mutex_);
        settings_ = settings;
        lifecycle_.MarkLoaded();  // taken as loaded: a later start must not read them over
    }
    hub_.BumpEndpointChanges();
    StartNetwork();
}

void NetworkHub::StopNetwork() {
    std::lock_guard lock(mutex_);
    DeleteEndpoints();
}

std::array<SocketStatus, NetworkHub::kEndpointCount> NetworkHub::GetStatus() const {
    std::lock_guard lock(mutex_);
    std::array<SocketStatus, kEndpointCount> out{};
    for (int i = 0; i < kEndpointCount; ++i) {
        if (endpoints_[static_cast<std::size_t>(i)])
            out[static_cast<std::size_t>(i)] = status_[static_cast<std::size_t>(i)].Snapshot();
    }
    return out;
}

std::uint32_t NetworkHub::SocketFailures() const {
    return sockets_.Failures();
}

void NetworkHub::SetMessageLog(MessageLogFn log) {
    std::lock_guard lock(mutex_);
    log_ = std::move(log);
}

NetworkIO* NetworkHub::Endpoint(int index) const {
    std::lock_guard lock(mutex_);
    if (index < 0 || index >= kEndpointCount) return nullptr;
    return endpoints_[static_cast<std::size_t>(index)].get();
}

}  // namespace halvo

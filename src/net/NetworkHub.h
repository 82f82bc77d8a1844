#pragma once
// The network side of the message hub: the endpoint settings, the two endpoints and their status
// records. MessageHub lives in the core, which knows nothing of sockets, so this class works
// with a MessageHub from above rather than inside it. Starting the network from the settings
// file is one call: StartNetwork.

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>

#include "app/SettingsLifecycle.h"
#include "net/NetworkIO.h"
#include "net/NetworkSettings.h"
#include "net/SocketStatus.h"

namespace halvo {

class MessageHub;
class ProgramClock;
class SocketManager;
class SystemCoordinator;

class NetworkHub {
  public:
    static constexpr int kEndpointCount = 2;

    NetworkHub(MessageHub& hub, SocketManager& sockets, ProgramClock& clock,
               const SystemCoordinator& coordinator);
    // Deletes the endpoints; the socket manager and the buses are their owners' to stop.
    ~NetworkHub();
    NetworkHub(const NetworkHub&) = delete;
    NetworkHub& operator=(const NetworkHub&) = delete;

    // Reads every key from the active settings file.
    void Load();
    // Writes every key; nothing unless something was loaded.
    void Save();
    NetworkSettings Settings() const;
    const SettingsLifecycle& Lifecycle() const { return lifecycle_; }

    // First call: loads the settings unless loaded and starts both buses. Every call: deletes the
    // endpoints, and unless EnableNetworkIO is 0 makes SonarCommand (posting to and watching
    // the command bus, source 1, time sync as set) and SonarData (posting to the data bus,
    // source 2, watching nothing).
    void StartNetwork();
    // Takes the new settings, counts the change on the hub and starts the network again.
    void ApplyNetworkSettings(const NetworkSettings& settings);
    // Deletes the endpoints (the links close); for shut-down.
    void StopNetwork();

    // The two status records; zeros for an endpoint that does not exist.
    std::array<SocketStatus, kEndpointCount> GetStatus() const;
    // Closings over all sockets.
    std::uint32_t SocketFailures() const;

    // Set before StartNetwork; the endpoints made afterwards send their message lines there.
    void SetMessageLog(MessageLogFn log);
    // The endpoint, or null. Valid until the next StartNetwork, ApplyNetworkSettings or
    // StopNetwork.
    NetworkIO* Endpoint(int index) const;

  private:
    void DeleteEndpoints();

    MessageHub& hub_;
    SocketManager& sockets_;
    ProgramClock& clock_;
    const SystemCoordinator& coordinator_;
    mutable std::mutex mutex_;
    NetworkSettings settings_;
    SettingsLifecycle lifecycle_;
    bool started_ = false;
    MessageLogFn log_;
    std::array<SocketStatusCell, NetworkSettings::kEndpoints> status_;
    std::array<std::unique_ptr<NetworkIO>, kEndpointCount> endpoints_;
};

}  // namespace halvo

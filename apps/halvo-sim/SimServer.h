#pragma once
// The simulator as one object: listens on the command and data ports, answers the topside,
// pings, sends sensors and video, answers discovery and feeds the NMEA pty. Tests make one
// in-process on ephemeral ports; main.cpp makes one and waits.

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "halvo-sim/SimClock.h"
#include "halvo-sim/SimLink.h"
#include "halvo-sim/SimLog.h"
#include "halvo-sim/SimOptions.h"
#include "halvo-sim/SimScene.h"
#include "halvo-sim/SimSonarState.h"

namespace halvo {

class SimDiscovery;
class SimNmeaPty;

// Counters for tests and the closing summary.
struct SimCounters {
    std::uint64_t received = 0;
    std::uint64_t repliesSent = 0;
    std::uint64_t dataMessagesSent = 0;
    std::uint64_t dataBytesSent = 0;
    std::uint64_t traces = 0;
    std::uint64_t connections = 0;
    std::uint64_t badStreams = 0;
    std::uint64_t drops = 0;
};

class SimServer {
  public:
    using LineFn = std::function<void(const std::string&)>;
    // `clock` must outlive the server. `print` receives the lines meant for stdout.
    SimServer(SimOptions options, const SimWallClock& clock, LineFn print = {});
    ~SimServer();
    SimServer(const SimServer&) = delete;
    SimServer& operator=(const SimServer&) = delete;

    // Binds every socket and starts the threads. False with the reason when anything fails.
    bool Start(std::string& error);
    // Idempotent; joins every thread.
    void Stop();

    int commandPort() const { return commandPort_; }
    int dataPort() const { return dataPort_; }
    int discoveryPort() const;
    std::string ptyPath() const;
    SimSonarState& state() { return state_; }
    const SimScene& scene() const { return scene_; }
    SimDeviceClock& deviceClock() { return deviceClock_; }
    SimCounters Counters() const;
    const SimOptions& options() const { return options_; }

  private:
    void IoLoop();
    void PumpLoop();
    void Accept(int listener, bool command);
    void ReadLink(bool command);
    void Received(const SonarMessage& m, bool command);
    void SendReply(const SonarMessage& m, bool command);
    void SendData(SonarMessage m);
    void DropLinks();
    std::shared_ptr<SimConnection> Link(bool command) const;

    SimOptions options_;
    const SimWallClock& wall_;
    LineFn print_;
    SimDeviceClock deviceClock_;
    SimScene scene_;
    SimSonarState state_;
    SimLog receivedLog_;
    SimLog sentLog_;
    std::unique_ptr<SimDiscovery> discovery_;
    std::unique_ptr<SimNmeaPty> pty_;

    int commandListener_ = -1;
    int dataListener_ = -1;
    int commandPort_ = 0;
    int dataPort_ = 0;

    mutable std::mutex linkMutex_;
    std::shared_ptr<SimConnection> command_;
    std::shared_ptr<SimConnection> data_;
    SimMessageFramer commandFramer_;
    SimMessageFramer dataFramer_;
    std::uint64_t commandReceived_ = 0;  // this connection, for --stall-after

    std::atomic<bool> stop_{false};
    std::atomic<bool> started_{false};
    std::thread io_;
    std::thread pump_;

    std::atomic<std::uint64_t> received_{0}, repliesSent_{0}, dataMessages_{0}, dataBytes_{0},
        traces_{0}, connections_{0}, badStreams_{0}, drops_{0};
    std::atomic<std::uint64_t> dataSentTotal_{0};  // across connections, for the fault counters
    bool badMarkerDone_ = false;
    bool oversizeDone_ = false;
};

}  // namespace halvo

// The endpoints against the simulator on ephemeral loopback ports, started from settings the
// way the program starts them.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>

#include "app/IniFile.h"
#include "app/ProgramClock.h"
#include "app/SystemCoordinator.h"
#include "app/TempWorkDir.h"
#include "core/MessageHub.h"
#include "core/MessageTypes.h"
#include "halvo-sim/SimLog.h"
#include "halvo-sim/SimServer.h"
#include "net/NetTestRig.h"
#include "net/NetworkHub.h"
#include "net/SocketManager.h"
#include "platform/FakeSystemClock.h"
#include "platform/FakeTickSource.h"
#include "platform/MonotonicTickSource.h"
#include "sim/SimTestServer.h"

namespace halvo::test {
namespace {

constexpr int kTimerMs = 250;
constexpr std::int64_t kSimWallMs = 1700000000123LL;

SimOptions QuietSim() {
    SimOptions o;
    o.portBase = 0;
    o.discoveryPort = -1;
    o.quiet = true;
    return o;
}

class EndpointSim : public TempWorkDir {
  protected:
    void SetUp() override {
        TempWorkDir::SetUp();
        run.Raise();
    }
    void StartSim(SimOptions o) {
        sim = std::make_unique<SimServer>(std::move(o), simClock);
        std::string error;
        ASSERT_TRUE(sim->Start(error)) << error;
    }
    NetworkSettings Settings(int aliveMs = 6000) const {
        NetworkSettings s;
        for (int i : {0, 1}) s.endpoints[i].HostName = "127.0.0.1";
        s.endpoints[0].Port = sim ? sim->commandPort() : 1;
        s.endpoints[1].Port = sim ? sim->dataPort() : 1;
        s.AliveTimeout = aliveMs;
        s.ReconnectInterval = 300;
        return s;
    }

    FixedWallClock simClock{kSimWallMs};
    std::unique_ptr<SimServer> sim;
    RunFlag run;
    MessageHub hub{run};
    MonotonicTickSource ticks;
    FakeTickSource fakeTicks;
    FakeSystemClock system;
    ProgramClock clock{fakeTicks, system};
    SystemCoordinator coordinator;
    SocketManager sockets{ticks, kTimerMs};
    NetworkHub net{hub, sockets, clock, coordinator};
};

// The simulator's own faults end to end: the topside drops the link on a broken header and
// connects again.
TEST_F(EndpointSim, BrokenStreamsCloseTheLinkAndItComesBack) {
    struct Case {
        long badMarker;
        long oversize;
    };
    for (const Case c : {Case{5, -1}, Case{-1, 3}}) {
        SCOPED_TRACE(c.badMarker);
        net.StopNetwork();
        sim.reset();
        SimOptions o = QuietSim();
        o.autostart = true;
        o.badMarkerAfter = c.badMarker;
        o.oversizeAfter = c.oversize;
        StartSim(o);
        net.ApplyNetworkSettings(Settings());
        // Command, data, and data again after the close.
        ASSERT_TRUE(WaitFor([&] { return sim->Counters().connections >= 3; }, 5s));
        EXPECT_NE(net.Endpoint(1)->ErrorText().find("Bad header"), std::string::npos);
        EXPECT_TRUE(WaitFor([&] { return net.GetStatus()[1].IsConnected(); }, 2s));
    }
}

TEST_F(EndpointSim, SilentSonarIsProbedDroppedAfterTwiceTheAliveTimeAndReconnected) {
    SimOptions o = QuietSim();
    o.silent = true;
    StartSim(o);
    const int alive = 600;
    net.ApplyNetworkSettings(Settings(alive));
    ASSERT_TRUE(WaitFor([&] { return net.GetStatus()[0].IsConnected(); }, 3s));
    const auto up = std::chrono::steady_clock::now();
    ASSERT_TRUE(WaitFor([&] { return !net.GetStatus()[0].IsConnected(); }, 5s));
    const auto downAfter = std::chrono::steady_clock::now() - up;
    // Never before twice the alive time; how long after depends on the machine's load (the wait
    // above bounds it), and the reason given is the alive give-up, not some other failure.
    EXPECT_GE(downAfter, std::chrono::milliseconds(2 * alive - 50));
    EXPECT_EQ(net.Endpoint(0)->ErrorText(), "Alive timeout");
    EXPECT_GE(sim->Counters().received, 1u);  // the probe
    EXPECT_TRUE(WaitFor([&] { return net.GetStatus()[0].connectionCount >= 3; }, 3s));
}

TEST_F(EndpointSim, ClockExchangeWithTimeSyncOnAndOff) {
    for (const bool sync : {true, false}) {
        SCOPED_TRACE(sync);
        net.StopNetwork();
        sim.reset();
        SimOptions o = QuietSim();
        o.sendClockSet = !sync;  // the sonar may set our clock too; only the fake one moves
        StartSim(o);
        // Topside ten seconds ahead of the sonar.
        system.SetNow(kSimWallMs / 1000 + 10, static_cast<std::int32_t>(kSimWallMs % 1000));
        clock.SyncFromSystem();
        NetworkSettings s = Settings();
        s.EnableTimeSync = sync ? 1 : 0;
        net.ApplyNetworkSettings(s);
        ASSERT_TRUE(WaitFor([&] { return net.GetStatus()[0].IsConnected(); }, 3s));
        if (sync) {
            ASSERT_TRUE(WaitFor([&] { return sim->deviceClock().OffsetMs() != 0; }, 4s));
            EXPECT_NEAR(static_cast<double>(sim->deviceClock().OffsetMs()), 10000.0, 5.0);
            const SocketStatus st = net.GetStatus()[0];
            EXPECT_EQ(st.clockToSonar & 7, 1);
            EXPECT_NEAR(st.clockToSonar >> 3, 10000, 5);
            EXPECT_EQ(net.GetStatus()[1].clockToSonar, 0);  // queries on the command link only
        } else {
            ASSERT_TRUE(WaitFor([&] { return !system.SetCalls().empty(); }, 4s));
            EXPECT_EQ(system.SetCalls()[0].year, 2023);
            EXPECT_NE(net.GetStatus()[0].clockFromSonar & 7, 0);
            std::this_thread::sleep_for(std::chrono::milliseconds(3 * kTimerMs));
            EXPECT_EQ(sim->deviceClock().OffsetMs(), 0);
            EXPECT_EQ(net.GetStatus()[0].clockToSonar, 0);
        }
    }
}

TEST_F(EndpointSim, FullDataBusStopsTheReaderAndNothingIsLost) {
    constexpr std::size_t kBusQueue = 8;
    KeepingObserver slow(SourceSonarData, std::chrono::microseconds(2000));
    hub.Start(kBusQueue);
    hub.DataBus().Attach(&slow);
    SimOptions o = QuietSim();
    o.autostart = true;
    o.rateMultiplier = 40;
    o.sentLogFile = (dir_ / "sent.jsonl").string();
    StartSim(o);
    net.ApplyNetworkSettings(Settings());
    std::uint32_t deepest = 0;
    const auto end = std::chrono::steady_clock::now() + 2500ms;
    while (std::chrono::steady_clock::now() < end) {
        deepest = std::max(deepest, hub.DataBus().QueueDepth());
        std::this_thread::sleep_for(1ms);
    }
    sim->Stop();
    std::vector<std::uint32_t> sent;
    for (const auto& j : ReadSimLog(o.sentLogFile, "data"))
        sent.push_back(j.at("crc32").get<std::uint32_t>());
    ASSERT_GT(sent.size(), 4 * kBusQueue);
    ASSERT_TRUE(WaitFor([&] { return slow.count() >= static_cast<int>(sent.size()); }, 20s))
        << slow.count() << " of " << sent.size();
    std::vector<std::uint32_t> got;
    for (const auto& wire : slow.Kept()) got.push_back(SimCrc32(wire));
    EXPECT_EQ(got, sent);
    EXPECT_GE(deepest, kBusQueue - 1);  // the bus really was full
    hub.DataBus().Detach(&slow);
    net.StopNetwork();
}

TEST_F(EndpointSim, EnableNetworkIOZeroLeavesBusesRunningWithoutEndpoints) {
    StartSim(QuietSim());
    NetworkSettings s = Settings();
    s.EnableNetworkIO = 0;
    net.ApplyNetworkSettings(s);
    EXPECT_EQ(hub.EndpointChangeCount(), 0);  // -1, then one apply, even with no endpoints
    EXPECT_EQ(hub.CommandBus().state(), MessageProcessor::Running);
    EXPECT_EQ(hub.DataBus().state(), MessageProcessor::Running);
    EXPECT_EQ(net.Endpoint(0), nullptr);
    EXPECT_EQ(net.Endpoint(1), nullptr);
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(sim->Counters().connections, 0u);
    for (const SocketStatus& st : net.GetStatus()) EXPECT_EQ(st, SocketStatus{});
}

TEST_F(EndpointSim, EveryKeyIsReadFromTheSettingsFile) {
    WriteFile("Defaults.ini",
              "[MessageSonarCommand]\nHostName=10.0.0.7\nPort=4600\nHandlerType=3\nXmitSize=5000\n"
              "RecvSize=6000\nNagleState=0\nQueueSize=17\n"
              "[MessageTopsideData]\nPort=4801\n"
              "[Message]\nEnableNetworkIO=0\nEnableTimeSync=1\n"
              "[Network]\nAliveTimeout=900\nReconnectInterval=50\n");
    net.Load();
    const NetworkSettings s = net.Settings();
    NetworkSettings expect;
    expect.endpoints[0] = EndpointSettings{"10.0.0.7", 4600, 3, 5000, 6000, 0, 17};
    expect.endpoints[3].Port = 4801;
    expect.EnableNetworkIO = 0;
    expect.EnableTimeSync = 1;
    expect.AliveTimeout = 900;
    expect.ReconnectInterval = 50;
    EXPECT_EQ(s, expect);
    EXPECT_EQ(s.EffectiveReconnectMs(), 200);  // never so short that clients stop retrying
    // Save writes every key back; a fresh load reads the same.
    net.Save();
    NetworkHub again(hub, sockets, clock, coordinator);
    again.Load();
    EXPECT_EQ(again.Settings(), expect);
    EXPECT_NE(ReadFile("Defaults.ini").find("[MessageTopsideCommand]"), std::string::npos);
}

}  // namespace
}  // namespace halvo::test

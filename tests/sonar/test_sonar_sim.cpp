// The controller over the real command link against the simulator. The simulator's log of
// what it received is the witness of what the topside sent, in order.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "app/OverallConfig.h"
#include "app/ProgramClock.h"
#include "halvo-sim/SimServer.h"
#include "net/NetTestRig.h"
#include "net/NetworkHub.h"
#include "net/SocketManager.h"
#include "platform/FakeSystemClock.h"
#include "platform/MonotonicTickSource.h"
#include "sim/SimTestServer.h"
#include "sonar/SonarRig.h"

namespace halvo::test {
namespace {

using namespace std::chrono_literals;

class SonarOverLink : public SonarRig {
  protected:
    void TearDown() override {
        net.reset();
        sockets.reset();
        if (sim) sim->Stop();
        SonarRig::TearDown();
    }
    // A simulator that records what it receives and answers as a sonar would.
    void StartLink() {
        Make(OverallConfig::kConfigSBSS);
        SimOptions o = TestOptions();
        o.quiet = true;
        o.sensors = false;
        o.logFile = (dir_ / "received.jsonl").string();
        sim = std::make_unique<SimServer>(o, simClock);
        std::string error;
        ASSERT_TRUE(sim->Start(error)) << error;
        sockets = std::make_unique<SocketManager>(socketTicks, 250);
        net = std::make_unique<NetworkHub>(*hub, *sockets, programClock, coordinator);
        NetworkSettings s;
        for (int i : {0, 1}) s.endpoints[i].HostName = "127.0.0.1";
        s.endpoints[0].Port = sim->commandPort();
        s.endpoints[1].Port = sim->dataPort();
        s.AliveTimeout = 60000;
        net->ApplyNetworkSettings(s);
        // What the application plugs in: the command link's connection count.
        sonar->Controller().SetConnectionCount(
            [this] { return net->GetStatus()[0].connectionCount; });
        ASSERT_TRUE(WaitFor([&] { return net->GetStatus()[0].IsConnected(); }, 5s));
    }
    // Every command-link message the simulator logged, keep-alives and clock queries aside, in
    // the form the rig's recorder keeps (the log carries the first four payload words).
    std::vector<Sent> Witness() {
        std::vector<Sent> out;
        for (const auto& j : ReadSimLog((dir_ / "received.jsonl").string(), "command")) {
            Sent s{j.value("type", 0),
                   j.value("direction", 0),
                   j.value("subsystem", 0),
                   j.value("channel", 0),
                   {}};
            if (s.type == MsgAlive || s.type == MsgClock) continue;
            const auto words = j.value("words", std::vector<std::int32_t>{});
            s.payload.resize(4 * words.size());
            for (std::size_t i = 0; i < words.size(); ++i) PutLE(s.payload, 4 * i, words[i]);
            out.push_back(std::move(s));
        }
        return out;
    }
    // Sends a query nobody else sends and waits until the simulator has it: everything posted
    // before it has then crossed the link. Returns the witness without the fence.
    std::vector<Sent> Fence() {
        EXPECT_EQ(hub->SendCommand(nullptr, 0, MsgStorageStatus, 0, DirQuery, 0), 0);
        const long want = ++fences_;
        std::vector<Sent> w;
        auto isFence = [](const Sent& r) { return r.type == MsgStorageStatus; };
        EXPECT_TRUE(WaitFor(
            [&] {
                w = Witness();
                return std::count_if(w.begin(), w.end(), isFence) == want;
            },
            5s));
        w.erase(std::remove_if(w.begin(), w.end(), isFence), w.end());
        return w;
    }

    FixedWallClock simClock{1700000000123LL};
    std::unique_ptr<SimServer> sim;
    MonotonicTickSource socketTicks;
    FakeTickSource clockTicks;
    FakeSystemClock system;
    ProgramClock programClock{clockTicks, system};
    std::unique_ptr<SocketManager> sockets;
    std::unique_ptr<NetworkHub> net;
    int fences_ = 0;
};

TEST_F(SonarOverLink, HandshakeReplyBringsASecondFullSendThenOnlyChanges) {
    StartLink();
    auto count = [](const std::vector<Sent>& w, int type, int dir = DirSet) {
        return std::count_if(w.begin(), w.end(),
                             [&](const Sent& r) { return r.type == type && r.direction == dir; });
    };
    sonar->Tick();
    ASSERT_TRUE(WaitFor([&] { return sonar->Controller().HandshakeState() == 1; }, 5s));
    // Every 142 reply found the windows marked by the full send: 441 and 81 per channel.
    ASSERT_TRUE(WaitFor([&] { return count(Fence(), MsgWindow) == 5; }, 5s));
    EXPECT_EQ(count(Fence(), MsgStorageWindow), 5);
    EXPECT_EQ(sonar->GetPulseNames(0).at(0), "Chirp 2-12kHz 20ms");

    ticks.AdvanceTick(250);
    sonar->Tick();
    EXPECT_EQ(count(Fence(), MsgBeginConfigure), 3) << "one tick after the reply: no full send";
    ticks.AdvanceTick(250);
    sonar->Tick();
    std::vector<Sent> w = Fence();
    EXPECT_EQ(count(w, MsgBeginConfigure), 6);
    EXPECT_EQ(count(w, MsgOptionCheck, DirQuery), 1);

    // Let every reply of the second send come back, then change only the ping rate.
    // (They may all be in already; the count only has to stand still for a while.)
    ASSERT_TRUE(WaitFor(
        [&] {
            const int now = sonar->GetReplyCount();
            std::this_thread::sleep_for(300ms);
            return now > 0 && sonar->GetReplyCount() == now;
        },
        5s));
    const std::size_t mark = Fence().size();
    SonarConfig c = sonar->GetSonar(0);
    c.pingRate = 7.5f;
    sonar->SetSonar(c, 0);
    const int before = sonar->GetReplyCount();
    ticks.AdvanceTick(250);
    sonar->Tick();
    // The 124 and 142 queries of all three come back; the same ADC rate sends no windows.
    ASSERT_TRUE(WaitFor([&] { return sonar->GetReplyCount() >= before + 6; }, 5s));
    w = Fence();
    const std::vector<Sent> changes(w.begin() + static_cast<std::ptrdiff_t>(mark), w.end());
    for (const Sent& r : changes) EXPECT_NE(r.type, MsgWindow);
    EXPECT_EQ(Types(changes, 0), (std::vector<std::string>{"124", "124q", "142q"}));
    EXPECT_EQ(w[mark].Word(), 7500);
    EXPECT_TRUE(WaitFor([&] { return sonar->Controller().PingRateReadBack(0) == 7500; }, 5s));
}

}  // namespace
}  // namespace halvo::test

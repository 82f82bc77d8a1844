// The controller over the real command link against the simulator. The simulator's log of
// what it received is the witness of what the topside sent, in order.

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "app/OverallConfig.h"
#include "app/ProgramClock.h"
#include "halvo-sim/SimServer.h"
#include "net/NetworkHub.h"
#include "net/SocketManager.h"
#include "platform/FakeSystemClock.h"
#include "platform/MonotonicTickSource.h"
#include "sim/SimTestServer.h"
#include "sonar/SonarRig.h"

namespace halvo::test {
namespace {

using namespace std::chrono_literals;

struct Received {
    int type, direction, subsystem, channel;
    std::vector<std::int64_t> words;
    std::string Name() const {
        return std::to_string(type) + (direction == DirQuery ? "q" : "") + "@" +
               std::to_string(subsystem);
    }
};

template <class Pred>
bool WaitUntil(Pred pred, std::chrono::milliseconds limit = 5s) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!pred()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

class SonarOverLink : public SonarRig {
  protected:
    void TearDown() override {
        net.reset();
        sockets.reset();
        if (sim) sim->Stop();
        SonarRig::TearDown();
    }
    // A simulator that records what it receives; `silent` keeps it from answering, so that
    // only the controller's own ticks put messages on the link.
    void StartLink(bool silent, const std::function<void(SonarIF&)>& before = {}) {
        Make(OverallConfig::kConfigSBSS);
        if (before) before(*sonar);
        SimOptions o = TestOptions();
        o.quiet = true;
        o.sensors = false;
        o.silent = silent;
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
        ASSERT_TRUE(WaitUntil([&] { return net->GetStatus()[0].IsConnected(); }));
    }
    // Every command-link message the simulator logged, keep-alives and clock queries aside.
    std::vector<Received> Witness() {
        std::vector<Received> out;
        std::ifstream in(dir_ / "received.jsonl");
        std::string line;
        for (int n = 0; n < 100000 && std::getline(in, line); ++n) {
            const auto j = nlohmann::json::parse(line, nullptr, false);
            if (j.is_discarded() || j.value("link", "") != "command") continue;
            const int type = j.value("type", 0);
            if (type == MsgAlive || type == MsgClock) continue;
            out.push_back({type, j.value("direction", 0), j.value("subsystem", 0),
                           j.value("channel", 0), j.value("words", std::vector<std::int64_t>{})});
        }
        return out;
    }
    // Sends a query nobody else sends and waits until the simulator has it: everything posted
    // before it has then crossed the link. Returns the witness without the fence.
    std::vector<Received> Fence() {
        EXPECT_EQ(hub->SendCommand(nullptr, 0, MsgStorageStatus, 0, DirQuery, 0), 0);
        const long want = ++fences_;
        std::vector<Received> w;
        EXPECT_TRUE(WaitUntil([&] {
            w = Witness();
            return std::count_if(w.begin(), w.end(), [](const Received& r) {
                       return r.type == MsgStorageStatus;
                   }) == want;
        }));
        w.erase(std::remove_if(w.begin(), w.end(),
                               [](const Received& r) { return r.type == MsgStorageStatus; }),
                w.end());
        return w;
    }
    static std::vector<std::string> Names(const std::vector<Received>& v, std::size_t from = 0) {
        std::vector<std::string> out;
        for (std::size_t i = from; i < v.size(); ++i) out.push_back(v[i].Name());
        return out;
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

TEST_F(SonarOverLink, FullSendAtConnectionArrivesInOrder) {
    StartLink(true);
    sonar->Tick();
    std::vector<std::string> want{"1008q@0"};
    const struct { int sub, channels, transducers; } subs[] = {{0, 1, 1}, {20, 2, 2}, {21, 2, 2}};
    for (const auto& s : subs) {
        auto add = [&](const std::string& t) { want.push_back(t + "@" + std::to_string(s.sub)); };
        for (const char* t : {"133", "122q", "1025q", "87"}) add(t);
        for (int c = 0; c < s.channels; ++c) add("83"), add("440");
        add("124"), add("1101");
        for (int t = 0; t < s.transducers; ++t) add("121");
        for (int c = 0; c < s.channels; ++c) add("140"), add("141"), add("1080");
        for (const char* t : {"125", "129", "129q", "134", "120", "124q", "142q"}) add(t);
    }
    want.push_back("83@102");
    for (int c = 0; c < 10; ++c) want.push_back("83@101");
    want.push_back("40q@0");
    EXPECT_EQ(Names(Fence()), want);
}

TEST_F(SonarOverLink, RecordsThatMustNotSendAndTransmitSetWhileDown) {
    StartLink(true, [](SonarIF& s) {
        SonarConfig c = s.GetSonar(0);
        c.flags = 0;
        c.pulse = "Chirp 2-12kHz 20ms";
        s.SetSonar(c, 0);
        c = s.GetSonar(1);
        c.subsystem = 129;
        s.SetSonar(c, 1);
        c = s.GetSonar(2);
        c.sonarOn = 1;  // the link is not up yet
        s.SetSonar(c, 2);
    });
    sonar->Tick();
    const std::vector<Received> w = Fence();
    std::vector<std::string> sub0;
    for (const Received& r : w) {
        EXPECT_NE(r.subsystem, 129);
        EXPECT_NE(r.type, MsgPulseName) << "only sub 0 names a pulse, and it is not in use";
        if (r.subsystem == 0 && r.type != MsgOptionCheck && r.type != MsgSystemStatus) {
            sub0.push_back(r.Name());
        }
    }
    EXPECT_EQ(sub0, (std::vector<std::string>{"122q@0", "1025q@0", "83@0", "124q@0", "142q@0"}));
    const auto on = std::find_if(w.begin(), w.end(), [](const Received& r) {
        return r.type == MsgSonarOn && r.subsystem == 21;
    });
    ASSERT_NE(on, w.end());
    EXPECT_EQ(on->words.at(0), 1);
    const auto index = sim->state().IndexOf(21);
    ASSERT_TRUE(index.has_value());
    EXPECT_TRUE(WaitUntil([&] { return sim->state().Subsystem(*index).sonarOn; }));
    EXPECT_FALSE(sim->state().Subsystem(*sim->state().IndexOf(20)).sonarOn);
}

TEST_F(SonarOverLink, HandshakeReplyBringsASecondFullSendThenOnlyChanges) {
    StartLink(false);
    auto count = [](const std::vector<Received>& w, int type, int dir = DirSet) {
        return std::count_if(w.begin(), w.end(), [&](const Received& r) {
            return r.type == type && r.direction == dir;
        });
    };
    sonar->Tick();
    ASSERT_TRUE(WaitUntil([&] { return sonar->Controller().HandshakeState() == 1; }));
    // Every 142 reply found the windows marked by the full send: 441 and 81 per channel.
    ASSERT_TRUE(WaitUntil([&] { return count(Fence(), MsgWindow) == 5; }));
    EXPECT_EQ(count(Fence(), MsgStorageWindow), 5);
    EXPECT_EQ(sonar->GetPulseNames(0).at(0), "Chirp 2-12kHz 20ms");

    ticks.AdvanceTick(250);
    sonar->Tick();
    EXPECT_EQ(count(Fence(), MsgBeginConfigure), 3) << "one tick after the reply: no full send";
    ticks.AdvanceTick(250);
    sonar->Tick();
    std::vector<Received> w = Fence();
    EXPECT_EQ(count(w, MsgBeginConfigure), 6);
    EXPECT_EQ(count(w, MsgOptionCheck, DirQuery), 1);

    // Let every reply of the second send come back, then change only the ping rate.
    // (They may all be in already; the count only has to stand still for a while.)
    ASSERT_TRUE(WaitUntil([&] {
        const int now = sonar->GetReplyCount();
        std::this_thread::sleep_for(300ms);
        return now > 0 && sonar->GetReplyCount() == now;
    }));
    const std::size_t mark = Fence().size();
    SonarConfig c = sonar->GetSonar(0);
    c.pingRate = 7.5f;
    sonar->SetSonar(c, 0);
    const int before = sonar->GetReplyCount();
    ticks.AdvanceTick(250);
    sonar->Tick();
    // The 124 and 142 queries of all three come back; the same ADC rate sends no windows.
    ASSERT_TRUE(WaitUntil([&] { return sonar->GetReplyCount() >= before + 6; }));
    w = Fence();
    std::vector<std::string> sub0;
    for (std::size_t i = mark; i < w.size(); ++i) {
        EXPECT_NE(w[i].type, MsgWindow);
        if (w[i].subsystem == 0) sub0.push_back(w[i].Name());
    }
    EXPECT_EQ(sub0, (std::vector<std::string>{"124@0", "124q@0", "142q@0"}));
    EXPECT_EQ(w[mark].words.at(0), 7500);
    EXPECT_TRUE(WaitUntil([&] { return sonar->Controller().PingRateReadBack(0) == 7500; }));
}

TEST_F(SonarOverLink, WindowsInSamplesMillisecondsAndMetres) {
    // Delay, depth and decimator per subsystem, then the delay and width the display window
    // must carry at the simulator's own ADC rate.
    struct Want {
        int sub, units;
        float delay, depth;
        int pixel;
        std::int64_t wantDelay, wantWidth;
    };
    // Samples: 11 -> 12, 1001 -> 1002, not divided. Milliseconds at 20000/s: 3 ms = 60,
    // 51 ms = 1020, not divided. Metres at 40000/s: 5 m = 266.67 (+0.49) -> 267 / 5 = 53 -> 54;
    // 33 m = 1760 / 5 = 352.
    const Want want[] = {{0, SonarConfig::UnitsSamples, 11, 1001, 3, 12, 1002},
                         {20, SonarConfig::UnitsMilliseconds, 3, 51, 3, 60, 1020},
                         {21, SonarConfig::UnitsMeters, 5, 33, 5, 54, 352}};
    StartLink(false, [&](SonarIF& s) {
        for (int d = 0; d < 3; ++d) {
            SonarConfig c = s.GetSonar(d);
            c.windowUnits = want[d].units;
            c.delay = want[d].delay;
            c.depth = want[d].depth;
            c.pixelDecimator = want[d].pixel;
            s.SetSonar(c, d);
        }
    });
    sonar->Tick();
    std::vector<Received> windows;
    ASSERT_TRUE(WaitUntil([&] {
        windows.clear();
        for (const Received& r : Fence())
            if (r.type == MsgWindow && r.channel == 0) windows.push_back(r);
        return windows.size() == 3;
    }));
    for (const Want& k : want) {
        SCOPED_TRACE(k.sub);
        const auto it = std::find_if(windows.begin(), windows.end(),
                                     [&](const Received& r) { return r.subsystem == k.sub; });
        ASSERT_NE(it, windows.end());
        ASSERT_EQ(it->words.size(), 4u);
        EXPECT_EQ(std::vector(it->words.begin() + 1, it->words.end()),
                  (std::vector<std::int64_t>{k.wantDelay, k.wantWidth, 2 * k.wantWidth}));
    }
}

}  // namespace
}  // namespace halvo::test

// From the simulator's data link into a file and back: every message the simulator logged as
// sent is in the file, whole and in order. No stand-in on the way:
// the real data endpoint posts onto the hub's data bus, where the real recorder sits.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <nlohmann/json.hpp>

#include "app/ProgramClock.h"
#include "app/SystemCoordinator.h"
#include "core/MessageHub.h"
#include "halvo-sim/SimLog.h"
#include "net/NetTestRig.h"
#include "net/NetworkHub.h"
#include "net/SocketManager.h"
#include "platform/FakeSystemClock.h"
#include "platform/MonotonicTickSource.h"
#include "sim/SimTestServer.h"
#include "storage/StorageControl.h"
#include "storage/StorageDataProcessor.h"
#include "storage/StorageRig.h"

namespace halvo {
namespace {

using test::WaitFor;

struct Counter : MessageObserver {
    void DeliverMessage(SonarMessage* m, int, std::uint32_t) override {
        if (m) seen.fetch_add(1);
    }
    std::atomic<int> seen{0};
};

TEST(RecordingRoundTrip, SimulatorToFileAndBack) {
    test::TempDir dir;
    SystemCoordinator coordinator;
    coordinator.SetActiveProfile(dir.File("Defaults.Hni"));
    RunFlag run;
    run.Raise();
    MessageHub hub(run, [] { return std::int64_t{1'700'000'000}; });
    MonotonicTickSource ticks;
    FakeSystemClock systemClock;
    ProgramClock programClock(ticks, systemClock);
    SocketManager sockets(ticks, 250);
    NetworkHub net(hub, sockets, programClock, coordinator);
    StorageControl control(coordinator);
    StorageDataProcessor recorder(hub.DataBus(), control, ticks);
    Counter counter;
    control.SetProcessorStarter([&] { recorder.Start(); });

    SimOptions o = test::TestOptions();
    o.autostart = true;
    o.form = 84;
    o.packing = 3;
    o.rateMultiplier = 20;
    o.sentLogFile = dir.File("sent.jsonl");
    auto sim = std::make_unique<test::RunningSim>(o);
    ASSERT_TRUE(sim->started);

    // Record first, then open the links: every message the simulator sends reaches the file.
    hub.Start(200);
    hub.DataBus().Attach(&counter);
    StorageSettings s = control.getSettings();
    s.recordDir = dir.path();
    s.recordForm = 0;  // raw: the file holds the wire bytes
    s.mode = ModeRecord;
    control.setSettings(s);
    ASSERT_TRUE(
        WaitFor([&] { return control.getStatus().state == StateRecord; }, std::chrono::seconds(3)));
    NetworkSettings links;
    for (int i : {0, 1}) links.endpoints[i].HostName = "127.0.0.1";
    links.endpoints[0].Port = sim->server->commandPort();
    links.endpoints[1].Port = sim->server->dataPort();
    net.ApplyNetworkSettings(links);
    ASSERT_TRUE(WaitFor([&] { return counter.seen.load() > 20; }, std::chrono::seconds(10)));
    sim->server->Stop();  // the simulator's log is complete once it has stopped

    const std::vector<nlohmann::json> sent = test::ReadSimLog(dir.File("sent.jsonl"), "data");
    const std::size_t expected = sent.size();
    ASSERT_TRUE(WaitFor([&] { return counter.seen.load() == static_cast<int>(expected); },
                        std::chrono::seconds(5)))
        << counter.seen.load() << " of " << expected;
    net.StopNetwork();
    sockets.Stop();
    control.RequestStop();
    ASSERT_TRUE(WaitFor([&] { return control.getStatus().state == StateIdleRecord; },
                        std::chrono::seconds(3)));
    hub.DataBus().Detach(&counter);
    hub.DataBus().Detach(&recorder);

    // The CRC covers the header too: type, direction, subsystem, channel and size all match.
    ReadStatus end = ReadStatus::Closed;
    const auto records = test::StorageRig::Records(dir.File("SonarData000.hsf"), &end);
    EXPECT_EQ(end, ReadStatus::EndOfFile);
    ASSERT_EQ(records.size(), sent.size());
    for (std::size_t i = 0; i < records.size(); ++i)
        EXPECT_EQ(SimCrc32(records[i]), sent[i]["crc32"]) << "record " << i;
}

}  // namespace
}  // namespace halvo

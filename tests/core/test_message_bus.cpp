#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "core/MessageHub.h"
#include "core/MessageTypes.h"

namespace halvo {

namespace {

using namespace std::chrono_literals;

template <class Pred>
bool WaitFor(Pred pred, std::chrono::milliseconds limit = 5000ms) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!pred()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

struct Seen {
    std::string stage;
    int id;
    int source;
    std::uint16_t type;
    const void* address;
};

class Recorder : public MessageObserver {
  public:
    Recorder(int id, std::vector<Seen>& log, std::mutex& m) : id_(id), log_(log), m_(m) {}
    void PreviewMessage(SonarMessage* msg, int src, std::uint32_t) override { Note("P", msg, src); }
    void ProcessMessage(SonarMessage* msg, int src, std::uint32_t) override { Note("R", msg, src); }
    void DeliverMessage(SonarMessage* msg, int src, std::uint32_t) override { Note("D", msg, src); }

  private:
    void Note(const char* stage, SonarMessage* msg, int src) {
        std::lock_guard<std::mutex> g(m_);
        log_.push_back({stage, id_, src, msg ? msg->type() : std::uint16_t{0},
                        msg ? static_cast<const void*>(msg->Block().data()) : nullptr});
    }
    int id_;
    std::vector<Seen>& log_;
    std::mutex& m_;
};

// Counts deliveries of real messages; can hold the bus on a gate at its first one.
class Gate : public MessageObserver {
  public:
    void DeliverMessage(SonarMessage* msg, int, std::uint32_t) override {
        if (!msg) return;
        if (delivered++ == 0) {
            started.set_value();
            open.get_future().wait();
        }
    }
    std::atomic<int> delivered{0};
    std::promise<void> started, open;
};

// Calls `fn` on every delivery, idle ticks included.
struct OnDeliver : MessageObserver {
    explicit OnDeliver(std::function<void(SonarMessage*, int)> f) : fn(std::move(f)) {}
    void DeliverMessage(SonarMessage* msg, int src, std::uint32_t) override { fn(msg, src); }
    std::function<void(SonarMessage*, int)> fn;
};

SonarMessage Msg(std::uint16_t type, std::uint8_t direction = DirReply, std::int32_t size = 4) {
    return SonarMessage::Build(type, direction, 0, 0, size);
}

class BusTest : public ::testing::Test {
  protected:
    void SetUp() override { run.Raise(); }
    RunFlag run;
    std::mutex m;
    std::vector<Seen> log;
};

}  // namespace

TEST_F(BusTest, StagesRunInOrderOverObserversInAttachOrderAndIdleTicksReachAll) {
    Recorder a(1, log, m), b(2, log, m);  // declared first: they outlive the bus thread
    MessageHub hub(run);
    hub.DataBus().Attach(&a);
    hub.DataBus().Attach(&b);
    hub.Start(8);
    SonarMessage msg = Msg(MsgPressure);
    ASSERT_EQ(hub.DataBus().Post(msg, SourceSerial), 0);
    EXPECT_FALSE(msg);
    ASSERT_TRUE(WaitFor([&] {
        std::lock_guard<std::mutex> g(m);
        int ticks = 0, real = 0;
        for (const Seen& s : log) (s.source == SourceIdle ? ticks : real)++;
        return ticks >= 12 && real == 6;
    }));
    std::lock_guard<std::mutex> g(m);
    std::string order, idle;
    for (const Seen& s : log) {
        (s.source == SourceIdle ? idle : order) += s.stage + std::to_string(s.id);
        EXPECT_TRUE(s.source != SourceIdle || s.address == nullptr);
    }
    EXPECT_EQ(order, "P1P2R1R2D1D2");
    EXPECT_EQ(idle.substr(0, 12), "P1P2R1R2D1D2");  // each idle pass walks all three stages
}

TEST_F(BusTest, OlderTraceSeenInPreviewArrivesAsTraceAtAnotherAddress) {
    MessageProcessor bus("t", run, AcquireFilter(), SystemUtcSeconds);
    Recorder r(1, log, m);
    bus.Attach(&r);
    SonarMessage ss = SonarMessage::Build(MsgSideScanTrace, DirReply, 20, 0, 84);
    PutLE<std::int32_t>(ss.Payload(), 12, 2);
    bus.Dispatch(std::move(ss), SourceSonarData, 0);
    ASSERT_EQ(log.size(), 3u);
    EXPECT_EQ(log[0].type, MsgSideScanTrace);
    EXPECT_EQ(log[2].type, MsgTrace);
    EXPECT_NE(log[0].address, log[2].address);
}

TEST(AcquireFilter, TableOfClassesAndValues) {
    struct Row {
        std::uint32_t F;
        std::uint8_t dir;
        std::uint16_t type;
        bool pass;
    };
    const Row rows[] = {{0, DirQC, MsgTrace, true},           {1, 3, MsgTrace, true},
                        {4, DirReply, MsgNmea, true},         {4, DirReply, MsgTrace, false},
                        {4, DirQC, MsgTrace, true},           {2, DirReply, MsgNmea, false},
                        {2, DirStoreForward, MsgTrace, true}, {1, DirStoreForward, MsgNmea, false},
                        {1, DirQC, MsgTrace, false}};
    for (const Row& r : rows) {
        EXPECT_EQ(AcquireFilter::Passes(r.F, r.dir, r.type), r.pass)
            << "F " << r.F << " dir " << int(r.dir) << " type " << r.type;
    }
}

TEST_F(BusTest, FilterAppliesOnlyToTheDataLinkAndFromTheNextMessage) {
    Recorder r(1, log, m);
    MessageHub hub(run);
    hub.DataBus().Attach(&r);
    hub.SetFilter(FilterQCOnly);
    hub.Start(16);
    for (int source : {SourceSonarCommand, SourceSonarData, SourcePlayback}) {
        SonarMessage t = Msg(MsgTrace, DirReply);
        ASSERT_EQ(hub.DataBus().Post(t, source), 0);
    }
    // Playback was posted last: once it is delivered, so is everything before it.
    std::vector<int> delivered;
    ASSERT_TRUE(WaitFor([&] {
        std::lock_guard<std::mutex> g(m);
        delivered.clear();
        for (const Seen& s : log)
            if (s.stage == "D" && s.source != SourceIdle) delivered.push_back(s.source);
        return !delivered.empty() && delivered.back() == SourcePlayback;
    }));
    EXPECT_EQ(delivered, (std::vector<int>{SourceSonarCommand, SourcePlayback}));
}

TEST_F(BusTest, BurstHoldsTheObserverLockAgainstOtherThreads) {
    Gate gate;
    MessageHub hub(run);
    hub.DataBus().Attach(&gate);
    hub.Start(64);
    for (int i = 0; i < 40; ++i) {
        SonarMessage msg = Msg(MsgAltitude);
        ASSERT_EQ(hub.DataBus().Post(msg, SourceSonarData), 0);
    }
    gate.started.get_future().wait();
    std::atomic<int> seenAtDetach{-1};
    std::thread other([&] {
        hub.DataBus().Detach(&gate);
        seenAtDetach = gate.delivered.load();
    });
    std::this_thread::sleep_for(30ms);
    EXPECT_EQ(seenAtDetach.load(), -1) << "Detach got in during the burst";
    gate.open.set_value();
    other.join();
    EXPECT_EQ(seenAtDetach.load(), 40);
}

TEST_F(BusTest, FullQueueLeavesTheBlockWithTheCaller) {
    Gate gate;
    MessageHub hub(run);
    hub.DataBus().Attach(&gate);
    hub.Start(2);
    SonarMessage first = Msg(MsgAltitude);
    ASSERT_EQ(hub.DataBus().Post(first, SourceSonarData), 0);
    gate.started.get_future().wait();  // entry stays in the queue until the bus pops it
    SonarMessage second = Msg(MsgAltitude);
    ASSERT_EQ(hub.DataBus().Post(second, SourceSonarData), 0);
    SonarMessage third = Msg(MsgAltitude);
    const std::uint8_t* block = third.Block().data();
    EXPECT_EQ(hub.DataBus().Post(third, SourceSonarData), 1);
    ASSERT_TRUE(third);
    EXPECT_EQ(third.Block().data(), block);
    gate.open.set_value();
    EXPECT_TRUE(WaitFor([&] { return gate.delivered == 2; }));
}

TEST_F(BusTest, DestructionReleasesQueuedMessagesAndStopsTheThread) {
    RunFlag stopped;  // never raised: the thread leaves at once and nothing is dispatched
    Gate gate;
    {
        MessageHub hub(stopped);
        hub.DataBus().Attach(&gate);
        hub.Start(8);
        for (int i = 0; i < 5; ++i) {
            SonarMessage msg = Msg(MsgTrace, DirReply, 1000);
            ASSERT_EQ(hub.DataBus().Post(msg, SourceSonarData), 0);
        }
        ASSERT_TRUE(WaitFor([&] { return hub.DataBus().state() == MessageProcessor::Stopped; }));
        EXPECT_EQ(hub.DataBus().QueueDepth(), 5u);
    }  // the sanitizer run proves the five blocks were released
    EXPECT_EQ(gate.delivered, 0);
}

TEST_F(BusTest, ObserversMayDetachThemselvesAndDispatchNestedDerivedTraces) {
    MessageProcessor bus("t", run, AcquireFilter(), SystemUtcSeconds);
    std::vector<std::string> order;
    int quitterCalls = 0;
    OnDeliver quitter([&](SonarMessage*, int) {
        ++quitterCalls;
        bus.Detach(&quitter);
    });
    OnDeliver deriver([&](SonarMessage*, int src) {
        order.push_back("deliver" + std::to_string(src));
        if (src != SourceSonarData) return;
        bus.Dispatch(SonarMessage::Build(MsgTrace, DirReply, 0, 8, 240), SourceDerived, 0);
        order.push_back("after");
    });
    bus.Attach(&quitter);
    bus.Attach(&deriver);
    bus.Dispatch(Msg(MsgTrace), SourceSonarData, 0);
    EXPECT_EQ(quitterCalls, 1);
    EXPECT_EQ(bus.Observers().size(), 1u);
    EXPECT_EQ(order, (std::vector<std::string>{"deliver2", "deliver7", "after"}));
}

TEST_F(BusTest, HistoryRingKeepsTheOldWordForShortMessages) {
    MessageProcessor bus("t", run, AcquireFilter(), SystemUtcSeconds);
    SonarMessage withWord = Msg(MsgAltitude, DirReply, 4);
    PutLE<std::uint32_t>(withWord.Payload(), 0, 0xCAFEF00D);
    bus.Dispatch(std::move(withWord), SourceSonarData, 0);
    for (int i = 0; i < 31; ++i) bus.Dispatch(Msg(MsgAlive, DirQuery, 4), SourceLocal, 0);
    EXPECT_EQ(bus.HistoryIndex(), 0u);
    bus.Dispatch(Msg(MsgClock, DirQuery, 0), SourceLocal, 0);
    const HistoryEntry h = bus.History()[0];
    EXPECT_EQ(h.type, MsgClock);
    EXPECT_EQ(h.size, 0);
    EXPECT_EQ(h.word, 0xCAFEF00Du);
    EXPECT_EQ(h.source, SourceLocal);
}

TEST_F(BusTest, SendCommandBuildsOrCopiesAndMapsDirections) {
    std::vector<MessageHeader> headers;
    OnDeliver cap([&](SonarMessage* msg, int) {
        std::lock_guard<std::mutex> g(m);
        if (msg) headers.push_back(msg->Header());
    });
    MessageHub hub(run);
    const std::uint32_t value = 5000;
    EXPECT_EQ(hub.SendCommand(&value, 4, MsgPingRate, 1, DirQuery, 20), 1) << "not started yet";
    hub.CommandBus().Attach(&cap);
    hub.Start(8);
    EXPECT_EQ(hub.SendCommand(&value, 4, MsgPingRate, 1, 7, 20), 0);
    EXPECT_EQ(hub.SendCommand(&value, 4, MsgPingRate, 1, DirReply, 20), 0);
    std::uint8_t whole[20] = {};
    MessageHeader::Make(MsgSonarOn, DirSet, 0, 0, 4).Write(whole);
    EXPECT_EQ(hub.SendCommand(whole, sizeof whole, 0, 0, 0, 0), 0);
    EXPECT_EQ(hub.SendCommand(whole, 10, 0, 0, 0, 0), 1);
    ASSERT_TRUE(WaitFor([&] {
        std::lock_guard<std::mutex> g(m);
        return headers.size() == 3;
    }));
    EXPECT_EQ(headers[0].direction, DirSet);
    EXPECT_EQ(headers[0].subsystem, 20);
    EXPECT_EQ(headers[1].direction, DirReply);
    EXPECT_EQ(headers[2].type, MsgSonarOn);
}

TEST(MessageHub, FilterComesUpAsAllSourcesAfterLoad) {
    RunFlag run;
    MessageHub hub(run);
    EXPECT_EQ(hub.Filter().ChangeCount(), -1);
    hub.SetFilter(FilterQCOnly);
    FilterSnapshot snap;
    EXPECT_TRUE(hub.RefreshFilter(snap));
    EXPECT_FALSE(hub.RefreshFilter(snap));
    EXPECT_EQ(snap.value, 4u);
    hub.ResetFilterForLoad();
    EXPECT_TRUE(hub.RefreshFilter(snap));
    EXPECT_EQ(snap.value, 0u);
    EXPECT_EQ(snap.count, 1);
}

}  // namespace halvo

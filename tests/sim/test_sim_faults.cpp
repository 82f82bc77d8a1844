// Every fault happens when asked, and only then.

#include <gtest/gtest.h>

#include "core/ByteOrder.h"
#include "core/MessageTypes.h"
#include "sim/SimTestClient.h"
#include "sim/SimTestServer.h"

namespace halvo::test {
namespace {

using namespace std::chrono_literals;

TEST(SimFaults, BadMarkerAndOversizeComeAfterNMessages) {
    struct Case {
        long badMarker;
        long oversize;
        std::uint16_t marker;
        std::int32_t size;
    };
    for (const Case k : {Case{5, -1, 0x4242, -1}, Case{-1, 3, kMessageMarker, 5000000}}) {
        SimOptions o = TestOptions();
        o.badMarkerAfter = k.badMarker;
        o.oversizeAfter = k.oversize;
        RunningSim sim(o);
        SimTestClient data(sim.server->dataPort());
        const long good = std::max(k.badMarker, k.oversize);
        for (long i = 0; i < good; ++i) ASSERT_TRUE(data.Read(2s).has_value()) << i;
        MessageHeader refused;
        EXPECT_FALSE(data.Read(2s, &refused).has_value());
        EXPECT_EQ(refused.marker, k.marker);
        if (k.size >= 0) {
            EXPECT_EQ(refused.size, k.size);
        }
    }
}

TEST(SimFaults, DropEveryClosesTheLinksAndAcceptsAgain) {
    SimOptions o = TestOptions();
    o.dropEvery = 0.3;
    RunningSim sim(o);
    SimTestClient first(sim.server->commandPort());
    EXPECT_TRUE(first.WaitClosed(2s));
    // The listener stays open: a new connection is answered between drops.
    bool answered = false;
    for (int attempt = 0; attempt < 5 && !answered; ++attempt) {
        SimTestClient again(sim.server->commandPort());
        answered = again.SendQuery(MsgSampleRate, 0) && again.Read(200ms).has_value();
    }
    EXPECT_TRUE(answered);
    EXPECT_GE(sim.server->Counters().drops, 1u);
}

TEST(SimFaults, SilentAnswersNothingButStillObeys) {
    SimOptions o = TestOptions();
    o.silent = true;
    RunningSim sim(o);
    SimTestClient c(sim.server->commandPort());
    ASSERT_TRUE(c.SendWord(MsgPingRate, DirSet, 0, 0, 1500));
    ASSERT_TRUE(c.SendQuery(MsgPingRate, 0));
    EXPECT_FALSE(c.Read(400ms).has_value());
    EXPECT_EQ(sim.server->state().Subsystem(0).pingRateMilli, 1500);
}

TEST(SimFaults, StallAfterStopsReading) {
    SimOptions o = TestOptions();
    o.stallAfter = 2;
    RunningSim sim(o);
    SimTestClient c(sim.server->commandPort());
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(c.SendQuery(MsgSampleRate, 0));
    EXPECT_TRUE(c.Read(1s).has_value());
    EXPECT_TRUE(c.Read(1s).has_value());
    EXPECT_FALSE(c.Read(400ms).has_value());
    EXPECT_EQ(sim.server->Counters().received, 2u);
}

TEST(SimFaults, SlowReaderStillTakesEveryMessageWhole) {
    SimOptions o = TestOptions();
    o.slowReader = true;
    RunningSim sim(o);
    SimTestClient c(sim.server->commandPort());
    SonarMessage name = SonarMessage::Build(MsgSecondPulseText, DirSet, 0, 0, 256);
    std::memcpy(name.Payload().data(), "second text", 11);
    ASSERT_TRUE(c.Send(name));
    ASSERT_TRUE(c.SendWord(MsgPingRate, DirSet, 0, 0, 3300));
    ASSERT_TRUE(c.SendQuery(MsgPingRate, 0));
    auto r = c.Read(4s);
    ASSERT_TRUE(r.has_value());
    EXPECT_EQ(GetLE<std::int32_t>(r->Payload(), 0), 3300);
    EXPECT_EQ(sim.server->state().Subsystem(0).secondPulseText, "second text");
}

TEST(SimFaults, ABadStreamFromTheTopsideClosesThatLinkOnly) {
    RunningSim sim(TestOptions());
    SimTestClient cmd(sim.server->commandPort());
    SimTestClient data(sim.server->dataPort());
    ASSERT_TRUE(data.Read(2s).has_value());
    MessageHeader h = MessageHeader::Make(MsgPingRate, DirSet, 0, 0, 4);
    h.marker = 0x1234;
    std::uint8_t bytes[20] = {};
    h.Write(bytes);
    ASSERT_TRUE(cmd.SendBytes(bytes));
    EXPECT_TRUE(cmd.WaitClosed(2s));
    EXPECT_TRUE(data.Read(2s).has_value());
    EXPECT_EQ(sim.server->Counters().badStreams, 1u);
}

TEST(SimFaults, ANewTopsideReplacesTheOld) {
    RunningSim sim(TestOptions());
    SimTestClient old(sim.server->commandPort());
    ASSERT_TRUE(old.SendQuery(MsgSampleRate, 0));
    ASSERT_TRUE(old.Read(1s).has_value());
    SimTestClient fresh(sim.server->commandPort());
    EXPECT_TRUE(old.WaitClosed(2s));
    ASSERT_TRUE(fresh.SendQuery(MsgSampleRate, 0));
    EXPECT_TRUE(fresh.Read(1s).has_value());
}

}  // namespace
}  // namespace halvo::test

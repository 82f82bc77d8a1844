// Queries get their replies with the right sizes, and commands change the simulated sonar.

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "core/ByteOrder.h"
#include "core/MessageTypes.h"
#include "halvo-sim/SimLog.h"
#include "sim/SimTestClient.h"
#include "sim/SimTestServer.h"

namespace halvo::test {
namespace {

using namespace std::chrono_literals;

std::optional<SonarMessage> Ask(SimTestClient& c, std::uint16_t type, std::uint8_t sub) {
    if (!c.SendQuery(type, sub)) return std::nullopt;
    return c.ReadUntil([&](const SonarMessage& m) { return m.type() == type; }, 2s);
}

std::int32_t WordOf(const std::optional<SonarMessage>& m, std::size_t offset = 0) {
    return m ? GetLE<std::int32_t>(m->Payload(), offset) : -999;
}

// A set message of `size` bytes, its text at the start.
SonarMessage SetText(std::uint16_t type, std::uint8_t sub, std::int32_t size, std::string_view t) {
    SonarMessage m = SonarMessage::Build(type, DirSet, sub, 0, size);
    std::copy(t.begin(), t.end(), m.Payload().begin());
    return m;
}

TEST(SimCommands, EveryQueryGetsItsReplyWithTheRightSizeAndTheDeviceValues) {
    RunningSim sim(TestOptions(), 1700000000123LL);
    SimTestClient c(sim.server->commandPort());
    ASSERT_TRUE(c.connected());
    struct Case {
        std::uint16_t type;
        std::uint8_t sub;
        std::int32_t size;  // negative: any size from -size up
    };
    const Case cases[] = {{MsgOptionCheck, 0, -1},
                          {MsgPulseList, 0, -360},
                          {MsgSubsystemValue, 0, 4},
                          {MsgPingRate, 20, 4},
                          {MsgSampleRate, 21, 4},
                          {MsgSystemStatus, 0, -100},
                          {MsgStorageStatus, 0, 332},
                          {MsgCoupling, 0, 12},
                          {1180, 20, 804},
                          {1181, 20, 4},
                          {1186, 20, 4},
                          {1188, 20, 256},
                          {MsgClock, 0, 8},
                          {MsgAlive, 0, 4}};
    for (const Case& k : cases) {
        SCOPED_TRACE(k.type);
        ASSERT_TRUE(k.type == MsgAlive ? c.SendWord(MsgAlive, DirQuery, k.sub, 0, 7)
                                       : c.SendQuery(k.type, k.sub));
        auto r = c.ReadUntil([&](const SonarMessage& m) { return m.type() == k.type; }, 2s);
        ASSERT_TRUE(r.has_value());
        EXPECT_EQ(r->direction(), DirReply);
        EXPECT_EQ(r->subsystem(), k.sub);
        EXPECT_TRUE(k.size < 0 ? r->size() >= -k.size : r->size() == k.size) << r->size();
        EXPECT_TRUE(k.type != MsgPulseList || r->size() % 360 == 0) << r->size();
    }
    auto pulses = Ask(c, MsgPulseList, 0);
    ASSERT_TRUE(pulses);
    EXPECT_EQ(SimText(pulses->Payload(), 80), "Chirp 2-12kHz 20ms");
    EXPECT_EQ(WordOf(Ask(c, MsgSampleRate, 0)), sim.server->state().Subsystem(0).adcRateHz * 1000);
    auto clock = Ask(c, MsgClock, 0);
    EXPECT_EQ(WordOf(clock), 1700000000);
    EXPECT_EQ(WordOf(clock, 4), 123);
}

TEST(SimCommands, CommandsChangeTheState) {
    RunningSim sim(TestOptions());
    SimTestClient c(sim.server->commandPort());
    const struct {
        std::uint16_t type;
        std::uint8_t sub, chan;
        std::int32_t word;
    } words[] = {{MsgPingRate, 20, 0, 2500},        {MsgChannelDataType, 0, 0, 2},
                 {MsgChannelGain, 21, 1, 4000},     {MsgChannelAGC, 21, 1, 1},
                 {MsgChannelEnable, 20, 1, 0},      {MsgTrigger, 0, 0, 2},
                 {MsgSubsystemValue, 0, 0, 77},     {MsgSonarOn, 21, 0, 1},
                 {MsgStorageMasterEnable, 0, 0, 1}, {1186, 20, 0, 0}};
    for (const auto& w : words) ASSERT_TRUE(c.SendWord(w.type, DirSet, w.sub, w.chan, w.word));
    ASSERT_TRUE(c.Send(SetText(MsgPulseName, 0, 256, "Chirp 1-10kHz 30ms")));
    ASSERT_TRUE(c.Send(SetText(MsgStorageFileName, 0, 256, "line7.hsf")));
    SonarMessage window = SonarMessage::Build(MsgWindow, DirSet, 0, 0, 16);
    PutLE<std::uint16_t>(window.Payload(), 0, 2);
    PutLE<std::uint16_t>(window.Payload(), 2, 4);
    PutLE<std::int32_t>(window.Payload(), 4, 100);
    PutLE<std::int32_t>(window.Payload(), 8, 3000);
    ASSERT_TRUE(c.Send(window));
    SonarMessage video = SonarMessage::Build(MsgVideoControl, DirSet, SubVideo, 0, 136);
    PutLE<std::int32_t>(video.Payload(), 0, 3);
    PutLE<std::int32_t>(video.Payload(), 8, 75);
    ASSERT_TRUE(c.Send(video));

    // Replies come in order, so once these are back every command before them has been applied.
    EXPECT_EQ(WordOf(Ask(c, MsgPingRate, 20)), 2500);
    EXPECT_EQ(WordOf(Ask(c, MsgSubsystemValue, 0)), 77);
    auto storage = Ask(c, MsgStorageStatus, 0);
    ASSERT_TRUE(storage);
    EXPECT_EQ(SimText(storage->Payload(), 256), "line7.hsf");
    EXPECT_EQ(WordOf(storage, 264), 1);
    EXPECT_EQ(WordOf(Ask(c, 1186, 20)), 0);

    SimSonarState& st = sim.server->state();
    EXPECT_EQ(st.Subsystem(0).channels[0].dataType, 2);
    EXPECT_EQ(st.Subsystem(0).trigger, 2);
    EXPECT_EQ(st.Subsystem(0).Pulse().name, "Chirp 1-10kHz 30ms");
    EXPECT_EQ(st.Subsystem(0).channels[0].window.pixelDecimator, 4);
    EXPECT_EQ(st.Subsystem(0).channels[0].window.width, 3000);
    EXPECT_EQ(st.Subsystem(2).channels[1].gainMilli, 4000);
    EXPECT_EQ(st.Subsystem(2).channels[1].agc, 1);
    EXPECT_FALSE(st.Subsystem(1).channels[1].enabled);
    EXPECT_TRUE(st.Subsystem(2).sonarOn);
    EXPECT_FALSE(st.Subsystem(0).sonarOn);
    EXPECT_EQ(st.Device().videoControl[2], 75);
}

TEST(SimCommands, ClockSetAndSlewMoveOnlyTheDeviceClock) {
    RunningSim sim(TestOptions(), 1700000000000LL);
    SimTestClient c(sim.server->commandPort());
    SonarMessage set = SonarMessage::Build(MsgClock, DirSet, 0, 0, 8);
    PutLE<std::int32_t>(set.Payload(), 0, 1700000100);
    PutLE<std::int32_t>(set.Payload(), 4, 500);
    ASSERT_TRUE(c.Send(set));
    ASSERT_TRUE(c.SendWord(MsgClockSlew, DirSet, 0, 0, -20));
    auto now = Ask(c, MsgClock, 0);
    EXPECT_EQ(WordOf(now), 1700000100);
    EXPECT_EQ(WordOf(now, 4), 480);
    EXPECT_EQ(sim.clock.NowMs(), 1700000000000LL);  // the wall clock is untouched
}

// What the simulator received is logged too; the controller's tests over the link read that
// log as their witness, so a wrong entry fails them.
TEST(SimCommands, SentLogRecordsTheRepliesInOrder) {
    SimOptions o = TestOptions();
    o.sentLogFile = std::string(HALVO_BINARY_DIR) + "/sim_test_sent.jsonl";
    RunningSim sim(o);
    SimTestClient c(sim.server->commandPort());
    std::vector<std::uint32_t> crcs;
    for (std::uint16_t t : {MsgPingRate, MsgSampleRate, MsgSystemStatus}) {
        auto r = Ask(c, t, 20);
        ASSERT_TRUE(r);
        crcs.push_back(SimCrc32(r->Wire()));
    }
    sim.server->Stop();
    const std::vector<nlohmann::json> sent = ReadSimLog(o.sentLogFile);
    ASSERT_EQ(sent.size(), crcs.size());
    for (std::size_t i = 0; i < sent.size(); ++i) {
        EXPECT_EQ(sent[i]["crc32"], crcs[i]);
        EXPECT_EQ(sent[i]["link"], "command");
    }
}

TEST(SimCommands, Crc32MatchesTheKnownCheckValue) {
    const std::string s = "123456789";
    EXPECT_EQ(SimCrc32(std::span(reinterpret_cast<const std::uint8_t*>(s.data()), s.size())),
              0xCBF43926u);
}

}  // namespace
}  // namespace halvo::test

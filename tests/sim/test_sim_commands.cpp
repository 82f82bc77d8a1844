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

TEST(SimCommands, EveryQueryGetsItsReplyWithTheRightSize) {
    RunningSim sim(TestOptions());
    SimTestClient c(sim.server->commandPort());
    ASSERT_TRUE(c.connected());
    struct Case {
        std::uint16_t type;
        std::uint8_t sub;
        std::int32_t minSize;
        std::int32_t exactSize;  // -1: any size from minSize up
    };
    const Case cases[] = {
        {MsgOptionCheck, 0, 1, -1},
        {MsgPulseList, 0, 360, -1},
        {MsgSubsystemValue, 0, 4, 4},
        {MsgPingRate, 20, 4, 4},
        {MsgSampleRate, 21, 4, 4},
        {MsgSystemStatus, 0, 100, -1},
        {MsgStorageStatus, 0, 332, 332},
        {MsgCoupling, 0, 12, 12},
        {1180, 20, 804, 804},
        {1181, 20, 4, 4},
        {1186, 20, 4, 4},
        {1188, 20, 256, 256},
        {MsgClock, 0, 8, 8},
        {MsgAlive, 0, 4, 4},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.type);
        if (k.type == MsgAlive) {
            ASSERT_TRUE(c.SendWord(MsgAlive, DirQuery, k.sub, 0, 7));
        } else {
            ASSERT_TRUE(c.SendQuery(k.type, k.sub));
        }
        auto r = c.ReadUntil([&](const SonarMessage& m) { return m.type() == k.type; }, 2s);
        ASSERT_TRUE(r.has_value());
        EXPECT_EQ(r->direction(), DirReply);
        EXPECT_EQ(r->subsystem(), k.sub);
        EXPECT_GE(r->size(), k.minSize);
        if (k.exactSize >= 0) {
            EXPECT_EQ(r->size(), k.exactSize);
        }
        if (k.type == MsgPulseList) {
            EXPECT_EQ(r->size() % 360, 0);
        }
    }
}

TEST(SimCommands, RepliesCarryTheDeviceValues) {
    RunningSim sim(TestOptions(), 1700000000123LL);
    SimTestClient c(sim.server->commandPort());
    auto pulses = Ask(c, MsgPulseList, 0);
    ASSERT_TRUE(pulses);
    EXPECT_EQ(SimText(pulses->Payload(), 80), "Chirp 2-12kHz 20ms");
    auto adc = Ask(c, MsgSampleRate, 0);
    ASSERT_TRUE(adc);
    EXPECT_EQ(GetLE<std::int32_t>(adc->Payload(), 0),
              sim.server->state().Subsystem(0).adcRateHz * 1000);
    auto clock = Ask(c, MsgClock, 0);
    ASSERT_TRUE(clock);
    EXPECT_EQ(GetLE<std::int32_t>(clock->Payload(), 0), 1700000000);
    EXPECT_EQ(GetLE<std::int32_t>(clock->Payload(), 4), 123);
}

TEST(SimCommands, CommandsChangeTheState) {
    RunningSim sim(TestOptions());
    SimTestClient c(sim.server->commandPort());
    ASSERT_TRUE(c.SendWord(MsgPingRate, DirSet, 20, 0, 2500));
    ASSERT_TRUE(c.SendWord(MsgChannelDataType, DirSet, 0, 0, 2));
    ASSERT_TRUE(c.SendWord(MsgChannelGain, DirSet, 21, 1, 4000));
    ASSERT_TRUE(c.SendWord(MsgChannelAGC, DirSet, 21, 1, 1));
    ASSERT_TRUE(c.SendWord(MsgChannelEnable, DirSet, 20, 1, 0));
    ASSERT_TRUE(c.SendWord(MsgTrigger, DirSet, 0, 0, 2));
    ASSERT_TRUE(c.SendWord(MsgSubsystemValue, DirSet, 0, 0, 77));
    ASSERT_TRUE(c.SendWord(MsgSonarOn, DirSet, 21, 0, 1));
    ASSERT_TRUE(c.SendWord(MsgStorageMasterEnable, DirSet, 0, 0, 1));
    ASSERT_TRUE(c.SendWord(1186, DirSet, 20, 0, 0));
    SonarMessage pulse = SonarMessage::Build(MsgPulseName, DirSet, 0, 0, 256);
    std::memcpy(pulse.Payload().data(), "Chirp 1-10kHz 30ms", 18);
    ASSERT_TRUE(c.Send(pulse));
    SonarMessage file = SonarMessage::Build(MsgStorageFileName, DirSet, 0, 0, 256);
    std::memcpy(file.Payload().data(), "line7.hsf", 9);
    ASSERT_TRUE(c.Send(file));
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
    auto rate = Ask(c, MsgPingRate, 20);
    ASSERT_TRUE(rate);
    EXPECT_EQ(GetLE<std::int32_t>(rate->Payload(), 0), 2500);
    auto value = Ask(c, MsgSubsystemValue, 0);
    ASSERT_TRUE(value);
    EXPECT_EQ(GetLE<std::int32_t>(value->Payload(), 0), 77);
    auto storage = Ask(c, MsgStorageStatus, 0);
    ASSERT_TRUE(storage);
    EXPECT_EQ(SimText(storage->Payload(), 256), "line7.hsf");
    EXPECT_EQ(GetLE<std::int32_t>(storage->Payload(), 264), 1);
    auto balance = Ask(c, 1186, 20);
    ASSERT_TRUE(balance);
    EXPECT_EQ(GetLE<std::int32_t>(balance->Payload(), 0), 0);

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
    ASSERT_TRUE(now);
    EXPECT_EQ(GetLE<std::int32_t>(now->Payload(), 0), 1700000100);
    EXPECT_EQ(GetLE<std::int32_t>(now->Payload(), 4), 480);
    EXPECT_EQ(sim.clock.NowMs(), 1700000000000LL);  // the wall clock is untouched
}

std::vector<nlohmann::json> ReadLines(const std::string& path) {
    std::vector<nlohmann::json> out;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line) && out.size() < 100000)
        out.push_back(nlohmann::json::parse(line));
    return out;
}

TEST(SimCommands, LogsRecordWhatCameAndWentInOrder) {
    const std::string dir = HALVO_BINARY_DIR;
    SimOptions o = TestOptions();
    o.logFile = dir + "/sim_test_received.jsonl";
    o.sentLogFile = dir + "/sim_test_sent.jsonl";
    RunningSim sim(o);
    SimTestClient c(sim.server->commandPort());
    const std::uint16_t order[] = {MsgPingRate, MsgSampleRate, MsgSystemStatus};
    std::vector<std::uint32_t> crcs;
    for (std::uint16_t t : order) {
        auto r = Ask(c, t, 20);
        ASSERT_TRUE(r);
        crcs.push_back(SimCrc32(r->Wire()));
    }
    sim.server->Stop();
    const auto received = ReadLines(o.logFile);
    ASSERT_EQ(received.size(), std::size(order));
    for (std::size_t i = 0; i < received.size(); ++i) {
        EXPECT_EQ(received[i]["type"], order[i]);
        EXPECT_EQ(received[i]["direction"], DirQuery);
        EXPECT_EQ(received[i]["subsystem"], 20);
        EXPECT_EQ(received[i]["link"], "command");
    }
    const auto sent = ReadLines(o.sentLogFile);
    ASSERT_EQ(sent.size(), crcs.size());
    for (std::size_t i = 0; i < sent.size(); ++i) EXPECT_EQ(sent[i]["crc32"], crcs[i]);
}

TEST(SimCommands, Crc32MatchesTheKnownCheckValue) {
    const std::string s = "123456789";
    EXPECT_EQ(SimCrc32(std::span(reinterpret_cast<const std::uint8_t*>(s.data()), s.size())),
              0xCBF43926u);
}

}  // namespace
}  // namespace halvo::test

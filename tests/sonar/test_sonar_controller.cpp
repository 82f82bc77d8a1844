// The controller on a real command bus: what goes out at connection, on a change, after the
// handshake, and what replies do.

#include <algorithm>
#include <cstring>

#include "app/OverallConfig.h"
#include "sonar/SonarRig.h"

namespace halvo::test {
namespace {

using Controller = SonarRig;

TEST_F(Controller, FullSendAtConnectionInOrder) {
    Make(OverallConfig::kConfigSBSS);
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
    EXPECT_EQ(Types(Connect()), want);
}

TEST_F(Controller, FirstConnectionFlagForcesTheNextCheckAfterItIsSet) {
    Make(OverallConfig::kConfigSB);
    RecorderConfig r = sonar->GetRecorder();
    r.flags = 0;
    sonar->SetRecorder(r);
    Connect();
    EXPECT_TRUE(TickAndDrain(1500).empty()) << "a check without the flag forces nothing";
    r.flags = RecorderConfig::kFlagFirstConnection;
    sonar->SetRecorder(r);
    const std::vector<std::string> early = Types(TickAndDrain(100), 0);
    EXPECT_EQ(early, (std::vector<std::string>{"124q", "142q"})) << "no check due yet";
    const std::vector<std::string> sent = Types(TickAndDrain(1500), 0);
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(sent.front(), "1008q");
    EXPECT_EQ(std::count(sent.begin(), sent.end(), "133"), 1);
    EXPECT_TRUE(TickAndDrain(1500).empty()) << "the mark is spent";
}

TEST_F(Controller, ChangesSendOnlyWhatDiffersFollowedByTheRateQueries) {
    Make(OverallConfig::kConfigSB);
    Connect();
    struct Case {
        const char* what;
        void (*change)(SonarConfig&);
        std::vector<std::string> want;
        std::int32_t word;
    };
    const Case cases[] = {
        {"ping rate", [](SonarConfig& c) { c.pingRate = 7.25f; }, {"124", "124q", "142q"}, 7250},
        {"range", [](SonarConfig& c) { c.rangeOrRate = 1; }, {"128", "124q", "142q"}, 7250},
        {"gain", [](SonarConfig& c) { c.gain[0] = 2.5f; }, {"140", "141", "124q", "142q"}, 2500},
        {"overall power",
         [](SonarConfig& c) { c.overallPower = 50.0f; },
         {"121", "124q", "142q"},
         500},
        {"sonar on", [](SonarConfig& c) { c.sonarOn = 1; }, {"120", "124q", "142q"}, 1},
        {"special options zero",
         [](SonarConfig& c) { c.specialOptions = 0; },
         {"124q", "142q"},
         -999},
        {"window only marks", [](SonarConfig& c) { c.depth = 77.0f; }, {"124q", "142q"}, -999},
        {"coupling",
         [](SonarConfig& c) { c.couplingDelay = 3; },
         {"129", "129q", "124q", "142q"},
         0}};
    for (const Case& k : cases) {
        SCOPED_TRACE(k.what);
        SonarConfig c = sonar->GetSonar(0);
        k.change(c);
        sonar->SetSonar(c, 0);
        const std::vector<Sent> sent = TickAndDrain();
        EXPECT_EQ(Types(sent, 0), k.want);
        if (!sent.empty()) {
            EXPECT_EQ(sent.front().Word(), k.word);
        }
    }
    EXPECT_TRUE(TickAndDrain().empty()) << "nothing changed since";
}

TEST_F(Controller, PulseNameGoesOutOnlyWhenNotEmptyEvenWhenForced) {
    Make(OverallConfig::kConfigSB);
    Connect();
    for (const std::string pulse : {"", "Chirp 2-12kHz 20ms"}) {
        SonarConfig c = sonar->GetSonar(0);
        c.pulse = pulse;
        sonar->SetSonar(c, 0);
        count = count + 2;  // a new connection forces everything
        const std::vector<Sent> sent = TickAndDrain();
        const auto it = std::find_if(sent.begin(), sent.end(),
                                     [](const Sent& s) { return s.type == MsgPulseName; });
        ASSERT_EQ(it != sent.end(), !pulse.empty());
        if (it != sent.end()) {
            ASSERT_EQ(it->payload.size(), 256u);
            EXPECT_EQ(std::string(reinterpret_cast<const char*>(it->payload.data())), pulse);
        }
    }
}

TEST_F(Controller, RecordsThatMustNotSendAndTransmitSetBeforeTheLinkIsUp) {
    Make(OverallConfig::kConfigSBSS);
    SonarConfig c = sonar->GetSonar(0);
    c.flags = 0;
    c.pulse = "Chirp 2-12kHz 20ms";
    sonar->SetSonar(c, 0);
    c = sonar->GetSonar(1);
    c.subsystem = 129;
    sonar->SetSonar(c, 1);
    c = sonar->GetSonar(2);
    c.sonarOn = 1;  // the link is not up yet
    sonar->SetSonar(c, 2);
    const std::vector<Sent> sent = Connect();
    std::vector<Sent> sub0;
    for (const Sent& s : sent) {
        EXPECT_NE(s.subsystem, 129);
        EXPECT_NE(s.type, MsgPulseName) << "only sub 0 names a pulse, and it is not in use";
        if (s.type != MsgOptionCheck && s.type != MsgSystemStatus) sub0.push_back(s);
    }
    EXPECT_EQ(Types(sub0, 0), (std::vector<std::string>{"122q", "1025q", "83", "124q", "142q"}));
    const auto on = std::find_if(sent.begin(), sent.end(), [](const Sent& s) {
        return s.type == MsgSonarOn && s.subsystem == 21;
    });
    ASSERT_NE(on, sent.end());
    EXPECT_EQ(on->Word(), 1);
}

TEST_F(Controller, SampleRateRepliesSendWindowsOnlyWhenMarkedOrChanged) {
    Make(OverallConfig::kConfigSBSS);
    SonarConfig c = sonar->GetSonar(1);
    c.windowUnits = SonarConfig::UnitsMeters;
    c.delay = 3.0f;
    c.depth = 75.0f;
    c.pixelDecimator = 4;
    c.storageDepth = 101.0f;
    sonar->SetSonar(c, 1);
    Connect();
    // The full send marked the windows: the first rate reply sends them with that rate.
    std::vector<Sent> sent = Reply(MsgSampleRate, 20, Word(20000000));
    EXPECT_EQ(Types(sent),
              (std::vector<std::string>{"441@20", "441@20", "81@20", "81@20", "124q@20"}));
    // Storage: 101 m at 20000/s is 2693.3 (+ 0.49) -> 2693 -> 2694; delay 0; decimators 1.
    EXPECT_EQ(GetLE<std::uint16_t>(sent[0].payload, 2), 1);
    EXPECT_EQ(sent[0].Word(1), 0);
    EXPECT_EQ(sent[0].Word(2), 2694);
    EXPECT_EQ(sent[0].Word(3), 5388);
    // Display: 75 m -> 2000 samples / 4 = 500; 3 m -> 80 / 4 = 20.
    EXPECT_EQ(GetLE<std::uint16_t>(sent[2].payload, 2), 4);
    EXPECT_EQ(sent[2].Word(1), 20);
    EXPECT_EQ(sent[2].Word(2), 500);
    EXPECT_EQ(sent[2].channel, 0);
    EXPECT_EQ(sent[3].channel, 1);

    EXPECT_TRUE(Reply(MsgSampleRate, 20, Word(20000000)).empty()) << "same rate, no mark";
    EXPECT_EQ(Types(Reply(MsgSampleRate, 20, Word(40000000)), 20),
              (std::vector<std::string>{"441", "441", "81", "81", "124q"}));
    EXPECT_EQ(sonar->Controller().AdcRateReadBack(1), 40000000);
    EXPECT_TRUE(Reply(MsgSampleRate, 99, Word(1)).empty()) << "no such subsystem";
}

TEST_F(Controller, RepliesAreReadByTheirTable) {
    Make(OverallConfig::kConfigSBSS);
    Connect();
    SonarIF& s = *sonar;
    const int changes = s.GetChangeCount();
    const int replyChanges = s.GetReplyChangeCount();

    Reply(MsgSubsystemValue, 21, Word(77));
    EXPECT_EQ(s.GetSonar(2).subsystemValue, 77);
    EXPECT_EQ(s.GetChangeCount(), changes + 1);
    Reply(MsgPingRate, 20, Word(4500));
    EXPECT_EQ(s.RateText(1), "Ping Rate 4.500000, ADC Rate 1.000000");
    EXPECT_EQ(s.GetReplyChangeCount(), replyChanges + 1);

    // Ignored: wrong size, wrong direction, wrong source, unmatched, and 129.
    Reply(MsgPingRate, 20, {1, 2});
    Reply(MsgPingRate, 20, Word(1), DirSet);
    Reply(MsgPingRate, 20, Word(2), DirReply, SourceLocal);
    Reply(MsgPingRate, 5, Word(3));
    Reply(MsgCoupling, 20, std::vector<std::uint8_t>(12));
    EXPECT_EQ(s.Controller().PingRateReadBack(1), 4500);
    EXPECT_EQ(s.GetReplyChangeCount(), replyChanges + 1);

    std::vector<std::uint8_t> status(100);
    for (int w = 0; w < 25; ++w) PutLE<std::int32_t>(status, w * 4, w * 11);
    Reply(MsgSystemStatus, 0, std::vector<std::uint8_t>(99, 0xFF));
    EXPECT_EQ(s.GetStatus()[24], 0) << "short status kept nothing";
    Reply(MsgSystemStatus, 0, status);
    EXPECT_EQ(s.GetStatus()[24], 264);
    Reply(MsgStorageStatus, 0, std::vector<std::uint8_t>(331, 1));
    EXPECT_TRUE(s.GetRecorderStatus().empty());
    Reply(MsgStorageStatus, 0, std::vector<std::uint8_t>(332, 2));
    EXPECT_EQ(s.GetRecorderStatus().size(), 332u);

    // Pulse list: names up to the first empty entry; size 0 empties them.
    std::vector<std::uint8_t> pulses(3 * 360);
    std::memcpy(pulses.data(), "Chirp A", 7);
    std::memcpy(pulses.data() + 360, "Chirp B", 7);
    pulses.push_back(9);  // a partial entry is not a pulse
    Reply(MsgPulseList, 0, pulses);
    EXPECT_EQ(s.GetPulseNames(0), (std::vector<std::string>{"Chirp A", "Chirp B"}));
    EXPECT_EQ(s.GetPulseBlockVersion(0), 1);
    EXPECT_EQ(s.Controller().GetPulseCount(0), 3);
    Reply(MsgPulseList, 0, {});
    EXPECT_TRUE(s.GetPulseNames(0).empty());
    EXPECT_TRUE(s.GetPulseBlock(0).empty());
    EXPECT_EQ(s.GetPulseBlockVersion(0), 2);
    EXPECT_EQ(s.GetReplyCount(), 11) << "every reply counts, read or not";
}

TEST_F(Controller, StatusQueryAtMostEveryTenSecondsAndAfterTheClockWentBack) {
    Make(OverallConfig::kConfigSB);
    Connect();
    auto statusQueries = [](const std::vector<Sent>& v) {
        return std::count_if(v.begin(), v.end(),
                             [](const Sent& s) { return s.type == MsgSystemStatus; });
    };
    EXPECT_EQ(statusQueries(TickAndDrain(9000)), 0);
    EXPECT_EQ(statusQueries(TickAndDrain(1001)), 1);
    Reply(MsgSystemStatus, 0, std::vector<std::uint8_t>(100));  // a reply restarts the wait
    EXPECT_EQ(statusQueries(TickAndDrain(9999)), 0);
    ticks.SetTick(5);
    EXPECT_EQ(statusQueries(TickAndDrain(0)), 1);
}

TEST_F(Controller, SensorsAndRecorderFollowTheirFlags) {
    Make(OverallConfig::kConfigSB);
    RecorderConfig r = sonar->GetRecorder();
    r.flags |= RecorderConfig::kFlagRecorderOn;
    r.recordFile = "line7";
    r.masterEnable = 1;
    sonar->SetRecorder(r);
    SensorConfig sensor = sonar->GetSensor();
    sensor.flags = SensorConfig::kFlagSensorInputs;
    sonar->SetSensor(sensor);
    std::vector<Sent> sent = Connect();
    ASSERT_GE(sent.size(), 14u);
    const std::vector<Sent> tail(sent.end() - 14, sent.end() - 1);  // before the status query
    EXPECT_EQ(Types(tail).front(), "83@102");
    EXPECT_EQ(tail[1].Word(), 1) << "sensor inputs on";
    EXPECT_EQ(Types(tail).at(11), "427@0");
    EXPECT_EQ(Types(tail).at(12), "420@0");

    sensor.pitchRollSelect = 1;
    sonar->SetSensor(sensor);
    sent = TickAndDrain();
    const auto pr = std::find_if(sent.begin(), sent.end(),
                                 [](const Sent& s) { return s.type == MsgPitchRollSelect; });
    ASSERT_NE(pr, sent.end());
    EXPECT_EQ(pr->channel, 3);
    EXPECT_EQ(pr->subsystem, SubSonarSensors);
    EXPECT_TRUE(pr->payload.empty());
}

TEST_F(Controller, R90SendsFixedWindowsTwiceAndStreamFlags) {
    Make(OverallConfig::kConfigR90);
    SonarConfig c = sonar->GetSonar(0);
    c.flags = SonarConfig::kFlagInUse | SonarConfig::kFlagStreamHigh;
    c.inputChannels = 2;
    sonar->SetSonar(c, 0);
    std::vector<Sent> sent = Connect();
    std::vector<std::string> seq = Types(sent);
    const auto low = std::find(seq.begin(), seq.end(), "1201@20");
    ASSERT_NE(low, seq.end());
    EXPECT_EQ(*(low + 1), "1200@20");
    EXPECT_EQ(sent[low - seq.begin()].Word(), 0);
    EXPECT_EQ(sent[low - seq.begin() + 1].Word(), 1);

    sent = Reply(MsgSampleRate, 20, Word(20000000));
    std::vector<std::string> windows;
    for (const Sent& s : sent) {
        if (s.type == MsgWindow)
            windows.push_back(Types({s}).front() + "/" + std::to_string(s.channel));
    }
    EXPECT_EQ(windows, (std::vector<std::string>{"81@20/0", "81@21/0", "81@20/1", "81@21/1"}));
    const Sent& w =
        *std::find_if(sent.begin(), sent.end(), [](const Sent& s) { return s.type == MsgWindow; });
    EXPECT_EQ(w.Word(1), 0);
    EXPECT_EQ(w.Word(2), 200000);
    EXPECT_EQ(w.Word(3), 1000) << "the last word keeps its computed value";
}

}  // namespace
}  // namespace halvo::test

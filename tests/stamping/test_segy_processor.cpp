// The stamping observer on one bus stage: sensors, marks, channels, navigation and its lock.

#include <gtest/gtest.h>

#include <tuple>

#include <thread>

#include "stamping/StampingRig.h"

namespace halvo {
namespace {

using namespace test;
using F = TraceField;

TEST(SegyDataProcessor, EachSourceIsFreshFor4999MsAndStaleAt5000) {
    const struct {
        const char* name;
        SonarMessage message;
        F field;
        std::int32_t value;
    } cases[] = {
        {"attitude", PitchRoll(1000, 0, 0, 4500), F::Pitch, 1000},
        {"altitude", Msg(MsgAltitude, 44, {{16, 12345, 4}}), F::Altitude, 12345},
        {"pressure", Msg(MsgPressure, 76, {{12, 29400, 4}, {24, 1, 4}}), F::PressurePSI, 29400},
        {"analog", Msg(MsgAnalog, 36, {{34, 12}}), F::AnnotationWord11, 12},
        {"navigation", Nmea("$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K"), F::CoordUnits, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        StampingRig rig;
        auto stamped = [&] { return Field(rig.Stamp(Trace()), c.field); };
        EXPECT_EQ(stamped(), 0) << "never arrived";
        rig.Stamp(c.message.Clone());
        rig.ticks.AdvanceTick(4999);
        EXPECT_EQ(stamped(), c.value) << "at 4999 ms";
        rig.ticks.AdvanceTick(1);
        EXPECT_EQ(stamped(), 0) << "at 5000 ms";
        rig.Stamp(c.message.Clone());
        rig.ticks.AdvanceTick(static_cast<std::uint32_t>(-1));  // a tick that ran backward
        EXPECT_EQ(stamped(), 0) << "backward";
    }
}

TEST(SegyDataProcessor, AttitudeBiasHeaveAndDepthHeave) {
    StampingRig rig;
    rig.general.Modify([](GeneralValues& g) { g.PitchBias = 10.0f; });
    // -175 degrees less 10 is 175 (31857), not -185; 310 mm is 10.33 samples of 0.03 m.
    rig.Stamp(PitchRoll(-31856, 0, 310, 9000));
    SonarMessage t = rig.Stamp(Trace());
    EXPECT_EQ(Field(t, F::Pitch), 31857);
    EXPECT_EQ(Field(t, F::ValidityFlags), 0x20);
    EXPECT_EQ(Field(t, F::Heading), 9000);
    EXPECT_EQ(Field(t, F::HeaveCompensationSamples), 10);
    // A heave needing more than 10000 samples writes 0 (32.767 m at 1 us per sample).
    rig.Stamp(PitchRoll(0, 0, 32767, 0));
    t = rig.Stamp(Trace(0, 0, {{F::SampleIntervalNS, 1000}, {F::HeaveCompensationSamples, 5}}));
    EXPECT_EQ(Field(t, F::HeaveCompensationSamples), 0);

    // Depth heave replaces it, one low-pass per channel. Filter 31: 589 mm is 19.63 samples,
    // then filter 60.45: 559.55 mm is 18.65.
    rig.general.Modify([](GeneralValues& g) { g.HeaveSensorSource = 1; });
    rig.Stamp(PitchRoll(0, 0, 310, 0));
    for (const auto& [ch, expected] : {std::pair{0, -19}, {0, -18}, {1, -19}}) {
        t = rig.Stamp(Trace(0, static_cast<std::uint8_t>(ch), {{F::DepthMM, 620}}));
        EXPECT_EQ(Field(t, F::HeaveCompensationSamples), expected) << ch;
    }
}

TEST(SegyDataProcessor, AnalogTemperatureGivesTheDepthOfPressure) {
    StampingRig rig;
    rig.general.Modify([](GeneralValues& g) {
        g.TemperatureGain = 0.1f;  // channel 7 reading 250: 25.0 C
        g.TemperatureOffset = 0.0f;
    });
    rig.Stamp(Msg(MsgAnalog, 36, {{26, 250}}));
    rig.Stamp(Msg(MsgPressure, 76, {{12, 14514700, 4}, {24, 1, 4}}));  // 1000 bars
    SonarMessage t = rig.Stamp(Trace());
    EXPECT_EQ(Field(t, F::Temperature), 250);
    EXPECT_NEAR(Field(t, F::DepthMM), 9472836, 1);  // by the check value 1062.53817 kg/m^3
    // 200.0 C is not believable: the trace keeps its own; a short 2040 is not taken.
    rig.Stamp(Msg(MsgAnalog, 36, {{26, 2000}}));
    rig.Stamp(Msg(MsgAnalog, 35, {{12, 9}}));
    t = rig.Stamp(Trace(0, 0, {{F::Temperature, 123}}));
    EXPECT_EQ(Field(t, F::Temperature), 123);
    EXPECT_EQ(Field(t, F::AnnotationWord7), 2000);
    EXPECT_EQ(Field(t, F::AnnotationWord0), 0);
}

TEST(SegyDataProcessor, MarksChannelsAndAntennaFields) {
    StampingRig rig;
    GeneralValues g;
    g.MarkNumber = 5;  // present at start-up: stamps nothing
    g.GPSFlags = 1;
    g.NMEAantennaeO = 150;
    rig.general.Update(g);
    EXPECT_EQ(Field(rig.Stamp(Trace(0, 0)), F::MarkNumber), 0);
    g.MarkNumber = 7;
    rig.general.Update(g);
    int marked = 0;
    for (int i = 0; i < 12; ++i) {
        const std::int32_t mark =
            Field(rig.Stamp(Trace(0, static_cast<std::uint8_t>(i % 4))), F::MarkNumber);
        EXPECT_TRUE(mark == 0 || (mark == 7 && i < 4)) << i;
        marked += mark != 0;
    }
    EXPECT_EQ(marked, 4);
    // Defaults: 20 starts at channel 2; every matching sonar applies, the last wins.
    EXPECT_EQ(Field(rig.Stamp(Trace(20, 1)), F::ChannelNumber), 3);
    EXPECT_EQ(Field(rig.Stamp(Trace(99, 5)), F::ChannelNumber), 5);
    rig.processor.SetSonarChannels({{20, 2}, {20, 10}});
    EXPECT_EQ(Field(rig.Stamp(Trace(20, 1)), F::ChannelNumber), 11);
    // The antenna offsets go into live traces only.
    EXPECT_EQ(Field(rig.Stamp(Trace()), F::NMEAAntennaeO), 150);
    EXPECT_EQ(Field(rig.Stamp(Trace(), SourcePlayback), F::NMEAAntennaeO), 0);
}

TEST(SegyDataProcessor, PlaybackRebuildsAttitudeAndAppliesTheBiasAgain) {
    StampingRig rig;
    rig.general.Modify([](GeneralValues& g) { g.PitchBias = 10.0f; });
    auto played = [] {
        return Trace(0, 0,
                     {{F::ValidityFlags, 0x20},
                      {F::Pitch, -31856},
                      {F::Heading, 4500},
                      {F::HeaveCompensationSamples, 11}});  // 330 mm and back
    };
    const SonarMessage p = rig.Stamp(played(), SourcePlayback);
    EXPECT_EQ(Field(p, F::Pitch), 31857);
    EXPECT_EQ(Field(p, F::Heading), 4500);
    EXPECT_EQ(Field(p, F::HeaveCompensationSamples), 11);
    StampingRig live;  // live, nothing rebuilds it
    EXPECT_EQ(Field(live.Stamp(played()), F::Pitch), -31856);
}

TEST(SegyDataProcessor, OnlyTheChosenSentenceMovesThePosition) {
    const char* gll = "$GPGLL,5030.5000,N,00415.2500,w,120000.00,A";
    const char* gga = "$GPGGA,120000.00,5030.5000,S,00415.2500,W,1,08,0.9,10.0,M,,,,";
    const char* rmc = "$GPRMC,120000,A,5030.5000,n,00415.2500,w,5.5,54.7,290224,,";
    const std::tuple<std::int32_t, const char*, std::int32_t, std::int32_t, std::int32_t> cases[] =
        {
            {1, gll, 30305000, 2552500, 2},    // GLL's "w" is not honoured
            {2, gga, -30305000, -2552500, 2},  //
            {0, rmc, 30305000, -2552500, 2},   // RMC's letters are folded to upper case
            {1, gga, 0, 0, 1},                 // data but no position: "GPS:NoLL"
        };
    for (const auto& [latLon, sentence, y, x, status] : cases) {
        StampingRig rig;
        NavigationConfig nav;
        nav.latLonSource = latLon;
        rig.navStore.Set(nav);
        rig.Stamp(Nmea(sentence));
        const SonarMessage t = rig.Stamp(Trace());
        EXPECT_EQ(Field(t, F::GroupCoordY), y) << sentence;
        EXPECT_EQ(Field(t, F::GroupCoordX), x) << sentence;
        EXPECT_EQ(Field(t, F::NMEAYear), 0) << "ZDA chosen and absent: no time";
        EXPECT_EQ(rig.processor.getNavStatus(), status) << sentence;
    }
}

// Stamping itself stops at 5000 ms (EachSourceIsFreshFor4999MsAndStaleAt5000); the status lasts
// longer.
TEST(SegyDataProcessor, ZdaTimeIsStampedAndTheStatusLastsTenSeconds) {
    StampingRig rig;
    rig.Stamp(Nmea("$GPGLL,5030.5000,N,00415.2500,E,120000.00,A"));
    rig.Stamp(Nmea("$GPZDA,120001.00,29,02,2024,00,00"));
    const SonarMessage t = rig.Stamp(Trace());
    EXPECT_EQ(Field(t, F::NMEASecond), 1);
    EXPECT_EQ(Field(t, F::NMEADay), 60);
    rig.ticks.AdvanceTick(5000);
    EXPECT_EQ(rig.processor.getNavStatus(), 2);
    rig.ticks.AdvanceTick(5000);
    EXPECT_EQ(rig.processor.getNavStatus(), 0);
}

TEST(SegyDataProcessor, NavigationLockReportsAReleaseItDoesNotHold) {
    StampingRig rig;
    NavigationState& nav = rig.processor.Navigation();
    nav.Release();
    EXPECT_EQ(rig.boxes, std::vector<std::string>{"Lock Error|Nav Data Lock Error"});
    nav.Acquire();
    nav.Acquire();                               // nests on one thread
    std::thread([&] { nav.Release(); }).join();  // not the holder: reported, lock untouched
    EXPECT_EQ(rig.boxes.size(), 2u);
    nav.Release();
    nav.Release();
    EXPECT_EQ(nav.Depth(), 0);
    rig.Stamp(Nmea("$GPGLL,5030.5000,N,00415.2500,E,120000.00,A"));  // the bus can take it
    EXPECT_EQ(rig.processor.getNavStatus(), 2);
    EXPECT_EQ(rig.boxes.size(), 2u);
}

TEST(SegyDataProcessor, SentencesSteerTheClockExceptInPlayback) {
    for (const int source : {SourceSonarData, SourcePlayback}) {
        StampingRig rig;
        NavigationConfig nav;
        nav.tsEnable = 1;
        rig.navStore.Set(nav);
        const TimeValue before = rig.clock.Now();
        // Read at 12:00:00, saying 12:00:03: the fast filter gives 300, a = 15 ms.
        rig.Stamp(Nmea("$GPZDA,120003.00,29,02,2024,00,00"), source);
        EXPECT_EQ(ProgramClock::DiffMs(rig.clock.Now(), before), source == SourcePlayback ? 0 : 15);
    }
}

}  // namespace
}  // namespace halvo

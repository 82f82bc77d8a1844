// The stamping observer end to end on one bus stage: sensors, marks, channels, navigation and
// the navigation lock, on a fake tick.

#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "dsp/StampingRig.h"

namespace halvo {
namespace {

using test::Field;
using test::StampingRig;

// Each source alone: what it writes, and a check that it did.
struct FreshCase {
    const char* name;
    std::function<SonarMessage()> message;
    std::function<bool(const SonarMessage&)> stamped;
};

const FreshCase kFreshCases[] = {
    {"attitude", [] { return test::PitchRoll(1000, -2000, 0, 4500); },
     [](const SonarMessage& t) {
         return (Field(t, TraceField::ValidityFlags) & 0x20) != 0 &&
                Field(t, TraceField::Pitch) == 1000 && Field(t, TraceField::Roll) == -2000 &&
                Field(t, TraceField::Heading) == 4500;
     }},
    {"altitude", [] { return test::Altitude(12345); },
     [](const SonarMessage& t) { return Field(t, TraceField::Altitude) == 12345; }},
    {"pressure", [] { return test::Pressure(29400, 0, 0x01); },
     [](const SonarMessage& t) {
         return Field(t, TraceField::PressurePSI) == 29400 && Field(t, TraceField::DepthMM) > 0;
     }},
    {"sound speed", [] { return test::Pressure(0, 1512250, 0x10); },
     [](const SonarMessage& t) { return test::FloatField(t, TraceField::SoundSpeed) == 1512.25f; }},
    {"analog",
     [] {
         return test::Analog({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
     },
     [](const SonarMessage& t) {
         return Field(t, TraceField::AnnotationWord0) == 1 &&
                Field(t, TraceField::AnnotationWord11) == 12;
     }},
    {"navigation", [] { return test::Nmea("$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K", 1709208000); },
     [](const SonarMessage& t) { return Field(t, TraceField::CoordUnits) == 2; }},
};

TEST(SegyDataProcessor, EachSourceIsFreshFor4999MsAndStaleAt5000) {
    for (const FreshCase& c : kFreshCases) {
        StampingRig rig;
        GeneralValues g;
        g.TemperatureChannel = 8;  // keep the analog case to the annotation words
        rig.SetGeneral(g);
        rig.Feed(c.message());
        rig.ticks.AdvanceTick(4999);
        EXPECT_TRUE(c.stamped(rig.Stamp(test::Trace()))) << c.name << " at 4999 ms";
        rig.ticks.AdvanceTick(1);
        const SonarMessage stale = rig.Stamp(test::Trace());
        EXPECT_FALSE(c.stamped(stale)) << c.name << " at 5000 ms";
        EXPECT_EQ(Field(stale, TraceField::ValidityFlags), 0) << c.name;
        // A tick that ran backward counts as expired.
        rig.Feed(c.message());
        rig.ticks.AdvanceTick(static_cast<std::uint32_t>(-1));
        EXPECT_FALSE(c.stamped(rig.Stamp(test::Trace()))) << c.name << " backward";
    }
}

TEST(SegyDataProcessor, ASourceThatNeverArrivedIsNotFreshEvenAtTickZero) {
    StampingRig rig;
    rig.ticks.SetTick(0);
    SonarMessage t = test::Trace();
    TraceHeaderView(t.Payload()).SetInt(TraceField::Pitch, 77);
    t = rig.Stamp(std::move(t));
    EXPECT_EQ(Field(t, TraceField::Pitch), 77);
    EXPECT_EQ(Field(t, TraceField::ValidityFlags), 0);
    EXPECT_EQ(Field(t, TraceField::CoordUnits), 0);
}

TEST(SegyDataProcessor, AttitudeTakesTheBiasesAndTheHeaveInSamples) {
    StampingRig rig;
    GeneralValues g;
    g.PitchBias = 10.0f;
    g.RollBias = -10.0f;
    rig.SetGeneral(g);
    // -175 degrees of pitch, 175 of roll; 310 mm of heave at 0.03 m per sample is 10.33.
    rig.Feed(test::PitchRoll(-31856, 31856, 310, 9000));
    const SonarMessage t = rig.Stamp(test::Trace());
    EXPECT_EQ(Field(t, TraceField::Pitch), 31857);  // 175 degrees, not -185
    EXPECT_EQ(Field(t, TraceField::Roll), -31857);  // -175
    EXPECT_EQ(Field(t, TraceField::Heading), 9000);
    EXPECT_EQ(Field(t, TraceField::HeaveCompensationSamples), 10);

    // A heave that needs more than 10000 samples writes 0 (32.767 m at 1 us per sample).
    rig.Feed(test::PitchRoll(0, 0, 32767, 0));
    SonarMessage wide = test::Trace(0, 0, 1000);
    TraceHeaderView(wide.Payload()).SetInt(TraceField::HeaveCompensationSamples, 5);
    EXPECT_EQ(Field(rig.Stamp(std::move(wide)), TraceField::HeaveCompensationSamples), 0);
}

TEST(SegyDataProcessor, DepthHeaveFiltersPerChannelAndReplacesTheAttitudeHeave) {
    StampingRig rig;
    GeneralValues g;
    g.HeaveSensorSource = 1;
    rig.SetGeneral(g);
    rig.Feed(test::PitchRoll(0, 0, 300, 0));  // would give 10 samples
    auto trace = [&](std::uint8_t channel) {
        SonarMessage t = test::Trace(0, channel);
        TraceHeaderView(t.Payload()).SetInt(TraceField::DepthMM, 620);
        return rig.Stamp(std::move(t));
    };
    // filter 0.05 * 620 = 31; (620 - 31) mm over 0.03 m per sample = 19.63 samples, negated.
    EXPECT_EQ(Field(trace(0), TraceField::HeaveCompensationSamples), -19);
    // filter 0.95 * 31 + 31 = 60.45; 559.55 mm is 18.65 samples.
    EXPECT_EQ(Field(trace(0), TraceField::HeaveCompensationSamples), -18);
    // Another channel has its own filter.
    EXPECT_EQ(Field(trace(1), TraceField::HeaveCompensationSamples), -19);
}

TEST(SegyDataProcessor, PressureGivesDepthAtTheAnalogTemperature) {
    StampingRig rig;
    GeneralValues g;
    g.TemperatureChannel = 7;
    g.TemperatureGain = 0.1f;
    g.TemperatureOffset = 0.0f;
    rig.SetGeneral(g);
    rig.Feed(test::Analog({0, 0, 0, 0, 0, 0, 0, 250, 0, 0, 0, 0}));  // 25.0 C
    rig.Feed(test::Pressure(14514700, 0, 0x01));                     // 1000 bars
    SonarMessage t = rig.Stamp(test::Trace());
    EXPECT_EQ(Field(t, TraceField::Temperature), 250);
    EXPECT_NEAR(Field(t, TraceField::DepthMM), 9472836, 1);

    // A reading that gives 200.0 C or more leaves the trace's own temperature.
    rig.Feed(test::Analog({0, 0, 0, 0, 0, 0, 0, 2000, 0, 0, 0, 0}));
    SonarMessage hot = test::Trace();
    TraceHeaderView(hot.Payload()).SetInt(TraceField::Temperature, 123);
    hot = rig.Stamp(std::move(hot));
    EXPECT_EQ(Field(hot, TraceField::Temperature), 123);
    EXPECT_EQ(Field(hot, TraceField::AnnotationWord7), 2000);
    // An analog message too short for its readings is not taken.
    rig.Feed(test::Analog({9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9}, 35));
    EXPECT_EQ(Field(rig.Stamp(test::Trace()), TraceField::AnnotationWord0), 0);
}

TEST(SegyDataProcessor, ANewMarkLandsOnceOnEveryChannel) {
    StampingRig rig;
    GeneralValues g;
    g.MarkNumber = 5;  // a mark present at start-up stamps nothing
    rig.SetGeneral(g);
    for (std::uint8_t ch = 0; ch < 4; ++ch) {
        EXPECT_EQ(Field(rig.Stamp(test::Trace(0, ch)), TraceField::MarkNumber), 0);
    }
    g.MarkNumber = 7;
    rig.SetGeneral(g);
    int marked = 0;
    for (int round = 0; round < 3; ++round) {
        for (std::uint8_t ch = 0; ch < 4; ++ch) {
            const std::int32_t mark = Field(rig.Stamp(test::Trace(0, ch)), TraceField::MarkNumber);
            if (mark != 0) {
                EXPECT_EQ(mark, 7);
                EXPECT_EQ(round, 0) << "channel " << int(ch);
                ++marked;
            }
        }
    }
    EXPECT_EQ(marked, 4);
}

TEST(SegyDataProcessor, ChannelNumberBecomesAbsoluteByEveryMatchingSonar) {
    StampingRig rig;
    struct Case {
        std::uint8_t subsystem, channel;
        std::int32_t expected;
    };
    // Defaults: 0 at 0, 20 at 2, 21 at 4, 3 at 6. Subsystem 99 keeps its own number (its byte).
    for (const Case& c : {Case{0, 1, 1}, Case{20, 1, 3}, Case{21, 0, 4}, Case{99, 5, 5}}) {
        EXPECT_EQ(Field(rig.Stamp(test::Trace(c.subsystem, c.channel)), TraceField::ChannelNumber),
                  c.expected);
    }
    rig.processor.SetSonarChannels({{20, 2}, {20, 10}});
    EXPECT_EQ(Field(rig.Stamp(test::Trace(20, 1)), TraceField::ChannelNumber), 11);
}

TEST(SegyDataProcessor, PlaybackRebuildsAttitudeFromTheTraceAndAppliesTheBiasAgain) {
    StampingRig rig;
    GeneralValues g;
    g.PitchBias = 10.0f;
    rig.SetGeneral(g);
    auto played = [] {
        SonarMessage t = test::Trace();
        TraceHeaderView th(t.Payload());
        th.SetInt(TraceField::ValidityFlags, 0x20);
        th.SetInt(TraceField::Pitch, -31856);
        th.SetInt(TraceField::Heading, 4500);
        th.SetInt(TraceField::HeaveCompensationSamples, 11);  // 330 mm and back
        return t;
    };
    const SonarMessage p = rig.Stamp(played(), SourcePlayback);
    EXPECT_EQ(Field(p, TraceField::Pitch), 31857);
    EXPECT_EQ(Field(p, TraceField::Heading), 4500);
    EXPECT_EQ(Field(p, TraceField::HeaveCompensationSamples), 11);
    // Live, the same trace keeps what it came with: there is no attitude message.
    StampingRig live;
    live.SetGeneral(g);
    EXPECT_EQ(Field(live.Stamp(played(), SourceSonarData), TraceField::Pitch), -31856);
}

TEST(SegyDataProcessor, AntennaOffsetsAreStampedIntoLiveTracesOnly) {
    StampingRig rig;
    GeneralValues g;
    g.GPSFlags = 0x01;
    g.NMEAantennaeO = 150;
    g.NMEAantennaeR = -250;
    rig.SetGeneral(g);
    const SonarMessage live = rig.Stamp(test::Trace(), SourceSonarData);
    EXPECT_EQ(Field(live, TraceField::NMEAAntennaeO), 150);
    EXPECT_EQ(Field(live, TraceField::NMEAAntennaeR), -250);
    const SonarMessage played = rig.Stamp(test::Trace(), SourcePlayback);
    EXPECT_EQ(Field(played, TraceField::NMEAAntennaeO), 0);
}

// Sentence times step by one second so that every record's stamp is new.
SonarMessage Sentence(const char* text, int& second) {
    return test::Nmea(text, static_cast<std::int32_t>(test::kWallSeconds + second++));
}

TEST(SegyDataProcessor, OnlyTheChosenSentenceMovesThePosition) {
    struct Case {
        std::int32_t latLonSource;
        const char* sentence;
        std::int32_t groupY, groupX;  // expected
        int status;
    };
    const char* gll = "$GPGLL,5030.5000,N,00415.2500,w,120000.00,A";
    const char* gga = "$GPGGA,120000.00,5030.5000,S,00415.2500,W,1,08,0.9,10.0,M,,,,";
    const char* rmc = "$GPRMC,120000,A,5030.5000,n,00415.2500,w,5.5,54.7,290224,,";
    const Case cases[] = {
        {1, gll, 30305000, 2552500, 2},    // "w" of GLL is not honoured
        {2, gga, -30305000, -2552500, 2},  //
        {0, rmc, 30305000, -2552500, 2},   // RMC's letters are folded to upper case
        {1, gga, 0, 0, 1},                 // GGA alone with GLL chosen: data but no position
        {0, gll, 0, 0, 1},
    };
    for (const Case& c : cases) {
        StampingRig rig;
        NavigationConfig nav;
        nav.latLonSource = c.latLonSource;
        rig.SetNav(nav);
        int second = 0;
        rig.Feed(Sentence(c.sentence, second));
        const SonarMessage t = rig.Stamp(test::Trace());
        EXPECT_EQ(Field(t, TraceField::GroupCoordY), c.groupY) << c.sentence;
        EXPECT_EQ(Field(t, TraceField::GroupCoordX), c.groupX) << c.sentence;
        EXPECT_EQ(rig.processor.getNavStatus(), c.status) << c.sentence;
    }
}

TEST(SegyDataProcessor, StampingStopsAfterFiveSecondsAndStatusAfterTen) {
    StampingRig rig;
    int second = 0;
    rig.Feed(Sentence("$GPGLL,5030.5000,N,00415.2500,E,120000.00,A", second));
    rig.Feed(Sentence("$GPZDA,120001.00,29,02,2024,00,00", second));
    const SonarMessage t = rig.Stamp(test::Trace());
    EXPECT_EQ(Field(t, TraceField::NMEAHour), 12);
    EXPECT_EQ(Field(t, TraceField::NMEASecond), 1);
    EXPECT_EQ(Field(t, TraceField::NMEADay), 60);
    EXPECT_EQ(Field(t, TraceField::NMEAYear), 2024);
    rig.ticks.AdvanceTick(5000);
    EXPECT_EQ(Field(rig.Stamp(test::Trace()), TraceField::CoordUnits), 0);
    EXPECT_EQ(rig.processor.getNavStatus(), 2);
    rig.ticks.AdvanceTick(4999);
    EXPECT_EQ(rig.processor.getNavStatus(), 2);
    rig.ticks.AdvanceTick(1);
    EXPECT_EQ(rig.processor.getNavStatus(), 0);
}

TEST(SegyDataProcessor, ZdaSelectedButAbsentLeavesTheTimeEmpty) {
    StampingRig rig;
    int second = 0;
    rig.Feed(Sentence("$GPGLL,5030.5000,N,00415.2500,E,120000.00,A", second));
    const SonarMessage t = rig.Stamp(test::Trace());
    EXPECT_EQ(Field(t, TraceField::GroupCoordY), 30305000);
    EXPECT_EQ(Field(t, TraceField::NMEAHour), 0);
    EXPECT_EQ(Field(t, TraceField::NMEAYear), 0);
}

TEST(SegyDataProcessor, NavigationLockReportsAReleaseItDoesNotHold) {
    StampingRig rig;
    NavigationState& nav = rig.processor.Navigation();
    nav.Release();
    ASSERT_EQ(rig.notifier.boxes.size(), 1u);
    EXPECT_EQ(rig.notifier.boxes[0].first, "Lock Error");
    EXPECT_EQ(rig.notifier.boxes[0].second, "Nav Data Lock Error");

    nav.Acquire();
    nav.Acquire();  // nests on one thread
    EXPECT_TRUE(nav.ConfirmHeld());
    std::thread other([&] { nav.Release(); });  // not the holder: reported, lock untouched
    other.join();
    EXPECT_EQ(rig.notifier.boxes.size(), 2u);
    nav.Release();
    nav.Release();
    EXPECT_EQ(nav.Depth(), 0);
    EXPECT_EQ(rig.notifier.boxes.size(), 2u);
    // The bus thread can take it again.
    rig.Feed(test::Nmea("$GPGLL,5030.5000,N,00415.2500,E,120000.00,A", 1709208000));
    EXPECT_EQ(rig.processor.getNavStatus(), 2);
}

TEST(SegyDataProcessor, SentencesSteerTheClockExceptInPlayback) {
    for (const int source : {SourceSonarData, SourcePlayback}) {
        StampingRig rig;
        NavigationConfig nav;
        nav.tsEnable = 1;
        rig.SetNav(nav);
        const TimeValue before = rig.clock.Now();
        // Read at 12:00:00, saying 12:00:03: 3000 ms behind, the fast filter: 300, a = 15.
        rig.Feed(test::Nmea("$GPZDA,120003.00,29,02,2024,00,00", 1709208000), source);
        const std::int32_t moved = ProgramClock::DiffMs(rig.clock.Now(), before);
        EXPECT_EQ(moved, source == SourcePlayback ? 0 : 15) << source;
    }
}

}  // namespace
}  // namespace halvo

#include <gtest/gtest.h>

#include <fstream>
#include <vector>

#include "core/MessageTypes.h"
#include "storage/StorageRig.h"

namespace halvo {
namespace {

using test::StorageRig;

TEST(Playback, PacingOnTheIdleTick) {
    struct Step {
        std::uint32_t tickMs;
        int ticks;
        std::uint32_t posted;  // in all, after these ticks
    };
    struct Case {
        const char* what;
        int rate;
        std::vector<Step> steps;
    };
    // Per tick: rate * tickMs / 1000, the remainder lost, at most 400.
    const std::vector<Case> cases = {
        {"5 a tick", 50, {{100, 10, 50}}},
        {"2.5 a tick: the half is lost each burst", 50, {{50, 20, 40}}},
        {"500 a tick, held to 400", 10000, {{50, 20, 8000}}},
        // The anchor stays put until one is due, so the credit builds up.
        {"one a second", 1, {{50, 19, 0}, {50, 1, 1}}},
        {"up to 5 s of a stall is made up, a longer one dropped",
         50,
         {{4000, 1, 200}, {6000, 1, 200}, {100, 1, 205}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        StorageRig rig;
        rig.MakeFile("line.hsf", 20000);
        rig.Play("line.hsf", c.rate);
        ASSERT_EQ(rig.State(), StatePlayback);
        for (const Step& step : c.steps) {
            for (int i = 0; i < step.ticks; ++i) rig.Idle(step.tickMs);
            EXPECT_EQ(rig.Posted(), step.posted);
        }
    }
}

TEST(Playback, RateZeroHaltsWithoutChangingState) {
    StorageRig rig;
    rig.MakeFile("line.hsf", 100);
    rig.Play("line.hsf", 1);
    rig.control.PlaybackSlower();
    for (int i = 0; i < 40; ++i) rig.Idle(50);
    EXPECT_EQ(rig.Posted(), 0u);
    EXPECT_EQ(rig.State(), StatePlayback);
    rig.control.PlaybackFaster();
    EXPECT_EQ(rig.control.getSettings().playbackRate, 1);
    // The anchor stayed where it was while the rate was 0, so the 2 s of the halt count.
    rig.Idle(0);
    EXPECT_EQ(rig.Posted(), 2u);
    for (int i = 0; i < 20; ++i) rig.Idle(50);
    EXPECT_EQ(rig.Posted(), 3u);
}

TEST(Playback, HoldsOffAboveThreeQuartersOfTheQueue) {
    StorageRig rig({}, 8);  // three quarters is 6: posting stops once 7 wait
    rig.MakeFile("line.hsf", 100);
    rig.Play("line.hsf", 10000);
    rig.Idle(50);
    EXPECT_EQ(rig.Posted(), 7u);
    const std::int64_t position = rig.processor->Reader().Position();
    rig.Idle(50);
    EXPECT_EQ(rig.Posted(), 7u);
    EXPECT_EQ(rig.processor->Reader().Position(), position);  // nothing consumed
    EXPECT_EQ(rig.State(), StatePlayback);
}

TEST(Playback, OpeningAndTheEndOfTheFile) {
    struct Case {
        const char* name;
        int cut;  // bytes removed from the end; -1: no file
        int state;
        std::uint32_t posted;
    };
    for (const Case& c : std::vector<Case>{{"00000000.000", 0, StateEndOfFile, 3},
                                           {"payload.hsf", 10, StateError, 2},
                                           {"absent.hsf", -1, StateError, 0}}) {
        SCOPED_TRACE(c.name);
        StorageRig rig;
        if (c.cut >= 0) {
            const std::string path = rig.MakeFile(c.name, 3);
            std::filesystem::resize_file(path, std::filesystem::file_size(path) - c.cut);
        }
        rig.Play(c.name, 1000);
        EXPECT_EQ(rig.State(), c.cut < 0 ? StateError : StatePlayback);
        EXPECT_EQ(rig.control.getStatus().file, rig.dir.File(c.name));
        rig.Idle(50);
        EXPECT_EQ(rig.Posted(), c.posted);
        EXPECT_EQ(rig.State(), c.state);
        EXPECT_FALSE(rig.processor->Reader().IsOpen());
        EXPECT_EQ(rig.control.getSettings().mode, ModePlayback);  // mode stays until changed
        rig.Stop();
        EXPECT_EQ(rig.State(), StateIdlePlayback);
        EXPECT_EQ(rig.control.getStatus().file, StorageStatus::kNoFile);
    }
}

TEST(Playback, PauseKeepsThePositionAndANewNameWaitsForStopAndStart) {
    StorageRig rig;
    rig.MakeFile("a.hsf", 10);
    rig.MakeFile("b.hsf", 3, 100);
    rig.Play("a.hsf", 20);
    rig.Idle(100);
    EXPECT_EQ(rig.Posted(), 2u);
    rig.control.ChangePause();
    rig.Set([](StorageSettings& s) { s.playbackFile = "b.hsf"; });
    for (int i = 0; i < 10; ++i) rig.Idle(100);
    EXPECT_EQ(rig.Posted(), 2u);
    EXPECT_EQ(rig.State(), StatePlayback);  // a paused file shows "PLAYBACK"
    rig.control.ChangePause();
    for (int i = 0; i < 10; ++i) rig.Idle(100);
    // The old file went on where it stopped: its 10 records, each once, then its end.
    EXPECT_EQ(rig.Posted(), 10u);
    EXPECT_EQ(rig.State(), StateEndOfFile);
    EXPECT_EQ(rig.control.getStatus().file, rig.dir.File("a.hsf"));
    rig.Stop();
    rig.SetMode(ModePlayback);
    rig.Idle();
    EXPECT_EQ(rig.control.getStatus().file, rig.dir.File("b.hsf"));
    for (int i = 0; i < 5; ++i) rig.Idle(100);
    EXPECT_EQ(rig.Posted(), 13u);
}

TEST(Playback, StartsIdleWhateverTheFileSays) {
    for (int acquire : {0, 1}) {
        StorageRig rig;
        std::ofstream(rig.dir.File("Defaults.Hni"))
            << "[Storage]\nMode=1\nAcquireMode=" << acquire << "\nPlaybackFile=x.hsf\n";
        rig.MakeFile("x.hsf", 5);
        rig.processor->Start();
        rig.Idle(50);
        EXPECT_EQ(rig.State(), acquire ? StateIdlePlayback : StateIdleRecord);
        EXPECT_EQ(rig.Posted(), 0u);
    }
}

TEST(Playback, LiveDataIsHiddenWhileAFilePlays) {
    StorageRig rig;
    rig.MakeFile("line.hsf", 1000);
    auto live = [](std::uint16_t type, std::uint8_t subsystem) {
        return HsfTestWriter::MakeMessage(type, 2, subsystem, 0, {});
    };
    // Not playing: live traces pass.
    SonarMessage m = live(MsgTrace, 0);
    rig.processor->ProcessMessage(&m, SourceSonarData, 0);
    EXPECT_EQ(m.type(), MsgTrace);
    rig.Play("line.hsf", 10);
    struct Case {
        std::uint16_t type;
        std::uint8_t subsystem;
        int source;
        std::uint16_t afterProcess;
        std::uint16_t afterPreview;
    };
    for (const Case& c : std::vector<Case>{{MsgTrace, 0, 2, MsgAlive, MsgAlive},
                                           {MsgTrace, 44, 2, MsgTrace, MsgAlive},
                                           {MsgTrace, 0, 5, MsgTrace, MsgTrace},
                                           {MsgNmea, 100, 2, MsgNmea, MsgAlive},
                                           {MsgAlive, 0, 2, MsgAlive, MsgAlive}}) {
        SonarMessage p = live(c.type, c.subsystem);
        rig.processor->ProcessMessage(&p, c.source, 0);
        EXPECT_EQ(p.type(), c.afterProcess) << c.type << "/" << int(c.subsystem);
        SonarMessage q = live(c.type, c.subsystem);
        rig.processor->PreviewMessage(&q, c.source, 0);
        EXPECT_EQ(q.type(), c.afterPreview) << c.type << "/" << int(c.subsystem);
    }
}

}  // namespace
}  // namespace halvo

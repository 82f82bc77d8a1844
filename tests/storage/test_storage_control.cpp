#include <gtest/gtest.h>

#include <fstream>
#include <vector>

#include "app/IniFile.h"
#include "app/Profile.h"
#include "app/SystemCoordinator.h"
#include "storage/StorageControl.h"
#include "storage/StorageTestSupport.h"

namespace halvo {
namespace {

class StorageControlTest : public testing::Test {
  protected:
    void SetUp() override { coordinator.SetActiveProfile(dir.File("Defaults.Hni")); }
    void Write(const std::string& text) { std::ofstream(dir.File("Defaults.Hni")) << text; }
    // Mode and acquire mode as given, whatever the rules did on the way there.
    static void Put(StorageControl& control, int mode, int acquire) {
        for (int i = 0; i < 2; ++i) {
            StorageSettings s = control.getSettings();
            s.mode = mode;
            s.acquireMode = acquire;
            control.setSettings(s);
        }
        ASSERT_EQ(control.getSettings().mode, mode);
        ASSERT_EQ(control.getSettings().acquireMode, acquire);
    }

    test::TempDir dir;
    SystemCoordinator coordinator;
};

TEST_F(StorageControlTest, LoadThrowsModeAwayAndHoldsTheRate) {
    Write(
        "[Storage]\nMode=1\nPlaybackRate=0\nPlaybackFile=Line7.hsf\nPlaybackDir=/data\n"
        "Flags=0\nAcquireMode=1\nPlaybackRangeType=3\nPlaybackRange0=-5\nPlaybackRange1=9\n");
    StorageControl control(coordinator);
    const StorageSettings s = control.getSettings();
    EXPECT_EQ(s.mode, ModeStop);
    EXPECT_EQ(s.playbackRate, 1);
    EXPECT_EQ(s.PlaybackPath(), "/data/Line7.hsf");
    EXPECT_FALSE(s.ReparseData());
    EXPECT_EQ(s.acquireMode, 1);
    EXPECT_EQ(s.playbackRangeType, 3);
    EXPECT_EQ(s.playbackRange0, -5);
    EXPECT_EQ(s.playbackRange1, 9);
}

TEST_F(StorageControlTest, SaveOnlyAfterALoadAndWritesTheCurrentMode) {
    {
        StorageControl untouched(coordinator);
        untouched.Save();
        EXPECT_TRUE(Profile::SectionNames(dir.File("Defaults.Hni")).empty());
    }
    StorageControl control(coordinator);
    StorageSettings s = control.getSettings();
    s.mode = ModePlayback;
    s.playbackRate = 400;
    s.playbackDir = "";
    control.setSettings(s);
    control.Save();
    const std::string file = dir.File("Defaults.Hni");
    EXPECT_EQ(Profile::ReadString(file, "Storage", "Mode", "", 20), "1");
    EXPECT_EQ(Profile::ReadString(file, "Storage", "PlaybackRate", "", 20), "400");
    StorageControl again(coordinator);
    EXPECT_EQ(again.getSettings().playbackRate, 400);
    EXPECT_EQ(again.getSettings().PlaybackPath(), "SonarData");
}

TEST_F(StorageControlTest, RequestRulesKeepModeAndAcquireModeInStep) {
    struct Case {
        int fromMode, fromAcquire, toMode, toAcquire;
        int expectMode, expectAcquire;
    };
    const std::vector<Case> cases = {
        {2, 0, 1, 0, 1, 1},  // playback forces acquire mode 1
        {2, 1, 0, 1, 0, 0},  // record forces it to 0
        {1, 1, 3, 1, 3, 1},  // pause leaves it
        {1, 1, 2, 0, 2, 0},  // stop leaves the requested value
        {1, 1, 1, 0, 2, 0},  // acquire mode 0 while playing stops
        {3, 1, 3, 0, 2, 0},  // ... and while paused
        {0, 0, 0, 1, 2, 1},  // acquire mode 1 while recording stops
        {2, 0, 2, 1, 2, 1},  // stopped: nothing else moves
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.fromMode << "/" << c.fromAcquire << " -> " << c.toMode
                                        << "/" << c.toAcquire);
        StorageControl control(coordinator);
        Put(control, c.fromMode, c.fromAcquire);
        StorageSettings s = control.getSettings();
        const int before = control.ChangeCount();
        s.mode = c.toMode;
        s.acquireMode = c.toAcquire;
        control.setSettings(s);
        EXPECT_EQ(control.getSettings().mode, c.expectMode);
        EXPECT_EQ(control.getSettings().acquireMode, c.expectAcquire);
        EXPECT_EQ(control.ChangeCount(), before + 1);
        EXPECT_EQ(control.isPlaybackMode(),
                  c.expectMode == 1 || c.expectMode == 3 || c.expectAcquire == 1);
    }
}

TEST_F(StorageControlTest, OperatorRequests) {
    StorageControl control(coordinator);
    auto mode = [&] { return control.getSettings().mode; };
    struct Case {
        int mode, acquire, expect;
    };
    for (const Case& c : std::vector<Case>{{1, 1, 3}, {3, 1, 1}, {0, 0, 2}, {2, 1, 1}, {2, 0, 0}}) {
        Put(control, c.mode, c.acquire);
        control.ChangePause();
        EXPECT_EQ(mode(), c.expect) << "Change/Pause from " << c.mode;
    }
    Put(control, 2, 0);
    control.SetPauseChecked(true);  // only while playing or paused
    EXPECT_EQ(mode(), ModeStop);
    control.RequestPlayback();
    EXPECT_EQ(mode(), ModePlayback);
    control.SetPauseChecked(true);
    EXPECT_EQ(mode(), ModePause);
    control.SetPauseChecked(false);
    EXPECT_EQ(mode(), ModePlayback);
    control.RequestRecord();
    EXPECT_EQ(mode(), ModeRecord);
    control.RequestStop();
    EXPECT_EQ(mode(), ModeStop);

    // Slower halves down to 0; faster climbs 0, 1, 2 ... and stops at 10000.
    StorageSettings s = control.getSettings();
    s.playbackRate = 3;
    control.setSettings(s);
    std::vector<int> rates;
    for (int i = 0; i < 19; ++i) {
        i < 3 ? control.PlaybackSlower() : control.PlaybackFaster();
        rates.push_back(control.getSettings().playbackRate);
    }
    EXPECT_EQ(rates, (std::vector<int>{1, 0, 0, 1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048,
                                       4096, 8192, 10000, 10000}));
}

}  // namespace
}  // namespace halvo

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "storage/PlaybackChain.h"
#include "storage/StorageRig.h"

namespace halvo {
namespace {

using test::StorageRig;

// Runs the bus tick every 50 ms and the page tick every 300 ms, and returns the files that
// were opened, in order. Bounded in simulated time.
std::vector<std::string> Drive(StorageRig& rig, PlaybackChain& chain, int seconds) {
    std::vector<std::string> opened;
    std::string last;
    for (int ms = 0; ms < seconds * 1000; ms += 50) {
        rig.Idle(50);
        if (ms % 300 == 0) chain.Tick(rig.ticks.TickCount());
        const StorageStatus s = rig.control.getStatus();
        if (s.state == StatePlayback && s.file != last) opened.push_back(s.file);
        last = s.state == StatePlayback ? s.file : std::string();
    }
    return opened;
}

class ChainTest : public testing::Test {
  protected:
    ChainTest() : chain(rig.control) {
        for (const char* n : {"a.hsf", "b.hsf", "c.hsf"}) rig.MakeFile(n, 5);
        rig.Set([](StorageSettings& s) { s.playbackRate = 1000; });
    }
    std::string F(const char* n) { return rig.dir.File(n); }

    StorageRig rig;
    PlaybackChain chain;
};

TEST_F(ChainTest, ThreeFilesThenStop) {
    chain.Select(rig.dir.path(), {"a.hsf", "b.hsf", "c.hsf"}, rig.ticks.TickCount());
    EXPECT_EQ(rig.control.getSettings().playbackFile, "a.hsf");
    EXPECT_EQ(chain.Position(), 2);
    const auto opened = Drive(rig, chain, 12);
    EXPECT_EQ(opened, (std::vector<std::string>{F("a.hsf"), F("b.hsf"), F("c.hsf")}));
    EXPECT_EQ(rig.Posted(), 15u);
    EXPECT_FALSE(chain.Auto());
    EXPECT_EQ(chain.Position(), -1);
    EXPECT_EQ(rig.State(), StateEndOfFile);
}

TEST_F(ChainTest, AutoRepeatGoesRoundTheList) {
    chain.SetAutoRepeat(true);
    chain.Select(rig.dir.path(), {"a.hsf", "b.hsf", "c.hsf"}, rig.ticks.TickCount());
    const auto opened = Drive(rig, chain, 12);
    ASSERT_GE(opened.size(), 5u);
    const std::vector<std::string> cycle = {F("a.hsf"), F("b.hsf"), F("c.hsf")};
    for (std::size_t i = 0; i < opened.size(); ++i) EXPECT_EQ(opened[i], cycle[i % 3]) << i;
    EXPECT_TRUE(chain.Auto());
}

TEST_F(ChainTest, SingleFileAndThePlaybackButton) {
    chain.Select(rig.dir.path(), {"b.hsf"}, rig.ticks.TickCount());
    EXPECT_TRUE(Drive(rig, chain, 2).empty());  // one name starts only with "Auto Repeat"
    EXPECT_EQ(rig.control.getSettings().playbackFile, "b.hsf");

    chain.PlaybackButton();
    EXPECT_EQ(Drive(rig, chain, 6), (std::vector<std::string>{F("b.hsf")}));
    EXPECT_FALSE(chain.Auto());  // position 0 without repeat: done

    chain.SetAutoRepeat(true);
    chain.PlaybackButton();
    rig.Stop();
    chain.PlaybackButton();
    const auto again = Drive(rig, chain, 7);
    ASSERT_GE(again.size(), 2u);  // the same file, once per end of file
    for (const std::string& f : again) EXPECT_EQ(f, F("b.hsf"));
}

TEST_F(ChainTest, AnErrorClearsTheAutoFlag) {
    chain.Select(rig.dir.path(), {"a.hsf", "missing.hsf", "c.hsf"}, rig.ticks.TickCount());
    const auto opened = Drive(rig, chain, 8);
    EXPECT_EQ(opened, (std::vector<std::string>{F("a.hsf")}));
    EXPECT_EQ(rig.State(), StateError);
    EXPECT_FALSE(chain.Auto());
}

}  // namespace
}  // namespace halvo

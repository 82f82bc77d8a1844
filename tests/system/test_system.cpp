#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "app/SystemCoordinator.h"
#include "app/TempWorkDir.h"
#include "core/MessageHub.h"
#include "nav/NavigationConfig.h"
#include "platform/FakeSystemClock.h"
#include "platform/FakeTickSource.h"
#include "storage/StorageControl.h"
#include "system/System.h"

namespace halvo {
namespace {

std::string ReadAll(const std::string& path) {
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

class SystemTest : public test::TempWorkDir {
  protected:
    FakeTickSource ticks_;
    FakeSystemClock clock_;
    System::Platform Platform() { return {ticks_, clock_}; }
};

TEST_F(SystemTest, StartsInOrderAndEndsOnTheScratchFile) {
    System system(Platform());
    system.Startup();
    const auto trace = system.Sequence().Trace();
    // Reload of the defaults file comes before the start of anything.
    const auto firstStart = std::find_if(
        trace.begin(), trace.end(), [](const std::string& s) { return s.starts_with("start"); });
    ASSERT_NE(firstStart, trace.end());
    EXPECT_TRUE(std::all_of(trace.begin(), firstStart,
                            [](const std::string& s) { return s.starts_with("reload"); }));
    EXPECT_TRUE(system.Coordinator().Running().IsSet());

    system.Ending(false);
    EXPECT_FALSE(system.Coordinator().Running().IsSet());
    EXPECT_EQ(system.Coordinator().ActiveProfile(), SystemCoordinator::kShutdownFile);
    // "Exit / Dont Save Settings": the defaults file was never written.
    EXPECT_FALSE(std::filesystem::exists("HalvoDefaults.Hni"));
}

TEST_F(SystemTest, SaveThenLoadKeepsNonDefaultValues) {
    {
        std::ofstream("HalvoConfig.ini")
            << "[HalvoConfig]\nConfig=SBSS\nSedimentClassification=1\n";
        std::ofstream("HalvoDefaults.Hni") << "[Main]\nTimerSource=3\n[Storage]\nMode=0\n"
                                              "RecordDir=/data\nPlaybackRate=7\n[Nav]\nTSBias=12\n";
    }
    {
        System system(Platform());
        system.Startup();
        EXPECT_EQ(system.Extensions(), std::vector<std::string>{"SedimentClassification"});
        EXPECT_EQ(system.Main().timerSource, 3);
        EXPECT_EQ(system.Storage().getSettings().recordDir, "/data");
        system.Ending(true);
    }
    const std::string saved = ReadAll("HalvoDefaults.Hni");
    EXPECT_NE(saved.find("SystemVersion=11"), std::string::npos);
    EXPECT_NE(saved.find("PlaybackRate=7"), std::string::npos);
    EXPECT_NE(saved.find("TSBias=12"), std::string::npos);
    // The recorder never comes back recording by itself.
    EXPECT_NE(saved.find("Mode=2"), std::string::npos);
}

}  // namespace
}  // namespace halvo

#include <string>
#include <vector>

#include "TempWorkDir.h"
#include "app/GeneralSettings.h"
#include "app/IniFile.h"
#include "app/MainWindowHost.h"
#include "app/OverallConfig.h"
#include "app/SettingsLifecycle.h"
#include "app/SystemCoordinator.h"
#include "app/WindowPlacement.h"

namespace halvo {
namespace {

// Stands in for the GUI at its boundary: records what the settings asked of the window.
class RecordingHost : public MainWindowHost {
  public:
    bool HasMainWindow() const override { return true; }
    void ShowPlacement(const WindowPlacement& p) override { shown = p; }
    void ShowMaximised() override { ++maximised; }
    WindowPlacement CurrentPlacement() const override { return current; }
    void ApplySplitSizes(std::span<const int> r, std::span<const int>) override {
        appliedRows.assign(r.begin(), r.end());
    }
    void CollectSplitSizes(std::vector<int>& r, std::vector<int>&) const override {
        r = {120, 240};
    }

    std::optional<WindowPlacement> shown;
    int maximised = 0;
    WindowPlacement current;
    std::vector<int> appliedRows;
};

class OverallConfigTest : public test::TempWorkDir {
  protected:
    void SetUp() override {
        TempWorkDir::SetUp();
        coordinator_.SetActiveProfile("./HalvoDefaults.Hni");
    }
    SystemCoordinator coordinator_;
};

TEST_F(OverallConfigTest, DisplaysShareTenChannels) {
    struct Case {
        const char* body;
        int displays;
        std::vector<int> splits;  // of displays 0, 1, 2
    };
    const Case cases[] = {
        {"", 1, {4, 0, 0}},
        {"NumSplits0=20\n", 1, {10, 0, 0}},
        {"NumSplits0=20\nHasPlot0=0\nNumSplits1=3\nNumSplits2=3\n", 1, {10, 0, 3}},
        {"NumSplits0=6\nNumSplits1=6\nHasPlot1=1\nNumSplits2=6\n", 3, {6, 5, 1}},
        {"NumSplits0=-3\nNumSplits1=4\n", 0, {0, 4, 0}},
        {"NumSplits0=2147483647\n", 1, {10, 0, 0}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.body);
        WriteFile("HalvoDefaults.Hni", std::string("[OverallConfig]\n") + c.body);
        OverallConfig config(coordinator_);
        config.Load();
        const auto v = config.Snapshot();
        EXPECT_EQ(v.displayCount, c.displays);
        EXPECT_EQ(std::vector<int>(v.numSplits.begin(), v.numSplits.begin() + 3), c.splits);
    }
}

TEST_F(OverallConfigTest, MainWindowPosOfAnyOtherLengthShowsMaximised) {
    WindowPlacement placement;
    placement.SetShowCmd(WindowPlacement::kShowNormal);
    placement.SetNormalPosition({10, -20, 810, 600});
    const std::string text = placement.Encode();
    ASSERT_EQ(text.size(), 88u);
    EXPECT_EQ(WindowPlacement::Decode(text), placement);

    for (const std::string& stored : {text, text.substr(0, 87), text + "A", std::string()}) {
        WriteFile("HalvoDefaults.Hni", "[OverallConfig]\nMainWindowPos=" + stored + "\n");
        RecordingHost host;
        OverallConfig config(coordinator_);
        config.SetHost(&host);
        config.Load();
        EXPECT_EQ(host.shown.has_value(), stored.size() == 88) << stored.size();
        EXPECT_EQ(host.maximised, stored.size() == 88 ? 0 : 1) << stored.size();
    }
    // The decoder takes each letter less one: any letter with the right low bits will do.
    std::string shifted = text;
    for (char& ch : shifted) ch = static_cast<char>(ch + 16);
    EXPECT_EQ(WindowPlacement::Decode(shifted), placement);
}

TEST_F(OverallConfigTest, Rc900IsForcedOffAndSaveNeedsALoad) {
    WriteFile("HalvoDefaults.Hni",
              "[OverallConfig]\nRC900DisplayEnable=1\nSonarName0=" + std::string(100, 'n') + "\n");
    RecordingHost host;
    host.current.SetShowCmd(WindowPlacement::kShowMaximised);
    OverallConfig config(coordinator_);
    config.SetHost(&host);
    config.Save();  // not loaded: writes nothing
    EXPECT_EQ(ReadFile("HalvoDefaults.Hni").find("NumSplits0"), std::string::npos);

    config.Start();
    EXPECT_EQ(config.RC900DisplayEnable(), 0);
    EXPECT_EQ(config.Snapshot().sonarNames[0].size(), 79u);
    EXPECT_EQ(host.appliedRows, std::vector<int>(10, -1));
    config.Save();
    IniFile ini(coordinator_);
    ini.Open("OverallConfig");
    EXPECT_EQ(ini.ReadInt("RC900DisplayEnable", -1), 0);
    EXPECT_EQ(ini.ReadInt("PixelsRows1", 0), 240);
    EXPECT_EQ(ini.ReadInt("PixelsRows2", 0), -1);
    EXPECT_EQ(WindowPlacement::Decode(ini.ReadString("MainWindowPos", ""))->ShowCmd(),
              WindowPlacement::kShowMaximised);
}

TEST(SettingsLifecycle, StartLoadsOnceAndOnlyWhenNothingLoadedYet) {
    struct Case {
        bool loadFirst;
        int starts;
        int loads;  // calls of the start's load
    };
    for (const Case c : {Case{false, 1, 1}, Case{false, 3, 1}, Case{true, 2, 0}}) {
        SettingsLifecycle life;
        EXPECT_FALSE(life.MaySave());
        if (c.loadFirst) {
            EXPECT_TRUE(life.MarkLoaded());
        }
        int loads = 0;
        for (int i = 0; i < c.starts; ++i) {
            life.Start([&] {
                ++loads;
                life.MarkLoaded();
            });
        }
        EXPECT_EQ(loads, c.loads);
        EXPECT_TRUE(life.IsStarted());
        EXPECT_TRUE(life.MaySave());
        EXPECT_FALSE(life.MarkLoaded());  // only the first load is first
    }
}

TEST_F(OverallConfigTest, ConfigTypeTextIsExactAndCaseSensitive) {
    WriteFile("HalvoConfig.ini", "[HalvoConfig]\nConfig=MPX\n");
    IniFile ini(coordinator_);
    ini.Open("HalvoConfig", "./HalvoConfig.ini");
    const auto inst = OverallConfig::ReadInstallation(ini);
    EXPECT_EQ(inst.configType, OverallConfig::kConfigMPX);
    EXPECT_EQ(inst.multiPing, 1);
    EXPECT_EQ(OverallConfig::ConfigTypeFromText("sbss"), OverallConfig::kConfigUnknown);
    EXPECT_EQ(OverallConfig::ConfigTypeFromText("SBRC900"), OverallConfig::kConfigSBRC900);
}

TEST_F(OverallConfigTest, GeneralKeysRoundTrip) {
    GeneralSettings general(coordinator_);
    general.Start();
    GeneralValues v = general.Snapshot();
    v.WaterSoundSpeed = 1473;
    v.PitchBias = -1.25f;
    v.Annotation = std::string(40, 'a');
    v.NMEAantennaeO = -300;
    const int before = general.ChangeCount();
    general.Update(v);
    EXPECT_EQ(general.ChangeCount(), before + 1);
    general.Save();

    IniFile ini(coordinator_);
    ini.Open("General");
    ini.WriteInt("GPSFlags", 70000);
    GeneralSettings reread(coordinator_);
    reread.Load();
    const GeneralValues r = reread.Snapshot();
    EXPECT_EQ(r.WaterSoundSpeed, 1473);
    EXPECT_FLOAT_EQ(r.PitchBias, -1.25f);
    EXPECT_EQ(r.Annotation, std::string(31, 'a'));
    EXPECT_EQ(r.NMEAantennaeO, -300);
    EXPECT_EQ(r.GPSFlags, 70000 - 65536);  // kept in 16 bits
}

}  // namespace
}  // namespace halvo

// Display processing records: loading, saving, snapshots and user units.

#include <gtest/gtest.h>

#include "app/GeneralSettings.h"
#include "app/IniFile.h"
#include "app/Profile.h"
#include "app/SystemCoordinator.h"
#include "app/TempWorkDir.h"
#include "display/DisplayProcessingSet.h"
#include "display/DisplayUnits.h"

namespace halvo::test {
namespace {

class DisplaySettingsTest : public TempWorkDir {
  protected:
    SystemCoordinator coordinator;
    GeneralSettings general{coordinator};
    DisplayProcessingSet set{coordinator, general};
    std::string Key(int display, const char* key) {
        return Profile::ReadString(coordinator.ActiveProfile(),
                                   "DisplayProcessing" + std::to_string(display), key, "absent",
                                   199);
    }
};

TEST_F(DisplaySettingsTest, ConstructorPresetsThenLoaderDefaults) {
    EXPECT_EQ(set.Lock(4)->Gain, 40);
    EXPECT_EQ(set.Lock(4)->TVGLimit, 10);
    EXPECT_EQ(set.Lock(4)->Channel, -1);
    set.Save();  // nothing loaded: nothing written
    EXPECT_EQ(Key(0, "Gain"), "absent");
    set.Start();
    auto r = set.Lock(4);
    EXPECT_EQ(r->Gain, 0);
    EXPECT_EQ(r->TVGLimit, 60);
    EXPECT_EQ(r->Channel, 4);
}

TEST_F(DisplaySettingsTest, LoadsKeysResetsPingSelectionAndNeverWritesTrackEnabled) {
    WriteFile(coordinator.ActiveProfile(),
              "[DisplayProcessing2]\nGain=12\nTVGStart=-3.5\nTrackEnabled=0\nMPXOptions=33\n"
              "HeaveTimeConst=12.700000\nDirectPathTraces=5.000000\nPal=Sepia\nZoom=2.5\n");
    set.Load();
    {
        auto r = set.Lock(2);
        EXPECT_EQ(r->Gain, 12);
        EXPECT_EQ(r->TVGStart, -3.5f);
        EXPECT_EQ(r->TrackEnabled, 0);
        EXPECT_EQ(r->MPXOptions, 0);
        EXPECT_EQ(r->HeaveTimeConst, 12);
        EXPECT_EQ(r->DirectPathTraces, 5);
        EXPECT_EQ(r->Pal, "Sepia");
        EXPECT_EQ(r->Zoom, 2.5);
        r->TrackEnabled = 1;
        r->MPXOptions = 17;
    }
    set.Save();
    EXPECT_EQ(Key(2, "TrackEnabled"), "0");  // as the operator left it in the file
    EXPECT_EQ(Key(2, "MPXOptions"), "17");
    EXPECT_EQ(Key(2, "HeaveTimeConst"), "12.000000");
    EXPECT_EQ(Key(2, "DirectPathTraces"), "5.000000");
    EXPECT_EQ(Key(9, "TrackEnabled"), "absent");
    EXPECT_EQ(Key(9, "Channel"), "9");
}

TEST_F(DisplaySettingsTest, SnapshotsFollowBumpsChannelsAndGeneral) {
    DisplayProcessingConfig copy;
    EXPECT_TRUE(set.Snapshot(1, copy));
    EXPECT_FALSE(set.Snapshot(1, copy));
    {
        auto r = set.Lock(1);
        r->Gain = 7;  // changed without a bump: not seen
    }
    EXPECT_FALSE(set.Snapshot(1, copy));
    set.Lock(1).Bump();
    EXPECT_TRUE(set.Snapshot(1, copy));
    EXPECT_EQ(copy.Gain, 7);
    copy.Channel = 33;  // a copy whose channel differs is refreshed
    EXPECT_TRUE(set.Snapshot(1, copy));
    general.Modify([](GeneralValues& g) { g.UserUnits = 1; });
    EXPECT_TRUE(set.Snapshot(1, copy));
    EXPECT_EQ(copy.generalStamp, general.ChangeCount());
    // Out-of-range indices reach record 0.
    set.Lock(0)->Gain = 3;
    EXPECT_EQ(set.Lock(12)->Gain, 3);
    EXPECT_EQ(set.Lock(-1)->Gain, 3);
}

TEST_F(DisplaySettingsTest, DisplaysInUseRiseToTen) {
    for (int i = 0; i < 12; ++i) set.UseDisplay();
    EXPECT_EQ(set.DisplaysInUse(), 10);
}

TEST(DisplayUnits, ConvertTruncatingTowardZero) {
    GeneralValues g;
    struct {
        int units;
        double x;
        float rate;
        int samples;
    } cases[] = {{1, 10.0, 25000.0f, 250},
                 {1, 0.03, 25000.0f, 0},
                 {2, 17.9, 1.0f, 17},
                 {2, -17.9, 1.0f, -17},
                 {0, 3.0, 25000.0f, 100},
                 {0, -0.07, 25000.0f, -2},
                 {0, 1e30, 25000.0f, kMaxSampleCount},
                 {2, NAN, 1.0f, 0}};
    for (const auto& c : cases) {
        g.UserUnits = c.units;
        EXPECT_EQ(ToSamples(c.x, c.rate, g), c.samples) << c.units << " " << c.x;
    }
    g.UserUnits = 0;
    EXPECT_DOUBLE_EQ(FromSamples(100, 25000.0f, g), 3.0);
    g.UserUnits = 1;
    EXPECT_DOUBLE_EQ(FromSamples(250, 25000.0f, g), 10.0);
    g.UserUnits = 2;
    EXPECT_DOUBLE_EQ(FromSamples(-5, 25000.0f, g), -5.0);
}

}  // namespace
}  // namespace halvo::test

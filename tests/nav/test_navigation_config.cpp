#include <gtest/gtest.h>

#include "app/SystemCoordinator.h"
#include "app/TempWorkDir.h"
#include "nav/NavigationConfig.h"

namespace halvo {
namespace {

class NavigationConfigTest : public test::TempWorkDir {
  protected:
    void SetUp() override {
        TempWorkDir::SetUp();
        coordinator_.SetActiveProfile("./HalvoDefaults.Hni");
    }
    SystemCoordinator coordinator_;
};

TEST_F(NavigationConfigTest, RoundTripsEveryKeyButTheDiagnosticSwitch) {
    NavigationConfig c;
    c.tsEnable = 1, c.tsBias = -250, c.tsScopeOutEnable = 1, c.tsScopeOutPort = 0x378;
    c.latLonSource = NavigationConfig::LatLonGga, c.timeSource = NavigationConfig::TimeRmc;
    c.ports[1] = {9600, 7, 1, "/tmp/pty-a"};
    c.ports[2] = {115200, 3, 0, ""};
    c.Save(coordinator_);

    NavigationConfig back = NavigationConfig::Load(coordinator_);
    EXPECT_EQ(back.tsScopeOutEnable, 0);  // saved but never loaded
    back.tsScopeOutEnable = 1;
    EXPECT_EQ(back, c);

    EXPECT_EQ(back.ports[1].DevicePath(), "/tmp/pty-a");
    EXPECT_EQ(back.ports[2].DevicePath(), "/dev/ttyS2");
}

TEST_F(NavigationConfigTest, StoreCountsChangesAndSavesOnlyAfterALoad) {
    NavigationConfigStore store(coordinator_);
    NavigationConfig c = store.Get();
    c.tsBias = 40;
    store.Set(c);
    store.Save();  // nothing loaded yet: the file keeps what it had
    EXPECT_EQ(NavigationConfig::Load(coordinator_).tsBias, 0);

    store.Load();
    int count = 0;
    EXPECT_EQ(store.Get(count).tsBias, 0);
    EXPECT_EQ(count, 2);
    store.Set(c);
    store.Save();
    EXPECT_EQ(NavigationConfig::Load(coordinator_).tsBias, 40);
}

}  // namespace
}  // namespace halvo

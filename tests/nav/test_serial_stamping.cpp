#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <string>
#include <vector>

#include "app/GeneralSettings.h"
#include "app/Notifier.h"
#include "app/ProgramClock.h"
#include "app/SystemCoordinator.h"
#include "core/MessageHub.h"
#include "core/MessageProcessor.h"
#include "core/MessageTypes.h"
#include "core/TraceHeader.h"
#include "dsp/SegyDataProcessor.h"
#include "halvo-sim/SimNmeaPty.h"
#include "nav/NavigationInput.h"
#include "platform/FakeSystemClock.h"
#include "platform/FakeTickSource.h"
#include "platform/LinuxParallelPort.h"
#include "platform/PtyPair.h"

namespace halvo {
namespace {

using namespace std::chrono_literals;

class TraceCollector final : public MessageObserver {
  public:
    void DeliverMessage(SonarMessage* m, int, std::uint32_t) override {
        if (!m || m->type() != MsgTrace) return;
        std::lock_guard lock(mutex_);
        traces_.push_back(m->Clone());
    }
    std::vector<SonarMessage> Take() {
        std::lock_guard lock(mutex_);
        return std::move(traces_);
    }

  private:
    std::mutex mutex_;
    std::vector<SonarMessage> traces_;
};

// The simulator's receiver on a pseudo-terminal feeds a port thread; the stamping observer on
// the same bus parses what arrives, and a trace posted afterwards carries the position.
TEST(SerialNavigationEndToEnd, SimulatorPositionsLandInStampedTraces) {
    constexpr std::int32_t kWall = 1709208000;
    FakeTickSource ticks;
    FakeSystemClock wall;
    ProgramClock clock{ticks, wall};
    clock.SetSource(0);
    wall.SetNow(kWall, 0);
    ticks.SetTick(100000);
    clock.SyncFromSystem();

    SystemCoordinator coordinator;
    GeneralSettings general{coordinator};
    NavigationConfigStore store{coordinator};
    SilentNotifier notifier;
    SegyDataProcessor stamping{clock, general, store, notifier};
    TraceCollector traces;
    RunFlag run;
    run.Raise();
    AcquireFilter filter;
    MessageProcessor bus{"data", run, filter, SystemUtcSeconds};
    bus.Attach(&stamping);
    bus.Attach(&traces);
    bus.Start();

    SimNmeaPty sim(4800, [] { return TimeValue{kWall, 0}; });
    std::string error;
    ASSERT_TRUE(sim.Start(error)) << error;
    NavigationConfig c = store.Get();
    c.ports[0] = NavigationPortConfig{4800, 1, 1, sim.slavePath()};
    store.Set(c);

    LinuxParallelPort parallel;
    NavigationInput input(
        store, bus, [&] { return clock.Now(); }, [] { return false; }, parallel, run, {20ms, 5ms});
    input.Start();
    ASSERT_TRUE(test::WaitFor([&] { return stamping.CopyFix().gll.stamp != 0; }, 6000ms))
        << input.StatusText();
    EXPECT_EQ(input.LinesDropped(0), 0u);

    SonarMessage trace = SonarMessage::Build(MsgTrace, DirReply, 0, 0,
                                             static_cast<std::int32_t>(kTraceHeaderSize + 8));
    {
        TraceHeaderView th(trace.Payload());
        th.SetInt(TraceField::Samples, 4);
        th.SetInt(TraceField::SampleIntervalNS, 40000);
    }
    ASSERT_EQ(bus.Post(trace, SourceSonarData), 0);
    std::vector<SonarMessage> got;
    ASSERT_TRUE(test::WaitFor([&] {
        auto more = traces.Take();
        for (auto& m : more) got.push_back(std::move(m));
        return !got.empty();
    }));
    input.Stop();
    sim.Stop();

    // The survey line starts at 57 deg 41.4' N, 11 deg 48' E and moves about a metre a second:
    // in ten-thousandths of a minute that is a few units per second.
    const ConstTraceHeaderView th(got[0].Payload());
    EXPECT_NEAR(th.GetInt(TraceField::GroupCoordY), (57 * 60 + 41.4) * 10000, 100);
    EXPECT_NEAR(th.GetInt(TraceField::GroupCoordX), (11 * 60 + 48.0) * 10000, 100);
    EXPECT_EQ(th.GetInt(TraceField::CoordUnits), 2);
}

}  // namespace
}  // namespace halvo

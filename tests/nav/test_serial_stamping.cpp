#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "halvo-sim/SimNmeaPty.h"
#include "nav/SerialInputRig.h"
#include "stamping/StampingRig.h"

namespace halvo {
namespace {

using namespace test;
using namespace std::chrono_literals;

// The simulator's receiver on a pseudo-terminal feeds a port thread; the stamping observer on
// the same bus parses what arrives, and a trace posted afterwards carries the position.
TEST(SerialNavigationEndToEnd, SimulatorPositionsLandInStampedTraces) {
    StampingRig stamping;
    MessageCollector traces(MsgTrace);
    SerialInputRig rig(/*startBus=*/false);
    rig.bus.Attach(&stamping.processor);
    rig.bus.Attach(&traces);
    rig.bus.Start();

    SimNmeaPty sim(4800, [] { return SerialInputRig::kNow; });
    std::string error;
    ASSERT_TRUE(sim.Start(error)) << error;
    ASSERT_TRUE(rig.StartOn(0, sim.slavePath()));
    ASSERT_TRUE(WaitFor([&] { return stamping.processor.CopyFix().gll.stamp != 0; }, 6000ms))
        << rig.input.StatusText();
    EXPECT_EQ(rig.input.LinesDropped(0), 0u);

    SonarMessage trace = Trace();
    ASSERT_EQ(rig.bus.Post(trace, SourceSonarData), 0);
    ASSERT_TRUE(WaitFor([&] { return traces.Count() > 0; }));
    const SonarMessage got = std::move(traces.Take().at(0).message);
    // The survey line starts at 57 deg 41.4' N, 11 deg 48' E and moves about a metre a second:
    // in ten-thousandths of a minute that is a few units per second.
    EXPECT_NEAR(Field(got, TraceField::GroupCoordY), (57 * 60 + 41.4) * 10000, 100);
    EXPECT_NEAR(Field(got, TraceField::GroupCoordX), (11 * 60 + 48.0) * 10000, 100);
    EXPECT_EQ(Field(got, TraceField::CoordUnits), 2);
}

}  // namespace
}  // namespace halvo

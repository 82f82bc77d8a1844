#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "app/TempWorkDir.h"
#include "core/MessageTypes.h"
#include "halvo-sim/SimServer.h"
#include "platform/FakeSystemClock.h"
#include "platform/MonotonicTickSource.h"
#include "sim/SimTestServer.h"
#include "storage/HsfReader.h"
#include "system/HeadlessRunner.h"
#include "system/LineCacheDocument.h"

namespace halvo {
namespace {

class HeadlessTest : public test::TempWorkDir {};

// A short survey day without a window: the simulator pings, the program connects, records what
// arrives, and the recording holds traces and sensor messages.
TEST_F(HeadlessTest, RecordsALiveSurveyAgainstTheSimulator) {
    FixedWallClock simClock(1700000000123LL);
    SimOptions o = test::TestOptions();
    o.quiet = true;
    o.autostart = true;
    SimServer sim(o, simClock);
    std::string error;
    ASSERT_TRUE(sim.Start(error)) << error;

    const std::string dir = std::filesystem::current_path().string();
    {
        std::ofstream ini("survey.Hni");
        ini << "[MessageSonarCommand]\nHostName=127.0.0.1\nPort=" << sim.commandPort()
            << "\n[MessageSonarData]\nHostName=127.0.0.1\nPort=" << sim.dataPort()
            << "\n[Network]\nReconnectInterval=500\n[Storage]\nRecordDir=" << dir
            << "\nRecordFile=Survey\n";
    }
    MonotonicTickSource ticks;
    FakeSystemClock systemClock;
    std::ostringstream log;
    {
        System system(System::Platform{ticks, systemClock});
        HeadlessOptions options;
        options.settings = "survey.Hni";
        options.durationSeconds = 4;
        options.record = true;
        options.ping = true;
        HeadlessRunner runner(system, options, log);
        std::atomic<bool> stop{false};
        EXPECT_EQ(runner.Run(stop), 0);
        // The display chain turned pings into lines that reached the caches.
        EXPECT_GT(system.Lines().Lines(0), 0u);
    }
    sim.Stop();
    const std::string text = log.str();
    EXPECT_NE(text.find("SONAR : Connected"), std::string::npos) << text;
    EXPECT_NE(text.find("RECORD : New File: "), std::string::npos) << text;

    const std::string file = dir + "/Survey000.hsf";
    // Stored as the chain delivers them: traces as 80s, and the sensor messages with them.
    HsfReader reader;
    ASSERT_TRUE(reader.Open(file)) << text;
    SonarMessage m;
    int traces = 0, sensors = 0;
    for (int n = 0; n < 1'000'000 && reader.Next(m) == ReadStatus::Record; ++n) {
        if (m.type() == MsgTrace) ++traces;
        if (m.type() >= 2000 && m.type() < 3000) ++sensors;
    }
    EXPECT_GT(traces, 10);
    EXPECT_GT(sensors, 0);
    // The settings were saved back into the file the run was given.
    std::ifstream saved("survey.Hni");
    std::stringstream s;
    s << saved.rdbuf();
    EXPECT_NE(s.str().find("SystemVersion=11"), std::string::npos);
}

}  // namespace
}  // namespace halvo

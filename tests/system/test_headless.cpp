#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "app/TempWorkDir.h"
#include "halvo-sim/SimServer.h"
#include "platform/FakeSystemClock.h"
#include "platform/MonotonicTickSource.h"
#include "system/HeadlessRunner.h"
#include "system/LineCacheDocument.h"

namespace halvo {
namespace {

std::string Capture(const std::string& command) {
    std::string out;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return out;
    char buf[4096];
    for (int i = 0; i < 10000; ++i) {
        const std::size_t n = std::fread(buf, 1, sizeof buf, pipe);
        if (n == 0) break;
        out.append(buf, n);
    }
    ::pclose(pipe);
    return out;
}

class HeadlessTest : public test::TempWorkDir {};

// A short survey day without a window: the simulator pings, the program connects, records what
// arrives, and the file tool finds traces and sensor messages in the recording.
TEST_F(HeadlessTest, RecordsALiveSurveyAgainstTheSimulator) {
    FixedWallClock simClock(1700000000123LL);
    SimOptions o;
    o.portBase = 0;
    o.discoveryPort = -1;
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
    ASSERT_TRUE(std::filesystem::exists(file)) << text;
    const std::string info =
        Capture(std::string(HALVO_BINARY_DIR) + "/apps/halvo-hsf/halvo-hsf info --json " + file);
    const auto j = nlohmann::json::parse(info, nullptr, false);
    ASSERT_FALSE(j.is_discarded()) << info;
    int traces = 0, sensors = 0;
    for (const auto& t : j["types"]) {
        const int type = t.value("type", 0);
        if (type == 80) traces += t.value("records", 0);
        if (type >= 2000 && type < 3000) sensors += t.value("records", 0);
    }
    EXPECT_GT(traces, 10) << info;
    EXPECT_GT(sensors, 0) << info;
    // The settings were saved back into the file the run was given.
    std::ifstream saved("survey.Hni");
    std::stringstream s;
    s << saved.rdbuf();
    EXPECT_NE(s.str().find("SystemVersion=11"), std::string::npos);
}

}  // namespace
}  // namespace halvo

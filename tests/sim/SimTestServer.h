#pragma once
// Starts a simulator in-process on ephemeral loopback ports for one test.

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "halvo-sim/SimServer.h"

namespace halvo::test {

inline SimOptions TestOptions() {
    SimOptions o;
    o.portBase = 0;
    o.discoveryPort = -1;
    return o;
}

struct RunningSim {
    explicit RunningSim(SimOptions o, std::int64_t wallMs = 1700000000123LL)
        : clock(wallMs), server(std::make_unique<SimServer>(std::move(o), clock)) {
        std::string error;
        started = server->Start(error);
        EXPECT_TRUE(started) << error;
    }
    FixedWallClock clock;
    std::unique_ptr<SimServer> server;
    bool started = false;
};

// The entries of a simulator log (`logFile` or `sentLogFile`) in order, only those of `link`
// when one is named. A line the simulator is still writing does not parse and is passed over.
inline std::vector<nlohmann::json> ReadSimLog(const std::string& path, std::string_view link = {}) {
    std::vector<nlohmann::json> out;
    std::ifstream in(path);
    std::string line;
    for (int n = 0; n < 1'000'000 && std::getline(in, line); ++n) {
        auto j = nlohmann::json::parse(line, nullptr, false);
        if (!j.is_discarded() && (link.empty() || j.value("link", "") == link))
            out.push_back(std::move(j));
    }
    return out;
}

}  // namespace halvo::test

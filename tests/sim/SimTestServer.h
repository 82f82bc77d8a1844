#pragma once
// Starts a simulator in-process on ephemeral loopback ports for one test.

#include <gtest/gtest.h>

#include <memory>
#include <string>

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

}  // namespace halvo::test

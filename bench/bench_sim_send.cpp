// How fast the simulator pushes traces to a topside that only counts bytes. The simulator runs
// in-process with the sonar on and a high rate multiplier; the reader discards what it gets
// from the data port for a bounded time and reports MB/s.

#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <vector>

#include "halvo-sim/SimServer.h"

namespace {

int ConnectLoopback(int port) {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<std::uint16_t>(port));
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int size = 4 * 1024 * 1024;
    ::setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
    if (::connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

void RunSend(benchmark::State& state, int form, int packing) {
    halvo::SimOptions o;
    o.portBase = 0;
    o.discoveryPort = -1;
    o.autostart = true;
    o.rateMultiplier = 1e6;
    o.form = form;
    o.packing = packing;
    halvo::SystemWallClock clock;
    halvo::SimServer server(o, clock);
    std::string error;
    if (!server.Start(error)) {
        state.SkipWithError(error.c_str());
        return;
    }
    const int fd = ConnectLoopback(server.dataPort());
    if (fd < 0) {
        state.SkipWithError("cannot connect to the data port");
        return;
    }
    std::vector<char> buf(1 << 20);
    std::uint64_t total = 0;
    double seconds = 0;
    for (auto _ : state) {
        // One bounded read window per iteration.
        const auto start = std::chrono::steady_clock::now();
        const auto end = start + std::chrono::milliseconds(500);
        std::uint64_t bytes = 0;
        while (std::chrono::steady_clock::now() < end) {
            pollfd p{fd, POLLIN, 0};
            if (::poll(&p, 1, 100) <= 0) continue;
            const ssize_t n = ::recv(fd, buf.data(), buf.size(), 0);
            if (n <= 0) break;
            bytes += static_cast<std::uint64_t>(n);
        }
        total += bytes;
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    ::close(fd);
    server.Stop();
    state.SetBytesProcessed(static_cast<std::int64_t>(total));
    state.counters["MB/s"] = seconds > 0 ? static_cast<double>(total) / seconds / 1e6 : 0.0;
}

void BM_SimSendPlain(benchmark::State& state) {
    RunSend(state, 80, 0);
}
void BM_SimSendCompactPacked(benchmark::State& state) {
    RunSend(state, 84, 3);
}

}  // namespace

BENCHMARK(BM_SimSendPlain)->Iterations(4)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_SimSendCompactPacked)->Iterations(4)->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_MAIN();

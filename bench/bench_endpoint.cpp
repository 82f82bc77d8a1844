// Throughput of the data link: the simulator pushes traces as fast as it can, and either a plain
// reader discards the bytes or the data endpoint cuts them into messages and posts them to a bus
// with one counting observer. Both run in the same program, so the figures can be set side by
// side.

#include <arpa/inet.h>
#include <benchmark/benchmark.h>

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include "LoopbackConnect.h"

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "app/ProgramClock.h"
#include "core/MessageHub.h"
#include "core/MessageObserver.h"
#include "core/MessageTypes.h"
#include "core/SonarMessage.h"
#include "halvo-sim/SimServer.h"
#include "net/NetworkIO.h"
#include "net/SocketManager.h"
#include "net/SocketStatus.h"
#include "platform/FakeSystemClock.h"
#include "platform/MonotonicTickSource.h"

namespace {

constexpr auto kWindow = std::chrono::milliseconds(500);

halvo::SimOptions FastSim() {
    halvo::SimOptions o;
    o.portBase = 0;
    o.discoveryPort = -1;
    o.autostart = true;
    o.rateMultiplier = 1e6;
    o.quiet = true;
    return o;
}

class Counter : public halvo::MessageObserver {
  public:
    void DeliverMessage(halvo::SonarMessage* m, int source, std::uint32_t) override {
        if (!m || source != halvo::SourceSonarData) return;
        messages.fetch_add(1, std::memory_order_relaxed);
        bytes.fetch_add(m->Wire().size(), std::memory_order_relaxed);
    }
    std::atomic<std::uint64_t> messages{0};
    std::atomic<std::uint64_t> bytes{0};
};

void Report(benchmark::State& state, std::uint64_t bytes, std::uint64_t messages, double seconds) {
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
    state.counters["MB/s"] = seconds > 0 ? static_cast<double>(bytes) / seconds / 1e6 : 0.0;
    state.counters["msg/s"] = seconds > 0 ? static_cast<double>(messages) / seconds : 0.0;
}

void BM_PlainReader(benchmark::State& state) {
    halvo::SystemWallClock clock;
    halvo::SimServer server(FastSim(), clock);
    std::string error;
    if (!server.Start(error)) {
        state.SkipWithError(error.c_str());
        return;
    }
    const int fd = halvo::bench::ConnectLoopback(server.dataPort());
    if (fd < 0) {
        state.SkipWithError("cannot connect to the data port");
        return;
    }
    std::vector<char> buf(1 << 20);
    std::uint64_t total = 0;
    double seconds = 0;
    const std::uint64_t sentBefore = server.Counters().dataMessagesSent;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        while (std::chrono::steady_clock::now() - start < kWindow) {
            pollfd p{fd, POLLIN, 0};
            if (::poll(&p, 1, 100) <= 0) continue;
            const ssize_t n = ::recv(fd, buf.data(), buf.size(), 0);
            if (n <= 0) break;
            total += static_cast<std::uint64_t>(n);
        }
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    ::close(fd);
    const std::uint64_t sent = server.Counters().dataMessagesSent - sentBefore;
    server.Stop();
    // Messages as the simulator counted them; the reader itself sees only bytes.
    Report(state, total, sent, seconds);
}

void BM_DataEndpoint(benchmark::State& state) {
    halvo::SystemWallClock wall;
    halvo::SimServer server(FastSim(), wall);
    std::string error;
    if (!server.Start(error)) {
        state.SkipWithError(error.c_str());
        return;
    }
    Counter counter;
    halvo::RunFlag run;
    run.Raise();
    halvo::MessageHub hub(run);
    hub.Start();
    hub.DataBus().Attach(&counter);
    halvo::MonotonicTickSource ticks;
    halvo::FakeSystemClock system;
    halvo::ProgramClock clock(ticks, system);
    halvo::SocketStatusCell status;
    halvo::SocketManager sockets(ticks);
    {
        halvo::EndpointSettings s;
        s.HostName = "127.0.0.1";
        s.Port = server.dataPort();
        s.RecvSize = 500000;
        halvo::NetworkIO data("SonarData", s, halvo::SourceSonarData, hub.DataBus(), status,
                              sockets, clock);
        data.Start(nullptr, 6000);
        for (int i = 0; i < 200 && !data.IsConnected(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        double seconds = 0;
        std::uint64_t bytes = 0, messages = 0;
        for (auto _ : state) {
            const std::uint64_t b0 = counter.bytes.load(), m0 = counter.messages.load();
            const auto start = std::chrono::steady_clock::now();
            std::this_thread::sleep_for(kWindow);
            seconds +=
                std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
            bytes += counter.bytes.load() - b0;
            messages += counter.messages.load() - m0;
        }
        Report(state, bytes, messages, seconds);
    }
    sockets.Stop();
    server.Stop();
    hub.DataBus().Detach(&counter);
}

}  // namespace

BENCHMARK(BM_PlainReader)->Iterations(4)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_DataEndpoint)->Iterations(4)->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_MAIN();

// From the simulator's data link into a file and out through the file tool: every message the
// simulator logged as sent is in the file, whole and in order. No network endpoint is used here:
// a plain socket reader stands in for it and posts onto a real bus with the real recorder on it.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <nlohmann/json.hpp>
#include <thread>

#include "app/SystemCoordinator.h"
#include "core/MessageProcessor.h"
#include "halvo-sim/SimLog.h"
#include "platform/MonotonicTickSource.h"
#include "sim/SimTestServer.h"
#include "storage/StorageControl.h"
#include "storage/StorageDataProcessor.h"
#include "storage/StorageTestSupport.h"

namespace halvo {
namespace {

using Clock = std::chrono::steady_clock;

struct Counter : MessageObserver {
    void DeliverMessage(SonarMessage* m, int, std::uint32_t) override {
        if (m) seen.fetch_add(1);
    }
    std::atomic<int> seen{0};
};

bool ReadExact(int fd, std::uint8_t* dst, std::size_t n, Clock::time_point deadline) {
    std::size_t got = 0;
    while (got < n && Clock::now() < deadline) {
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, 50) <= 0) continue;
        const ssize_t r = ::recv(fd, dst + got, n - got, 0);
        if (r <= 0) return false;  // closed by the simulator
        got += static_cast<std::size_t>(r);
    }
    return got == n;
}

// Reads whole messages off the data link and posts them with source 2, until the peer closes.
int ReadLinkOntoBus(int port, MessageProcessor& bus, Clock::time_point deadline) {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<std::uint16_t>(port));
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) return -1;
    int posted = 0;
    std::uint8_t header[16];
    while (ReadExact(fd, header, sizeof header, deadline)) {
        MessageHeader h;
        MessageHeader::Read(header, h);
        if (!h.HasMarker() || h.size < 0 || h.size > 4'000'000) break;
        std::vector<std::uint8_t> bytes(16 + static_cast<std::size_t>(h.size));
        std::copy(header, header + 16, bytes.begin());
        if (!ReadExact(fd, bytes.data() + 16, bytes.size() - 16, deadline)) break;
        SonarMessage m = SonarMessage::FromBytes(bytes);
        // A full queue holds the message back, as the endpoint does.
        while (bus.Post(m, SourceSonarData) != 0 && Clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        ++posted;
    }
    ::close(fd);
    return posted;
}

std::string Capture(const std::string& command) {
    std::string out;
    FILE* p = ::popen(command.c_str(), "r");
    if (!p) return out;
    char buffer[4096];
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, p)) > 0;) out.append(buffer, n);
    ::pclose(p);
    return out;
}

template <class Pred>
bool WaitFor(Pred pred, std::chrono::milliseconds limit) {
    const auto end = Clock::now() + limit;
    while (!pred()) {
        if (Clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

TEST(RecordingRoundTrip, SimulatorToFileToDump) {
    test::TempDir dir;
    SystemCoordinator coordinator;
    coordinator.SetActiveProfile(dir.File("Defaults.Hni"));
    RunFlag run;
    run.Raise();
    AcquireFilter filter;
    MessageProcessor bus("data", run, filter, [] { return std::int64_t{1'700'000'000}; });
    MonotonicTickSource ticks;
    StorageControl control(coordinator);
    StorageDataProcessor recorder(bus, control, ticks);
    Counter counter;
    control.SetProcessorStarter([&] { recorder.Start(); });
    bus.Start(200);
    bus.Attach(&counter);

    StorageSettings s = control.getSettings();
    s.recordDir = dir.path();
    s.recordForm = 0;  // raw: the file holds the wire bytes
    s.mode = ModeRecord;
    control.setSettings(s);
    ASSERT_TRUE(
        WaitFor([&] { return control.getStatus().state == StateRecord; }, std::chrono::seconds(3)));

    SimOptions o = test::TestOptions();
    o.autostart = true;
    o.form = 84;
    o.packing = 3;
    o.rateMultiplier = 20;
    o.sentLogFile = dir.File("sent.jsonl");
    auto sim = std::make_unique<test::RunningSim>(o);
    ASSERT_TRUE(sim->started);
    const auto deadline = Clock::now() + std::chrono::seconds(20);
    std::atomic<int> posted{0};
    std::thread reader([&] { posted = ReadLinkOntoBus(sim->server->dataPort(), bus, deadline); });
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    sim->server->Stop();  // closes the link; the reader ends at its end
    reader.join();
    ASSERT_GT(posted.load(), 20);
    ASSERT_TRUE(
        WaitFor([&] { return counter.seen.load() == posted.load(); }, std::chrono::seconds(5)));
    control.RequestStop();
    ASSERT_TRUE(WaitFor([&] { return control.getStatus().state == StateIdleRecord; },
                        std::chrono::seconds(3)));
    bus.Detach(&counter);
    bus.Detach(&recorder);

    std::vector<nlohmann::json> sent;
    std::ifstream log(dir.File("sent.jsonl"));
    for (std::string line; std::getline(log, line);) {
        nlohmann::json j = nlohmann::json::parse(line);
        if (j["link"] == "data") sent.push_back(std::move(j));
    }
    const std::string file = dir.File("SonarData000.hsf");
    std::ifstream in(file, std::ios::binary);
    const std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)), {});
    const std::string dump = Capture(std::string(HALVO_HSF_BIN) + " dump --json " + file);
    std::vector<nlohmann::json> records;
    std::istringstream lines(dump);
    for (std::string line; std::getline(lines, line);)
        records.push_back(nlohmann::json::parse(line));
    ASSERT_FALSE(records.empty());
    EXPECT_EQ(records.back()["state"], "END OF FILE");
    records.pop_back();
    ASSERT_EQ(records.size(), sent.size());
    ASSERT_EQ(records.size(), static_cast<std::size_t>(posted.load()));
    for (std::size_t i = 0; i < records.size(); ++i) {
        const nlohmann::json& r = records[i];
        for (const char* key : {"type", "direction", "subsystem", "channel", "size"}) {
            ASSERT_EQ(r[key], sent[i][key]) << key << " of record " << i;
        }
        const std::size_t at = r["offset"];
        const std::size_t length = 16 + r["size"].get<std::size_t>();
        ASSERT_LE(at + length, bytes.size());
        EXPECT_EQ(SimCrc32({bytes.data() + at, length}), sent[i]["crc32"]) << i;
    }
}

}  // namespace
}  // namespace halvo

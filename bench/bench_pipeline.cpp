// The whole road of a ping without a window: simulator -> data endpoint -> data bus -> stamping
// -> display chain with four displays -> recorder -> status, driven by the headless runner as
// the program runs it. The simulator's rate multiplier is stepped up until the pipeline no
// longer keeps up (the simulator falls behind the rate asked of it, held back by TCP) or
// something the simulator sent is missing from the recording, counted and CRC-checked against
// its sent log. Beside it, in the same program, the simulator's plain send rate into a reader
// that only discards bytes; and playback of a 1 GB file through the same chain, at the highest
// playback rate and without pacing.
//
// Files go to a temporary folder that is removed at the end.

#include <arpa/inet.h>
#include <benchmark/benchmark.h>

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include "LoopbackConnect.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "core/MessageHub.h"
#include "core/MessageTypes.h"
#include "dsp/DisplayLineOutput.h"
#include "halvo-sim/SimServer.h"
#include "platform/FakeSystemClock.h"
#include "platform/MonotonicTickSource.h"
#include "storage/HsfReader.h"
#include "storage/PlaybackPreparer.h"
#include "storage/StorageControl.h"
#include "storage/StorageSettings.h"
#include "storage/StorageState.h"
#include "system/HeadlessRunner.h"
#include "system/LineCacheDocument.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

std::uint32_t Crc32(std::span<const std::uint8_t> bytes) {
    static const std::array<std::uint32_t, 256> table = [] {
        std::array<std::uint32_t, 256> t{};
        for (std::uint32_t i = 0; i < 256; ++i) {
            std::uint32_t c = i;
            for (int k = 0; k < 8; ++k) c = c & 1 ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            t[i] = c;
        }
        return t;
    }();
    std::uint32_t c = 0xFFFFFFFFu;
    for (std::uint8_t b : bytes) c = table[(c ^ b) & 0xFF] ^ (c >> 8);
    return c ^ 0xFFFFFFFFu;
}

// A temporary working folder; the program reads and writes its settings in the current folder.
class WorkDir {
  public:
    WorkDir() : old_(fs::current_path()) {
        char name[] = "/tmp/halvo-bench-pipeline.XXXXXX";
        path_ = ::mkdtemp(name) ? name : "";
        if (!path_.empty()) fs::current_path(path_);
    }
    ~WorkDir() {
        fs::current_path(old_);
        std::error_code ec;
        if (!path_.empty()) fs::remove_all(path_, ec);
    }
    const std::string& path() const { return path_; }

  private:
    fs::path old_;
    std::string path_;
};

struct SentMessage {
    std::uint32_t crc;
    std::uint64_t bytes;
    int type;
};

std::vector<SentMessage> ReadSentLog(const std::string& path) {
    std::vector<SentMessage> out;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        const auto j = nlohmann::json::parse(line, nullptr, false);
        if (j.is_discarded() || j.value("link", "") != "data") continue;
        out.push_back({j.value("crc32", 0u), 16u + j.value("size", 0u), j.value("type", 0)});
    }
    return out;
}

// CRCs of every record of the recordings, files in name order.
std::vector<std::uint32_t> ReadRecordings(const std::string& dir, const std::string& stem) {
    std::vector<std::string> files;
    for (const auto& e : fs::directory_iterator(dir)) {
        const std::string name = e.path().filename().string();
        if (name.rfind(stem, 0) == 0 && e.path().extension() == ".hsf") files.push_back(e.path());
    }
    std::sort(files.begin(), files.end());
    std::vector<std::uint32_t> out;
    for (const std::string& f : files) {
        halvo::HsfReader reader;
        if (!reader.Open(f)) continue;
        for (std::size_t guard = 0; guard < 100'000'000; ++guard) {
            std::span<const std::uint8_t> record;
            const halvo::ReadStatus s = reader.NextView(record);
            if (s == halvo::ReadStatus::Record) {
                out.push_back(Crc32(record));
            } else if (s != halvo::ReadStatus::Deferred) {
                break;
            }
        }
    }
    return out;
}

// Four displays (five rows less the plot row). The recorder keeps the raw form, byte for byte as
// it arrived, so that the recording can be compared with the simulator's sent log by CRC. A
// depth above 0 sets the acquisition window of the three sonars, in samples, which sets the
// size of every trace the simulator sends.
void WriteSettings(int commandPort, int dataPort, const std::string& dir, int playbackRate,
                   int depthSamples = 0) {
    std::ofstream ini("bench.Hni");
    for (int d = 0; depthSamples > 0 && d < 3; ++d) {
        ini << "[SBSonar" << d << "]\nWindowUnits=0\nADCDepth=" << depthSamples << "\n";
    }
    ini << "[OverallConfig]\nNumSplits0=5\nHasPlot0=1\n"
        << "[MessageSonarCommand]\nHostName=127.0.0.1\nPort=" << commandPort
        << "\n[MessageSonarData]\nHostName=127.0.0.1\nPort=" << dataPort
        << "\nRecvSize=500000\n[Network]\nReconnectInterval=500\n[Storage]\nRecordDir=" << dir
        << "\nRecordFile=Bench\nSegyOnly=0\nMaxRecordSize=0\nPlaybackRate=" << playbackRate << "\n";
}

// The simulator on free loopback ports, discovery off, pinging by itself at a multiple of its
// survey rate.
halvo::SimOptions LoopbackSim(double multiplier) {
    halvo::SimOptions o;
    o.portBase = 0;
    o.discoveryPort = -1;
    o.quiet = true;
    o.autostart = true;
    o.rateMultiplier = multiplier;
    return o;
}

struct LiveRun {
    double seconds = 0;
    std::uint64_t sent = 0, sentTraces = 0, sentBytes = 0;
    std::uint64_t compared = 0, missing = 0, tail = 0;
    std::uint64_t lines[4] = {};
};

// One live run at a multiplier: the headless program records what the simulator sends for
// `seconds`, then the sent log and the recording are compared.
LiveRun RunLive(double multiplier, double seconds, int depthSamples = 0) {
    WorkDir dir;
    LiveRun r;
    halvo::SystemWallClock wall;
    halvo::SimOptions o = LoopbackSim(multiplier);
    o.sentLogFile = dir.path() + "/sent.jsonl";
    std::vector<std::uint32_t> recorded;
    {
        halvo::SimServer sim(o, wall);
        std::string error;
        if (!sim.Start(error)) return r;
        WriteSettings(sim.commandPort(), sim.dataPort(), dir.path(), 1000, depthSamples);
        halvo::MonotonicTickSource ticks;
        halvo::FakeSystemClock systemClock;
        std::ostringstream log;
        const auto start = Clock::now();
        {
            halvo::System system(halvo::System::Platform{ticks, systemClock});
            halvo::HeadlessOptions options;
            options.settings = "bench.Hni";
            options.durationSeconds = seconds;
            options.record = true;
            options.ping = true;
            halvo::HeadlessRunner runner(system, options, log);
            std::atomic<bool> stop{false};
            runner.Run(stop);
            for (int d = 0; d < 4; ++d) r.lines[d] = system.Lines().Lines(d);
        }
        r.seconds = std::chrono::duration<double>(Clock::now() - start).count();
        sim.Stop();
    }
    const std::vector<SentMessage> sent = ReadSentLog(o.sentLogFile);
    recorded = ReadRecordings(dir.path(), "Bench");
    // The recording is the stream as a subsequence, from the first message recorded on (the
    // recorder starts a moment after the link). Anything unmatched after that is a loss.
    std::size_t k = 0, first = sent.size();
    for (std::size_t i = 0; i < sent.size() && first == sent.size(); ++i) {
        for (std::size_t j = 0; j < recorded.size() && j < 64; ++j) {
            if (recorded[j] == sent[i].crc) {
                first = i;
                k = j;
                break;
            }
        }
    }
    // It ends at the last message recorded: the simulator goes on sending while the program
    // closes, after the recorder has stopped.
    std::size_t last = sent.size();
    if (!recorded.empty()) {
        for (std::size_t i = sent.size(); i-- > first;) {
            if (sent[i].crc == recorded.back()) {
                last = i + 1;
                break;
            }
        }
    }
    for (std::size_t i = first; i < last; ++i) {
        ++r.compared;
        std::size_t j = k;
        while (j < recorded.size() && recorded[j] != sent[i].crc && j - k < 8) ++j;
        if (j < recorded.size() && recorded[j] == sent[i].crc) {
            k = j + 1;
        } else {
            ++r.missing;
            std::fprintf(stderr, "missing: sent message %zu of %zu (type %d)\n", i, sent.size(),
                         sent[i].type);
        }
    }
    r.tail = sent.size() - last;
    for (const SentMessage& m : sent) {
        ++r.sent;
        r.sentBytes += m.bytes;
        if (m.type == 80) ++r.sentTraces;
    }
    return r;
}

constexpr double kRunSeconds = 6;

// The simulator's SBSS survey rate, as traces a second at multiplier 1, measured at 10.
double BaseTraceRate() {
    static const double base = [] {
        const LiveRun r = RunLive(10, kRunSeconds);
        return r.seconds > 0 ? static_cast<double>(r.sentTraces) / r.seconds / 10.0 : 0.0;
    }();
    return base;
}

// Argument: the acquisition window in samples (0: the simulator's default, small traces).
void BM_PipelineLive(benchmark::State& state) {
    const int depth = static_cast<int>(state.range(0));
    const double base = BaseTraceRate();
    double best = 0, bestTraces = 0, bestMB = 0;
    std::uint64_t compared = 0, missing = 0;
    for (auto _ : state) {
        // Step up from 20 times the survey rate until the pipeline falls behind or loses.
        for (double m = 20; m <= 2560; m *= 2) {
            const LiveRun r = RunLive(m, kRunSeconds, depth);
            const double traces = static_cast<double>(r.sentTraces) / r.seconds;
            const double mb = static_cast<double>(r.sentBytes) / r.seconds / 1e6;
            const bool kept = traces >= 0.9 * base * m;
            std::fprintf(
                stderr,
                "x%-5.0f asked %7.1f traces/s, carried %7.1f traces/s %6.2f MB/s, "
                "%llu compared, %llu missing, %llu after the recorder stopped, lines "
                "%llu/%llu/%llu/%llu%s\n",
                m, base * m, traces, mb, static_cast<unsigned long long>(r.compared),
                static_cast<unsigned long long>(r.missing), static_cast<unsigned long long>(r.tail),
                static_cast<unsigned long long>(r.lines[0]),
                static_cast<unsigned long long>(r.lines[1]),
                static_cast<unsigned long long>(r.lines[2]),
                static_cast<unsigned long long>(r.lines[3]), kept ? "" : "  (fell behind)");
            compared += r.compared;
            missing += r.missing;
            if (r.missing == 0 && traces > bestTraces) {
                best = m;
                bestTraces = traces;
                bestMB = mb;
            }
            if (!kept || r.missing != 0) break;
        }
    }
    state.counters["survey_traces/s"] = base;
    state.counters["bytes/trace"] = bestTraces > 0 ? bestMB * 1e6 / bestTraces : 0;
    state.counters["best_multiplier"] = best;
    state.counters["traces/s"] = bestTraces;
    state.counters["MB/s"] = bestMB;
    state.counters["compared"] = static_cast<double>(compared);
    state.counters["missing"] = static_cast<double>(missing);
}

// The simulator alone, as fast as it goes, into a reader that discards the bytes.
void BM_SimPlainSend(benchmark::State& state) {
    halvo::SystemWallClock wall;
    halvo::SimOptions o = LoopbackSim(1e6);
    halvo::SimServer sim(o, wall);
    std::string error;
    if (!sim.Start(error)) {
        state.SkipWithError(error.c_str());
        return;
    }
    const int fd = halvo::bench::ConnectLoopback(sim.dataPort());
    if (fd < 0) {
        state.SkipWithError("cannot connect to the data port");
        return;
    }
    std::vector<char> buf(1 << 20);
    std::uint64_t bytes = 0;
    double seconds = 0;
    const std::uint64_t traces0 = sim.Counters().traces;
    for (auto _ : state) {
        const auto start = Clock::now();
        while (Clock::now() - start < std::chrono::seconds(3)) {
            pollfd p{fd, POLLIN, 0};
            if (::poll(&p, 1, 100) <= 0) continue;
            const ssize_t n = ::recv(fd, buf.data(), buf.size(), 0);
            if (n <= 0) break;
            bytes += static_cast<std::uint64_t>(n);
        }
        seconds += std::chrono::duration<double>(Clock::now() - start).count();
    }
    ::close(fd);
    const std::uint64_t traces = sim.Counters().traces - traces0;
    sim.Stop();
    state.counters["traces/s"] = static_cast<double>(traces) / seconds;
    state.counters["MB/s"] = static_cast<double>(bytes) / seconds / 1e6;
}

// A file of about 1 GB for playback: a short live recording of the simulator (x40) repeated.
// Returns its records, 0 when nothing was recorded.
std::uint64_t MakeGigabyteFile(const std::string& dir, const std::string& big,
                               std::uint64_t& size) {
    {
        halvo::SystemWallClock wall;
        halvo::SimOptions o = LoopbackSim(40);
        halvo::SimServer sim(o, wall);
        std::string error;
        if (!sim.Start(error)) return 0;
        WriteSettings(sim.commandPort(), sim.dataPort(), dir, 1000);
        halvo::MonotonicTickSource ticks;
        halvo::FakeSystemClock systemClock;
        std::ostringstream log;
        halvo::System system(halvo::System::Platform{ticks, systemClock});
        halvo::HeadlessOptions options;
        options.settings = "bench.Hni";
        options.durationSeconds = 4;
        options.record = true;
        options.ping = true;
        halvo::HeadlessRunner runner(system, options, log);
        std::atomic<bool> stop{false};
        runner.Run(stop);
        sim.Stop();
    }
    const std::string recording = dir + "/Bench000.hsf";
    std::vector<std::uint8_t> sample;
    {
        std::ifstream in(recording, std::ios::binary);
        sample.assign(std::istreambuf_iterator<char>(in), {});
    }
    const std::uint64_t records = ReadRecordings(dir, "Bench").size();
    fs::remove(recording);
    if (sample.empty() || records == 0) return 0;
    size = 0;
    std::ofstream out(big, std::ios::binary);
    while (size < (1ull << 30)) {
        out.write(reinterpret_cast<const char*>(sample.data()),
                  static_cast<std::streamsize>(sample.size()));
        size += sample.size();
    }
    return records * (size / sample.size());
}

// Processor time so far of this process's thread with the given name, in seconds; 0 when none.
double ThreadCpuSeconds(const std::string& name) {
    std::error_code ec;
    for (const auto& task : fs::directory_iterator("/proc/self/task", ec)) {
        std::ifstream comm(task.path() / "comm");
        std::string n;
        std::getline(comm, n);
        if (n != name) continue;
        std::ifstream statFile(task.path() / "stat");
        std::string stat;
        std::getline(statFile, stat);
        // Fields after the parenthesised name: state is the 3rd, utime the 14th, stime the 15th.
        const std::size_t close = stat.rfind(')');
        if (close == std::string::npos) return 0;
        std::istringstream rest(stat.substr(close + 2));
        std::string field;
        double utime = 0, stime = 0;
        for (int i = 3; i <= 15 && rest >> field; ++i) {
            if (i == 14) utime = std::stod(field);
            if (i == 15) stime = std::stod(field);
        }
        return (utime + stime) / static_cast<double>(::sysconf(_SC_CLK_TCK));
    }
    return 0;
}

// Without pacing: the file read as fast as the data bus takes it, under playback's own hold-off
// rule (nothing posted while the queue is above three quarters), each record prepared as the
// program prepares a played record. The program's own reader stays open on a file at rate 0,
// so storage is in playback and the display chain holds back for the displays rather than
// dropping lines, as it does when a file plays.
struct Feed {
    std::uint64_t records = 0;
    double seconds = 0;
    double busCpuSeconds = 0;  // the data bus thread's: the chain's own cost
    bool started = false;
};

void FeedUnpaced(halvo::System& system, const std::string& file, std::atomic<bool>& stop,
                 Feed& feed) {
    halvo::StorageControl& storage = system.Storage();
    for (int i = 0; i < 1000 && storage.getStatus().state != halvo::StatePlayback; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    halvo::StorageSettings settings = storage.getSettings();
    settings.playbackRate = 0;
    storage.setSettings(settings);
    halvo::HsfReader reader;
    if (storage.getStatus().state != halvo::StatePlayback || !reader.Open(file)) {
        stop = true;
        return;
    }
    feed.started = true;
    // A display reader that keeps up: the queue is emptied as soon as lines wait, so the chain
    // never has to hold back for it and what is measured is the chain itself. The drain's own
    // guard keeps it and the runner's drain from reading the queue at the same time.
    std::atomic<bool> feeding{true};
    std::thread drainer([&system, &feeding] {
        for (std::size_t i = 0; i < 1'000'000'000 && feeding.load(); ++i) {
            if (system.DrainDisplays(false) <= 0) {
                std::this_thread::sleep_for(std::chrono::microseconds(100));
            }
        }
    });
    halvo::PlaybackPreparer preparer;
    halvo::MessageProcessor& bus = system.Hub().DataBus();
    const std::size_t limit = (3 * bus.QueueCapacity()) / 4;
    const double busCpu0 = ThreadCpuSeconds("halvo-data-bus");
    const auto start = Clock::now();
    const auto deadline = start + std::chrono::minutes(15);
    for (std::size_t g = 0; g < 100'000'000 && Clock::now() < deadline; ++g) {
        halvo::SonarMessage message;
        const halvo::ReadStatus s = reader.Next(message);
        if (s == halvo::ReadStatus::Deferred) continue;
        if (s != halvo::ReadStatus::Record) break;
        preparer.Prepare(message, settings, {});
        while (bus.QueueDepth() > limit && Clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        bus.Post(message, halvo::SourcePlayback);  // a refused record is freed, as in playback
        ++feed.records;
    }
    for (int i = 0; i < 10000 && bus.QueueDepth() > 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    feed.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    feed.busCpuSeconds = ThreadCpuSeconds("halvo-data-bus") - busCpu0;
    feeding = false;
    drainer.join();
    stop = true;
}

// Playback of a 1 GB file through the same chain, headless. Argument 0: the program's own
// playback at the highest rate (10000 records a second asked, at most 400 a bus tick), with the
// headless runner's display drain. Argument 1: without pacing (above).
void BM_Playback1GB(benchmark::State& state) {
    const bool unpaced = state.range(0) != 0;
    WorkDir dir;
    const std::string big = dir.path() + "/Big.hsf";
    std::uint64_t size = 0;
    const std::uint64_t records = MakeGigabyteFile(dir.path(), big, size);
    if (records == 0) {
        state.SkipWithError("no recording to repeat");
        return;
    }
    double seconds = 0;
    std::uint64_t lines[4] = {}, queued = 0, dropped = 0, fed = 0;
    double busCpu = 0;
    for (auto _ : state) {
        WriteSettings(1, 2, dir.path(), unpaced ? 1 : halvo::StorageSettings::kMaxPlaybackRate);
        halvo::MonotonicTickSource ticks;
        halvo::FakeSystemClock systemClock;
        std::ostringstream log;
        halvo::System::Platform platform{ticks, systemClock};
        platform.busQueue = 1000;  // playback holds off at three quarters of the queue
        halvo::System system(platform);
        halvo::HeadlessOptions options;
        options.settings = "bench.Hni";
        options.play = {big};
        options.durationSeconds = 900;
        halvo::HeadlessRunner runner(system, options, log);
        std::atomic<bool> stop{false};
        Feed feed;
        const auto start = Clock::now();
        std::thread feeder;
        if (unpaced)
            feeder =
                std::thread(FeedUnpaced, std::ref(system), big, std::ref(stop), std::ref(feed));
        runner.Run(stop);
        if (feeder.joinable()) feeder.join();
        seconds =
            unpaced ? feed.seconds : std::chrono::duration<double>(Clock::now() - start).count();
        fed = feed.records;
        busCpu = feed.busCpuSeconds;
        for (int d = 0; d < 4; ++d) lines[d] = system.Lines().Lines(d);
        queued = system.LineOutput().Queued();
        dropped = system.LineOutput().Dropped();
        if (unpaced && !feed.started) state.SkipWithError("playback did not start");
    }
    const double played = unpaced ? static_cast<double>(fed) : static_cast<double>(records);
    const double playedMB = played / static_cast<double>(records) * static_cast<double>(size) / 1e6;
    state.counters["GB"] = static_cast<double>(size) / 1e9;
    state.counters["records/s"] = played / seconds;
    state.counters["MB/s"] = playedMB / seconds;
    state.counters["lines_display0"] = static_cast<double>(lines[0]);
    state.counters["lines_display3"] = static_cast<double>(lines[3]);
    state.counters["lines_queued"] = static_cast<double>(queued);
    state.counters["lines_dropped"] = static_cast<double>(dropped);
    if (unpaced && busCpu > 0) {
        // What one core given to the bus thread alone would carry.
        state.counters["bus_thread_MB/s_of_cpu"] = playedMB / busCpu;
        state.counters["bus_thread_busy"] = busCpu / seconds;
    }
}

}  // namespace

BENCHMARK(BM_SimPlainSend)->Iterations(1)->UseRealTime()->Unit(benchmark::kSecond);
BENCHMARK(BM_PipelineLive)
    ->Arg(0)
    ->Arg(11000)
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kSecond);
BENCHMARK(BM_Playback1GB)->Arg(0)->Arg(1)->Iterations(1)->UseRealTime()->Unit(benchmark::kSecond);
BENCHMARK_MAIN();

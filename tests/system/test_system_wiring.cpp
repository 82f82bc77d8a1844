// The whole program's wiring, checked end to end: a headless run against the simulator on real
// loopback sockets, and what an operator would see or find on disk afterwards. Each piece here
// had passing class tests while the running program never connected it.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <future>
#include <mutex>
#include <sstream>

#include "app/EventLog.h"
#include "app/Housekeeping.h"
#include "app/ModuleContext.h"
#include "app/SystemModule.h"
#include "app/TempWorkDir.h"
#include "core/ByteOrder.h"
#include "core/MessageHub.h"
#include "core/MessageObserver.h"
#include "core/MessageTypes.h"
#include "display/DisplayDocumentIF.h"
#include "platform/FakeSystemClock.h"
#include "platform/MonotonicTickSource.h"
#include "sim/SimTestServer.h"
#include "status/StatusDataProcessor.h"
#include "storage/HsfTestWriter.h"
#include "storage/StorageTestSupport.h"
#include "system/HeadlessRunner.h"
#include "system/LineCacheDocument.h"

namespace halvo {
namespace {

class SystemWiringTest : public test::TempWorkDir {
  protected:
    // Runs the headless program for `seconds` with these settings; returns its printed log.
    std::string Run(System& system, double seconds, bool record, bool ping,
                    std::vector<std::string> play = {}) {
        std::ostringstream log;
        HeadlessOptions options;
        options.settings = "survey.Hni";
        options.durationSeconds = seconds;
        options.record = record;
        options.ping = ping;
        options.play = std::move(play);
        HeadlessRunner runner(system, options, log);
        std::atomic<bool> stop{false};
        EXPECT_EQ(runner.Run(stop), 0);
        return log.str();
    }

    static std::vector<std::int32_t> Words(const std::string& bytes) {
        std::vector<std::int32_t> out(bytes.size() / 4);
        const std::span<const std::uint8_t> b(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                              bytes.size());
        for (std::size_t i = 0; i < out.size(); ++i) out[i] = GetLE<std::int32_t>(b, 4 * i);
        return out;
    }

    MonotonicTickSource ticks_;
    FakeSystemClock clock_;
};

// A live survey: the status line and alerts hear the sonar, the displays and the system status;
// Bathy.dat and the per-file log are written; what goes out on the link is scaled as floats, and
// the address is read as four decimal parts.
TEST_F(SystemWiringTest, LiveSurveyReachesStatusAlertsBathymetryAndLogs) {
    SimOptions o = test::TestOptions();
    o.quiet = true;
    o.autostart = true;
    o.host = "127.0.0.10";  // reached only if "010" is read as ten, not as octal eight
    o.logFile = (dir_ / "received.jsonl").string();
    test::RunningSim sim(o);
    ASSERT_TRUE(sim.started);
    {
        std::ofstream ini("survey.Hni");
        ini << "[MessageSonarCommand]\nHostName=127.000.000.010\nPort=" << sim.server->commandPort()
            << "\n[MessageSonarData]\nHostName=127.0.0.010\nPort=" << sim.server->dataPort()
            << "\n[Network]\nReconnectInterval=500\n[Messages]\nProcessorQueueSize=333\n"
               "[Storage]\nRecordDir="
            << dir_.string()
            << "\nRecordFile=Survey\nSaveBathyData=1\n"
               "[Logging]\nFlags=3\nEnablePerFileLog=1\nCommentLine1=wiring\n"
               "[SBSonar0]\nPingRate=4.1\nOverallPulsePower=80\n[SBSonar0_0]\nPulsePower=75\n"
               "ADCGain=0.7\n"
               "[DisplayProcessing0]\nChannel=0\nTVGStart=30\nTrackRange=0\n"
               "[Status]\nFlags=0x147E010\nAlertFlags=4\nAltitudeDisplayNumber=0\n"
               "AltitudeWarningLevel=20\n";
    }
    System system(System::Platform{ticks_, clock_});
    const std::string log = Run(system, 4, true, true);
    sim.server->Stop();
    ASSERT_NE(log.find("SONAR : Connected"), std::string::npos) << log;
    EXPECT_EQ(system.Hub().DataBus().QueueCapacity(), 333u);
    EXPECT_EQ(system.Hub().CommandBus().QueueCapacity(), 333u);

    // Pings and signals of all three sonars, the gain, the system status reply and the
    // reflection of display 0.
    const std::string line = system.Status().statusLine();
    for (const char* item : {"SB ", "SL ", "SH ", "SBS ", "SLS ", "SHS ", "SBG ", "OF=", "RC "})
        EXPECT_NE(line.find(item), std::string::npos) << item << " in " << line;
    EXPECT_EQ(line.find("SB 0 |"), std::string::npos) << line;

    // Display 0 holds its bottom 30 m down, above the 20 m warning level: no ALT, and the pane
    // shows that altitude.
    EXPECT_EQ(system.Status().getAlerts() & 0x4u, 0u) << system.Status().alertText();
    Housekeeping housekeeping(system.HousekeepingSources(), nullptr);
    for (int i = 0; i < Housekeeping::kIndicatorEvery; ++i) housekeeping.Update();
    EXPECT_EQ(housekeeping.Pane(Housekeeping::kAltitudePane).text, "Alt  30");

    // One 24-byte record per trace of channel 0, its depth from that bottom.
    const auto bathy = Words(ReadFile("Bathy.dat"));
    ASSERT_GE(bathy.size(), 6u * 10);
    EXPECT_EQ(bathy.size() % 6, 0u);
    for (std::size_t r = 0; r + 6 <= bathy.size(); r += 6) {
        EXPECT_EQ(bathy[r], 123456);
        EXPECT_NEAR(bathy[r + 4], 30000, 30) << "record " << r / 6;
        if (r > 0) {
            EXPECT_GT(bathy[r + 1], bathy[r - 5]) << "ping numbers rise";
        }
    }

    // The per-file log names each transducer's share of the power.
    const std::string perFile = ReadFile("Survey000.txt");
    EXPECT_NE(perFile.find("DACGain    80.0 of   75.0 "), std::string::npos) << perFile;
    // Socket traffic in the event log, both ways.
    EXPECT_NE(log.find("SONRDAT : Cmd "), std::string::npos);
    EXPECT_NE(log.find("SONRCMD : Cmd "), std::string::npos);

    // The float settings went out as the floats scale: 4.1 Hz as 4100, a 0.7 gain as 700.
    bool rate = false, gain = false;
    for (const auto& j : test::ReadSimLog(o.logFile, "command")) {
        if (j["type"] == MsgPingRate && j["words"].size() == 1) rate |= j["words"][0] == 4100;
        if (j["type"] == MsgChannelGain && j["words"].size() == 1) gain |= j["words"][0] == 700;
    }
    EXPECT_TRUE(rate);
    EXPECT_TRUE(gain);
}

// Without a link nothing is logged as sent; a played file is not socket traffic, yet it writes
// Bathy.dat as live data does.
TEST_F(SystemWiringTest, PlaybackWritesBathymetryAndNoSocketLines) {
    HsfTestWriter file;
    for (int ping = 1; ping <= 20; ++ping) {
        TraceSpec spec;
        spec.ping = ping;
        spec.channel = 0;
        spec.samples = 2000;
        file.Add(HsfTestWriter::MakeTrace(spec));
    }
    ASSERT_TRUE(file.Save("played.hsf"));
    // Ports nobody listens on: the sonar stays unreachable.
    std::ofstream("survey.Hni")
        << "[MessageSonarCommand]\nHostName=127.0.0.1\nPort=9\n[MessageSonarData]\n"
           "HostName=127.0.0.1\nPort=9\n[Storage]\nSaveBathyData=1\n[Logging]\nFlags=3\n"
           "[DisplayProcessing0]\nChannel=0\nTVGStart=15\n";
    System system(System::Platform{ticks_, clock_});
    // A document whose first update throws: the run says so and goes on draining.
    struct Throwing final : DisplayDocumentIF {
        int updates = 0;
        void OnDisplayNotice(int argument, const SharedLine&) override {
            if (argument == kUpdateViews && updates++ == 0) throw std::runtime_error("bad view");
        }
    } document;
    system.AddDocument(&document);
    // The sonars are switched on: commands that can never leave.
    const std::string log = Run(system, 30, false, true, {"played.hsf"});
    EXPECT_NE(log.find("Timer Exception : Exception In On Timer Main Frame: bad view"),
              std::string::npos)
        << log;
    EXPECT_GT(document.updates, 1);
    EXPECT_EQ(log.find("SONRCMD"), std::string::npos) << log;
    EXPECT_EQ(log.find("SONRDAT"), std::string::npos) << log;
    const auto bathy = Words(ReadFile("Bathy.dat"));
    ASSERT_EQ(bathy.size(), 6u * 20) << log;
    EXPECT_EQ(bathy[1], 1);
    EXPECT_NEAR(bathy[4], 15000, 30);
}

// A part added after the core joins the fixed orders through the module registry: its settings
// load before anything starts, it attaches to the data bus behind every fixed observer, takes the
// finished lines from the display timer, saves with the rest, and lets go of everything at the end.
TEST_F(SystemWiringTest, RegisteredModuleFollowsTheFixedOrdersAndSeesEveryLine) {
    HsfTestWriter file;
    for (int ping = 1; ping <= 12; ++ping) {
        TraceSpec spec;
        spec.ping = ping;
        spec.samples = 1000;
        file.Add(HsfTestWriter::MakeTrace(spec));
    }
    ASSERT_TRUE(file.Save("played.hsf"));
    std::ofstream("survey.Hni") << "[MessageSonarCommand]\nHostName=127.0.0.1\nPort=9\n"
                                   "[MessageSonarData]\nHostName=127.0.0.1\nPort=9\n"
                                   "[DisplayProcessing0]\nChannel=0\n";

    struct Recording final : SystemModule, MessageObserver, DisplayDocumentIF {
        explicit Recording(ModuleContext c, std::vector<std::string>& calls)
            : context(std::move(c)), calls(calls) {}
        std::string_view Name() const override { return "recording"; }
        void Load() override { calls.push_back("load"); }
        void Save() override { calls.push_back("save"); }
        void Start() override {
            calls.push_back("start");
            context.dataBus.Attach(this);
            context.attachLines(this);
        }
        void Stop() override {
            calls.push_back("stop");
            context.dataBus.Detach(this);
            context.detachLines(this);
        }
        void DeliverMessage(SonarMessage* m, int, std::uint32_t) override {
            if (m != nullptr && m->type() == MsgTrace) ++traces;
        }
        void OnDisplayNotice(int argument, const SharedLine& line) override {
            if (argument == kStoreElement && line) ++lines;
        }
        ModuleContext context;
        std::vector<std::string>& calls;
        std::atomic<int> traces{0};
        int lines = 0;
    };
    std::vector<std::string> calls;
    System system(System::Platform{ticks_, clock_});
    auto& module = static_cast<Recording&>(system.AddModule(
        Component::Printers, std::make_unique<Recording>(system.Context(), calls)));
    std::vector<MessageObserver*> observersWhileRunning;
    {
        std::ostringstream out;
        HeadlessOptions options;
        options.settings = "survey.Hni";
        options.durationSeconds = 30;
        options.play = {"played.hsf"};
        HeadlessRunner runner(system, options, out);
        std::atomic<bool> stop{false};
        ASSERT_EQ(runner.Run(stop), 0) << out.str();
    }
    // Reloads of the defaults file and the settings file before the start, stopped at the end;
    // where the run saved, the save came between.
    ASSERT_GE(calls.size(), 3u);
    EXPECT_EQ(calls.front(), "load");
    const auto start = std::find(calls.begin(), calls.end(), "start");
    ASSERT_NE(start, calls.end());
    EXPECT_TRUE(std::all_of(calls.begin(), start, [](const auto& c) { return c == "load"; }));
    EXPECT_EQ(calls.back(), "stop");
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "stop"), 1);
    EXPECT_EQ(module.traces.load(), 12);
    EXPECT_EQ(static_cast<std::uint64_t>(module.lines), system.Lines().Lines(0));
    EXPECT_GE(module.lines, 12);
    const auto data = system.Hub().DataBus().Observers();
    EXPECT_EQ(std::find(data.begin(), data.end(), static_cast<MessageObserver*>(&module)),
              data.end());
    const auto trace = system.Sequence().Trace();
    EXPECT_NE(std::find(trace.begin(), trace.end(), "stop printers"), trace.end());
}

// The alarm as the operator hears it from the real program: a raised alert sounds its tone,
// here into a WAV file in place of the sound card, at the pitch and length of the settings.
TEST_F(SystemWiringTest, RaisedAlertSoundsItsToneFromTheProgram) {
    SimOptions o = test::TestOptions();
    o.quiet = true;
    o.autostart = true;
    test::RunningSim sim(o);
    ASSERT_TRUE(sim.started);
    std::ofstream("survey.Hni") << "[MessageSonarCommand]\nHostName=127.0.0.1\nPort="
                                << sim.server->commandPort()
                                << "\n[MessageSonarData]\nHostName=127.0.0.1\nPort="
                                << sim.server->dataPort()
                                << "\n[DisplayProcessing0]\nChannel=0\nTVGStart=30\n"
                                   "[Status]\nAlertFlags=0x104\nAltitudeWarningLevel=1000\n"
                                   "BeepWarningInterval=200\nBeepTone=1000\nBeepDuration=100\n";
    const std::string out = test::Run(std::string(HALVO_BIN) +
                                      " --headless --settings survey.Hni --duration 4 --ping "
                                      "--alarm-file alarm.wav");
    EXPECT_NE(out.find("ALERTS : Alerts pending 4"), std::string::npos) << out;
    const std::string wav = ReadFile("alarm.wav");
    ASSERT_GT(wav.size(), 44u) << out;
    EXPECT_EQ(wav.substr(0, 4), "RIFF");
    const auto samples = (wav.size() - 44) / 2;
    // Whole tones of 100 ms at 48 kHz, one per pass of the beep thread.
    EXPECT_EQ(samples % 4800, 0u);
    EXPECT_GE(samples, 4800u);
    const std::span<const std::uint8_t> bytes(
        reinterpret_cast<const std::uint8_t*>(wav.data()) + 44, 4800 * 2);
    int crossings = 0;
    for (std::size_t i = 1; i < 4800; ++i) {
        const auto a = GetLE<std::int16_t>(bytes, 2 * (i - 1));
        const auto b = GetLE<std::int16_t>(bytes, 2 * i);
        crossings += (a < 0) != (b < 0) ? 1 : 0;
    }
    EXPECT_NEAR(crossings, 200, 4);  // 1000 Hz for a tenth of a second
}

// Settings written by another editor, priority taken back, and a bus thread stuck in an observer:
// none of them may lose settings or hang the program.
TEST_F(SystemWiringTest, ByteOrderMarkPriorityAndAStuckBusAtExit) {
    const std::string bom = "\xEF\xBB\xBF";
    WriteFile("survey.Hni", bom +
                                "[Messages]\r\nProcessorQueueSize=77\r\n[Main]\r\nPriority=1\r\n"
                                "[MessageSonarCommand]\r\nHostName=127.0.0.1\r\nPort=9\r\n");
    auto nices = [] {
        std::vector<int> out;
        for (const auto& t : std::filesystem::directory_iterator("/proc/self/task"))
            out.push_back(::getpriority(PRIO_PROCESS, std::stoi(t.path().filename().string())));
        return out;
    };
    const int normal = ::getpriority(PRIO_PROCESS, 0);
    auto system = std::make_unique<System>(System::Platform{ticks_, clock_});
    system->Startup(nullptr, "survey.Hni");
    EXPECT_EQ(system->Hub().DataBus().QueueCapacity(), 77u);
    ASSERT_TRUE(system->SaveFile());
    const std::string saved = ReadFile("survey.Hni");
    EXPECT_EQ(saved.rfind(bom + "[Messages]", 0), 0u) << saved;
    EXPECT_EQ(saved.find("[Messages]", 4), std::string::npos) << saved;

    const auto lines = system->Log().Since(0);
    // Without the privilege the raise is refused and said so; only the way back is checked then.
    const bool raised = std::none_of(lines.begin(), lines.end(), [](const EventLog::Line& l) {
        return l.text.find("High priority refused") != std::string::npos;
    });
    if (raised) {
        for (const int n : nices()) EXPECT_EQ(n, normal - 5);
    }
    WriteFile("lower.Hni", "[Main]\nPriority=0\n");
    system->LoadFile("lower.Hni");
    for (const int n : nices()) EXPECT_EQ(n, normal);

    // An observer that never returns from a trace, as a write to a dying disk would not.
    struct Stuck final : MessageObserver {
        std::mutex mutex;
        std::condition_variable wake;
        bool entered = false, released = false;
        void DeliverMessage(SonarMessage* m, int, std::uint32_t) override {
            if (!m) return;
            std::unique_lock lock(mutex);
            entered = true;
            wake.notify_all();
            wake.wait_for(lock, std::chrono::seconds(30), [this] { return released; });
        }
    };
    static Stuck stuck;  // outlives the bus that is let go with its thread
    system->Hub().DataBus().Attach(&stuck);
    SonarMessage m = HsfTestWriter::MakeTrace(TraceSpec{});
    ASSERT_EQ(system->Hub().DataBus().Post(m, SourceLocal), 0);
    {
        std::unique_lock lock(stuck.mutex);
        ASSERT_TRUE(
            stuck.wake.wait_for(lock, std::chrono::seconds(10), [] { return stuck.entered; }));
    }
    auto ending = std::async(std::launch::async, [&system] { system.reset(); });
    EXPECT_EQ(ending.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    {
        std::lock_guard lock(stuck.mutex);
        stuck.released = true;
    }
    stuck.wake.notify_all();
    ending.wait();
}

}  // namespace
}  // namespace halvo

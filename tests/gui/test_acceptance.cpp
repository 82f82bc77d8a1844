// The windowed program as the operator runs it, against the simulator on loopback: the demo's
// settings (one sub-bottom display, two dual side-scan displays), the main window's own 250 ms
// timer, and the operator's gestures on the pages. A few seconds of survey each.
//
// A ping rate typed into the sonar page reaching the simulator as message 124 is covered by
// SonarPagesTest.PingRateTypedInThePageReachesTheSimulator (test_pages_sonar.cpp); here the
// sonars ping at all only because the window's timer ticks the controller, which sends their
// "on" from the pages.

#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <atomic>

#include "GuiTestApp.h"
#include "app/Housekeeping.h"
#include "app/TempWorkDir.h"
#include "core/MessageHub.h"
#include "display/PlotModel.h"
#include "display/SonarDataCache.h"
#include "gui/pages/CfgGraph.h"
#include "gui/sheets/CfgSheet.h"
#include "gui/sheets/EnterKeyFilter.h"
#include "gui/sheets/SetupWizard.h"
#include "gui/sheets/SheetPage.h"
#include "gui/shell/CColorStatusBar.h"
#include "gui/shell/ProgramWindows.h"
#include "gui/views/CChildFrameWaterfall.h"
#include "gui/views/CPlotWnd.h"
#include "gui/views/CWaterfallDoc.h"
#include "gui/views/DisplayWindows.h"
#include "gui/views/PlotView.h"
#include "halvo-sim/SimServer.h"
#include "platform/FakeSystemClock.h"
#include "platform/MonotonicTickSource.h"
#include "sim/SimTestServer.h"
#include "sonar/SonarIF.h"
#include "status/StatusDataProcessor.h"
#include "storage/HsfReader.h"
#include "storage/StorageControl.h"
#include "system/LineCacheDocument.h"
#include "system/System.h"

namespace halvo {
namespace {

constexpr int kDisplays = 3;  // what the demo's settings configure

// Traces that a played file sends down the data bus.
class PlayedTraces final : public MessageObserver {
  public:
    void DeliverMessage(SonarMessage* m, int source, std::uint32_t) override {
        if (m != nullptr && source == 5 && m->type() == 80) count.fetch_add(1);
    }
    std::atomic<int> count{0};
};

class Acceptance : public test::TempWorkDir {
  protected:
    // The simulator, then the program over the demo's settings with the simulator's ports.
    void StartProgram() {
        SimOptions o = test::TestOptions();
        o.quiet = true;
        o.nmeaPty = true;
        // Pings three times as fast as set, so a few seconds fill a stretch of waterfall.
        o.rateMultiplier = 3;
        sim_ = std::make_unique<SimServer>(o, simClock_);
        std::string error;
        ASSERT_TRUE(sim_->Start(error)) << error;
        ASSERT_FALSE(sim_->ptyPath().empty());

        const std::string demo = std::string(HALVO_SOURCE_DIR) + "/share/demo/";
        WriteFile("HalvoConfig.ini", ReadFile(demo + "HalvoConfig.ini"));
        std::string defaults = ReadFile(demo + "HalvoDefaults.Hni");
        ASSERT_FALSE(defaults.empty());
        for (const auto& [key, value] : {std::pair<std::string, std::string>{
                                             "@COMMAND_PORT@", std::to_string(sim_->commandPort())},
                                         {"@DATA_PORT@", std::to_string(sim_->dataPort())},
                                         {"@NMEA_DEVICE@", sim_->ptyPath()},
                                         {"@RECORD_DIR@", dir_.string()}}) {
            for (std::size_t at; (at = defaults.find(key)) != std::string::npos;) {
                defaults.replace(at, key.size(), value);
            }
        }
        ASSERT_EQ(defaults.find('@'), std::string::npos) << "a placeholder the test does not fill";
        WriteFile("HalvoDefaults.Hni", defaults);

        system_ = std::make_unique<System>(System::Platform{ticks_, clock_, &operator_});
        keys_ = std::make_unique<EnterKeyFilter>(system_->Coordinator());
        app_.installEventFilter(keys_.get());
        context_ = std::make_unique<SheetContext>(
            SheetContext{system_->Coordinator(), operator_, enables_});
        windows_ = std::make_unique<ProgramWindows>(*system_, *context_, "Halvo");
        windows_->Start({});
        // A laptop's screen rather than the offscreen platform's whole one.
        windows_->Frame().showNormal();
        windows_->Frame().resize(1366, 768);
        windows_->Show();
        ASSERT_NE(windows_->Displays(), nullptr);
    }

    void TearDown() override {
        if (system_) system_->Ending(false);
        windows_.reset();
        if (keys_) app_.removeEventFilter(keys_.get());
        system_.reset();
        if (sim_) sim_->Stop();
        TempWorkDir::TearDown();
    }

    QWidget* Page(const char* caption) {
        SheetPage* p = windows_->Sheet().FindPage(caption);
        EXPECT_NE(p, nullptr) << caption;
        if (p != nullptr) windows_->Sheet().ShowPage(p);
        return p;
    }
    // Every sonar of the installation on (or off again), from its page.
    void SonarsOn() {
        for (const char* page : {"SB", "SSL", "SSH"}) test::Button(Page(page), "SonarOn")->click();
    }
    // A command of the main window's menu bar, as the operator picks it.
    void Menu(const QString& text) {
        QAction* found = nullptr;
        for (QAction* a : windows_->Frame().menuBar()->findChildren<QAction*>()) {
            if (a->text() == text) found = a;
        }
        ASSERT_NE(found, nullptr) << text.toStdString();
        found->trigger();
    }
    QString LinkPane() const {
        return windows_->Frame().ColourBar()->PaneText(Housekeeping::kLinkPane);
    }
    // The window document's cache of a display.
    const SonarDataCache* Cache(int display) const {
        CWaterfallDoc* doc = windows_->Displays()->Document(0);
        return doc == nullptr ? nullptr : doc->ExistingCache(display);
    }
    std::int64_t CacheTotal(int display) const {
        const SonarDataCache* c = Cache(display);
        return c == nullptr ? 0 : c->Total();
    }
    // The event loop with the main window's timer running, until done or 15 s.
    static bool Run(const std::function<bool()>& done) { return test::PumpUntil(done, 15000); }
    // Starts the program and waits for the link and the first lines of the sonars turned on.
    void StartSurvey(const std::function<bool()>& linesIn) {
        ASSERT_NO_FATAL_FAILURE(StartProgram());
        ASSERT_TRUE(Run([&] { return LinkPane() == "NET:ON"; })) << LinkPane().toStdString();
        SonarsOn();
        ASSERT_TRUE(Run(linesIn));
    }

    QApplication& app_ = test::GuiApp();
    FixedWallClock simClock_{1700000000123LL};
    MonotonicTickSource ticks_;
    FakeSystemClock clock_;
    test::ScriptedOperator operator_;
    EnableTable enables_;
    std::unique_ptr<SimServer> sim_;
    std::unique_ptr<System> system_;
    std::unique_ptr<EnterKeyFilter> keys_;
    std::unique_ptr<SheetContext> context_;
    std::unique_ptr<ProgramWindows> windows_;
};

// Traces of type 80 in a data file, all of them and those of one subsystem's channel.
struct FileTraces {
    int all = 0;
    int ofChannel = 0;
};
FileTraces CountTraces(const std::string& path, int subsystem, int channel) {
    FileTraces t;
    HsfReader reader;
    if (!reader.Open(path)) return t;
    SonarMessage m;
    for (int n = 0; n < 1'000'000 && reader.Next(m) == ReadStatus::Record; ++n) {
        if (m.type() != 80) continue;
        ++t.all;
        if (m.subsystem() == subsystem && m.channel() == channel) ++t.ofChannel;
    }
    return t;
}

TEST_F(Acceptance, LiveSurveyIsShownRecordedAndPlayedBackWhole) {
    ASSERT_NO_FATAL_FAILURE(StartSurvey([&] {
        for (int d = 0; d < kDisplays; ++d) {
            if (system_->Lines().Lines(d) == 0 || CacheTotal(d) == 0) return false;
        }
        return true;
    }));

    // Record a few seconds as the operator does, from the disk page.
    test::Button(Page("Disk"), "Record")->click();
    StorageControl& storage = system_->Storage();
    ASSERT_TRUE(Run([&] { return storage.getStatus().state == StateRecord; }));
    const std::string file = storage.getStatus().file;
    test::PumpFor(3000);
    // The status line reads every sonar's pings and signals, at the size a wheelhouse needs, and
    // the altitude alarm set above the tracked seabed has a pane of its own.
    CColorStatusBar& bar = *windows_->Frame().ColourBar();
    for (const char* item : {"SB ", "SL ", "SH ", "SBS ", "SLS ", "SHS ", "RC "})
        EXPECT_TRUE(bar.Message().contains(item)) << item << " in " << bar.Message().toStdString();
    EXPECT_EQ(bar.MessagePixelSize(), 18);  // the demo's FontSize
    EXPECT_EQ(bar.PaneText(Housekeeping::kAlertPane), "ALERTS:  ALT");
    // Each display keeps lines enough to fill its window (two columns a line), so a palette or
    // zoom change redraws the whole visible history.
    for (int d = 0; d < kDisplays; ++d) {
        ASSERT_NE(Cache(d), nullptr);
        EXPECT_GE(2 * Cache(d)->Capacity(), windows_->Frame().width()) << d;
    }
    test::Screenshot(windows_->Frame(), "acceptance-live.png");
    halvo::StatusSettings style = system_->Status().getSettings();
    style.fontSize = 30;
    style.statusLines = 2;
    system_->Status().setSettings(style);
    ASSERT_TRUE(Run([&] { return bar.MessagePixelSize() == 30 && bar.MessageLines() == 2; }));
    test::Button(Page("Disk"), "Stop")->click();
    ASSERT_TRUE(Run([&] { return storage.getStatus().state == StateIdleRecord; }));

    // The survey ends: sonars off, and the last live lines drain before the file is played.
    SonarsOn();  // the same boxes, clicked again
    std::uint64_t before = 0;
    int still = 0;
    ASSERT_TRUE(Run([&] {
        const std::uint64_t now = system_->Lines().Lines(0);
        still = now == before ? still + 1 : 0;
        before = now;
        test::PumpFor(100);
        return still >= 10;
    }));

    const FileTraces recorded = CountTraces(file, system_->Sonar().GetSonar(0).subsystem, 0);
    ASSERT_GT(recorded.ofChannel, 5) << file;
    PlayedTraces played;
    system_->Hub().DataBus().Attach(&played);
    std::array<std::uint64_t, kDisplays> base{};
    for (int d = 0; d < kDisplays; ++d) base[d] = system_->Lines().Lines(d);

    // The main window's playback command, as its recent-files menu and a dropped file use it.
    windows_->Frame().PlayFile(file);
    Menu("Playback Faster");
    Menu("Playback Faster");
    // A trace of a known sonar makes two lines on each display that shows it.
    const auto lines0 = [&] { return system_->Lines().Lines(0) - base[0]; };
    const bool whole = Run([&] {
        return storage.getStatus().state == StateEndOfFile && played.count == recorded.all &&
               lines0() >= 2u * recorded.ofChannel;
    });
    test::PumpFor(500);  // nothing more may come
    system_->Hub().DataBus().Detach(&played);
    EXPECT_TRUE(whole) << "state " << storage.getStatus().state;
    EXPECT_EQ(played.count, recorded.all);
    EXPECT_EQ(lines0(), 2u * recorded.ofChannel);
    for (int d = 1; d < kDisplays; ++d) EXPECT_GT(system_->Lines().Lines(d), base[d]) << d;
    EXPECT_EQ(LinkPane(), "NET:PB");
    test::Screenshot(windows_->Frame(), "acceptance-played.png");
}

// Every name the wizard's connection help puts in quotes is on the screen: the sheet, its page,
// and the labels of the rows and columns the operator is sent to.
TEST_F(Acceptance, ConnectionHelpNamesWhatTheWindowShows) {
    ASSERT_NO_FATAL_FAILURE(StartProgram());
    QWidget* network = Page("Network");
    ASSERT_NE(network, nullptr);
    QStringList shown{windows_->Sheet().windowTitle(), "Network"};
    for (const QLabel* l : network->findChildren<QLabel*>()) shown << l->text();
    const std::string help = SetupWizard::ConnectionHelpText();
    int named = 0;
    for (std::size_t at = help.find('"'); at != std::string::npos;) {
        const std::size_t end = help.find('"', at + 1);
        ASSERT_NE(end, std::string::npos) << help;
        const QString name = QString::fromStdString(help.substr(at + 1, end - at - 1));
        EXPECT_TRUE(shown.contains(name)) << name.toStdString();
        ++named;
        at = help.find('"', end + 1);
    }
    EXPECT_GE(named, 5);
}

TEST_F(Acceptance, GainTypedInTheDisplayPageChangesTheNextLines) {
    ASSERT_NO_FATAL_FAILURE(StartSurvey([&] { return CacheTotal(0) >= 20; }));

    // Down by 20 dB: a tenth of the amplitude, where the line is not clipped at full scale.
    test::TypeAndEnter(test::Child<QLineEdit>(Page("D0"), "Gain"), "10");
    const std::int64_t changedAt = CacheTotal(0);
    ASSERT_TRUE(Run([&] { return CacheTotal(0) >= changedAt + 20; }));
    test::Screenshot(windows_->Frame(), "acceptance-gain.png");

    // The newest lines against the oldest ones still cached, over the same rows of the line.
    const SonarDataCache* cache = Cache(0);
    ASSERT_NE(cache, nullptr);
    const SonarDataCacheElement* newest = cache->Get(0);
    ASSERT_NE(newest, nullptr);
    double sum[2] = {0, 0};
    int lines[2] = {0, 0};
    for (int age = 0; age < cache->Capacity(); ++age) {
        const SonarDataCacheElement* e = cache->Get(age);
        if (e == nullptr || e->size != newest->size) continue;
        const int after = e->gain == newest->gain ? 1 : 0;
        for (std::uint8_t p : e->pixels) sum[after] += p;
        ++lines[after];
    }
    ASSERT_GE(lines[0], 10) << "lines before the change";
    ASSERT_GE(lines[1], 10) << "lines after the change";
    const double meanBefore = sum[0] / lines[0] / newest->size;
    const double meanAfter = sum[1] / lines[1] / newest->size;
    EXPECT_GT(meanBefore, 5.0);
    EXPECT_LT(meanAfter, meanBefore / 4) << "before " << meanBefore << " after " << meanAfter;
}

}  // namespace
}  // namespace halvo

namespace halvo {
namespace {

// The graph page on a live channel: shown, it joins the bus and draws a ping as a time plot and a
// spectrum; paused, it keeps that ping; the frame's strip chart draws pitch and roll above the
// waterfall. Both are saved as pictures beside the test's files for a reader to look at.
TEST_F(Acceptance, GraphPageDrawsALiveChannelAndTheFrameItsStripChart) {
    ASSERT_NO_FATAL_FAILURE(StartSurvey([&] { return CacheTotal(0) > 20; }));
    auto* page = dynamic_cast<CfgGraph*>(Page("Graph"));
    ASSERT_NE(page, nullptr);
    page->TimePlot()->Model().State().options |= kPlotMean | kPlotRms | kPlotSampleSize;
    ASSERT_TRUE(Run([&] { return !page->Session().Time().Empty(); }));
    ASSERT_TRUE(Run(
        [&] { return page->Session().Last(0) != nullptr && page->Session().Last(0)->ping > 3; }));
    const GraphTrace* trace = page->Session().Last(0);
    EXPECT_EQ(page->Session().Time().Curve(0).size(), static_cast<std::size_t>(trace->Samples()));
    EXPECT_FALSE(page->Session().Frequency().Empty());
    EXPECT_EQ(page->Session().Frequency().Curve(0).size(),
              static_cast<std::size_t>(page->Session().SpectrumOf(0)->length));
    EXPECT_TRUE(page->TimePlot()->CaptionText().contains(" N "));

    // "Pause" keeps the ping on the screen while the survey goes on.
    test::Button(page, "Pause")->click();
    test::PumpFor(600);
    const std::uint32_t held = page->Session().Last(0)->ping;
    const std::int64_t lines = CacheTotal(0);
    ASSERT_TRUE(Run([&] { return CacheTotal(0) > lines + 10; }));
    EXPECT_EQ(page->Session().Last(0)->ping, held);
    EXPECT_TRUE(page->grab().save(QString::fromStdString((dir_ / "graph-page.png").string())));

    CChildFrameWaterfall* frame = windows_->Displays()->Frame(0);
    ASSERT_NE(frame, nullptr);
    ASSERT_NE(frame->Plot(), nullptr);
    const QImage strip = frame->Plot()->grab().toImage();
    int roll = 0;
    for (int y = 0; y < strip.height(); ++y) {
        for (int x = 0; x < strip.width(); ++x) roll += strip.pixelColor(x, y) == QColor(255, 0, 0);
    }
    EXPECT_GT(roll, 20) << "the roll curve in its colour";
    EXPECT_TRUE(frame->grab().save(QString::fromStdString((dir_ / "frame.png").string())));
    if (const char* keep = std::getenv("HALVO_KEEP_SCREENSHOTS")) {
        page->grab().save(QString(keep) + "/graph-page.png");
        frame->grab().save(QString(keep) + "/frame.png");
    }
}

}  // namespace
}  // namespace halvo

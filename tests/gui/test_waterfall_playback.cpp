// A recorded survey line played through a whole System into the display windows: the seabed
// scrolls into the waterfall, and the newest columns on screen are the pixels `halvo-hsf render`
// draws for the same lines with the same settings. Screenshots go under the build folder.

#include <sys/wait.h>

#include <QImage>
#include <filesystem>
#include <fstream>

#include "GuiTestApp.h"
#include "app/Housekeeping.h"
#include "app/TempWorkDir.h"
#include "gui/sheets/CfgSheet.h"
#include "gui/shell/CMainFrame.h"
#include "gui/views/CChildFrameWaterfall.h"
#include "gui/views/CSplitterWndSonar.h"
#include "gui/views/CWaterfallView.h"
#include "gui/views/DisplayWindows.h"
#include "halvo-sim/SimClock.h"
#include "halvo-sim/SimSonarState.h"
#include "halvo-sim/SimTraceBuilder.h"
#include "platform/FakeSystemClock.h"
#include "platform/MonotonicTickSource.h"
#include "storage/HsfTestWriter.h"
#include "storage/StorageControl.h"
#include "system/LineCacheDocument.h"
#include "system/System.h"

namespace halvo {
namespace {

constexpr int kPings = 260;
// The chain makes two lines of each trace for this display, in the program and in the file tool.
constexpr int kLines = 2 * kPings;

// The simulator's sub-bottom over its sloping sea floor, one trace per ping.
void WriteSurvey(const std::string& path) {
    FixedWallClock wall(1'700'000'000'000LL);
    SimDeviceClock clock(wall);
    SimSonarState state(SimConfig::SB, clock);
    SimSubsystem s = state.Subsystem(0);
    s.channels[0].dataType = 0;
    const SimScene scene(5);
    SimTraceBuilder builder(scene, 80, 0);
    HsfTestWriter w;
    for (int ping = 1; ping <= kPings; ++ping) {
        // Faster along the line than the sonar would go, so the floor visibly changes.
        const SimPingPlace place = SimPingPlace::OfPing(ping * 8);
        w.Add(builder.Build(s, 0, place, clock.Now(), ping % 50 == 0 ? ping / 50 : 0));
        wall.Advance(250);
    }
    ASSERT_TRUE(w.Save(path));
}

int RunTool(const std::string& args) {
    const std::string cmd = std::string(HALVO_HSF_BIN) + " " + args + " >/dev/null 2>&1";
    const int raw = std::system(cmd.c_str());
    return WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
}

class WaterfallPlayback : public test::TempWorkDir {};

TEST_F(WaterfallPlayback, PlayedFileScrollsAsTheFileToolDrawsIt) {
    test::GuiApp();
    const std::string dir = std::filesystem::current_path().string();
    WriteSurvey(dir + "/survey.hsf");
    {
        std::ofstream ini("view.Hni");
        ini << "[OverallConfig]\nNumSplits0=2\nHasPlot0=0\n"
            << "[DisplayProcessing0]\nChannel=0\nGain=30\nZoom=0.125\nZoomAverage=2\n"
            << "[DisplayProcessing1]\nChannel=0\nGain=30\nZoom=0.125\nTraceZoomFactor=2\n"
            << "PalInvert=1\n[Storage]\nPlaybackRate=400\n";
    }
    MonotonicTickSource ticks;
    FakeSystemClock systemClock;
    test::ScriptedOperator prompts;
    System system(System::Platform{ticks, systemClock, &prompts});
    EnableTable enables;
    SheetContext context{system.Coordinator(), prompts, enables};
    Housekeeping housekeeping(system.HousekeepingSources(), &system.Log());
    CMainFrame frame(context, housekeeping, ShellCommands{}, "Halvo");
    CfgSheet* sheet = frame.ControlBar(0);
    system.Startup(nullptr, "view.Hni");
    auto windows = OpenDisplayWindows(frame, sheet, system, context);
    frame.resize(1000, 700);
    frame.show();

    ASSERT_EQ(windows->Frames(), 1);
    CChildFrameWaterfall* child = windows->Frame(0);
    ASSERT_EQ(child->WaterfallRows(), 2);
    EXPECT_EQ(windows->Window(0)->windowTitle(), "Halvo : Sonar Data");
    EXPECT_EQ(windows->Pages().size(), 2u);
    EXPECT_NE(sheet->FindPage("D1"), nullptr);
    CWaterfallView* view = child->Waterfall(0);
    ASSERT_TRUE(test::PumpUntil([&] { return view->Plot().ImageWidth() > 100; }, 3000));
    // The waterfall takes 90 percent of the row.
    const std::vector<int> widths = child->Splitter()->ColumnWidths();
    ASSERT_EQ(widths.size(), 2u);
    EXPECT_NEAR(widths[0], (widths[0] + widths[1]) * 9 / 10, 2);

    StorageSettings s = system.Storage().getSettings();
    s.playbackDir = dir;
    s.playbackFile = "survey.hsf";
    system.Storage().setSettings(s);
    test::PumpUntil([] { return false; }, 300);
    system.Storage().RequestPlayback();
    int shotsTaken = 0;
    const auto lines = [&] { return view->Plot().DrawnTotal(); };
    // The display timer's step, as the main window runs it, until the whole file went through.
    test::PumpUntil(
        [&] {
            system.DrainDisplays();
            if (shotsTaken == 0 && lines() >= kLines / 2) {
                test::Screenshot(frame, "waterfall-half.png");
                ++shotsTaken;
            }
            return lines() >= kLines;
        },
        30000);
    ASSERT_EQ(lines(), kLines) << "lines in the cache: " << system.Lines().Lines(0);
    test::PumpUntil([&] { return !view->RedrawTimerActive(); }, 3000);
    QApplication::processEvents();
    const QImage screen = frame.grab().toImage().convertToFormat(QImage::Format_RGB32);
    screen.save(QString::fromStdString(test::ScreenshotPath("waterfall-played.png")));

    // The file tool with the same settings, as tall as the view's columns.
    const int h = view->Ring().Height();
    ASSERT_EQ(RunTool("render survey.hsf --settings view.Hni --display 0 --out wf.png --height " +
                      std::to_string(h)),
              0);
    QImage render("wf.png");
    ASSERT_FALSE(render.isNull());

    render = render.convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(render.width(), kLines);
    // The view's newest columns as they stand on screen.
    const QPoint origin = view->viewport()->mapTo(&frame, QPoint(view->Plot().Right() - 1, 0));
    int compared = 0, differing = 0, dark = 0;
    for (int age = 0; age < 40; age += 13) {
        for (int y = 0; y < h; ++y) {
            const QRgb onScreen = screen.pixel(origin.x() - age, origin.y() + y);
            const QRgb drawn = render.pixel(render.width() - 1 - age, y);
            ++compared;
            if (onScreen != drawn) ++differing;
            if (qGray(onScreen) < 100) ++dark;
        }
    }
    EXPECT_EQ(differing, 0) << "of " << compared;
    // Not a grey picture: strong echoes of the floor and layers are on screen.
    EXPECT_GT(dark, compared / 50);

    windows.reset();
    system.Ending(false);
}

}  // namespace
}  // namespace halvo

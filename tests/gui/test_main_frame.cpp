#include <QListWidget>
#include <QMimeData>
#include <QUrl>
#include <set>

#include "GuiTestApp.h"
#include "app/EventLog.h"
#include "app/GeneralSettings.h"
#include "app/Housekeeping.h"
#include "app/OverallConfig.h"
#include "app/TempWorkDir.h"
#include "gui/dialogs/DlgMainOptions.h"
#include "gui/shell/CColorStatusBar.h"
#include "gui/shell/CMainFrame.h"

namespace halvo {
namespace {

const QColor kRed(200, 0, 0);

// What the indicators look at; the tests change it between passes.
struct World {
    std::uint32_t tick = 0;
    int nav = 2;
    std::uint32_t link = 1;
    RecorderIndicator recorder{RecorderIndicator::Record, 3};
    std::string status = "status line";
};

class MainFrameTest : public test::TempWorkDir {
  protected:
    MainFrameTest()
        : context_{coordinator_, operator_, enables_},
          log_([] { return TimeValue{}; }),
          housekeeping_(Sources(), &log_),
          frame_(context_, housekeeping_, Commands(), "Halvo 1.0") {}

    Housekeeping::Sources Sources() {
        Housekeeping::Sources s;
        s.tick = [this] { return world_.tick; };
        s.statusLine = [this] { return world_.status; };
        s.isPlayback = [] { return false; };
        s.navStatus = [this] { return world_.nav; };
        s.sonarLinkWord = [this] { return world_.link; };
        s.recorder = [this] { return world_.recorder; };
        return s;
    }
    ShellCommands Commands() {
        const auto log = [this](const char* what) {
            return [this, what](const std::string& f) { calls_.push_back(what + f); };
        };
        ShellCommands c;
        c.loadConfiguration = log("load ");
        c.saveConfiguration = log("save ");
        c.addRecentFile = log("recent ");
        c.playFile = log("play ");
        c.ending = [this](bool save) { calls_.push_back(save ? "end save" : "end nosave"); };
        return c;
    }
    // The 250 ms timer for ms of program time.
    void Run(std::uint32_t ms) {
        for (std::uint32_t t = 0; t < ms; t += 250) {
            world_.tick += 250;
            frame_.TimerPass();
        }
    }
    CColorStatusBar& Bar() { return *frame_.ColourBar(); }

    QApplication& app_ = test::GuiApp();
    SystemCoordinator coordinator_;
    test::ScriptedOperator operator_;
    EnableTable enables_;
    SheetContext context_;
    EventLog log_;
    World world_;
    Housekeeping housekeeping_;
    std::vector<std::string> calls_;
    CMainFrame frame_;
};

TEST_F(MainFrameTest, RedPanesBlinkAndStateTwoPanesDoNot) {
    world_.nav = 0;                                      // GPS:OFF, state 1
    world_.recorder = {RecorderIndicator::Playback, 0};  // Playback, state 2
    Run(2000);
    ASSERT_EQ(Bar().PaneText(Housekeeping::kRecorderPane), "Playback");
    EXPECT_EQ(Bar().PaneBackground(Housekeeping::kLinkPane), Bar().FaceColour()) << "NET:ON";
    std::set<QRgb> navText, recorderText;
    for (int i = 0; i < 8; ++i) {
        Run(250);
        EXPECT_EQ(Bar().PaneBackground(Housekeeping::kNavigationPane), kRed);
        EXPECT_EQ(Bar().PaneBackground(Housekeeping::kRecorderPane), kRed);
        navText.insert(Bar().PaneTextColour(Housekeeping::kNavigationPane).rgb());
        recorderText.insert(Bar().PaneTextColour(Housekeeping::kRecorderPane).rgb());
    }
    EXPECT_EQ(navText, (std::set<QRgb>{QColor(Qt::black).rgb(), QColor(Qt::white).rgb()}));
    EXPECT_EQ(recorderText, std::set<QRgb>{QColor(Qt::white).rgb()});

    // A message holds the message area for three seconds, then the status line returns.
    frame_.ShowMessage("Loaded");
    Run(2750);
    EXPECT_EQ(Bar().Message(), "Loaded");
    Run(1000);
    EXPECT_EQ(Bar().Message(), "status line");

    frame_.SetPane(5, 2, 0, "X");
    EXPECT_EQ(Bar().PaneText(5), "X");
    EXPECT_EQ(Bar().PaneTextColour(5), QColor(Qt::white));
    frame_.SetPane(5, 0, 7);  // indicator text 7: "GPS:ON"
    EXPECT_EQ(Bar().PaneText(5), "GPS:ON");
    EXPECT_FALSE(Bar().PaneOwnerColours(5));
    frame_.SetPane(8, 1, 0, "ignored");
    EXPECT_EQ(Bar().PaneText(7), "");
}

TEST_F(MainFrameTest, CommandsReachTheApplicationAndEveryWayOutEndsOnce) {
    frame_.SetDiagnostic(true);
    EXPECT_EQ(frame_.windowTitle(), "Halvo 1.0  - Diagnostic Version -");
    frame_.SetDiagnostic(false);
    EXPECT_EQ(frame_.windowTitle(), "Halvo 1.0");

    frame_.SetFileChooser([](bool save, const std::string& suggested) {
        return std::optional<std::string>((save ? "out:" : "in:") + suggested);
    });
    frame_.LoadConfiguration();
    EXPECT_EQ(coordinator_.DefaultsFile(), "in:./HalvoDefaults.Hni");
    frame_.SaveConfiguration();
    frame_.OpenRecent("/data/Line7.hsf");
    frame_.OpenRecent("/cfg/Survey.hni");

    QMimeData mime;
    mime.setUrls({QUrl("http://example.invalid/x.hsf"), QUrl::fromLocalFile("/data/Line9.hsf"),
                  QUrl::fromLocalFile("/data/Line10.hsf")});
    EXPECT_TRUE(frame_.PlayDropped(mime));
    QMimeData remote;
    remote.setUrls({QUrl("http://example.invalid/x.hsf")});
    EXPECT_FALSE(frame_.PlayDropped(remote));

    frame_.show();
    frame_.Exit(false);
    frame_.close();
    EXPECT_FALSE(frame_.isVisible());
    const std::vector<std::string> expected = {"load in:./HalvoDefaults.Hni",
                                               "recent in:./HalvoDefaults.Hni",
                                               "save out:in:./HalvoDefaults.Hni",
                                               "recent out:in:./HalvoDefaults.Hni",
                                               "play /data/Line7.hsf",
                                               "recent /data/Line7.hsf",
                                               "load /cfg/Survey.hni",
                                               "recent /cfg/Survey.hni",
                                               "play /data/Line9.hsf",
                                               "recent /data/Line9.hsf",
                                               "end nosave"};
    EXPECT_EQ(calls_, expected);
}

TEST_F(MainFrameTest, ClosingSavesAndThePlacementComesBackThroughTheSettings) {
    coordinator_.SetActiveProfile("./Place.Hni");
    OverallConfig overall(coordinator_);
    overall.SetHost(&frame_);
    overall.Load();  // nothing stored: maximised
    EXPECT_TRUE(frame_.isMaximized());
    frame_.showNormal();
    frame_.setGeometry(40, 50, 640, 480);
    overall.Save();
    EXPECT_NE(ReadFile("Place.Hni").find("MainWindowPos="), std::string::npos);

    CMainFrame again(context_, housekeeping_, {}, "Halvo 1.0");
    OverallConfig reread(coordinator_);
    reread.SetHost(&again);
    reread.Load();
    EXPECT_EQ(again.geometry(), QRect(40, 50, 640, 480));
    EXPECT_FALSE(again.isMaximized());

    // A stored rectangle nobody could see is not applied.
    WindowPlacement absurd;
    absurd.SetNormalPosition({-2147483647, 0, 2147483647, 10});
    absurd.SetShowCmd(WindowPlacement::kShowNormal);
    again.ShowPlacement(absurd);
    EXPECT_EQ(again.geometry(), QRect(40, 50, 640, 480));

    frame_.close();
    EXPECT_EQ(calls_, std::vector<std::string>{"end save"});
}

TEST_F(MainFrameTest, OptionsOkStoresAndAlwaysAsksForARestart) {
    coordinator_.SetActiveProfile("./Opt.Hni");
    OverallConfig overall(coordinator_);
    GeneralSettings general(coordinator_);
    overall.Load();
    general.Load();
    MainOptionsStore store(overall, general);
    frame_.SetOptionsStore(&store);
    DlgMainOptions* dlg = frame_.OpenOptions();
    ASSERT_NE(dlg, nullptr);
    EXPECT_FALSE(dlg->NumSonarsField()->isEnabled()) << "no sonar side in this build";

    const OverallConfig::Values before = overall.Snapshot();
    dlg->accept();
    ASSERT_EQ(operator_.boxes.size(), 1u);
    EXPECT_EQ(operator_.boxes[0].title, "You Need To Restart Halvo");
    EXPECT_EQ(operator_.boxes[0].text, "Some changes are only applied when Halvo is Restarted");
    EXPECT_EQ(overall.Snapshot().numSplits, before.numSplits) << "an OK with no change keeps all";
    EXPECT_EQ(overall.Snapshot().sonarNames, before.sonarNames);

    dlg = frame_.OpenOptions();
    dlg->SonarNameField(1)->setText("SSL");
    dlg->DisplaysField()->setText("3");
    dlg->SummedList(1)->item(5)->setSelected(true);
    dlg->accept();
    EXPECT_EQ(operator_.boxes.size(), 2u);
    const OverallConfig::Values v = overall.Snapshot();
    EXPECT_EQ(v.sonarNames[1], "SSL");
    EXPECT_EQ(v.numSplits[0], 4) << "a display that stays keeps its splits";
    EXPECT_EQ(v.numSplits[1], 1);
    EXPECT_EQ(v.numSplits[2], 1);
    EXPECT_EQ(v.numSplits[3], 0);
    EXPECT_EQ(general.Snapshot().SummedChannel1, 1 << 5);
}

}  // namespace
}  // namespace halvo

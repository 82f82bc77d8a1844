// The storage and logs pages over their real singletons, and the registration of all four pages.

#include <QCheckBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>

#include "GuiTestApp.h"
#include "app/EventLog.h"
#include "app/TempWorkDir.h"
#include "gui/pages/CfgStorage.h"
#include "gui/pages/RecordPages.h"
#include "gui/pages/SetupLogs.h"
#include "gui/sheets/CfgSheet.h"
#include "platform/FakeSystemClock.h"
#include "platform/FakeTickSource.h"
#include "storage/LoggingControl.h"
#include "storage/StorageControl.h"
#include "system/System.h"

namespace halvo::test {
namespace {

class StoragePage : public TempWorkDir {
  protected:
    StoragePage() {
        page_.show();
        page_.Tick();
    }
    const CfgStorage::Widgets& ui() { return page_.Ui(); }

    PageContext ctx_;
    StorageControl storage_{ctx_.coordinator};
    std::uint32_t tick_ = 1000;
    CfgStorage page_{
        ctx_.context, storage_,
        CfgStorage::Sources{[this] { return tick_; }, [] { return 7u; }, [] { return 3u; }}};
};

TEST_F(StoragePage, ShowsWhatStorageHoldsAndPublishes) {
    StorageSettings s = storage_.getSettings();
    s.recordFile = "Survey";
    s.recordForm = 0;
    s.playbackRangeType = 3;
    s.playbackRange0 = -7500000;  // 12 deg 30 min west
    storage_.setSettings(s);
    storage_.PublishStatus({"/data/Survey004.hsf", 12, StateRecord, 4000, 4});
    page_.Tick();

    EXPECT_EQ(ui().recordFile->text(), "Survey");
    EXPECT_EQ(ui().recordForm->currentText(), "Raw (Sonar Data Stream)");
    EXPECT_TRUE(ui().rangeFrom->text().startsWith("12:30.0000 W"))
        << ui().rangeFrom->text().toStdString();
    EXPECT_EQ(ui().status->text(), "RECORD  File:/data/Survey004.hsf  Size: 12  Free: 4000");
    EXPECT_EQ(ui().queues->text(), "Queues : Sonar 7 Display 3");
    EXPECT_TRUE(PageScreenshot(page_, "page_disk.png"));
}

TEST_F(StoragePage, OperatorEntriesReachStorageHeldToRange) {
    StorageSettings s = storage_.getSettings();
    s.flags = 3;
    storage_.setSettings(s);
    page_.Tick();

    TypeAndLeave(ui().playbackRate, "50000");
    TypeAndLeave(ui().maxRecordSize, "-5");
    TypeAndLeave(ui().recordDir, "/survey/day2");
    ui().reparse->click();
    Choose(ui().acquireMode, 1);
    s.playbackRate = 10000;
    s.maxRecordSize = 0;
    s.recordDir = "/survey/day2";
    s.flags = 2;  // only Reparse Data cleared
    s.acquireMode = 1;
    EXPECT_EQ(storage_.getSettings(), s) << "nothing else moved";

    // Latitude bounds are typed as positions and kept in ten-thousandths of a minute.
    Choose(ui().rangeType, 2);
    TypeAndLeave(ui().rangeFrom, "12:30.0000 N");
    TypeAndLeave(ui().rangeTo, "12:45.5000 S");
    s = storage_.getSettings();
    EXPECT_EQ(s.playbackRange0, 7500000);
    EXPECT_EQ(s.playbackRange1, -7655000);
    // A new type reads the shown bounds in the form they were shown in, then shows them anew.
    Choose(ui().rangeType, 1);
    s = storage_.getSettings();
    EXPECT_EQ(s.playbackRangeType, 1);
    EXPECT_EQ(s.playbackRange0, 7500000);
    EXPECT_EQ(ui().rangeFrom->text(), "7500000");
    EXPECT_EQ(ui().rangeTo->text(), "-7655000");
}

TEST_F(StoragePage, ButtonsFollowTheModeAndPauseIsACheckBox) {
    auto enabled = [this] {
        return std::vector<bool>{ui().record->isEnabled(), ui().stop->isEnabled(),
                                 ui().playback->isEnabled(), ui().pause->isEnabled()};
    };
    using V = std::vector<bool>;
    EXPECT_EQ(enabled(), (V{true, false, true, false})) << "stopped";

    ui().record->click();
    EXPECT_EQ(storage_.getSettings().mode, ModeRecord);
    EXPECT_EQ(enabled(), (V{false, true, false, false})) << "recording";
    EXPECT_FALSE(ui().browse->isEnabled());

    ui().stop->click();
    ui().playback->click();
    EXPECT_EQ(storage_.getSettings().mode, ModePlayback);
    EXPECT_EQ(enabled(), (V{false, true, false, true})) << "playing";

    ui().pause->click();
    EXPECT_EQ(storage_.getSettings().mode, ModePause);
    EXPECT_TRUE(ui().pause->isChecked());
    ui().pause->click();
    EXPECT_EQ(storage_.getSettings().mode, ModePlayback);
    EXPECT_FALSE(ui().pause->isChecked());

    // A change made elsewhere (the main window's "Change/Pause") shows at the next tick.
    storage_.ChangePause();
    page_.Tick();
    EXPECT_TRUE(ui().pause->isChecked());
}

TEST_F(StoragePage, ChosenFilesChainWhileThePageIsHidden) {
    page_.FilesChosen({"/runs/a.hsf", "/runs/b.hsf", "/runs/c.hsf"});
    EXPECT_EQ(ui().playbackFile->text(), "a.hsf");
    EXPECT_EQ(ui().playbackDir->text(), "/runs");
    EXPECT_EQ(storage_.getSettings().mode, ModeStop);

    page_.hide();
    tick_ += PlaybackChain::kRestartDelayMs;
    page_.Tick();
    EXPECT_EQ(storage_.getSettings().mode, ModePlayback) << "started 300 ms after the stop";

    // The Auto Repeat box reaches the chain: a single file then starts too.
    page_.show();
    ui().stop->click();
    ui().autoRepeat->click();
    page_.FilesChosen({"/runs/one.hsf"});
    EXPECT_EQ(storage_.getSettings().playbackFile, "one.hsf");
    EXPECT_TRUE(page_.Chain().Auto());
}

TEST_F(StoragePage, WizardRecordsIntoItsFolder) {
    page_.StartRecording(".", "DiagData_");
    const StorageSettings s = storage_.getSettings();
    EXPECT_EQ(s.recordDir, ".");
    EXPECT_EQ(s.recordFile, "DiagData_");
    EXPECT_EQ(s.mode, ModeRecord);
    EXPECT_EQ(ui().recordFile->text(), "DiagData_");
}

class LogsPage : public TempWorkDir {
  protected:
    LogsPage() {
        page_.show();
        page_.Tick();
    }
    const SetupLogs::Widgets& ui() { return page_.Ui(); }

    PageContext ctx_;
    LoggingControl logging_{ctx_.coordinator};
    EventLog log_{[] { return TimeValue{1'700'000'000, 0}; }, 5};
    SetupLogs page_{ctx_.context, logging_, log_};
};

TEST_F(LogsPage, FlagsAndCommentsGoBothWays) {
    LoggingSettings s = logging_.getSettings();
    s.flags = LoggingSettings::kNmea | LoggingSettings::kDataSock;
    s.commentLine1 = "Line 7 north";
    logging_.setSettings(s);
    page_.Tick();
    for (int i = 0; i < SetupLogs::kFlagCount; ++i) {
        EXPECT_EQ(ui().flags[i]->isChecked(), (s.flags & SetupLogs::FlagBit(i)) != 0)
            << ui().flags[i]->text().toStdString();
    }
    EXPECT_EQ(ui().comment1->text(), "Line 7 north");

    ui().flags[2]->click();  // "Verbose"
    EXPECT_EQ(ui().flags[2]->text(), "Verbose");
    EXPECT_EQ(logging_.getSettings().flags,
              LoggingSettings::kNmea | LoggingSettings::kDataSock | LoggingSettings::kVerbose);
    ui().perFileLog->click();
    EXPECT_TRUE(logging_.getSettings().PerFileLog());
    // The line is cut to what the settings keep.
    TypeAndLeave(ui().comment2, QString(100, 'x'));
    EXPECT_EQ(logging_.getSettings().commentLine2.size(), LoggingSettings::kMaxCommentBytes);
}

TEST_F(LogsPage, EventLogFollowsHoldsAndFilters) {
    log_.Add("RECORD : New File: a.hsf");
    log_.Add("SONAR : On");
    page_.Tick();
    EXPECT_EQ(ui().view->blockCount(), 2);
    EXPECT_TRUE(ui().view->toPlainText().contains("SONAR : On"));

    ui().hold->click();
    log_.Add("RECORD : File Closed");
    page_.Tick();
    EXPECT_FALSE(ui().view->toPlainText().contains("File Closed"));
    ui().hold->click();
    EXPECT_TRUE(ui().view->toPlainText().contains("File Closed"));

    ui().filter->setText("record");
    EXPECT_EQ(ui().view->blockCount(), 2);
    EXPECT_FALSE(ui().view->toPlainText().contains("SONAR"));
    // Lines the ring has already dropped are not shown again: it holds 5 here.
    for (int i = 0; i < 6; ++i) log_.Addf("RECORD : %d", i);
    ui().filter->clear();
    EXPECT_EQ(ui().view->blockCount(), 5);
    EXPECT_TRUE(PageScreenshot(page_, "page_logs.png"));
}

class RecordPages : public TempWorkDir {};

TEST_F(RecordPages, AllFourGoInTheirSlotsOverTheSystem) {
    PageContext ctx;
    FakeTickSource ticks;
    FakeSystemClock clock;
    System system({ticks, clock});
    CfgSheet sheet(ctx.context);
    AddRecordPages(sheet, system, ctx.context);
    ASSERT_EQ(sheet.PageCount(), 4);
    const QStringList order{"Disk", "Alerts", "Status", "Logs"};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(sheet.PageAt(i)->Caption(), order[i]);

    // The disk page is the wizard's, and what it writes reaches the system's storage.
    auto* disk = dynamic_cast<WizardDiskTarget*>(sheet.FindPage("Disk"));
    ASSERT_NE(disk, nullptr);
    sheet.show();
    sheet.TimerPass();
    auto* storage = static_cast<CfgStorage*>(sheet.FindPage("Disk"));
    TypeAndLeave(storage->Ui().playbackRate, "777");
    EXPECT_EQ(system.Storage().getSettings().playbackRate, 777);
    EXPECT_EQ(storage->QueueText(), "Queues : Sonar 0 Display 0");
}

}  // namespace
}  // namespace halvo::test

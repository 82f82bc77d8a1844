#include <gtest/gtest.h>
#include <QEventLoop>
#include <QLineEdit>
#include <QTimer>
#include <QVBoxLayout>
#include <stdexcept>

#include "GuiTestApp.h"
#include "app/SystemCoordinator.h"
#include "gui/sheets/CfgSheet.h"
#include "gui/sheets/EnableTable.h"
#include "gui/sheets/SettingsPage.h"
#include "gui/sheets/SetupSheet.h"
#include "gui/sheets/SetupWizard.h"
#include "gui/sheets/WizardTargets.h"

namespace halvo {
namespace {

// A settings owner with one number, as a subsystem singleton holds it.
struct Store {
    std::int32_t value = 1;
    int changes = 0;
};

// A page over Store that records when the timer visits it, and can be told to misbehave.
class ProbePage : public SettingsPage<std::int32_t> {
  public:
    ProbePage(SheetContext& ctx, QString caption, Store& store, std::vector<QString>* visits)
        : SettingsPage(ctx, caption,
                       {[&store] { return store.value; },
                        [&store](const std::int32_t& v) {
                            store.value = v;
                            ++store.changes;
                        },
                        [&store] { return store.changes; }}),
          visits_(visits) {
        field = new QLineEdit(this);
        (new QVBoxLayout(this))->addWidget(field);
    }
    void Bind(FieldEditor& ed, int dir, std::int32_t& v) override { ed.Int(dir, field, v, 1, 0); }
    void BeforeTick() override {
        if (visits_ != nullptr) visits_->push_back(Caption());
    }
    void OnTick() override {
        ++ticks;
        if (throwNext) {
            throwNext = false;
            throw std::runtime_error("page fault");
        }
        if (blockMs > 0) {
            // A modal box inside a tick: a nested event loop, here for a bounded time.
            const int ms = blockMs;
            blockMs = 0;
            QEventLoop loop;
            QTimer::singleShot(ms, &loop, &QEventLoop::quit);
            loop.exec();
        }
    }
    QLineEdit* field = nullptr;
    int ticks = 0;
    bool throwNext = false;
    int blockMs = 0;

  private:
    std::vector<QString>* visits_;
};

class SheetTest : public ::testing::Test {
  protected:
    SheetTest() : context_{coordinator_, operator_, enables_} {}

    // Runs the real 300 ms timer until it has fired n more times.
    void Firings(PageSheet& sheet, int n) {
        const int target = sheet.Firings() + n;
        ASSERT_TRUE(test::PumpUntil([&] { return sheet.Firings() >= target; }, 400 * n + 1000));
    }

    QApplication& app_ = test::GuiApp();
    SystemCoordinator coordinator_;
    test::ScriptedOperator operator_;
    EnableTable enables_;
    SheetContext context_;
    Store store_;
};

TEST_F(SheetTest, PagesTakeTheirDesignedPlaceAndTheTimerVisitsSonarsFirst) {
    CfgSheet sheet(context_);
    std::vector<QString> visits;
    const std::pair<const char*, CfgSheet::Slot> pages[] = {
        {"Nav", CfgSheet::SetupNav},    {"D0", CfgSheet::CfgDisplay},
        {"Ext", CfgSheet::Extension},   {"SB", CfgSheet::CfgSonar},
        {"Disk", CfgSheet::CfgStorage}, {"SSL", CfgSheet::CfgSonar},
        {"R90", CfgSheet::CfgSonarR90}, {"D1", CfgSheet::CfgDisplay},
    };
    for (const auto& [caption, slot] : pages) {
        sheet.AddPage(new ProbePage(context_, caption, store_, &visits), slot);
    }
    sheet.AddPage(new SetupWizard(context_, sheet), CfgSheet::SetupWizard);
    EXPECT_EQ(sheet.windowTitle(), "Status And Control");

    QStringList tabs;
    for (int i = 0; i < sheet.PageCount(); ++i) tabs << sheet.PageAt(i)->Caption();
    EXPECT_EQ(tabs.join(","), "Wizard,Disk,R90,SB,SSL,D0,D1,Nav,Ext");
    EXPECT_EQ(sheet.FindPage("SSL"), sheet.PageAt(4));
    EXPECT_EQ(sheet.FindPage("SSH"), nullptr);

    sheet.TimerPass();
    QStringList order;
    for (const QString& v : visits) order << v;
    EXPECT_EQ(order.join(","), "SB,SSL,R90,D0,D1,Disk,Nav,Ext");
}

TEST_F(SheetTest, AChangeElsewhereShowsInAVisiblePageAtOnceAndInAHiddenOneWhenShown) {
    CfgSheet sheet(context_);
    auto* shown = new ProbePage(context_, "A", store_, nullptr);
    auto* hidden = new ProbePage(context_, "B", store_, nullptr);
    sheet.AddPage(shown, CfgSheet::CfgStorage);
    sheet.AddPage(hidden, CfgSheet::SetupNav);
    sheet.show();
    ASSERT_TRUE(sheet.ShowPage(hidden));
    Firings(sheet, 1);
    EXPECT_EQ(hidden->field->text(), "1");
    ASSERT_TRUE(sheet.ShowPage(shown));
    Firings(sheet, 1);
    EXPECT_EQ(shown->field->text(), "1");
    const int hiddenTicks = hidden->ticks;

    store_.value = 42;
    ++store_.changes;
    Firings(sheet, 1);
    EXPECT_EQ(shown->field->text(), "42") << "within one timer period";
    EXPECT_EQ(hidden->field->text(), "1");
    EXPECT_EQ(hidden->ticks, hiddenTicks) << "a hidden page costs one call and does no work";

    ASSERT_TRUE(sheet.ShowPage(hidden));
    Firings(sheet, 1);
    EXPECT_EQ(hidden->field->text(), "42");
}

TEST_F(SheetTest, AModalBoxInsideATickHoldsLaterFiringsOff) {
    // Qt never re-enters one timer, so the guard shows on the other timers that share the
    // application's count: here the advanced sheet's, while a box is up in the control sheet.
    CfgSheet cfg(context_);
    SetupSheet setup(context_);
    auto* boxed = new ProbePage(context_, "A", store_, nullptr);
    auto* other = new ProbePage(context_, "B", store_, nullptr);
    cfg.AddPage(boxed, CfgSheet::CfgStorage);
    setup.AddPage(other);
    cfg.show();
    setup.show();
    Firings(cfg, 1);
    boxed->blockMs = 1000;
    const int otherTicks = other->ticks;
    const int otherFirings = setup.Firings();
    Firings(cfg, 1);  // returns once the box has closed
    EXPECT_GE(setup.Firings(), otherFirings + 2) << "the timers kept firing while the box was up";
    EXPECT_LE(other->ticks, otherTicks + 1) << "but those firings ran no page";
    EXPECT_EQ(coordinator_.DisplayTimerDepth(), 0);
    const int boxedTicks = boxed->ticks;
    Firings(cfg, 1);
    Firings(setup, 1);
    EXPECT_GT(boxed->ticks, boxedTicks);
    EXPECT_GT(other->ticks, otherTicks + 1);
}

TEST_F(SheetTest, AnExceptionInATickIsReportedAndTheTimerGoesOn) {
    CfgSheet cfg(context_);
    SetupSheet setup(context_);
    auto* a = new ProbePage(context_, "A", store_, nullptr);
    auto* b = new ProbePage(context_, "B", store_, nullptr);
    cfg.AddPage(a, CfgSheet::CfgStorage);
    setup.AddPage(b);
    cfg.show();
    setup.show();
    a->throwNext = true;
    b->throwNext = true;
    cfg.TimerPass();
    setup.TimerPass();
    ASSERT_EQ(operator_.boxes.size(), 2u);
    EXPECT_EQ(operator_.boxes[0].title, "Timer Exception");
    EXPECT_EQ(operator_.boxes[0].text, "Windows Exception In On Timer Cfg Sheet");
    EXPECT_EQ(operator_.boxes[1].text, "Windows Exception In On Timer Setup Sheet");
    EXPECT_EQ(coordinator_.DisplayTimerDepth(), 0);
    Firings(cfg, 1);
    EXPECT_EQ(a->ticks, 2);
}

// The pages the wizard drives, standing in for the sonar, display and disk pages.
struct SonarProbe : ProbePage, WizardSonarTarget {
    using ProbePage::ProbePage;
    void SetupRawDataCollection() override { ++rawSetups; }
    int FirstDisplayChannel() const override { return 4; }
    int rawSetups = 0;
};
struct DisplayProbe : ProbePage, WizardDisplayTarget {
    using ProbePage::ProbePage;
    void ShowChannel(int c) override { channel = c; }
    int channel = -1;
};
struct DiskProbe : ProbePage, WizardDiskTarget {
    using ProbePage::ProbePage;
    void StartRecording(const std::string& d, const std::string& f) override {
        where = d + "|" + f;
    }
    std::string where;
};

TEST_F(SheetTest, WizardCollectsRawDataThroughThePagesItFinds) {
    CfgSheet sheet(context_);
    auto* wizard = new SetupWizard(context_, sheet);
    sheet.AddPage(wizard, CfgSheet::SetupWizard);

    operator_.answer = false;
    wizard->CollectRawData("Subbottom", "SB", true);
    ASSERT_EQ(operator_.boxes.size(), 1u) << "No stops after the question";
    EXPECT_EQ(operator_.boxes[0].text,
              "Do you want to collect a Subbottom raw data file for diagnostic purposes?");

    operator_.answer = true;
    operator_.boxes.clear();
    wizard->CollectRawData("Subbottom", "SB", true);
    ASSERT_EQ(operator_.boxes.size(), 2u);
    EXPECT_EQ(operator_.boxes[1].title, "Wizard Failed");
    EXPECT_EQ(operator_.boxes[1].text, "I dont see a subbottom configured.  Giving up");

    auto* ssl = new SonarProbe(context_, "SSL", store_, nullptr);
    sheet.AddPage(ssl, CfgSheet::CfgSonar);
    operator_.boxes.clear();
    wizard->CollectRawData("SSL", "SSL", false);
    EXPECT_EQ(ssl->rawSetups, 1);
    EXPECT_EQ(operator_.boxes.back().text, "I cannot find display 0.  Giving up");

    auto* d0 = new DisplayProbe(context_, "D0", store_, nullptr);
    auto* disk = new DiskProbe(context_, "Disk", store_, nullptr);
    sheet.AddPage(d0, CfgSheet::CfgDisplay);
    sheet.AddPage(disk, CfgSheet::CfgStorage);
    operator_.boxes.clear();
    wizard->CollectRawData("SSL", "SSL", false);
    EXPECT_EQ(d0->channel, 4);
    EXPECT_EQ(disk->where, ".|DiagData_");
    ASSERT_EQ(operator_.boxes.size(), 4u);
    EXPECT_EQ(operator_.boxes[1].title, "Wizard Info");
    EXPECT_EQ(operator_.boxes[3].text,
              "I am setting the Disk to record data in DiagData_xxx.hsf. Please press the STOP "
              "button when enough data has been collected.");

    operator_.boxes.clear();
    wizard->ShowConnectionHelp();
    EXPECT_EQ(operator_.boxes.at(0).title, "Sonar Connection Info");
    EXPECT_NE(operator_.boxes[0].text.find("NET"), std::string::npos);
}

}  // namespace
}  // namespace halvo

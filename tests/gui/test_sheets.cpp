// The sheets and their pages over a test page with a field of each kind: when an entry applies,
// how it is held to range, what the sheet's timer does with its pages, and the wizard.

#include <QEventLoop>
#include <QTimer>
#include <QVBoxLayout>
#include <stdexcept>

#include "GuiTestApp.h"
#include "gui/extensions/CfgExtension.h"
#include "gui/sheets/CfgSheet.h"
#include "gui/sheets/EnterKeyFilter.h"
#include "gui/sheets/SettingsPage.h"
#include "gui/sheets/SetupSheet.h"
#include "gui/sheets/SetupWizard.h"
#include "gui/sheets/WizardTargets.h"

namespace halvo {
namespace {

struct Record {
    std::int32_t limited = 50;  // 0..100
    std::uint32_t mask = 0;     // hexadecimal
    std::int32_t anyValue = 3;  // minimum above maximum: no range
    float gain = 1.5f;          // 0..10, 2 decimals
    std::int32_t choice = 1;    // from kChoices
    std::string name = "SB";    // up to 8 characters
};

constexpr ListEntry kChoices[] = {{0, "Internal"}, {1, "External"}, {2, "Coupled"}, {0, nullptr}};

// The owner of the record, as a subsystem singleton would be.
struct RecordOwner {
    Record record;
    int changes = 0;
    void Changed() { ++changes; }
};

// A page over the record that notes the timer's visits and can be told to misbehave in a tick.
class TestPage : public SettingsPage<Record> {
  public:
    TestPage(SheetContext& ctx, QString caption, RecordOwner& owner,
             std::vector<QString>* visits = nullptr)
        : SettingsPage(ctx, caption,
                       {[&owner] { return owner.record; },
                        [&owner](const Record& r) {
                            owner.record = r;
                            owner.Changed();
                        },
                        [&owner] { return owner.changes; }}),
          visits_(visits) {
        auto* layout = new QVBoxLayout(this);
        for (QLineEdit** e : {&limited, &mask, &anyValue, &gain, &name}) {
            *e = new QLineEdit(this);
            layout->addWidget(*e);
            WatchEdit(*e);
        }
        choice = new QComboBox(this);
        layout->addWidget(choice);
        WatchCombo(choice);
    }
    void Bind(FieldEditor& ed, int dir, Record& r) override {
        ed.Int(dir, limited, r.limited, 0, 100);
        ed.UInt(dir, mask, r.mask, 0, 0xFFFFFFFFu, fieldtext::kHex);
        ed.Int(dir, anyValue, r.anyValue, 10, 0);
        ed.Float(dir, gain, r.gain, 0.0f, 10.0f, 2);
        ed.List(dir, choice, r.choice, kChoices);
        ed.Text(dir, name, r.name, 8);
    }
    void BeforeTick() override {
        if (visits_ != nullptr) visits_->push_back(Caption());
    }
    void OnTick() override {
        ++ticks;
        if (std::exchange(throwNext, false)) throw std::runtime_error("page fault");
        if (blockMs > 0) {
            // A modal box inside a tick: a nested event loop, here for a bounded time.
            QEventLoop loop;
            QTimer::singleShot(std::exchange(blockMs, 0), &loop, &QEventLoop::quit);
            loop.exec();
        }
    }
    QLineEdit *limited, *mask, *anyValue, *gain, *name;
    QComboBox* choice;
    int ticks = 0;
    bool throwNext = false;
    int blockMs = 0;

  private:
    std::vector<QString>* visits_;
};

class FieldEditorTest : public ::testing::Test {
  protected:
    FieldEditorTest() {
        auto* layout = new QVBoxLayout(&window_);
        page_ = new TestPage(ctx_.context, "Test", owner_);
        other_ = new QLineEdit(&window_);
        layout->addWidget(page_);
        layout->addWidget(other_);
        window_.show();
        window_.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window_, 2000));
        page_->Exchange(DoIOHandler::kShow);
    }
    // Replaces a field's text as the operator would, keeping the focus there.
    void Type(QLineEdit* edit, const char* text) {
        edit->setFocus();
        test::PumpUntil([&] { return edit->hasFocus(); }, 1000);
        edit->selectAll();
        QTest::keyClicks(edit, text);
    }
    void Leave() {
        other_->setFocus();
        test::PumpUntil([&] { return other_->hasFocus(); }, 1000);
    }
    void Enter(QLineEdit* edit) { QTest::keyClick(edit, Qt::Key_Return); }

    test::PageContext ctx_;
    RecordOwner owner_;
    QWidget window_;
    TestPage* page_ = nullptr;
    QLineEdit* other_ = nullptr;
};

TEST_F(FieldEditorTest, TypingAppliesOnlyWhenTheFieldIsLeftOrEnterIsPressed) {
    EnterKeyFilter filter(ctx_.coordinator);
    QApplication::instance()->installEventFilter(&filter);

    Type(page_->limited, "42");
    for (int i = 0; i < 3; ++i) page_->Tick();
    EXPECT_EQ(owner_.record.limited, 50) << "a half-typed number must not reach the settings";
    Leave();
    EXPECT_EQ(owner_.record.limited, 42);

    Type(page_->limited, "77");
    page_->Tick();
    EXPECT_EQ(owner_.record.limited, 42);
    Enter(page_->limited);
    EXPECT_EQ(owner_.record.limited, 77);
    EXPECT_EQ(ctx_.coordinator.EnterFlag(), 0) << "the field takes the flag";

    // Without the key watch no Enter flag is raised, and Enter alone applies nothing.
    QApplication::instance()->removeEventFilter(&filter);
    Type(page_->limited, "12");
    Enter(page_->limited);
    EXPECT_EQ(owner_.record.limited, 77);
    Leave();
    EXPECT_EQ(owner_.record.limited, 12);
}

TEST_F(FieldEditorTest, HeldAndRefusedEntriesShowTheStoredValueAtOnce) {
    const struct {
        QLineEdit* field;
        const char* typed;
        const char* shown;
    } cases[] = {
        {page_->limited, "5000", "100"},
        {page_->limited, "abc", "100"},       // refused
        {page_->anyValue, "-5000", "-5000"},  // minimum above maximum: no range at all
        {page_->gain, "12.345", "10.00"},
        {page_->gain, "garbage", "10.00"},  // refused
        {page_->name, "ABCDEFGHIJ", "ABCDEFGH"},
        // Hexadecimal is parsed twice and the second parse wins.
        {page_->mask, "1F", "1"},
        {page_->mask, "FF", "ff"},
        {page_->mask, "10", "a"},
        {page_->mask, "ff00", "ff00"},
    };
    for (const auto& c : cases) {
        Type(c.field, c.typed);
        Leave();
        EXPECT_EQ(c.field->text(), c.shown) << c.typed;
    }
    EXPECT_EQ(owner_.record.limited, 100);
    EXPECT_EQ(owner_.record.anyValue, -5000);
    EXPECT_FLOAT_EQ(owner_.record.gain, 10.0f);
    EXPECT_EQ(owner_.record.name, "ABCDEFGH");
    EXPECT_EQ(owner_.record.mask, 0xff00u);
}

TEST_F(FieldEditorTest, ListsNameValuesTheTableLacksAndApplyAChoice) {
    EXPECT_EQ(page_->choice->currentText(), "External");
    owner_.record.choice = 7;
    owner_.Changed();
    page_->Tick();
    EXPECT_EQ(page_->choice->currentText(), "<Unknown 7>");
    EXPECT_EQ(page_->choice->count(), 4);

    page_->choice->setFocus();
    QTest::keyClick(page_->choice, Qt::Key_Home);  // the first entry, chosen by the operator
    EXPECT_EQ(owner_.record.choice, 0);
    EXPECT_EQ(page_->choice->count(), 3) << "the unknown entry goes once the value is known";
}

TEST_F(FieldEditorTest, EnableBitsReachEveryRegisteredControl) {
    EnableTable& enables = ctx_.enables;
    enables.Register(page_->limited, 0x1);
    enables.Register(page_->gain, 0x6);
    EXPECT_FALSE(page_->limited->isEnabled());
    enables.SetBit(2, true);
    EXPECT_FALSE(page_->limited->isEnabled());
    EXPECT_TRUE(page_->gain->isEnabled());
    enables.SetBits(0x1);
    EXPECT_TRUE(page_->limited->isEnabled());
    EXPECT_FALSE(page_->gain->isEnabled());
    enables.SetBit(64, true);  // no such bit: nothing happens
    EXPECT_EQ(enables.Bits(), 0x1u);
}

class SheetTest : public ::testing::Test {
  protected:
    // Runs the real 300 ms timer until it has fired n more times.
    void Firings(PageSheet& sheet, int n) {
        const int target = sheet.Firings() + n;
        ASSERT_TRUE(test::PumpUntil([&] { return sheet.Firings() >= target; }, 400 * n + 1000));
    }
    TestPage* Page(const char* caption) { return new TestPage(ctx_.context, caption, owner_); }
    // A page in the control sheet and one in the advanced sheet, both shown.
    void TwoSheets() {
        a_ = Page("A");
        b_ = Page("B");
        cfg_.AddPage(a_, CfgSheet::CfgStorage);
        setup_.AddPage(b_);
        cfg_.show();
        setup_.show();
    }

    test::PageContext ctx_;
    std::vector<test::ScriptedOperator::Box>& boxes_ = ctx_.prompts.boxes;
    RecordOwner owner_;
    CfgSheet cfg_{ctx_.context};
    SetupSheet setup_{ctx_.context};
    TestPage *a_ = nullptr, *b_ = nullptr;
};

TEST_F(SheetTest, PagesTakeTheirDesignedPlaceAndTheTimerVisitsSonarsFirst) {
    std::vector<QString> visits;
    const std::pair<const char*, CfgSheet::Slot> pages[] = {
        {"Nav", CfgSheet::SetupNav},    {"D0", CfgSheet::CfgDisplay},
        {"Ext", CfgSheet::Extension},   {"SB", CfgSheet::CfgSonar},
        {"Disk", CfgSheet::CfgStorage}, {"SSL", CfgSheet::CfgSonar},
        {"R90", CfgSheet::CfgSonarR90}, {"D1", CfgSheet::CfgDisplay},
    };
    for (const auto& [caption, slot] : pages) {
        cfg_.AddPage(new TestPage(ctx_.context, caption, owner_, &visits), slot);
    }
    cfg_.AddPage(new SetupWizard(ctx_.context, cfg_), CfgSheet::SetupWizard);
    EXPECT_EQ(cfg_.windowTitle(), "Status And Control");

    QStringList tabs;
    for (int i = 0; i < cfg_.PageCount(); ++i) tabs << cfg_.PageAt(i)->Caption();
    EXPECT_EQ(tabs.join(","), "Wizard,Disk,R90,SB,SSL,D0,D1,Nav,Ext");
    EXPECT_EQ(cfg_.FindPage("SSL"), cfg_.PageAt(4));
    EXPECT_EQ(cfg_.FindPage("SSH"), nullptr);

    cfg_.TimerPass();
    EXPECT_EQ(QStringList(visits.begin(), visits.end()).join(","), "SB,SSL,R90,D0,D1,Disk,Nav,Ext");

    // An extension's page goes behind every fixed page, and its hook runs after the pages'
    // ticks, on every pass; a null hook adds nothing.
    struct ExtensionPage final : TestPage, CfgExtension {
        using TestPage::TestPage;
        SheetPage* GetPage() override { return this; }
        void OnSheetTimer(int zero, CfgSheet&) override {
            visits->push_back(zero == 0 ? "hook" : "bad");
        }
        std::vector<QString>* visits = nullptr;
    };
    auto* mp = new ExtensionPage(ctx_.context, "MultiPing", owner_, &visits);
    mp->visits = &visits;
    cfg_.AddExtensionPage(nullptr);
    cfg_.AddExtensionPage(mp);
    cfg_.AddPage(new TestPage(ctx_.context, "Alerts", owner_), CfgSheet::SetupAlert);
    EXPECT_EQ(cfg_.PageAt(cfg_.PageCount() - 1)->Caption(), "MultiPing");
    EXPECT_EQ(cfg_.ExtensionHooks(), 1);
    visits.clear();
    cfg_.TimerPass();
    EXPECT_EQ(QStringList(visits.begin(), visits.end()).join(","),
              "SB,SSL,R90,D0,D1,Disk,Nav,Ext,MultiPing,hook");
}

TEST_F(SheetTest, AChangeElsewhereShowsInAVisiblePageAtOnceAndInAHiddenOneWhenShown) {
    TestPage *shown = Page("A"), *hidden = Page("B");
    cfg_.AddPage(shown, CfgSheet::CfgStorage);
    cfg_.AddPage(hidden, CfgSheet::SetupNav);
    cfg_.show();
    ASSERT_TRUE(cfg_.ShowPage(hidden));
    Firings(cfg_, 1);
    EXPECT_EQ(hidden->limited->text(), "50");
    ASSERT_TRUE(cfg_.ShowPage(shown));
    Firings(cfg_, 1);
    EXPECT_EQ(shown->limited->text(), "50");
    const int hiddenTicks = hidden->ticks;

    owner_.record.limited = 42;
    owner_.Changed();
    Firings(cfg_, 1);
    EXPECT_EQ(shown->limited->text(), "42") << "within one timer period";
    EXPECT_EQ(hidden->limited->text(), "50");
    EXPECT_EQ(hidden->ticks, hiddenTicks) << "a hidden page costs one call and does no work";

    ASSERT_TRUE(cfg_.ShowPage(hidden));
    Firings(cfg_, 1);
    EXPECT_EQ(hidden->limited->text(), "42");
}

TEST_F(SheetTest, AModalBoxInsideATickHoldsLaterFiringsOff) {
    // Qt never re-enters one timer, so the guard shows on the other timers that share the
    // application's count: here the advanced sheet's, while a box is up in the control sheet.
    TwoSheets();
    Firings(cfg_, 1);
    a_->blockMs = 1000;
    const int otherTicks = b_->ticks;
    const int otherFirings = setup_.Firings();
    Firings(cfg_, 1);  // returns once the box has closed
    EXPECT_GE(setup_.Firings(), otherFirings + 2) << "the timers kept firing while the box was up";
    EXPECT_LE(b_->ticks, otherTicks + 1) << "but those firings ran no page";
    EXPECT_EQ(ctx_.coordinator.DisplayTimerDepth(), 0);
    const int boxedTicks = a_->ticks;
    Firings(cfg_, 1);
    Firings(setup_, 1);
    EXPECT_GT(a_->ticks, boxedTicks);
    EXPECT_GT(b_->ticks, otherTicks + 1);
}

TEST_F(SheetTest, AnExceptionInATickIsReportedAndTheTimerGoesOn) {
    TwoSheets();
    a_->throwNext = b_->throwNext = true;
    cfg_.TimerPass();
    setup_.TimerPass();
    ASSERT_EQ(boxes_.size(), 2u);
    EXPECT_EQ(boxes_[0].title, "Timer Exception");
    EXPECT_EQ(boxes_[0].text, "Windows Exception In On Timer Cfg Sheet");
    EXPECT_EQ(boxes_[1].text, "Windows Exception In On Timer Setup Sheet");
    EXPECT_EQ(ctx_.coordinator.DisplayTimerDepth(), 0);
    Firings(cfg_, 1);
    EXPECT_EQ(a_->ticks, 2);
}

// The pages the wizard drives, standing in for the sonar, display and disk pages.
struct SonarProbe : TestPage, WizardSonarTarget {
    using TestPage::TestPage;
    void SetupRawDataCollection() override { ++rawSetups; }
    int FirstDisplayChannel() const override { return 4; }
    int rawSetups = 0;
};
struct DisplayProbe : TestPage, WizardDisplayTarget {
    using TestPage::TestPage;
    void ShowChannel(int c) override { channel = c; }
    int channel = -1;
};
struct DiskProbe : TestPage, WizardDiskTarget {
    using TestPage::TestPage;
    void StartRecording(const std::string& d, const std::string& f) override {
        where = d + "|" + f;
    }
    std::string where;
};

TEST_F(SheetTest, WizardCollectsRawDataThroughThePagesItFinds) {
    auto* wizard = new SetupWizard(ctx_.context, cfg_);
    cfg_.AddPage(wizard, CfgSheet::SetupWizard);

    ctx_.prompts.answer = false;
    wizard->CollectRawData("Subbottom", "SB", true);
    ASSERT_EQ(boxes_.size(), 1u) << "No stops after the question";
    EXPECT_EQ(boxes_[0].text,
              "Do you want to collect a Subbottom raw data file for diagnostic purposes?");

    ctx_.prompts.answer = true;
    boxes_.clear();
    wizard->CollectRawData("Subbottom", "SB", true);
    ASSERT_EQ(boxes_.size(), 2u);
    EXPECT_EQ(boxes_[1].title, "Wizard Failed");
    EXPECT_EQ(boxes_[1].text, "I dont see a subbottom configured.  Giving up");

    auto* ssl = new SonarProbe(ctx_.context, "SSL", owner_);
    cfg_.AddPage(ssl, CfgSheet::CfgSonar);
    boxes_.clear();
    wizard->CollectRawData("SSL", "SSL", false);
    EXPECT_EQ(ssl->rawSetups, 1);
    EXPECT_EQ(boxes_.back().text, "I cannot find display 0.  Giving up");

    auto* d0 = new DisplayProbe(ctx_.context, "D0", owner_);
    auto* disk = new DiskProbe(ctx_.context, "Disk", owner_);
    cfg_.AddPage(d0, CfgSheet::CfgDisplay);
    cfg_.AddPage(disk, CfgSheet::CfgStorage);
    boxes_.clear();
    wizard->CollectRawData("SSL", "SSL", false);
    EXPECT_EQ(d0->channel, 4);
    EXPECT_EQ(disk->where, ".|DiagData_");
    ASSERT_EQ(boxes_.size(), 4u);
    EXPECT_EQ(boxes_[1].title, "Wizard Info");
    EXPECT_EQ(boxes_[3].text,
              "I am setting the Disk to record data in DiagData_xxx.hsf. Please press the STOP "
              "button when enough data has been collected.");

    boxes_.clear();
    wizard->ShowConnectionHelp();
    EXPECT_EQ(boxes_.at(0).title, "Sonar Connection Info");
    EXPECT_NE(boxes_[0].text.find("NET"), std::string::npos);
}

}  // namespace
}  // namespace halvo

#include <gtest/gtest.h>
#include <QComboBox>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>

#include "GuiTestApp.h"
#include "app/SystemCoordinator.h"
#include "gui/sheets/EnableTable.h"
#include "gui/sheets/EnterKeyFilter.h"
#include "gui/sheets/SettingsPage.h"

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
    void Set(const Record& r) {
        record = r;
        ++changes;
    }
};

class TestPage : public SettingsPage<Record> {
  public:
    TestPage(SheetContext& ctx, RecordOwner& owner)
        : SettingsPage(
              ctx, "Test",
              {[&owner] { return owner.record; }, [&owner](const Record& r) { owner.Set(r); },
               [&owner] { return owner.changes; }}) {
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
    QLineEdit *limited, *mask, *anyValue, *gain, *name;
    QComboBox* choice;
};

class FieldEditorTest : public ::testing::Test {
  protected:
    FieldEditorTest() : context_{coordinator_, operator_, enables_} {
        auto* layout = new QVBoxLayout(&window_);
        page_ = new TestPage(context_, owner_);
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

    QApplication& app_ = test::GuiApp();
    SystemCoordinator coordinator_;
    test::ScriptedOperator operator_;
    EnableTable enables_;
    SheetContext context_;
    RecordOwner owner_;
    QWidget window_;
    TestPage* page_ = nullptr;
    QLineEdit* other_ = nullptr;
};

TEST_F(FieldEditorTest, TypingAppliesOnlyWhenTheFieldIsLeftOrEnterIsPressed) {
    EnterKeyFilter filter(coordinator_);
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
    EXPECT_EQ(coordinator_.EnterFlag(), 0) << "the field takes the flag";

    // Without the key watch no Enter flag is raised, and Enter alone applies nothing.
    QApplication::instance()->removeEventFilter(&filter);
    Type(page_->limited, "12");
    Enter(page_->limited);
    EXPECT_EQ(owner_.record.limited, 77);
    Leave();
    EXPECT_EQ(owner_.record.limited, 12);
}

TEST_F(FieldEditorTest, HeldAndRefusedEntriesShowTheStoredValueAtOnce) {
    Type(page_->limited, "5000");
    Leave();
    EXPECT_EQ(owner_.record.limited, 100);
    EXPECT_EQ(page_->limited->text(), "100");

    Type(page_->limited, "abc");
    Leave();
    EXPECT_EQ(owner_.record.limited, 100);
    EXPECT_EQ(page_->limited->text(), "100");

    // Minimum above maximum: no range at all.
    Type(page_->anyValue, "-5000");
    Leave();
    EXPECT_EQ(owner_.record.anyValue, -5000);

    Type(page_->gain, "12.345");
    Leave();
    EXPECT_FLOAT_EQ(owner_.record.gain, 10.0f);
    EXPECT_EQ(page_->gain->text(), "10.00");

    Type(page_->name, "ABCDEFGHIJ");
    Leave();
    EXPECT_EQ(owner_.record.name, "ABCDEFGH");
}

TEST_F(FieldEditorTest, HexadecimalFieldsAreParsedTwiceAndTheSecondParseWins) {
    struct Case {
        const char* typed;
        std::uint32_t stored;
    } cases[] = {{"1F", 1}, {"FF", 255}, {"10", 10}, {"ff00", 0xff00}};
    for (const Case& c : cases) {
        Type(page_->mask, c.typed);
        Leave();
        EXPECT_EQ(owner_.record.mask, c.stored) << c.typed;
        EXPECT_EQ(page_->mask->text().toStdString(),
                  fieldtext::FormatInt(c.stored, fieldtext::kHex));
    }
}

TEST_F(FieldEditorTest, ListsNameValuesTheTableLacksAndApplyAChoice) {
    EXPECT_EQ(page_->choice->currentText(), "External");
    owner_.record.choice = 7;
    ++owner_.changes;
    page_->Tick();
    EXPECT_EQ(page_->choice->currentText(), "<Unknown 7>");
    EXPECT_EQ(page_->choice->count(), 4);

    page_->choice->setFocus();
    QTest::keyClick(page_->choice, Qt::Key_Home);  // the first entry, chosen by the operator
    EXPECT_EQ(owner_.record.choice, 0);
    EXPECT_EQ(page_->choice->count(), 3) << "the unknown entry goes once the value is known";
}

TEST_F(FieldEditorTest, EnableBitsReachEveryRegisteredControl) {
    enables_.Register(page_->limited, 0x1);
    enables_.Register(page_->gain, 0x6);
    EXPECT_FALSE(page_->limited->isEnabled());
    enables_.SetBit(2, true);
    EXPECT_FALSE(page_->limited->isEnabled());
    EXPECT_TRUE(page_->gain->isEnabled());
    enables_.SetBits(0x1);
    EXPECT_TRUE(page_->limited->isEnabled());
    EXPECT_FALSE(page_->gain->isEnabled());
    enables_.SetBit(64, true);  // no such bit: nothing happens
    EXPECT_EQ(enables_.Bits(), 0x1u);
}

}  // namespace
}  // namespace halvo

#include <cstdint>
#include <string>
#include <vector>

#include "TempWorkDir.h"
#include "app/ActiveProfileScope.h"
#include "app/IniFile.h"
#include "app/SystemCoordinator.h"

namespace halvo {
namespace {

class IniFileTest : public test::TempWorkDir {
  protected:
    void SetUp() override {
        TempWorkDir::SetUp();
        coordinator_.SetActiveProfile("./Active.Hni");
        ini_.Open("Sec");
    }
    void Put(const std::string& body) { WriteFile("Active.Hni", "[Sec]\n" + body); }

    SystemCoordinator coordinator_;
    IniFile ini_{coordinator_};
};

TEST_F(IniFileTest, IntegersParseLikePercentIAndBadTextGivesTheDefault) {
    struct Case {
        const char* text;
        std::int32_t expected;
    };
    const Case cases[] = {{"0x20", 32}, {"010", 8},    {"  -17", -17},
                          {"+5", 5},    {"12abc", 12}, {"abc", -777},
                          {"", -777},   {"0x", 0},     {"4294967295", -1}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        Put(std::string("k=") + c.text + "\n");
        EXPECT_EQ(ini_.ReadInt("k", -777), c.expected);
        EXPECT_EQ(ini_.ReadIntOrCreate("k", -777, false), c.expected);
    }
}

TEST_F(IniFileTest, FloatsReadZeroOnBadTextButTheSentinelFormReadsTheDefault) {
    struct Case {
        const char* text;
        double plain;
        double sentinel;
    };
    const Case cases[] = {{"abc", 0.0, 2.5}, {"1.25", 1.25, 1.25}, {" -3e2x", -300, -300},
                          {"inf", 0.0, 2.5}, {".5", 0.5, 0.5},     {"0x10", 0.0, 0.0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        Put(std::string("f=") + c.text + "\n");
        EXPECT_DOUBLE_EQ(ini_.ReadFloat("f", 2.5), c.plain);
        EXPECT_DOUBLE_EQ(ini_.ReadFloatOrCreate("f", 2.5, false), c.sentinel);
    }
    // A missing key goes through "%f" as text, so the default comes back at six decimals.
    EXPECT_DOUBLE_EQ(ini_.ReadFloat("missing", 0.12345678), 0.123457);
    EXPECT_DOUBLE_EQ(ini_.ReadFloatOrCreate("missing", 0.12345678, false), 0.12345678);
}

TEST_F(IniFileTest, SentinelTellsAbsentKeysAndCreateWritesTheDefault) {
    Put("present=\n");
    EXPECT_EQ(ini_.ReadStringOrCreate("present", "d", true), "");
    EXPECT_EQ(ini_.ReadStringOrCreate("absent", "made", false), "made");
    EXPECT_EQ(ini_.ReadString("absent", "x"), "x");  // nothing written without create
    EXPECT_EQ(ini_.ReadStringOrCreate("absent", "made", true), "made");
    EXPECT_EQ(ini_.ReadString("absent", "x"), "made");
    EXPECT_EQ(ini_.ReadStringOrCreate("none", nullptr, true), "");
    EXPECT_EQ(ini_.ReadIntOrCreate("n", 42, true), 42);
    EXPECT_EQ(ini_.ReadString("n", ""), "42");
    // A default too long to create is still returned, cut to the value buffer.
    const std::string huge(3000, 'h');
    EXPECT_EQ(ini_.ReadStringOrCreate("big", huge.c_str(), true), huge.substr(0, 199));
    EXPECT_EQ(ini_.ReadString("big", "not written"), "not written");
    // A stored value that merely starts like the sentinel is a real value.
    Put(std::string("s=") + std::string(IniFile::kSentinel) + "X\n");
    EXPECT_EQ(ini_.ReadIntOrCreate("s", 9, false), 9);
    EXPECT_EQ(ini_.ReadStringOrCreate("s", "d", false), std::string(IniFile::kSentinel) + "X");
}

TEST_F(IniFileTest, WritesUseTheFixedNumberFormsAndTheBlobLetters) {
    ini_.WriteFloat("f", 1.5);
    ini_.WriteInt("i", -12);
    ini_.WriteHex("h", 0xBEEF);
    const std::vector<std::uint8_t> blob{0x00, 0x1F, 0xA5};
    EXPECT_TRUE(ini_.WriteBlob("b", blob));
    EXPECT_FALSE(ini_.WriteBlob("big", std::vector<std::uint8_t>(IniFile::kMaxBlobBytes + 1)));
    EXPECT_EQ(ReadFile("Active.Hni"), "[Sec]\nf=1.500000\ni=-12\nh=BEEF\nb=aapbfk\n");
    EXPECT_EQ(ini_.ReadHex("h", 0), 0xBEEFu);
    EXPECT_EQ(ini_.ReadHex("missing", 0xABCu), 0xABCu);
}

TEST_F(IniFileTest, EmptyFileNameFollowsTheActiveProfileAndScopesRestoreIt) {
    IniFile named(coordinator_);
    named.Open("Sec", "./Named.ini");
    named.WriteInt("k", 1);
    {
        ActiveProfileScope scope(coordinator_, "./Other.Hni");
        ini_.WriteInt("k", 2);  // opened before the scope, still follows the active name
    }
    EXPECT_EQ(coordinator_.ActiveProfile(), "./Active.Hni");
    ini_.WriteInt("k", 3);
    EXPECT_EQ(ReadFile("Named.ini"), "[Sec]\nk=1\n");
    EXPECT_EQ(ReadFile("Other.Hni"), "[Sec]\nk=2\n");
    EXPECT_EQ(ReadFile("Active.Hni"), "[Sec]\nk=3\n");
}

}  // namespace
}  // namespace halvo

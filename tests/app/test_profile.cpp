#include <string>

#include "TempWorkDir.h"
#include "app/Profile.h"
#include "app/ProfileDocument.h"

namespace halvo {
namespace {

using ProfileTest = test::TempWorkDir;

TEST_F(ProfileTest, MissingFileSectionOrKeyGivesDefault) {
    EXPECT_EQ(Profile::ReadString("./none.ini", "A", "k", "dflt  ", 199), "dflt");
    WriteFile("x.ini", "[A]\nk=1\n");
    EXPECT_EQ(Profile::ReadString("./x.ini", "B", "k", "d", 199), "d");
    EXPECT_EQ(Profile::ReadString("./x.ini", "A", "other", "d", 199), "d");
    EXPECT_EQ(Profile::ReadString("./x.ini", "A", "k", "d", 199), "1");
    // The name written the old way reaches the same file.
    EXPECT_EQ(Profile::ReadString(".\\x.ini", "A", "k", "d", 199), "1");
}

TEST_F(ProfileTest, WriteCreatesFileAndSectionAndIgnoresCase) {
    ASSERT_TRUE(Profile::WriteString("./new.ini", "General", "WaterSoundSpeed", "1480"));
    EXPECT_EQ(Profile::ReadString("./new.ini", "GENERAL", "watersoundspeed", "", 199), "1480");
    // A write with other case replaces the existing key instead of adding a second one.
    ASSERT_TRUE(Profile::WriteString("./new.ini", "general", "WATERSOUNDSPEED", "1500"));
    EXPECT_EQ(Profile::ReadString("./new.ini", "General", "WaterSoundSpeed", "", 199), "1500");
    EXPECT_EQ(ReadFile("new.ini"), "[General]\nWaterSoundSpeed=1500\n");
}

TEST_F(ProfileTest, WriteKeepsEveryOtherLineByteForByte) {
    const std::string before =
        "; operator notes\r\n[Alpha]\r\n  Gain = 40 \r\nJunk line without equals\r\n\r\n"
        "[Beta]\r\nx=\"quoted\"\r\n[alpha]\r\nGain=99\r\n[Gamma]\r\nlast=1";
    WriteFile("f.ini", before);
    ASSERT_TRUE(Profile::WriteString("./f.ini", "ALPHA", "gain", "41"));
    ASSERT_TRUE(Profile::WriteString("./f.ini", "Beta", "y", "2"));
    ASSERT_TRUE(Profile::WriteString("./f.ini", "Gamma", "next", "3"));
    ASSERT_TRUE(Profile::WriteString("./f.ini", "Delta", "k", "v"));
    const std::string expected =
        "; operator notes\r\n[Alpha]\r\n  Gain = 41\r\nJunk line without equals\r\n\r\n"
        "[Beta]\r\nx=\"quoted\"\r\ny=2\r\n[alpha]\r\nGain=99\r\n[Gamma]\r\nlast=1\r\nnext=3\r\n"
        "\r\n[Delta]\r\nk=v\r\n";
    EXPECT_EQ(ReadFile("f.ini"), expected);
    EXPECT_EQ(Profile::ReadString("./f.ini", "Beta", "x", "", 199), "quoted");
    // The first of two sections with one name is the one that counts.
    EXPECT_EQ(Profile::ReadString("./f.ini", "alpha", "Gain", "", 199), "41");
}

TEST_F(ProfileTest, BadFilesNeitherCrashNorLoseKeysOnTheNextWrite) {
    const std::string longLine(100000, 'z');
    struct Case {
        const char* name;
        std::string bytes;
    };
    const Case cases[] = {{"binary", std::string("\0\xff\x01junk\n[S]\n\x7f=\x80\0\nkeep=1\n", 24)},
                          {"no bracket", "[Broken\nkeep=1\n[S]\nkeep=1\n"},
                          {"long line", "[S]\n" + longLine + "=x\nkeep=1\n"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        WriteFile("bad.ini", c.bytes);
        EXPECT_EQ(Profile::ReadString("./bad.ini", "S", "keep", "d", 199), "1");
        ASSERT_TRUE(Profile::WriteString("./bad.ini", "S", "added", "2"));
        EXPECT_EQ(Profile::ReadString("./bad.ini", "S", "keep", "d", 199), "1");
        EXPECT_EQ(Profile::ReadString("./bad.ini", "S", "added", "d", 199), "2");
        // Everything that was there is still there, in front of the new key.
        EXPECT_EQ(ReadFile("bad.ini").rfind(c.bytes.substr(0, c.bytes.size() - 1), 0), 0u);
    }
    WriteFile("long.ini", "[S]\nk=" + longLine + "\n");
    EXPECT_EQ(Profile::ReadString("./long.ini", "S", "k", "", 199), longLine.substr(0, 199));
}

TEST_F(ProfileTest, UnwritableNamesAndValuesCannotInjectLines) {
    WriteFile("i.ini", "[S]\nk=1\n");
    const std::string before = ReadFile("i.ini");
    EXPECT_FALSE(Profile::WriteString("./i.ini", "S", "a=b", "1"));
    EXPECT_FALSE(Profile::WriteString("./i.ini", "S]x", "a", "1"));
    EXPECT_FALSE(Profile::WriteString("./i.ini", "S", "", "1"));
    EXPECT_FALSE(Profile::WriteString("./i.ini", "S", "a\nb", "1"));
    EXPECT_EQ(ReadFile("i.ini"), before);
    ASSERT_TRUE(Profile::WriteString("./i.ini", "S", "k", "2\n[T]\nevil=1"));
    EXPECT_EQ(Profile::ReadString("./i.ini", "S", "k", "", 199), "2");
    EXPECT_EQ(Profile::ReadString("./i.ini", "T", "evil", "none", 199), "none");
    // A folder in place of the file: reads give the default, writes fail and change nothing.
    std::filesystem::create_directory("dir.ini");
    EXPECT_EQ(Profile::ReadString("./dir.ini", "S", "k", "d", 199), "d");
    EXPECT_FALSE(Profile::WriteString("./dir.ini", "S", "k", "1"));
}

TEST_F(ProfileTest, SectionNamesAndDeletion) {
    WriteFile("s.ini", "[One]\na=1\n[ Two ]\nb=2\n[Three]\nc=3\n");
    EXPECT_EQ(Profile::SectionNames("./s.ini"), (std::vector<std::string>{"One", "Two", "Three"}));
    ASSERT_TRUE(Profile::DeleteSection("./s.ini", "two"));
    ASSERT_TRUE(Profile::DeleteKey("./s.ini", "three", "C"));
    EXPECT_EQ(ReadFile("s.ini"), "[One]\na=1\n[Three]\n");
}

}  // namespace
}  // namespace halvo

#include <gtest/gtest.h>

#include <string>

#include "app/EventLog.h"

namespace halvo {
namespace {

TEST(EventLog, LinesCarryTimeOfDayAndAreCutAtNinetyCharacters) {
    TimeValue now{86400 * 3 + 13 * 3600 + 4 * 60 + 5, 999};
    EventLog log([&] { return now; }, 3);
    log.Add(std::string(120, 'x'));
    log.Addf("SONAR : %s", "Connected");
    auto lines = log.Lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "13:04:05  " + std::string(90, 'x'));
    EXPECT_EQ(lines[1], "13:04:05  SONAR : Connected");
}

TEST(EventLog, ReaderResumesAfterTheRingWraps) {
    EventLog log([] { return TimeValue{}; }, 3);
    for (int i = 1; i <= 5; ++i) log.Addf("line %d", i);
    EXPECT_EQ(log.LastSequence(), 5u);
    auto since = log.Since(1);  // lines 2 and 3 have already gone
    ASSERT_EQ(since.size(), 3u);
    EXPECT_EQ(since.front().sequence, 3u);
    EXPECT_EQ(since.back().text, "00:00:00  line 5");
    EXPECT_TRUE(log.Since(5).empty());
}

}  // namespace
}  // namespace halvo

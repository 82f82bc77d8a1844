// The beep and log thread: when it beeps, how long it sleeps, what it logs.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "status/AlertAnnouncer.h"
#include "status/StatusTestSupport.h"

namespace halvo::test {
namespace {

class Announcer : public ::testing::Test {
  protected:
    AlertAnnouncer Make() {
        return AlertAnnouncer(
            beeper_, log_, run_, [this] { return word_.load(); }, [this] { return settings_; });
    }
    bool LogEndsWith(const std::string& text) {
        const auto lines = log_.Lines();
        return !lines.empty() && lines.back().ends_with(text);
    }

    FakeTickSource ticks_;
    RecordingBeeper beeper_{ticks_};
    EventLog log_{[] { return TimeValue{1'700'000'000, 0}; }};
    RunFlag run_;
    std::atomic<std::uint32_t> word_{0};
    AlertSettings settings_;
};

TEST_F(Announcer, BeepsOnlyWhenEveryConditionHolds) {
    struct Case {
        std::uint32_t word;
        int interval;
        int duration;
        int flags;
        bool beeps;
    };
    const Case cases[] = {{AlertRoll, 0, 200, AlertBeep, false},  // interval 0: no beep
                          {AlertRoll, 1, 200, AlertBeep, true},
                          {AlertRoll, 99999, 200, AlertBeep, true},
                          {AlertRoll, 100000, 200, AlertBeep, false},
                          {AlertRoll, 500, 0, AlertBeep, false},
                          {AlertRoll, 500, 200, AlertRoll, false},  // bit 8 clear
                          {0, 500, 200, AlertBeep, false}};
    AlertAnnouncer announcer = Make();
    int expectedTones = 0;
    for (const Case& c : cases) {
        word_ = c.word;
        settings_.beepInterval = c.interval;
        settings_.beepDuration = c.duration;
        settings_.beepTone = 1234;
        settings_.alertFlags = c.flags;
        ticks_.AdvanceTick(10);
        EXPECT_EQ(announcer.BeepStep(settings_), c.beeps) << c.interval << " " << c.duration;
        if (!c.beeps) continue;
        ++expectedTones;
        const auto tones = beeper_.Tones();
        ASSERT_EQ(static_cast<int>(tones.size()), expectedTones);
        EXPECT_EQ(tones.back().hz, 1234);
        EXPECT_EQ(tones.back().ms, c.duration);
        EXPECT_EQ(tones.back().tick, ticks_.TickCount());
    }
    EXPECT_EQ(static_cast<int>(beeper_.Tones().size()), expectedTones);
}

TEST_F(Announcer, SleepsAtLeastATenthOfASecond) {
    const std::pair<int, int> cases[] = {{0, 100}, {-5, 100}, {99, 100}, {250, 250}};
    for (const auto& [interval, sleep] : cases) {
        settings_.beepInterval = interval;
        EXPECT_EQ(AlertAnnouncer::SleepMs(settings_), sleep) << interval;
    }
}

TEST_F(Announcer, LogsEachChangeOfTheWordOnce) {
    AlertAnnouncer announcer = Make();
    const std::pair<std::uint32_t, const char*> steps[] = {
        {0, nullptr},
        {0x41, "ALERTS : Alerts pending 41"},
        {0x41, nullptr},
        {0x20000, "ALERTS : Alerts pending 20000"},
        {0, "ALERTS : No alerts"}};
    for (const auto& [word, line] : steps) {
        const std::uint64_t before = log_.LastSequence();
        word_ = word;
        EXPECT_EQ(announcer.LogStep(), line != nullptr);
        EXPECT_EQ(log_.LastSequence(), before + (line != nullptr ? 1 : 0));
        if (line != nullptr) {
            EXPECT_TRUE(LogEndsWith(line)) << line;
        }
    }
}

TEST_F(Announcer, ThreadBeepsAndLogsUntilStopped) {
    run_.Raise();
    settings_.beepInterval = 100;
    settings_.beepDuration = 1;
    settings_.alertFlags = AlertBeep;
    word_ = AlertHot;
    AlertAnnouncer announcer = Make();
    announcer.Start();
    bool logged = false;
    for (int i = 0; i < 300 && !logged; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        logged = LogEndsWith("ALERTS : Alerts pending 8");
    }
    announcer.Stop();
    EXPECT_TRUE(logged);
    EXPECT_FALSE(beeper_.Tones().empty());
    const auto count = beeper_.Tones().size();
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    EXPECT_EQ(beeper_.Tones().size(), count);  // nothing after the stop
}

}  // namespace
}  // namespace halvo::test

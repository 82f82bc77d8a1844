#include <mutex>

#include "NavPagesFixture.h"
#include "app/ProgramClock.h"
#include "core/ByteOrder.h"
#include "core/MessageHub.h"
#include "core/MessageTypes.h"
#include "gui/pages/SetupTelemetry.h"
#include "net/NetTestRig.h"
#include "net/NetworkHub.h"

namespace halvo {
namespace {

// What went out on the command bus: type, direction, source and payload of each message.
struct CommandLog final : MessageObserver {
    struct Seen {
        int type, direction, source;
        std::vector<std::uint8_t> payload;
    };
    void DeliverMessage(SonarMessage* m, int source, std::uint32_t) override {
        if (m == nullptr || m->empty()) return;
        std::lock_guard lock(mutex);
        const auto p = m->Payload();
        seen.push_back({m->type(), m->direction(), source, {p.begin(), p.end()}});
    }
    // What came once `n` messages are in, or all there is after 3 s.
    std::vector<Seen> Take(std::size_t n) {
        test::PumpUntil(
            [&] {
                std::lock_guard lock(mutex);
                return seen.size() >= n;
            },
            3000);
        std::lock_guard lock(mutex);
        return std::exchange(seen, {});
    }
    std::mutex mutex;
    std::vector<Seen> seen;
};

using Net = NetworkSettings;

class SetupTelemetryTest : public test::NavPagesTest {
  protected:
    void SetUp() override {
        NavPagesTest::SetUp();
        page_ = Show<SetupTelemetry>(*cfg_, "Network");
        ASSERT_NE(page_, nullptr);
    }
    NetworkHub& Hub() { return system_->Network(); }
    QLineEdit* Edit(const char* name) { return test::Child<QLineEdit>(page_, name); }
    QCheckBox* Box(const char* name) { return test::Child<QCheckBox>(page_, name); }

    SetupTelemetry* page_ = nullptr;
};

TEST_F(SetupTelemetryTest, ShowsWhatTheHubHoldsAfterAChangeElsewhere) {
    Net s = Hub().Settings();
    s.endpoints[Net::SonarData].HostName = "127.0.0.1";
    s.endpoints[Net::TopsideCommand].Port = 4242;
    Hub().ApplyNetworkSettings(s);
    EXPECT_NE(Edit("SonarData.HostName")->text(), "127.0.0.1") << "nothing shows before a tick";

    cfg_->TimerPass();
    EXPECT_EQ(Edit("SonarData.HostName")->text(), "127.0.0.1");
    EXPECT_EQ(Edit("TopsideCommand.Port")->text(), "4242");
    EXPECT_FALSE(Box("EnableNetworkIO")->isChecked());
}

TEST_F(SetupTelemetryTest, EntriesReachTheHubHeldToTheirRanges) {
    const struct {
        const char* field;
        const char* typed;
        const char* shown;
    } cases[] = {
        {"SonarCommand.XmitSize", "5000000", "200000"},
        {"SonarData.RecvSize", "10", "1000"},
        {"TopsideData.XmitSize", "150000", "150000"},
        {"AliveTimeout", "100", "500"},
        {"AliveTimeout", "90000", "60000"},
        {"SonarCommand.Port", "70000", "65535"},
        {"SonarCommand.HostName", "sonar.local", "sonar.local"},
    };
    Net want = Hub().Settings();
    for (const auto& c : cases) {
        test::TypeAndLeave(Edit(c.field), c.typed);
        EXPECT_EQ(Edit(c.field)->text(), c.shown) << c.field << " " << c.typed;
    }
    Box("EnableTimeSync")->click();
    want.endpoints[Net::SonarCommand].XmitSize = 200000;
    want.endpoints[Net::SonarData].RecvSize = 1000;
    want.endpoints[Net::TopsideData].XmitSize = 150000;
    want.endpoints[Net::SonarCommand].Port = 65535;
    want.endpoints[Net::SonarCommand].HostName = "sonar.local";
    want.AliveTimeout = 60000;
    want.EnableTimeSync = 1;
    EXPECT_EQ(Hub().Settings(), want) << "nothing else moved";
}

TEST_F(SetupTelemetryTest, DefaultButtonsResetAllButTheDataLinksTransmitBuffer) {
    const struct {
        const char* button;
        std::int32_t commandPort;
    } cases[] = {
        {"Via TWSI", 1800}, {"Std Bottle", 1700}, {"Local Host", 1700}, {"Local TWSI", 1800}};
    for (const auto& c : cases) {
        Net s = Hub().Settings();
        s.EnableNetworkIO = 0;
        auto& cmd = s.endpoints[Net::SonarCommand];
        auto& data = s.endpoints[Net::SonarData];
        cmd.HostName = data.HostName = "elsewhere";
        cmd.XmitSize = cmd.RecvSize = data.RecvSize = 3000;
        data.XmitSize = 4321;
        s.endpoints[Net::TopsideCommand].XmitSize = 2222;
        Hub().ApplyNetworkSettings(s);
        cfg_->TimerPass();

        test::Button(page_, c.button)->click();
        // What the button makes of it; the rest, the data link's transmit buffer too, stays.
        s.EnableNetworkIO = 1;
        cmd.HostName = data.HostName = "127.0.0.1";
        cmd.Port = c.commandPort;
        data.Port = c.commandPort + 1;
        cmd.XmitSize = cmd.RecvSize = data.RecvSize = SetupTelemetry::kDefaultBuffer;
        EXPECT_EQ(Hub().Settings(), s) << c.button;
        // The page shows the new settings at once.
        EXPECT_EQ(Edit("SonarData.Port")->text(), QString::number(data.Port)) << c.button;
        EXPECT_TRUE(Box("EnableNetworkIO")->isChecked()) << c.button;
    }
}

TEST_F(SetupTelemetryTest, SetTimeSendsOurTimeThenAQueryAndCheckTimeOnlyTheQuery) {
    CommandLog log;
    system_->Hub().CommandBus().Attach(&log);
    const TimeValue now = system_->Clock().Now();

    test::Button(page_, "Set Time")->click();
    auto seen = log.Take(2);
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].type, MsgClock);
    EXPECT_EQ(seen[0].direction, 0);
    EXPECT_EQ(seen[0].source, SourceLocal);
    ASSERT_EQ(seen[0].payload.size(), 8u);
    const std::int32_t sentSeconds = GetLE<std::int32_t>(seen[0].payload, 0);
    EXPECT_GE(sentSeconds, now.seconds);
    EXPECT_LE(sentSeconds, now.seconds + 1);
    EXPECT_EQ(seen[1].type, MsgClock);
    EXPECT_EQ(seen[1].direction, 1);
    EXPECT_TRUE(seen[1].payload.empty());

    test::Button(page_, "Check Time")->click();
    seen = log.Take(1);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].direction, 1);
    // The sonar's clock is set, never this machine's.
    EXPECT_TRUE(clock_.SetCalls().empty());
    system_->Hub().CommandBus().Detach(&log);
}

TEST_F(SetupTelemetryTest, LatencyLinesFollowTheLinksOnlyWhileShown) {
    test::RawPeer sonar;  // connections wait in its backlog
    Net s = Hub().Settings();
    s.EnableNetworkIO = 1;
    for (const int e : {Net::SonarCommand, Net::SonarData}) {
        s.endpoints[e].HostName = "127.0.0.1";
        s.endpoints[e].Port = sonar.port();
    }
    cfg_->TimerPass();
    EXPECT_TRUE(page_->CountersText().isEmpty()) << "nothing is written while off";

    Hub().ApplyNetworkSettings(s);
    ASSERT_TRUE(test::PumpUntil(
        [&] { return Hub().GetStatus()[0].IsConnected() && Hub().GetStatus()[1].IsConnected(); },
        5000));
    cfg_->TimerPass();
    EXPECT_TRUE(page_->CountersText().isEmpty()) << "the timer leaves the lines alone while off";

    Box("ShowLatency")->setChecked(true);
    cfg_->TimerPass();
    EXPECT_TRUE(page_->CountersText().startsWith("Cmd:(X="));
    // Both links connected once: odd connection counts.
    EXPECT_EQ(page_->CountersText().count("C=1 "), 2) << page_->CountersText().toStdString();
    EXPECT_TRUE(page_->LatencyText().startsWith("Time in ms :: Ping: "));
    EXPECT_TRUE(page_->LatencyText().contains(" SyncC: 0(0) SyncD: 0(0) Sync Error: 0(0 0) "));
    EXPECT_TRUE(test::Screenshot(*cfg_, "page_setup_telemetry.png"));
}

}  // namespace
}  // namespace halvo

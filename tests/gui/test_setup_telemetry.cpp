#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <mutex>
#include <vector>

#include "NavPagesFixture.h"
#include "app/ProgramClock.h"
#include "core/ByteOrder.h"
#include "core/MessageHub.h"
#include "core/MessageObserver.h"
#include "core/MessageTypes.h"
#include "gui/pages/SetupTelemetry.h"
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
    std::vector<Seen> Take() {
        std::lock_guard lock(mutex);
        return std::exchange(seen, {});
    }
    std::size_t Count() {
        std::lock_guard lock(mutex);
        return seen.size();
    }
    std::mutex mutex;
    std::vector<Seen> seen;
};

// A loopback listener on an ephemeral port; connections wait in its backlog.
struct Listener {
    Listener() {
        fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t len = sizeof a;
        if (fd < 0 || ::bind(fd, reinterpret_cast<sockaddr*>(&a), len) != 0 ||
            ::listen(fd, 4) != 0 || ::getsockname(fd, reinterpret_cast<sockaddr*>(&a), &len) != 0)
            return;
        port = ntohs(a.sin_port);
    }
    ~Listener() {
        if (fd >= 0) ::close(fd);
    }
    int fd = -1;
    int port = 0;
};

class SetupTelemetryTest : public test::NavPagesTest {
  protected:
    void SetUp() override {
        NavPagesTest::SetUp();
        page_ = dynamic_cast<SetupTelemetry*>(Show(*cfg_, "Network"));
        ASSERT_NE(page_, nullptr);
    }
    NetworkHub& Net() { return system_->Network(); }
    QLineEdit* Edit(const char* name) { return Find<QLineEdit>(page_, name); }

    SetupTelemetry* page_ = nullptr;
};

TEST_F(SetupTelemetryTest, ShowsWhatTheHubHoldsAfterAChangeElsewhere) {
    NetworkSettings s = Net().Settings();
    s.endpoints[NetworkSettings::SonarData].HostName = "127.0.0.1";
    s.endpoints[NetworkSettings::TopsideCommand].Port = 4242;
    s.AliveTimeout = 7500;
    s.EnableTimeSync = 1;
    Net().ApplyNetworkSettings(s);
    EXPECT_NE(Edit("SonarData.HostName")->text(), "127.0.0.1") << "nothing shows before a tick";

    cfg_->TimerPass();
    EXPECT_EQ(Edit("SonarData.HostName")->text(), "127.0.0.1");
    EXPECT_EQ(Edit("TopsideCommand.Port")->text(), "4242");
    EXPECT_EQ(Edit("AliveTimeout")->text(), "7500");
    EXPECT_TRUE(Find<QCheckBox>(page_, "EnableTimeSync")->isChecked());
    EXPECT_FALSE(Find<QCheckBox>(page_, "EnableNetworkIO")->isChecked());
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
    for (const auto& c : cases) {
        Enter(Edit(c.field), c.typed);
        EXPECT_EQ(Edit(c.field)->text(), c.shown) << c.field << " " << c.typed;
    }
    const NetworkSettings s = Net().Settings();
    EXPECT_EQ(s.endpoints[NetworkSettings::SonarCommand].XmitSize, 200000);
    EXPECT_EQ(s.endpoints[NetworkSettings::SonarData].RecvSize, 1000);
    EXPECT_EQ(s.endpoints[NetworkSettings::TopsideData].XmitSize, 150000);
    EXPECT_EQ(s.endpoints[NetworkSettings::SonarCommand].Port, 65535);
    EXPECT_EQ(s.endpoints[NetworkSettings::SonarCommand].HostName, "sonar.local");
    EXPECT_EQ(s.AliveTimeout, 60000);

    // A refused entry leaves the stored value and shows it again.
    Enter(Edit("SonarData.RecvSize"), "lots");
    EXPECT_EQ(Net().Settings().endpoints[NetworkSettings::SonarData].RecvSize, 1000);
    EXPECT_EQ(Edit("SonarData.RecvSize")->text(), "1000");

    Find<QCheckBox>(page_, "EnableTimeSync")->click();
    EXPECT_EQ(Net().Settings().EnableTimeSync, 1);
}

TEST_F(SetupTelemetryTest, DefaultButtonsResetAllButTheDataLinksTransmitBuffer) {
    const struct {
        const char* button;
        std::int32_t commandPort, dataPort;
    } cases[] = {
        {"Via TWSI", 1800, 1801},
        {"Std Bottle", 1700, 1701},
        {"Local Host", 1700, 1701},
        {"Local TWSI", 1800, 1801},
    };
    for (const auto& c : cases) {
        NetworkSettings before = Net().Settings();
        before.EnableNetworkIO = 0;
        auto& cmd = before.endpoints[NetworkSettings::SonarCommand];
        auto& data = before.endpoints[NetworkSettings::SonarData];
        cmd.HostName = data.HostName = "elsewhere";
        cmd.XmitSize = cmd.RecvSize = data.RecvSize = 3000;
        data.XmitSize = 4321;
        before.endpoints[NetworkSettings::TopsideCommand].XmitSize = 2222;
        Net().ApplyNetworkSettings(before);
        cfg_->TimerPass();

        Button(page_, c.button)->click();
        const NetworkSettings after = Net().Settings();
        const auto& cmdAfter = after.endpoints[NetworkSettings::SonarCommand];
        const auto& dataAfter = after.endpoints[NetworkSettings::SonarData];
        EXPECT_EQ(after.EnableNetworkIO, 1) << c.button;
        EXPECT_EQ(cmdAfter.HostName, "127.0.0.1") << c.button;
        EXPECT_EQ(dataAfter.HostName, "127.0.0.1") << c.button;
        EXPECT_EQ(cmdAfter.Port, c.commandPort) << c.button;
        EXPECT_EQ(dataAfter.Port, c.dataPort) << c.button;
        EXPECT_EQ(cmdAfter.XmitSize, SetupTelemetry::kDefaultBuffer) << c.button;
        EXPECT_EQ(cmdAfter.RecvSize, SetupTelemetry::kDefaultBuffer) << c.button;
        EXPECT_EQ(dataAfter.RecvSize, SetupTelemetry::kDefaultBuffer) << c.button;
        EXPECT_EQ(dataAfter.XmitSize, 4321) << c.button << ": the data link's own stays";
        EXPECT_EQ(after.endpoints[NetworkSettings::TopsideCommand].XmitSize, 2222) << c.button;
        // The page shows the new settings at once.
        EXPECT_EQ(Edit("SonarData.Port")->text(), QString::number(c.dataPort)) << c.button;
        EXPECT_TRUE(Find<QCheckBox>(page_, "EnableNetworkIO")->isChecked()) << c.button;
    }
}

TEST_F(SetupTelemetryTest, SetTimeSendsOurTimeThenAQueryAndCheckTimeOnlyTheQuery) {
    CommandLog log;
    system_->Hub().CommandBus().Attach(&log);
    const TimeValue now = system_->Clock().Now();

    Button(page_, "Set Time")->click();
    ASSERT_TRUE(test::PumpUntil([&] { return log.Count() >= 2; }, 3000));
    auto seen = log.Take();
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

    Button(page_, "Check Time")->click();
    ASSERT_TRUE(test::PumpUntil([&] { return log.Count() >= 1; }, 3000));
    seen = log.Take();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].direction, 1);
    // The sonar's clock is set, never this machine's.
    EXPECT_TRUE(clock_.SetCalls().empty());
    system_->Hub().CommandBus().Detach(&log);
}

TEST_F(SetupTelemetryTest, LatencyLinesFollowTheLinksOnlyWhileShown) {
    Listener sonar;
    ASSERT_GT(sonar.port, 0);
    NetworkSettings s = Net().Settings();
    s.EnableNetworkIO = 1;
    s.endpoints[NetworkSettings::SonarCommand].HostName = "127.0.0.1";
    s.endpoints[NetworkSettings::SonarData].HostName = "127.0.0.1";
    s.endpoints[NetworkSettings::SonarCommand].Port = sonar.port;
    s.endpoints[NetworkSettings::SonarData].Port = sonar.port;
    cfg_->TimerPass();
    EXPECT_TRUE(page_->CountersText().isEmpty()) << "nothing is written while off";

    Net().ApplyNetworkSettings(s);
    ASSERT_TRUE(test::PumpUntil(
        [&] { return Net().GetStatus()[0].IsConnected() && Net().GetStatus()[1].IsConnected(); },
        5000));
    cfg_->TimerPass();
    EXPECT_TRUE(page_->CountersText().isEmpty()) << "the timer leaves the lines alone while off";

    Find<QCheckBox>(page_, "ShowLatency")->setChecked(true);
    cfg_->TimerPass();
    EXPECT_TRUE(page_->CountersText().startsWith("Cmd:(X="));
    // Both links connected once: odd connection counts.
    EXPECT_EQ(page_->CountersText().count("C=1 "), 2) << page_->CountersText().toStdString();
    EXPECT_TRUE(page_->LatencyText().startsWith("Time in ms :: Ping: "));
    EXPECT_TRUE(page_->LatencyText().contains(" SyncC: 0(0) SyncD: 0(0) Sync Error: 0(0 0) "));
}

}  // namespace
}  // namespace halvo

#pragma once
// A controller on a real command bus, driven tick by tick on a fake tick source. A recorder
// attached behind the controller keeps what went out; replies are posted as the command link
// would post them.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "app/SystemCoordinator.h"
#include "app/TempWorkDir.h"
#include "core/ByteOrder.h"
#include "core/MessageHub.h"
#include "core/MessageTypes.h"
#include "platform/FakeTickSource.h"
#include "sonar/SonarIF.h"
#include "storage/StorageControl.h"

namespace halvo::test {

struct Sent {
    int type, direction, subsystem, channel;
    std::vector<std::uint8_t> payload;
    std::int32_t Word(std::size_t i = 0) const { return GetLE<std::int32_t>(payload, i * 4, -999); }
};

class SentLog : public MessageObserver {
  public:
    static constexpr int kFence = 60000;  // a type nobody sends: marks the end of a drain
    void DeliverMessage(SonarMessage* m, int source, std::uint32_t) override {
        if (!m || source != SourceLocal) return;
        std::lock_guard lock(mutex_);
        if (m->type() == kFence) {
            ++fences_;
            return;
        }
        const auto p = m->Payload();
        sent_.push_back(
            {m->type(), m->direction(), m->subsystem(), m->channel(), {p.begin(), p.end()}});
    }
    std::vector<Sent> Take() {
        std::lock_guard lock(mutex_);
        return std::exchange(sent_, {});
    }
    int Fences() {
        std::lock_guard lock(mutex_);
        return fences_;
    }

  private:
    std::mutex mutex_;
    std::vector<Sent> sent_;
    int fences_ = 0;
};

class SonarRig : public TempWorkDir {
  protected:
    void SetUp() override {
        TempWorkDir::SetUp();
        run.Raise();
    }
    void Make(int configType, const std::string& defaults = "") {
        if (!defaults.empty()) WriteFile("Defaults.ini", defaults);
        ticks.SetTick(100000);
        hub = std::make_unique<MessageHub>(run);
        sonar = std::make_unique<SonarIF>(coordinator, *hub, ticks, *storage, configType);
        hub->CommandBus().Attach(&log);
        hub->Start(4096);
        sonar->Load();
        sonar->Controller().SetConnectionCount([this] { return count.load(); });
    }
    void TearDown() override {
        sonar.reset();
        hub.reset();
        TempWorkDir::TearDown();
    }
    // Waits until the bus has delivered everything posted so far, then takes what went out.
    std::vector<Sent> Drain() {
        const int want = log.Fences() + 1;
        EXPECT_EQ(hub->SendCommand(nullptr, 0, SentLog::kFence, 0, 0, 0), 0);
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (log.Fences() < want && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_EQ(log.Fences(), want);
        return log.Take();
    }
    std::vector<Sent> TickAndDrain(std::uint32_t advanceMs = 250) {
        ticks.AdvanceTick(advanceMs);
        sonar->Tick();
        return Drain();
    }
    // A reply from the sonar, as the command link posts it; then waits for what it set off.
    std::vector<Sent> Reply(int type, int sub, std::vector<std::uint8_t> payload,
                            int dir = DirReply, int source = SourceSonarCommand) {
        SonarMessage m = SonarMessage::Build(
            static_cast<std::uint16_t>(type), static_cast<std::uint8_t>(dir),
            static_cast<std::uint8_t>(sub), 0, static_cast<std::int32_t>(payload.size()));
        std::copy(payload.begin(), payload.end(), m.Payload().begin());
        EXPECT_EQ(hub->CommandBus().Post(m, source), 0);
        return Drain();
    }
    static std::vector<std::uint8_t> Word(std::int32_t w) {
        std::vector<std::uint8_t> b(4);
        PutLE<std::int32_t>(b, 0, w);
        return b;
    }
    std::vector<Sent> Connect() {
        count = count.load() | 1;
        return TickAndDrain();
    }

    SentLog log;  // first: it outlives the bus that calls it
    RunFlag run;
    SystemCoordinator coordinator;
    std::unique_ptr<StorageControl> storage = std::make_unique<StorageControl>(coordinator);
    FakeTickSource ticks;
    std::atomic<int> count{0};
    std::unique_ptr<MessageHub> hub;
    std::unique_ptr<SonarIF> sonar;
};

// "124q" for a query, "124" for a set, of one subsystem; of all, with theirs, as "83@102".
inline std::vector<std::string> Types(const std::vector<Sent>& sent, int subsystem = -1) {
    std::vector<std::string> out;
    for (const Sent& s : sent) {
        const std::string t = std::to_string(s.type) + (s.direction == DirQuery ? "q" : "");
        if (subsystem < 0) out.push_back(t + "@" + std::to_string(s.subsystem));
        if (s.subsystem == subsystem) out.push_back(t);
    }
    return out;
}

}  // namespace halvo::test

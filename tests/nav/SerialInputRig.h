#pragma once
// The navigation reader threads on a real data bus, with short pauses, a fixed program time, a
// playback switch and a parallel port that records. Observers are declared before the bus so
// that they outlive it.

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <vector>

#include "app/SystemCoordinator.h"
#include "core/AcquireFilter.h"
#include "core/MessageHub.h"
#include "core/MessageObserver.h"
#include "core/MessageProcessor.h"
#include "core/MessageTypes.h"
#include "core/SonarMessage.h"
#include "nav/NavigationConfig.h"
#include "nav/NavigationInput.h"
#include "platform/FakeParallelPort.h"

namespace halvo::test {

// Keeps a copy of every message 2002 delivered, with its source.
class NmeaCollector final : public MessageObserver {
  public:
    struct Seen {
        SonarMessage message;
        int source = 0;
    };
    void DeliverMessage(SonarMessage* m, int source, std::uint32_t) override {
        if (!m || m->type() != MsgNmea) return;
        std::lock_guard lock(mutex_);
        seen_.push_back({m->Clone(), source});
    }
    std::size_t Count() const {
        std::lock_guard lock(mutex_);
        return seen_.size();
    }
    std::vector<Seen> Take() {
        std::lock_guard lock(mutex_);
        return std::move(seen_);
    }

  private:
    mutable std::mutex mutex_;
    std::vector<Seen> seen_;
};

struct SerialInputRig {
    static constexpr TimeValue kNow{1709208000, 250};

    explicit SerialInputRig(bool startBus = true) {
        run.Raise();
        bus.Attach(&collector);
        if (startBus) bus.Start();
    }
    ~SerialInputRig() {
        input.Stop();
        run.Clear();
    }

    void EnablePort(int index, const std::string& device, int baud = 4800) {
        NavigationConfig c = store.Get();
        c.ports[index].enable = 1;
        c.ports[index].port = index + 1;
        c.ports[index].baud = baud;
        c.ports[index].device = device;
        store.Set(c);
    }

    NmeaCollector collector;
    RunFlag run;
    AcquireFilter filter;
    MessageProcessor bus{"data", run, filter, SystemUtcSeconds};
    SystemCoordinator coordinator;
    NavigationConfigStore store{coordinator};
    FakeParallelPort parallel;
    std::atomic<bool> playback{false};
    NavigationInput input{store,
                          bus,
                          [] { return kNow; },
                          [this] { return playback.load(); },
                          parallel,
                          run,
                          {std::chrono::milliseconds(20), std::chrono::milliseconds(5)}};
};

}  // namespace halvo::test

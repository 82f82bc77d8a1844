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
#include "platform/PtyPair.h"

namespace halvo::test {

// Keeps a copy of every message of one type delivered, with its source.
class MessageCollector final : public MessageObserver {
  public:
    struct Seen {
        SonarMessage message;
        int source = 0;
    };
    explicit MessageCollector(std::uint16_t type = MsgNmea) : type_(type) {}
    void DeliverMessage(SonarMessage* m, int source, std::uint32_t) override {
        if (!m || m->type() != type_) return;
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
    const std::uint16_t type_;
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
        c.ports[index] = {baud, index + 1, 1, device};
        store.Set(c);
    }
    // Enables one port, starts the readers and waits for the port to open.
    bool StartOn(int index, const std::string& device, int baud = 4800) {
        EnablePort(index, device, baud);
        input.Start();
        return WaitFor([&] { return input.Input(index).isOpen(); });
    }

    MessageCollector collector;
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

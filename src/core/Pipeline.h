#pragma once
// The road one message takes through its consumers, written once: everybody previews it as it
// arrived, it is normalised to the current layout, a gate may drop it, then every consumer
// processes it (stamping rewrites it here) before any consumer takes delivery of it (the
// displays, the recorder). The program's buses run it on their threads; the file tool runs the
// same object over a played file, so a record reaches the display chain in exactly the state it
// would have reached it live.
//
// Not thread-safe by itself: the owner serialises Attach, Detach and Dispatch (the bus holds its
// observer lock for a whole burst). A consumer may detach itself or another in the middle of a
// walk; the slot is blanked and purged when the walk ends.

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <vector>

#include "core/MessageObserver.h"
#include "core/Normalise.h"
#include "core/SonarMessage.h"

namespace halvo {

class Pipeline {
  public:
    // Told of every real message after the preview and before normalisation (the bus keeps its
    // post-mortem ring here).
    using Arrival = std::function<void(const SonarMessage&, int source)>;
    // False drops the normalised message before any consumer processes it.
    using Gate = std::function<bool(const SonarMessage&, int source)>;

    explicit Pipeline(UtcSecondsFn utcNow) : utcNow_(std::move(utcNow)) {}

    void SetArrival(Arrival arrival) { arrival_ = std::move(arrival); }
    void SetGate(Gate gate) { gate_ = std::move(gate); }

    // Consumers are called in the order they attached, at every stage.
    void Attach(MessageObserver* observer);
    // The first entry holding this observer goes; nothing if it is not there.
    void Detach(MessageObserver* observer);
    std::vector<MessageObserver*> Observers() const;

    // From here no walk calls a further consumer: the ones behind may already be gone.
    void Stop() { stopped_.store(true); }

    // All stages for one message, in place: afterwards `message` is what the consumers left
    // (empty when normalisation found it unreadable). An empty message is an idle tick and
    // reaches every stage as null.
    void Dispatch(SonarMessage& message, int source, std::uint32_t extra);

  private:
    using Stage = void (MessageObserver::*)(SonarMessage*, int, std::uint32_t);
    void Walk(Stage stage, SonarMessage* message, int source, std::uint32_t extra);

    const UtcSecondsFn utcNow_;
    Arrival arrival_;
    Gate gate_;
    std::list<MessageObserver*> observers_;
    int walking_ = 0;  // nesting depth of walks on the dispatching thread
    bool needPurge_ = false;
    std::atomic<bool> stopped_{false};
};

}  // namespace halvo

#pragma once
// Both buses, the acquire filter and the count of endpoint setting changes. The endpoints
// themselves live in the network layer and register here through the Endpoint interface.

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "core/AcquireFilter.h"
#include "core/MessageProcessor.h"
#include "core/Normalise.h"
#include "core/RunFlag.h"

namespace halvo {

// The current UTC time from the machine's clock; the default dater of compact traces.
std::int64_t SystemUtcSeconds();

class MessageHub {
  public:
    explicit MessageHub(const RunFlag& runFlag, UtcSecondsFn utcNow = SystemUtcSeconds);
    // Each bus thread gets about a second to stop. One stuck in an observer (a write to a failing
    // disk, say) is let go with its bus and filter, so that it cannot hang the program's exit.
    ~MessageHub();
    MessageHub(const MessageHub&) = delete;
    MessageHub& operator=(const MessageHub&) = delete;

    MessageProcessor& CommandBus() { return *command_; }
    MessageProcessor& DataBus() { return *data_; }

    // Starts both buses; idempotent.
    void Start(std::size_t queueCapacity = MessageProcessor::kDefaultQueueSize);
    // Both bus threads stop after the message in hand (see MessageProcessor::RequestStop).
    void RequestStop() {
        command_->RequestStop();
        data_->RequestStop();
    }

    // Builds a message and posts it on the command bus. With `type` above 0 a fresh header goes
    // in front of `length` bytes of `data`; with `type` 0 or below, `data` is a whole message.
    // 0 when posted, 1 when not (the block is then released). `data` stays the caller's.
    int SendCommand(const void* data, std::size_t length, int type, int channel, int direction,
                    int subsystem, int source = SourceLocal);

    const AcquireFilter& Filter() const { return *filter_; }
    void SetFilter(std::uint32_t value) { filter_->Set(value); }
    bool RefreshFilter(FilterSnapshot& snapshot) const { return filter_->Refresh(snapshot); }
    // At load the saved filter is read and thrown away: a forgotten filter must never silently
    // cut a survey's data at the next start, so it always comes up as "All Sources".
    void ResetFilterForLoad() { filter_->Set(FilterAllSources); }

    int EndpointChangeCount() const { return endpointChanges_.load(); }
    void BumpEndpointChanges() { endpointChanges_.fetch_add(1); }

  private:
    // On the heap so that a bus let go at exit can keep what its thread still reads.
    std::unique_ptr<AcquireFilter> filter_;
    std::unique_ptr<MessageProcessor> command_;
    std::unique_ptr<MessageProcessor> data_;
    std::atomic<int> endpointChanges_{-1};
};

}  // namespace halvo

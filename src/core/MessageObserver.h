#pragma once
// Base of every consumer on a bus. The three stages have empty bodies, so a consumer overrides
// only what it needs. The message may be null (an idle tick, source -1). It exists only for the
// length of the call: an observer may rewrite it in place but never keeps or releases it.

#include <cstdint>

namespace halvo {

class SonarMessage;

class MessageObserver {
  public:
    virtual ~MessageObserver() = default;
    // Before history, normalisation and the acquire filter: sees the message as it arrived.
    virtual void PreviewMessage(SonarMessage* message, int source, std::uint32_t extra) {}
    // After normalisation and the filter, on every observer before any DeliverMessage.
    virtual void ProcessMessage(SonarMessage* message, int source, std::uint32_t extra) {}
    // Ordinary consumption.
    virtual void DeliverMessage(SonarMessage* message, int source, std::uint32_t extra) {}
};

}  // namespace halvo

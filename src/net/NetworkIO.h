#pragma once
// One TCP link to the sonar joined to the bus: a client socket, the handler that frames its
// stream, and a transmit queue. Messages read from the link are posted to the post bus with this
// endpoint's source number. As an observer of a bus (the command endpoint watches the command
// bus) it copies every message that did not come from its own link into the transmit queue.

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "core/MessageObserver.h"
#include "net/NetworkSettings.h"
#include "net/SocketStatus.h"

namespace halvo {

class MessageProcessor;
class MessageQueue;
class ProgramClock;
class SocketIO;
class SocketManager;
class SonarMessage;
class SonarSocketMessageHandler;

// Where the endpoints send the lines of the message log: the message and its label, "SONRDAT"
// for what came in, "SONRCMD" for a command that went out. Called on the socket thread.
using MessageLogFn = std::function<void(const SonarMessage&, std::string_view label)>;

class NetworkIO final : public MessageObserver {
  public:
    enum LinkState : int { LinkNeverConnected = 0, LinkDown = 1, LinkUp = 2 };
    static constexpr int kDefaultReconnectMs = 10000;
    static constexpr int kMaxQueueSize = 100000;

    // Clears the status record's sent count, tick and clock words and makes its count even.
    NetworkIO(std::string name, EndpointSettings settings, int source, MessageProcessor& postBus,
              SocketStatusCell& status, SocketManager& sockets, ProgramClock& clock,
              MessageLogFn log = {});
    // Detaches, takes the socket away (no handler call after this), and drains the queue.
    ~NetworkIO() override;
    NetworkIO(const NetworkIO&) = delete;
    NetworkIO& operator=(const NetworkIO&) = delete;

    // Makes the transmit queue, starts the socket thread if it is not running, attaches to the
    // observed bus (if any) and connects with the alive times and reconnect interval given.
    void Start(MessageProcessor* observedBus, int aliveTimeoutMs,
               int reconnectMs = kDefaultReconnectMs);
    void SetTimeSync(bool on);

    void DeliverMessage(SonarMessage* message, int source, std::uint32_t extra) override;

    SocketStatus Status() const { return status_.Snapshot(); }
    int linkState() const { return linkState_.load(); }
    int source() const { return source_; }
    const std::string& name() const { return name_; }
    const EndpointSettings& settings() const { return settings_; }
    // The socket's connected count, or 0 while the link is down.
    int IsConnected() const;
    // The socket's last failure text.
    std::string ErrorText() const;
    // Commands waiting to go out.
    std::uint32_t QueueDepth() const;

  private:
    friend class SonarSocketMessageHandler;
    void Log(const SonarMessage& message, std::string_view label) const;

    const std::string name_;
    const EndpointSettings settings_;
    const int source_;
    MessageProcessor& postBus_;
    SocketStatusCell& status_;
    SocketManager& sockets_;
    ProgramClock& clock_;
    const MessageLogFn log_;

    std::atomic<int> linkState_{LinkNeverConnected};
    std::unique_ptr<MessageQueue> queue_;
    MessageProcessor* observed_ = nullptr;
    SocketIO* socket_ = nullptr;
    int aliveTimeout_ = 0;
    std::unique_ptr<SonarSocketMessageHandler> handler_;
};

}  // namespace halvo

#include "net/NetworkIO.h"

#include <algorithm>

#include "core/MessageProcessor.h"
#include "core/MessageQueue.h"
#include "core/SonarMessage.h"
#include "net/SocketIO.h"
#include "net/SocketManager.h"
#include "net/SonarSocketMessageHandler.h"

namespace halvo {

NetworkIO::NetworkIO(std::string name, EndpointSettings settings, int source,
                     MessageProcessor& postBus, SocketStatusCell& status, SocketManager& sockets,
                     ProgramClock& clock, MessageLogFn log)
    : name_(std::move(name)),
      settings_(std::move(settings)),
      source_(source),
      postBus_(postBus),
      status_(status),
      sockets_(sockets),
      clock_(clock),
      log_(std::move(log)),
      handler_(std::make_unique<SonarSocketMessageHandler>(*this)) {
    status_.sent.store(0);
    status_.tick.store(0);
    status_.clockFromSonar.store(0);
    status_.clockToSonar.store(0);
    status_.roundTrip.store(0);
    if (status_.connectionCount.load() & 1) SocketStatusCell::Bump(status_.connectionCount);
}

NetworkIO::~NetworkIO() {
    if (observed_) observed_->Detach(this);
    // Synchronous, unlike a close request: once it returns the socket thread has let go of the
    // handler and of the queue's entries.
    if (socket_) sockets_.Remove(socket_);
    socket_ = nullptr;
    handler_.reset();
    if (queue_) {
        for (std::size_t i = 0, n = queue_->Capacity(); i < n; ++i) {
            const QueueEntry* e = queue_->Peek();
            if (!e) break;
            SonarMessage drop =
                SonarMessage::Adopt(reinterpret_cast<std::uint8_t*>(e->third), e->length);
            queue_->Pop(1);
        }
    }
    if (status_.connectionCount.load() & 1) SocketStatusCell::Bump(status_.connectionCount);
}

void NetworkIO::Start(MessageProcessor* observedBus, int aliveTimeoutMs, int reconnectMs) {
    if (socket_) return;
    if (settings_.QueueSize > 0) {
        queue_ = MessageQueue::Create(
            true, static_cast<std::size_t>(std::min(settings_.QueueSize, kMaxQueueSize)));
    }
    if (!sockets_.IsRunning()) sockets_.Start();
    observed_ = observedBus;
    if (observed_) observed_->Attach(this);
    aliveTimeout_ = aliveTimeoutMs;
    socket_ = sockets_.Connect(settings_.HostName, settings_.Port, settings_.XmitSize,
                               settings_.RecvSize, handler_.get(), reconnectMs, 0);
    if (!socket_) return;
    handler_->SetSocket(socket_);
    socket_->SetAliveTimes(aliveTimeout_, aliveTimeout_);
    if (settings_.NagleState) socket_->SetNoDelay(1);
}

void NetworkIO::SetTimeSync(bool on) {
    handler_->SetTimeSync(on);
}

void NetworkIO::DeliverMessage(SonarMessage* message, int source, std::uint32_t extra) {
    if (!message || !*message || source == source_ || !queue_) return;
    SonarMessage copy = SonarMessage::FromBytes(message->Wire());
    if (!copy) return;
    const std::size_t bytes = copy.Wire().size();
    std::size_t length = 0;
    std::uint8_t* block = copy.Release(length);
    // A full queue drops the command without a word.
    if (queue_->Post(std::uintptr_t{0}, bytes, reinterpret_cast<std::uintptr_t>(block), length) !=
        MessageQueue::kStored) {
        SonarMessage::Adopt(block, length);
    }
}

int NetworkIO::IsConnected() const {
    return socket_ ? socket_->IsConnected() : 0;
}

std::string NetworkIO::ErrorText() const {
    return socket_ ? socket_->ErrorText() : std::string();
}

std::uint32_t NetworkIO::QueueDepth() const {
    return queue_ ? queue_->Depth() : 0;
}

void NetworkIO::Log(const SonarMessage& message, std::string_view label) const {
    if (log_) log_(message, label);
}

}  // namespace halvo

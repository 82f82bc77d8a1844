#pragma once
// What a socket asks of the code that understands its bytes. The socket only moves a header of
// HeaderSize bytes and then the body the header announced; the handler supplies the buffers,
// says what the sizes are and decides what a finished message means. Every operation runs on the
// socket thread, under the socket list lock, and gets back the user word the socket was made
// with. The defaults do nothing useful, so a handler overrides what its role needs.

#include <cstdint>
#include <span>

namespace halvo {

class SocketIO;

class SocketMessageHandler {
  public:
    virtual ~SocketMessageHandler() = default;

    // Bytes of the fixed header; 0 means the socket never reads.
    virtual int HeaderSize(std::uintptr_t user) { return 0; }
    // The body size the header announces. Negative closes the connection.
    virtual int ValidateHeader(std::span<const std::uint8_t> header, std::uintptr_t user) {
        return 0;
    }
    // A block of at least `size` bytes (header and body) to read into, or an empty span. With an
    // empty span, `failed` set means "never" (the connection closes) and clear means "not yet":
    // the socket stops reading until a later call gives a block.
    virtual std::span<std::uint8_t> GetBuffer(int size, bool& failed, std::uintptr_t user) {
        failed = true;
        return {};
    }
    // The block from GetBuffer now holds the whole message.
    virtual void BodyComplete(std::uintptr_t user) {}
    // The next bytes to send, or null with size 0. They must stay put until TransmitComplete.
    virtual const std::uint8_t* GetTransmit(int& size, std::uintptr_t user) {
        size = 0;
        return nullptr;
    }
    virtual void TransmitComplete(std::uintptr_t user) {}
    // A listener took a connection: the handler for it, or null to refuse it.
    virtual SocketMessageHandler* Accepted(SocketIO& socket, std::uintptr_t user) {
        return nullptr;
    }
    virtual void Closed(std::uintptr_t user) { ++closedCount_; }
    // The peer has been quiet for the probe time: send something it must answer.
    virtual void AlivePing(std::uintptr_t user) {}
    virtual void Connected(std::uintptr_t user) { closedCount_ = 0; }
    // Once a second.
    virtual void Tick(std::uintptr_t user) {}

  protected:
    int closedCount_ = 0;
};

}  // namespace halvo

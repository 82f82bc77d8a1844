#pragma once
// Cuts one link's byte stream into SonarMessage blocks and hands them to the bus, sends the
// endpoint's queued commands, and speaks the link's own small talk: keep-alive probes and the
// clock exchange that keeps the sonar's clock beside the topside's.
//
// Every operation runs on the socket thread. The block being read, the pending flag and the
// current transmit entry are touched nowhere else; the send mask and the time-sync wish are
// atomic because other threads may set them.

#include <array>
#include <atomic>
#include <cstdint>
#include <span>

#include "core/SonarMessage.h"
#include "net/SocketMessageHandler.h"

namespace halvo {

class NetworkIO;
class SocketIO;

class SonarSocketMessageHandler final : public SocketMessageHandler {
  public:
    // Size limits. The header may announce less than kMaxAnnounced bytes of payload, a block
    // holds at most kMaxBlock bytes in total, and the bus takes a payload of up to kMaxHandOver.
    static constexpr int kMaxAnnounced = 5000000;
    static constexpr int kMaxBlock = 2000000;
    static constexpr int kMaxHandOver = 4000000;
    static constexpr int kQueryPeriodMs = 15000;
    static constexpr int kMaxSyncRoundTripMs = 100;
    static constexpr int kSetThresholdMs = 2000;
    static constexpr int kSlewThresholdMs = 5;

    // Bits of the send mask, lowest first out.
    static constexpr std::uint32_t kSendAlive = 1;
    static constexpr std::uint32_t kSendClockReply = 2;
    static constexpr std::uint32_t kSendClockQuery = 4;
    static constexpr std::uint32_t kSendClockSlew = 8;
    static constexpr std::uint32_t kSendClockSet = 16;

    explicit SonarSocketMessageHandler(NetworkIO& owner);
    ~SonarSocketMessageHandler() override;

    void SetSocket(SocketIO* socket) { socket_.store(socket); }
    void SetTimeSync(bool on);
    bool TimeSync() const { return timeSync_.load(); }
    std::uint32_t PendingSends() const { return mask_.load(); }
    // Whether a finished message still waits for room on the bus.
    bool HasPending() const { return pending_; }

    int HeaderSize(std::uintptr_t user) override { return static_cast<int>(kMessageHeaderSize); }
    int ValidateHeader(std::span<const std::uint8_t> header, std::uintptr_t user) override;
    std::span<std::uint8_t> GetBuffer(int size, bool& failed, std::uintptr_t user) override;
    void BodyComplete(std::uintptr_t user) override;
    const std::uint8_t* GetTransmit(int& size, std::uintptr_t user) override;
    void TransmitComplete(std::uintptr_t user) override;
    void Closed(std::uintptr_t user) override;
    void AlivePing(std::uintptr_t user) override;
    void Connected(std::uintptr_t user) override;
    void Tick(std::uintptr_t user) override;

  private:
    static constexpr int kPrepared = 5;
    static constexpr std::size_t kPreparedBytes = kMessageHeaderSize + 8;

    bool HandOver();
    void ClockMessage(const MessageHeader& h, std::span<const std::uint8_t> payload);
    void DrainQueue();
    void PutTime(int slot);
    static void UpdateReport(std::atomic<std::int32_t>& word, std::int32_t difference, int add);

    NetworkIO& owner_;
    std::atomic<SocketIO*> socket_{nullptr};

    SonarMessage block_;
    long capacity_ = -1;
    bool pending_ = false;

    // The queued command being sent: still on the queue (peeked) until it is all out.
    std::uint8_t* entryBlock_ = nullptr;
    std::size_t entryLength_ = 0;
    int entryBytes_ = 0;
    std::uint32_t control_ = 0;  // the control message being sent, as its mask bit

    std::atomic<bool> timeSync_{false};
    std::atomic<std::uint32_t> mask_{0};
    std::uint32_t queryTick_ = 0;
    std::atomic<bool> queryTickSet_{false};

    std::array<std::array<std::uint8_t, kPreparedBytes>, kPrepared> prepared_{};
};

}  // namespace halvo

#include "net/SonarSocketMessageHandler.h"

#include <cstdlib>

#include "app/ProgramClock.h"
#include "core/MessageProcessor.h"
#include "core/MessageQueue.h"
#include "core/MessageTypes.h"
#include "net/NetworkIO.h"
#include "net/SocketIO.h"

namespace halvo {

namespace {

// Slot of each prepared message, by mask bit order.
constexpr int SlotOf(std::uint32_t bit) {
    int slot = 0;
    while (bit > 1) {
        bit >>= 1;
        ++slot;
    }
    return slot;
}

struct PreparedForm {
    std::uint16_t type;
    std::uint8_t direction;
    std::int32_t size;
};
constexpr PreparedForm kForms[] = {
    {MsgAlive, DirQuery, 4},    // keep-alive
    {MsgClock, DirReply, 8},    // clock reply
    {MsgClock, DirQuery, 0},    // clock query
    {MsgClockSlew, DirSet, 4},  // clock slew
    {MsgClock, DirSet, 8},      // clock set
};

TimeValue ReadTime(std::span<const std::uint8_t> payload) {
    return NormaliseTime(GetLE<std::int32_t>(payload, 0), GetLE<std::int32_t>(payload, 4));
}

}  // namespace

SonarSocketMessageHandler::SonarSocketMessageHandler(NetworkIO& owner) : owner_(owner) {
    for (int i = 0; i < kPrepared; ++i) {
        const PreparedForm& f = kForms[i];
        MessageHeader::Make(f.type, f.direction, 0, 0, f.size).Write(prepared_[i]);
    }
}

SonarSocketMessageHandler::~SonarSocketMessageHandler() = default;

void SonarSocketMessageHandler::SetTimeSync(bool on) {
    timeSync_.store(on);
    queryTickSet_.store(false);
}

int SonarSocketMessageHandler::ValidateHeader(std::span<const std::uint8_t> header,
                                              std::uintptr_t user) {
    MessageHeader h;
    // A stream that lost its place is not searched for the next marker: the link starts again.
    if (!MessageHeader::Read(header, h) || !h.HasMarker() || h.size < 0 || h.size >= kMaxAnnounced)
        return -1;
    return h.size;
}

bool SonarSocketMessageHandler::HandOver() {
    if (!pending_) return true;
    const std::int32_t size = block_.size();
    if (block_.marker() == kMessageMarker && size >= 0 && size <= kMaxHandOver) {
        if (owner_.postBus_.Post(block_, owner_.source_, 0) != 0) return false;
    }
    block_ = SonarMessage();  // a block the bus did not take is released, not forgotten
    capacity_ = -1;
    pending_ = false;
    return true;
}

std::span<std::uint8_t> SonarSocketMessageHandler::GetBuffer(int size, bool& failed,
                                                             std::uintptr_t user) {
    failed = false;
    if (!HandOver()) return {};  // the bus is full: the reader waits
    if (block_ && capacity_ == size) return block_.Block().first(static_cast<std::size_t>(size));
    block_ = SonarMessage();
    capacity_ = -1;
    if (size >= static_cast<int>(kMessageHeaderSize) && size <= kMaxBlock) {
        block_ = SonarMessage::AllocateUninitialised(static_cast<std::size_t>(size) -
                                                     kMessageHeaderSize);
        if (block_) {
            capacity_ = size;
            return block_.Block();
        }
    }
    failed = true;
    return {};
}

void SonarSocketMessageHandler::UpdateReport(std::atomic<std::int32_t>& word,
                                             std::int32_t difference, int add) {
    const auto old = static_cast<std::uint32_t>(word.load(std::memory_order_relaxed));
    const std::uint32_t v = (old & 3u) % 3u + static_cast<std::uint32_t>(difference) * 8u +
                            static_cast<std::uint32_t>(add);
    word.store(static_cast<std::int32_t>(v), std::memory_order_relaxed);
}

void SonarSocketMessageHandler::PutTime(int slot) {
    // Bytes on their way out are left alone; the next exchange carries a fresh time.
    if (control_ != 0 && SlotOf(control_) == slot) return;
    const TimeValue now = owner_.clock_.Now();
    std::span<std::uint8_t> payload(prepared_[slot].data() + kMessageHeaderSize, 8);
    PutLE<std::int32_t>(payload, 0, now.seconds);
    PutLE<std::int32_t>(payload, 4, now.ms);
}

void SonarSocketMessageHandler::ClockMessage(const MessageHeader& h,
                                             std::span<const std::uint8_t> payload) {
    SocketStatusCell& status = owner_.status_;
    ProgramClock& clock = owner_.clock_;
    if (h.type == MsgClock && h.direction == DirQuery) {
        // The sonar times our answer: it must not wait for more bytes to fill a segment.
        if (SocketIO* s = socket_.load()) s->SetNoDelay(1);
        PutTime(SlotOf(kSendClockReply));
        mask_.fetch_or(kSendClockReply);
    } else if (h.type == MsgClock && h.direction == DirSet && payload.size() >= 8) {
        const TimeValue before = clock.Now();
        TimeValue t = ReadTime(payload);
        clock.SetTime(t);
        UpdateReport(status.clockFromSonar, ProgramClock::DiffMs(t, before), 4);
    } else if (h.type == MsgClock && h.direction == DirReply && payload.size() >= 8) {
        const std::int32_t diff = ProgramClock::DiffMs(clock.Now(), ReadTime(payload));
        if (timeSync_.load() && queryTickSet_.load()) {
            const auto roundTrip = static_cast<std::int32_t>(clock.Tick() - queryTick_);
            status.roundTrip.store(roundTrip, std::memory_order_relaxed);
            if (roundTrip >= 0 && roundTrip < kMaxSyncRoundTripMs) {
                const std::int64_t magnitude = std::llabs(static_cast<std::int64_t>(diff));
                if (magnitude >= kSetThresholdMs) {
                    PutTime(SlotOf(kSendClockSet));
                    mask_.fetch_or(kSendClockSet);
                } else if (magnitude > kSlewThresholdMs && control_ != kSendClockSlew) {
                    std::span<std::uint8_t> p(
                        prepared_[SlotOf(kSendClockSlew)].data() + kMessageHeaderSize, 4);
                    PutLE<std::int32_t>(p, 0, -diff / 5);
                    mask_.fetch_or(kSendClockSlew);
                }
            }
        }
        UpdateReport(status.clockToSonar, diff, 1);
    } else if (h.type == MsgClockSlew && h.direction == DirSet && payload.size() >= 4) {
        const std::int32_t ms = GetLE<std::int32_t>(payload, 0);
        clock.Slew(ms);
        UpdateReport(status.clockFromSonar, ms, 1);
    }
}

void SonarSocketMessageHandler::BodyComplete(std::uintptr_t user) {
    if (!block_) return;
    owner_.Log(block_, "SONRDAT");
    const MessageHeader h = block_.Header();
    if (h.type == MsgClock || h.type == MsgClockSlew) ClockMessage(h, block_.Payload());
    SocketStatusCell::Bump(owner_.status_.received);
    pending_ = true;
    HandOver();
}

const std::uint8_t* SonarSocketMessageHandler::GetTransmit(int& size, std::uintptr_t user) {
    if (!entryBlock_ && control_ == 0) {
        const std::uint32_t m = mask_.load();
        if (m != 0) {
            control_ = m & (~m + 1u);
        } else if (MessageQueue* q = owner_.queue_.get()) {
            if (const QueueEntry* e = q->Peek()) {
                entryBlock_ = reinterpret_cast<std::uint8_t*>(e->third);
                entryLength_ = e->length;
                entryBytes_ = static_cast<int>(
                    std::min<std::uintptr_t>(e->second, static_cast<std::uintptr_t>(e->length)));
            }
        }
    }
    if (control_ != 0) {
        const int slot = SlotOf(control_);
        size = static_cast<int>(kMessageHeaderSize) + kForms[slot].size;
        return prepared_[slot].data();
    }
    if (entryBlock_) {
        size = entryBytes_;
        return entryBlock_;
    }
    size = 0;
    return nullptr;
}

void SonarSocketMessageHandler::TransmitComplete(std::uintptr_t user) {
    if (control_ != 0) {
        mask_.fetch_and(~control_);
        control_ = 0;
        SocketStatusCell::Bump(owner_.status_.sent);
        return;
    }
    if (!entryBlock_) return;
    SonarMessage sent = SonarMessage::Adopt(entryBlock_, entryLength_);
    entryBlock_ = nullptr;
    owner_.Log(sent, "SONRCMD");
    SocketStatusCell::Bump(owner_.status_.sent);
    if (MessageQueue* q = owner_.queue_.get()) q->Pop(1);
}

void SonarSocketMessageHandler::Closed(std::uintptr_t user) {
    SocketStatusCell& status = owner_.status_;
    if (status.connectionCount.load() & 1) SocketStatusCell::Bump(status.connectionCount);
    owner_.linkState_.store(NetworkIO::LinkDown);
    // No stale clock goes out on the next connection. A command under way starts again whole.
    mask_.store(0);
    control_ = 0;
}

void SonarSocketMessageHandler::AlivePing(std::uintptr_t user) {
    mask_.fetch_or(kSendAlive);
}

void SonarSocketMessageHandler::Connected(std::uintptr_t user) {
    SocketStatusCell& status = owner_.status_;
    if (!(status.connectionCount.load() & 1)) SocketStatusCell::Bump(status.connectionCount);
    owner_.linkState_.store(NetworkIO::LinkUp);
}

void SonarSocketMessageHandler::DrainQueue() {
    MessageQueue* q = owner_.queue_.get();
    // The entry under way is still on the queue; it goes with the rest.
    entryBlock_ = nullptr;
    if (!q) return;
    for (std::size_t i = 0, n = q->Capacity(); i < n; ++i) {
        const QueueEntry* e = q->Peek();
        if (!e) break;
        SonarMessage drop =
            SonarMessage::Adopt(reinterpret_cast<std::uint8_t*>(e->third), e->length);
        q->Pop(1);
        SocketStatusCell::Bump(owner_.status_.sent);
    }
}

void SonarSocketMessageHandler::Tick(std::uintptr_t user) {
    HandOver();
    SocketStatusCell& status = owner_.status_;
    status.tick.store((status.tick.load() + 1) & 63);
    const int link = owner_.linkState_.load();
    // Commands are settings that go again in full at the next connection: a stale one is dropped.
    if (link != NetworkIO::LinkUp) DrainQueue();
    if (link == NetworkIO::LinkUp && timeSync_.load()) {
        const std::uint32_t now = owner_.clock_.Tick();
        const auto age = static_cast<std::int32_t>(now - queryTick_);
        if (!queryTickSet_.load() || age < 0 || age >= kQueryPeriodMs) {
            mask_.fetch_or(kSendClockQuery);
            queryTick_ = now;
            queryTickSet_.store(true);
        }
    }
}

}  // namespace halvo

#pragma once
// The life signs of one endpoint: written on the socket thread, read by anyone for display.
// SocketStatus is the plain copy handed out; SocketStatusCell is the live record, one atomic per
// word so that a reader never races the writer (a reader may still see words from two moments).

#include <atomic>
#include <cstdint>

namespace halvo {

struct SocketStatus {
    std::int32_t connectionCount = 0;  // raised on connect and on disconnect: odd means connected
    std::int32_t received = 0;
    std::int32_t sent = 0;
    std::int32_t tick = 0;            // handler ticks modulo 64
    std::int32_t clockFromSonar = 0;  // report of clock sets and slews from the sonar
    std::int32_t clockToSonar = 0;    // report of clock replies from the sonar
    std::int32_t roundTrip = 0;       // ms of the last clock query

    bool IsConnected() const { return (connectionCount & 1) != 0; }
    friend bool operator==(const SocketStatus&, const SocketStatus&) = default;
};

class SocketStatusCell {
  public:
    SocketStatus Snapshot() const {
        SocketStatus s;
        s.connectionCount = connectionCount.load(std::memory_order_relaxed);
        s.received = received.load(std::memory_order_relaxed);
        s.sent = sent.load(std::memory_order_relaxed);
        s.tick = tick.load(std::memory_order_relaxed);
        s.clockFromSonar = clockFromSonar.load(std::memory_order_relaxed);
        s.clockToSonar = clockToSonar.load(std::memory_order_relaxed);
        s.roundTrip = roundTrip.load(std::memory_order_relaxed);
        return s;
    }
    // Counters wrap as unsigned words rather than overflow.
    static void Bump(std::atomic<std::int32_t>& word) {
        word.store(static_cast<std::int32_t>(
                       static_cast<std::uint32_t>(word.load(std::memory_order_relaxed)) + 1u),
                   std::memory_order_relaxed);
    }

    std::atomic<std::int32_t> connectionCount{0};
    std::atomic<std::int32_t> received{0};
    std::atomic<std::int32_t> sent{0};
    std::atomic<std::int32_t> tick{0};
    std::atomic<std::int32_t> clockFromSonar{0};
    std::atomic<std::int32_t> clockToSonar{0};
    std::atomic<std::int32_t> roundTrip{0};
};

}  // namespace halvo

// Plays arbitrary bytes as the data link's stream into the sonar message handler, the way the
// socket drives it: a 16-byte header, ValidateHeader, a block from GetBuffer, the body, then
// BodyComplete. The bus behind it is real and small, so a full bus and the wait for room happen
// too. Every message whose header was accepted and whose bytes all arrived must reach the bus
// whole, in order, and nothing else may.
//
// The first byte is not stream: bit 0 turns time sync on, bits 1 and 2 pick how many bytes each
// "recv" carries, so short reads split headers and bodies as a real socket does.

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <span>
#include <string_view>
#include <thread>
#include <vector>

#include "app/ProgramClock.h"
#include "core/AcquireFilter.h"
#include "core/MessageObserver.h"
#include "core/MessageProcessor.h"
#include "core/RunFlag.h"
#include "core/SonarMessage.h"
#include "net/NetworkIO.h"
#include "net/SocketManager.h"
#include "net/SocketStatus.h"
#include "net/SonarSocketMessageHandler.h"
#include "platform/FakeSystemClock.h"
#include "platform/FakeTickSource.h"

namespace {

using namespace halvo;

constexpr int kSource = 2;

// How long the rig waits for the bus thread before it calls the handler wrong. A loaded machine
// can keep that thread off the processor for over a second (it once did, at a low priority beside
// two compilers), so this stays well above that and below libFuzzer's ten-second hang limit,
// which still catches a bus that never empties.
constexpr auto kPatience = std::chrono::seconds(6);

// The standard library's hash runs outside the coverage instrumentation, which would otherwise
// count every byte of every message twice.
std::uint64_t Digest(std::span<const std::uint8_t> bytes) {
    const std::string_view view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return std::hash<std::string_view>{}(view) ^ bytes.size();
}

// Records what reaches the bus from the link, before the bus reshapes it.
class Recorder final : public MessageObserver {
  public:
    void PreviewMessage(SonarMessage* m, int source, std::uint32_t) override {
        if (source != kSource || !m) return;
        const std::uint64_t h = Digest(m->Wire());
        {
            std::lock_guard lock(mutex_);
            seen_.push_back(h);
        }
        arrived_.notify_all();
    }
    // Waits (bounded) until n messages have arrived; polling with sleeps would cost more than
    // the input itself.
    void WaitFor(std::size_t n) {
        std::unique_lock lock(mutex_);
        arrived_.wait_for(lock, kPatience, [&] { return seen_.size() >= n; });
    }
    std::vector<std::uint64_t> Take() {
        std::lock_guard lock(mutex_);
        std::vector<std::uint64_t> out;
        out.swap(seen_);
        return out;
    }

  private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::vector<std::uint64_t> seen_;
};

// One bus for the whole run: starting a thread per input would cost more than the input.
struct Rig {
    RunFlag run;
    AcquireFilter filter;
    MessageProcessor bus{"fuzzbus", run, filter, [] { return std::int64_t{1700000000}; }};
    Recorder recorder;
    FakeTickSource ticks;
    FakeSystemClock system;
    ProgramClock clock{ticks, system};
    SocketManager sockets{ticks};
    Rig() {
        run.Raise();
        bus.Attach(&recorder);
        bus.Start(4);
    }
};

Rig& TheRig() {
    static Rig* rig = new Rig;  // never destroyed: the bus thread outlives every input
    return *rig;
}

void Check(bool ok) {
    if (!ok) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1 || size > 1024 * 1024) return 0;
    Rig& rig = TheRig();
    const bool timeSync = data[0] & 1;
    static constexpr std::size_t kChunks[] = {1 << 20, 7, 16, 1};
    const std::size_t chunk = kChunks[(data[0] >> 1) & 3];
    std::span<const std::uint8_t> stream(data + 1, size - 1);

    SocketStatusCell status;
    EndpointSettings settings;
    NetworkIO endpoint("SonarData", settings, kSource, rig.bus, status, rig.sockets, rig.clock);
    SonarSocketMessageHandler handler(endpoint);
    handler.SetTimeSync(timeSync);
    handler.Connected(0);

    std::vector<std::uint64_t> expected;
    std::size_t pos = 0;
    // At most one message per 16 bytes of stream, so this bound never cuts a live stream short.
    for (std::size_t guard = 0; guard <= stream.size() / 16 + 1; ++guard) {
        if (stream.size() - pos < kMessageHeaderSize) break;
        const auto header = stream.subspan(pos, kMessageHeaderSize);
        const int body = handler.ValidateHeader(header, 0);
        if (body < 0) {
            handler.Closed(0);
            break;
        }
        Check(body < SonarSocketMessageHandler::kMaxAnnounced);
        const int total = static_cast<int>(kMessageHeaderSize) + body;
        bool failed = false;
        std::span<std::uint8_t> block;
        // A full bus answers "not yet"; the socket waits and asks again, as it does after a poll.
        const auto giveUp = std::chrono::steady_clock::now() + kPatience;
        for (int wait = 0; wait < 1'000'000; ++wait) {
            block = handler.GetBuffer(total, failed, 0);
            if (!block.empty() || failed || std::chrono::steady_clock::now() > giveUp) break;
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        }
        if (block.empty()) {
            Check(failed);  // only a block too big for the handler may be refused for good
            Check(total > SonarSocketMessageHandler::kMaxBlock);
            handler.Closed(0);
            break;
        }
        Check(block.size() >= static_cast<std::size_t>(total));
        std::copy(header.begin(), header.end(), block.begin());
        pos += kMessageHeaderSize;
        // The body arrives in pieces of the chosen size; a stream that ends early closes.
        std::size_t got = 0;
        const auto want = static_cast<std::size_t>(body);
        while (got < want && pos < stream.size()) {
            const std::size_t n = std::min({chunk, want - got, stream.size() - pos});
            std::copy_n(stream.begin() + static_cast<std::ptrdiff_t>(pos), n,
                        block.begin() + static_cast<std::ptrdiff_t>(kMessageHeaderSize + got));
            got += n;
            pos += n;
        }
        if (got < want) {
            handler.Closed(0);
            break;
        }
        expected.push_back(Digest(block.first(static_cast<std::size_t>(total))));
        handler.BodyComplete(0);
        // Whatever the link's small talk wants to send goes out at once.
        for (int sends = 0; sends < 8; ++sends) {
            int n = 0;
            const std::uint8_t* p = handler.GetTransmit(n, 0);
            if (!p) break;
            Check(n >= static_cast<int>(kMessageHeaderSize));
            handler.TransmitComplete(0);
        }
    }
    // The once-a-second tick hands over a message still waiting for room.
    const auto giveUp = std::chrono::steady_clock::now() + kPatience;
    for (int wait = 0; wait < 1'000'000 && handler.HasPending(); ++wait) {
        if (std::chrono::steady_clock::now() > giveUp) break;
        std::this_thread::sleep_for(std::chrono::microseconds(50));
        handler.Tick(0);
    }
    Check(!handler.HasPending());
    rig.recorder.WaitFor(expected.size());
    const std::vector<std::uint64_t> seen = rig.recorder.Take();
    Check(seen == expected);
    return 0;
}

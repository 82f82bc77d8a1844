#include "halvo-sim/SimServer.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

#include "core/ByteOrder.h"
#include "core/MessageTypes.h"
#include "halvo-sim/SimDiscovery.h"
#include "halvo-sim/SimNmeaPty.h"
#include "halvo-sim/SimSensors.h"
#include "halvo-sim/SimTraceBuilder.h"
#include "halvo-sim/SimVideo.h"

namespace halvo {

namespace {
using SteadyClock = std::chrono::steady_clock;
constexpr std::size_t kReadChunk = 65536;
constexpr std::size_t kSlowChunk = 3;
constexpr std::int32_t kOversize = 5000000;
}  // namespace

SimServer::SimServer(SimOptions options, const SimWallClock& clock, LineFn print)
    : options_(std::move(options)),
      wall_(clock),
      print_(std::move(print)),
      deviceClock_(clock),
      scene_(options_.seed),
      state_(options_.config, deviceClock_),
      receivedLog_(clock, false),
      sentLog_(clock, true) {}

SimServer::~SimServer() {
    Stop();
}

int SimServer::discoveryPort() const {
    return discovery_ ? discovery_->port() : -1;
}

std::string SimServer::ptyPath() const {
    return pty_ ? pty_->slavePath() : std::string();
}

SimCounters SimServer::Counters() const {
    SimCounters c;
    c.received = received_;
    c.repliesSent = repliesSent_;
    c.dataMessagesSent = dataMessages_;
    c.dataBytesSent = dataBytes_;
    c.traces = traces_;
    c.connections = connections_;
    c.badStreams = badStreams_;
    c.drops = drops_;
    return c;
}

bool SimServer::Start(std::string& error) {
    error = ValidateSimOptions(options_);
    if (!error.empty()) return false;
    if (!options_.logFile.empty() && !receivedLog_.Open(options_.logFile)) {
        error = "--log: " + receivedLog_.error();
        return false;
    }
    if (!options_.sentLogFile.empty() && !sentLog_.Open(options_.sentLogFile)) {
        error = "--sent-log: " + sentLog_.error();
        return false;
    }
    const int base = options_.portBase;
    commandListener_ = SimListen(options_.host, base, commandPort_, error);
    if (commandListener_ < 0) return false;
    dataListener_ = SimListen(options_.host, base == 0 ? 0 : base + 1, dataPort_, error);
    if (dataListener_ < 0) {
        ::close(commandListener_);
        commandListener_ = -1;
        return false;
    }
    if (options_.discoveryPort >= 0) {
        discovery_ =
            std::make_unique<SimDiscovery>(options_.discoveryHost, options_.discoveryPort,
                                           options_.discoveryReplyPort, options_.deviceName);
        if (!discovery_->Start(error)) {
            Stop();
            return false;
        }
    }
    if (options_.nmeaPty) {
        pty_ =
            std::make_unique<SimNmeaPty>(options_.nmeaBaud, [this] { return deviceClock_.Now(); });
        if (!pty_->Start(error)) {
            Stop();
            return false;
        }
    }
    if (options_.autostart) state_.SetSonarOnAll(true);
    started_ = true;
    io_ = std::thread([this] { IoLoop(); });
    pump_ = std::thread([this] { PumpLoop(); });
    if (print_) {
        print_("halvo-sim: command port " + std::to_string(commandPort_) + " data port " +
               std::to_string(dataPort_));
        if (discovery_) print_("halvo-sim: discovery port " + std::to_string(discovery_->port()));
        if (pty_) print_("halvo-sim: nmea pty " + pty_->slavePath());
    }
    return true;
}

void SimServer::Stop() {
    stop_ = true;
    if (io_.joinable()) io_.join();
    if (pump_.joinable()) pump_.join();
    if (discovery_) discovery_->Stop();
    if (pty_) pty_->Stop();
    {
        std::lock_guard lock(linkMutex_);
        if (command_) command_->Shutdown();
        if (data_) data_->Shutdown();
        command_.reset();
        data_.reset();
    }
    if (commandListener_ >= 0) ::close(commandListener_);
    if (dataListener_ >= 0) ::close(dataListener_);
    commandListener_ = dataListener_ = -1;
}

std::shared_ptr<SimConnection> SimServer::Link(bool command) const {
    std::lock_guard lock(linkMutex_);
    return command ? command_ : data_;
}

void SimServer::Accept(int listener, bool command) {
    sockaddr_in peer{};
    socklen_t len = sizeof peer;
    const int fd =
        ::accept4(listener, reinterpret_cast<sockaddr*>(&peer), &len, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (fd < 0) return;
    const int one = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    if (!command) {
        const int size = 4 * 1024 * 1024;
        ::setsockopt(fd, SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
    }
    auto link = std::make_shared<SimConnection>(fd, command ? commandPort_ : dataPort_);
    std::lock_guard lock(linkMutex_);
    // A new topside replaces the old one.
    auto& slot = command ? command_ : data_;
    if (slot) slot->Shutdown();
    slot = std::move(link);
    (command ? commandFramer_ : dataFramer_) = SimMessageFramer{};
    if (command) commandReceived_ = 0;
    ++connections_;
}

void SimServer::IoLoop() {
    std::vector<std::uint8_t> buf(kReadChunk);
    while (!stop_) {
        auto cmd = Link(true);
        auto data = Link(false);
        const bool stalled = options_.stallAfter >= 0 &&
                             commandReceived_ >= static_cast<std::uint64_t>(options_.stallAfter);
        pollfd fds[4] = {{commandListener_, POLLIN, 0},
                         {dataListener_, POLLIN, 0},
                         {cmd && !stalled ? cmd->fd() : -1, POLLIN, 0},
                         {data ? data->fd() : -1, POLLIN, 0}};
        const int r = ::poll(fds, 4, 50);
        if (r <= 0) continue;
        if (fds[0].revents & POLLIN) Accept(commandListener_, true);
        if (fds[1].revents & POLLIN) Accept(dataListener_, false);
        for (int k = 0; k < 2; ++k) {
            const bool command = k == 0;
            auto& link = command ? cmd : data;
            if (!link || !(fds[2 + k].revents & (POLLIN | POLLHUP | POLLERR))) continue;
            if (Link(command) != link) continue;  // replaced while we polled
            const std::size_t want = command && options_.slowReader ? kSlowChunk : buf.size();
            const ssize_t n = ::recv(link->fd(), buf.data(), want, 0);
            if (n < 0 && (errno == EAGAIN || errno == EINTR)) continue;
            SimMessageFramer& framer = command ? commandFramer_ : dataFramer_;
            bool close = n <= 0;
            if (n > 0) {
                framer.Feed(std::span<const std::uint8_t>(buf.data(), static_cast<std::size_t>(n)));
                SonarMessage m;
                SimMessageFramer::Result res;
                while ((res = framer.Next(m)) == SimMessageFramer::Result::Message) {
                    Received(m, command);
                    if (command && options_.stallAfter >= 0 &&
                        commandReceived_ >= static_cast<std::uint64_t>(options_.stallAfter))
                        break;
                }
                if (res == SimMessageFramer::Result::Bad) {
                    ++badStreams_;
                    close = true;
                }
                if (command && options_.slowReader)
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            if (close) {
                link->Shutdown();
                std::lock_guard lock(linkMutex_);
                auto& slot = command ? command_ : data_;
                if (slot == link) slot.reset();
            }
        }
    }
}

void SimServer::Received(const SonarMessage& m, bool command) {
    ++received_;
    if (command) ++commandReceived_;
    receivedLog_.Record(command ? "command" : "data", command ? commandPort_ : dataPort_, m.Wire());
    std::vector<SonarMessage> replies;
    state_.Handle(m, replies);
    if (options_.silent) return;
    for (const SonarMessage& r : replies) SendReply(r, command);
}

void SimServer::SendReply(const SonarMessage& m, bool command) {
    auto link = Link(command);
    if (!link) return;
    if (link->Send(m.Wire())) {
        ++repliesSent_;
        sentLog_.Record(command ? "command" : "data", link->localPort(), m.Wire());
    }
}

void SimServer::SendData(SonarMessage m) {
    auto link = Link(false);
    if (!link || !m) return;
    const std::uint64_t n = ++dataSentTotal_;
    if (options_.badMarkerAfter >= 0 && !badMarkerDone_ &&
        n > static_cast<std::uint64_t>(options_.badMarkerAfter)) {
        badMarkerDone_ = true;
        PutLE<std::uint16_t>(m.Block(), 0, 0x4242);
    } else if (options_.oversizeAfter >= 0 && !oversizeDone_ &&
               n > static_cast<std::uint64_t>(options_.oversizeAfter)) {
        oversizeDone_ = true;
        m = SonarMessage::Allocate(0);
        m.SetHeader(MessageHeader::Make(MsgTrace, DirReply, 0, 0, kOversize));
        // Only the header goes out: the topside must refuse it before it wants a body.
        const auto header = m.Block().first(kMessageHeaderSize);
        if (link->Send(header)) sentLog_.Record("data", link->localPort(), header);
        return;
    }
    const auto wire = m.Wire();
    if (link->Send(wire)) {
        ++dataMessages_;
        dataBytes_ += wire.size();
        sentLog_.Record("data", link->localPort(), wire);
    }
}

void SimServer::DropLinks() {
    std::lock_guard lock(linkMutex_);
    if (command_) command_->ShutdownAfterSent(500);
    if (data_) data_->ShutdownAfterSent(1000);
    command_.reset();
    data_.reset();
    ++drops_;
}

void SimServer::PumpLoop() {
    const auto start = SteadyClock::now();
    SimTraceBuilder builder(scene_, options_.form, options_.packing);
    SimSensors sensors(scene_);
    SimVideo video(options_.videoWidth, options_.videoHeight);
    const int count = state_.SubsystemCount();
    std::vector<SteadyClock::time_point> nextPing(static_cast<std::size_t>(count), start);
    std::vector<std::int64_t> pingNumber(static_cast<std::size_t>(count), 1);
    std::vector<SonarMessage> out;
    auto nextVideo = start;
    auto nextDevice = start;
    SimDevice device;
    std::int32_t videoFrame = 0;
    auto nextClock = start + std::chrono::seconds(2);
    bool slewNext = false;
    const auto dropPeriod = std::chrono::duration_cast<SteadyClock::duration>(
        std::chrono::duration<double>(options_.dropEvery));
    auto nextDrop = start + dropPeriod;

    while (!stop_) {
        const auto now = SteadyClock::now();
        const auto elapsedMs =
            std::chrono::duration_cast<std::chrono::milliseconds>(now - start).count();
        if (options_.dropEvery > 0 && now >= nextDrop) {
            DropLinks();
            nextDrop += dropPeriod;
        }
        const bool haveData = Link(false) != nullptr;
        // The device record changes only by command; a fresh copy every 10 ms is plenty.
        if (now >= nextDevice) {
            device = state_.Device();
            nextDevice = now + std::chrono::milliseconds(10);
        }
        if (options_.sensors) {
            out.clear();
            sensors.Poll(elapsedMs, deviceClock_.Now(), device, out);
            if (haveData)
                for (SonarMessage& m : out) SendData(std::move(m));
        }
        if ((device.videoControl[0] & SimVideoEnable) && now >= nextVideo) {
            const int decimation = std::clamp(device.videoControl[3], 1, 100);
            nextVideo = now + std::chrono::milliseconds(1000 * decimation / 30);
            if (haveData) {
                const int quality = device.videoControl[2] > 0 ? device.videoControl[2] : 50;
                for (SonarMessage& m : video.Frame(videoFrame, device.videoControl[0], quality))
                    SendData(std::move(m));
            }
            ++videoFrame;
        }
        if (options_.sendClockSet && now >= nextClock) {
            nextClock = now + std::chrono::seconds(15);
            SonarMessage m;
            if (slewNext) {
                m = SonarMessage::Build(MsgClockSlew, DirSet, 0, 0, 4);
                PutLE<std::int32_t>(m.Payload(), 0, -3);
            } else {
                const TimeValue t = deviceClock_.Now();
                m = SonarMessage::Build(MsgClock, DirSet, 0, 0, 8);
                PutLE<std::int32_t>(m.Payload(), 0, t.seconds);
                PutLE<std::int32_t>(m.Payload(), 4, t.ms);
            }
            slewNext = !slewNext;
            SendReply(m, true);
        }

        auto wake = now + std::chrono::milliseconds(10);
        for (int i = 0; i < count; ++i) {
            auto& next = nextPing[static_cast<std::size_t>(i)];
            double rate = 0;
            const bool on = state_.Transmitting(i, rate);
            rate *= options_.rateMultiplier;
            if (!on || rate <= 0) {
                next = now;
                continue;
            }
            if (now >= next) {
                const SimSubsystem s = state_.Subsystem(i);
                const std::int64_t ping = pingNumber[static_cast<std::size_t>(i)]++;
                const SimPingPlace place = SimPingPlace::OfPing(ping);
                const int mark = ping % 100 == 0 ? static_cast<int>(ping / 100) : 0;
                if (haveData) {
                    const TimeValue t = deviceClock_.Now();
                    for (int ch = 0; ch < std::min(s.inputChannels, kSimMaxChannels); ++ch) {
                        const SimChannel& c = s.channels[static_cast<std::size_t>(ch)];
                        if (!c.enabled || ping % std::max<int>(1, c.window.frameDecimator) != 0)
                            continue;
                        SendData(builder.Build(s, ch, place, t, mark));
                        ++traces_;
                    }
                }
                state_.NotePings(1);
                if (s.kind == SimSubsystemKind::SideScan && ping % 10 == 0)
                    state_.NoteMultiPingStatistics();
                next += std::chrono::duration_cast<SteadyClock::duration>(
                    std::chrono::duration<double>(1.0 / rate));
                // After a stall, carry on from now rather than catching up in a burst.
                if (next + std::chrono::seconds(1) < now) next = now;
            }
            wake = std::min(wake, next);
        }
        if (wake > SteadyClock::now()) std::this_thread::sleep_until(wake);
    }
}

}  // namespace halvo

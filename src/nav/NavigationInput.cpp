#include "nav/NavigationInput.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

#include "core/MessageProcessor.h"
#include "core/MessageTypes.h"

namespace halvo {

namespace {

constexpr std::size_t kStampSize = 12;

// Truncates toward zero, holding values beyond int range (or not numbers) at a safe end.
std::int32_t TruncateToInt(double v) {
    if (std::isnan(v)) return 0;
    if (v >= static_cast<double>(std::numeric_limits<std::int32_t>::max()))
        return std::numeric_limits<std::int32_t>::max();
    if (v <= static_cast<double>(std::numeric_limits<std::int32_t>::min()))
        return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(v);
}

}  // namespace

NavigationInput::NavigationInput(const NavigationConfigStore& config, MessageProcessor& dataBus,
                                 NowFn now, PlaybackFn isPlayback, ParallelPort& parallel,
                                 const RunFlag& running, NavigationInputTiming timing)
    : config_(config),
      bus_(dataBus),
      now_(std::move(now)),
      isPlayback_(std::move(isPlayback)),
      pulse_(parallel),
      running_(running),
      timing_(timing) {}

NavigationInput::~NavigationInput() {
    Stop();
}

void NavigationInput::Start() {
    if (started_.exchange(true)) return;
    for (int i = 0; i < NavigationConfig::kPorts; ++i)
        ports_[i].thread = std::thread([this, i] { Run(i); });
}

void NavigationInput::Stop() {
    {
        std::lock_guard lock(wakeMutex_);
        stop_.store(true, std::memory_order_release);
    }
    wake_.notify_all();
    for (Port& p : ports_) {
        if (p.thread.joinable()) p.thread.join();
    }
}

bool NavigationInput::Stopping() const {
    return stop_.load(std::memory_order_acquire) || !running_.IsSet();
}

bool NavigationInput::Pause(std::chrono::milliseconds duration) {
    std::unique_lock lock(wakeMutex_);
    wake_.wait_for(lock, duration, [this] { return stop_.load(std::memory_order_acquire); });
    return !Stopping();
}

SonarMessage NavigationInput::BuildMessage(std::string_view line, int index, TimeValue now) {
    // Text plus its terminating zero behind the stamp; the stamp's source byte stays 0.
    const auto size = static_cast<std::int32_t>(kStampSize + line.size() + 1);
    SonarMessage m = SonarMessage::Build(MsgNmea, kDirection, kSubsystem,
                                         static_cast<std::uint8_t>(index), size);
    if (!m) return m;
    std::span<std::uint8_t> block = m.Block();
    PutLE<std::int32_t>(block, kMessageHeaderSize + 0, now.seconds);
    PutLE<std::int32_t>(block, kMessageHeaderSize + 4, now.ms);
    std::memcpy(block.data() + kMessageHeaderSize + kStampSize, line.data(), line.size());
    return m;
}

void NavigationInput::Run(int index) {
    Port& port = ports_[index];
    SerialInput& input = port.input;
    NavigationPortConfig applied;
    std::int32_t pulseEnable = 0;
    std::int32_t pulseAddress = 0;
    bool configured = false;
    int seenChanges = 0;
    int lines = 0;

    while (!Stopping()) {
        if (Playback()) {
            // Live input keeps silent while a file plays; the settings are applied afresh after.
            if (input.port() != 0 || input.isOpen()) input.setPort(0);
            configured = false;
            Pause(timing_.retry);
            continue;
        }
        if (!configured || config_.ChangeCount() != seenChanges) {
            const NavigationConfig c = config_.Get(seenChanges);
            NavigationPortConfig want = c.ports[index];
            if (want.enable == 0) want.port = 0;
            if (!configured || want.baud != applied.baud) input.setBaud(want.baud);
            if (!configured || want.port != applied.port || want.device != applied.device)
                input.setPort(want.port, want.device);
            applied = want;
            pulseEnable = c.tsScopeOutEnable;
            pulseAddress = c.tsScopeOutPort;
            configured = true;
        }
        const bool enabled = applied.enable != 0;
        if (enabled && !input.isOpen()) {
            // A port that is not there yet (or went away) is tried again, for ever.
            if (!Pause(timing_.retry)) break;
            input.setPort(applied.port, applied.device);
        }
        const std::optional<std::string_view> line = input.readLine(lines);
        if (!line) {
            Pause(enabled ? timing_.idle : timing_.idle + timing_.retry);
            continue;
        }
        pulse_.Run(pulseEnable, pulseAddress);
        SonarMessage m = BuildMessage(*line, index, now_ ? now_() : TimeValue{});
        if (!m) continue;
        // A refused message is still ours and is released here: serial input drops, never waits.
        if (bus_.Post(m, SourceSerial) == 0) {
            port.posted.fetch_add(1, std::memory_order_relaxed);
        } else {
            port.dropped.fetch_add(1, std::memory_order_relaxed);
        }
    }
    input.close();
}

std::string NavigationInput::StatusText(std::int32_t currentClockError,
                                        double averageClockError) const {
    const NavigationConfig c = config_.Get();
    const bool playback = Playback();
    std::string text;
    char buffer[96];
    for (int i = 0; i < NavigationConfig::kPorts; ++i) {
        if (c.ports[i].enable == 0) continue;
        const SerialInput& input = ports_[i].input;
        if (input.isOpen()) {
            std::snprintf(buffer, sizeof buffer, "[Bytes=%d OF=%d] ", input.bytesReceived(),
                          input.overflowCount());
            text += buffer;
        } else {
            text += playback ? "[Playback Mode] " : "[Cannot Open Port] ";
        }
    }
    if (c.tsEnable != 0) {
        std::snprintf(buffer, sizeof buffer, "[Time(Cur=%d Avg=%d)] ", currentClockError,
                      TruncateToInt(averageClockError));
        text += buffer;
    }
    return text;
}

std::uint64_t NavigationInput::LinesPosted(int index) const {
    if (index < 0 || index >= NavigationConfig::kPorts) return 0;
    return ports_[index].posted.load(std::memory_order_relaxed);
}

std::uint64_t NavigationInput::LinesDropped(int index) const {
    if (index < 0 || index >= NavigationConfig::kPorts) return 0;
    return ports_[index].dropped.load(std::memory_order_relaxed);
}

const SerialInput& NavigationInput::Input(int index) const {
    if (index < 0) index = 0;
    if (index >= NavigationConfig::kPorts) index = NavigationConfig::kPorts - 1;
    return ports_[index].input;
}

}  // namespace halvo

#pragma once
// The simulated sonar's settings: one record per subsystem plus the device-wide ones, changed
// by the topside's commands and read back by its queries. All access is under one lock; the
// ping thread takes copies.

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "core/SonarMessage.h"
#include "halvo-sim/SimClock.h"
#include "halvo-sim/SimOptions.h"

namespace halvo {

constexpr int kSimMaxChannels = 16;
constexpr std::size_t kSimPulseEntrySize = 360;
constexpr std::size_t kSimStatusSize = 100;
constexpr std::size_t kSimStorageStatusSize = 332;
constexpr std::size_t kSimMultiPingBlockSize = 804;
constexpr std::size_t kSimTextSize = 256;

// Window of one channel as message 81 (and 441) carries it.
struct SimWindow {
    std::uint16_t frameDecimator = 1;
    std::uint16_t pixelDecimator = 1;
    std::int32_t delay = 0;     // samples at the ADC rate
    std::int32_t width = 4000;  // samples at the ADC rate
    std::int32_t last = 8000;
};

struct SimChannel {
    bool enabled = true;
    std::int32_t gainMilli = 1000;
    std::int32_t agc = 0;
    std::int32_t dataType = 0;  // 0 envelope, 1 analytic, 2 raw
    SimWindow window;
    SimWindow storageWindow;
    std::int32_t storeEnable = 0;
};

struct SimPulse {
    std::string name;
    std::int32_t startHz = 0;
    std::int32_t endHz = 0;
    std::int32_t lengthUs = 0;
};

enum class SimSubsystemKind { SubBottom, SideScan };

struct SimSubsystem {
    int number = 0;
    SimSubsystemKind kind = SimSubsystemKind::SubBottom;
    int inputChannels = 1;
    int transducers = 1;
    bool sonarOn = false;
    bool rangeMode = false;             // 128 sets a range, 124 a rate
    std::int32_t pingRateMilli = 4000;  // Hz x 1000
    std::int32_t rangeMilli = 0;        // metres x 1000
    std::int32_t adcRateHz = 25000;
    std::array<SimChannel, kSimMaxChannels> channels{};
    std::array<std::int32_t, kSimMaxChannels> pulsePower{};
    std::vector<SimPulse> pulses;
    std::size_t pulseIndex = 0;
    std::string secondPulseText;
    std::int32_t trigger = 0;
    std::array<std::int32_t, 3> coupling{0, 1, 0};  // system, decimator, delay x 1000
    std::int32_t specialOptions = 273;
    std::int32_t subsystemValue = 0;
    std::array<std::uint16_t, 5> qc{};
    std::int32_t streamFlagHigh = 0;
    std::int32_t streamFlagLow = 0;
    std::int32_t dynamicFocus = -1;
    int beginConfigureCount = 0;

    const SimPulse& Pulse() const { return pulses.at(pulseIndex); }
    // The ping rate in force: the set rate, or the rate a set range allows (two-way at 1500 m/s).
    double PingRateHz() const;
};

struct SimDevice {
    std::int32_t storageMasterEnable = 0;
    std::string storageFile;
    std::int64_t recordStartMs = 0;
    std::array<std::int32_t, 10> serialEnable{1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    std::int32_t analogEnable = 1;
    int pitchRollPort = 3;
    int sensorResets = 0;
    std::array<std::uint8_t, kSimMultiPingBlockSize> multiPing{};
    std::int32_t multiPingMode = 3;
    std::int32_t gainBalance = 1;
    std::string focusTable = "Default Focus Table";
    int multiPingResets = 0;
    int multiPingSaves = 0;
    std::int32_t calibrationAction = 0;
    std::int32_t calibrationAction2 = 0;
    std::array<std::int32_t, 6> videoControl{};  // flags, 0, quality, decimation, zoom, refocus
    int videoControlCount = 0;
    int optionChecks = 0;
    int clockSets = 0;
    int clockSlews = 0;
};

class SimSonarState {
  public:
    SimSonarState(SimConfig config, SimDeviceClock& clock);

    // Applies one message from the topside and appends the replies it calls for.
    void Handle(const SonarMessage& m, std::vector<SonarMessage>& replies);

    int SubsystemCount() const { return static_cast<int>(subsystems_.size()); }
    SimSubsystem Subsystem(int index) const;
    // Whether the subsystem transmits, and its ping rate in Hz: the cheap test the ping loop
    // makes before it copies a whole record.
    bool Transmitting(int index, double& rateHz) const;
    std::optional<int> IndexOf(int number) const;
    SimDevice Device() const;
    SimConfig config() const { return config_; }

    void SetSonarOnAll(bool on);
    // Counted by the ping thread, reported in the status reply.
    void NotePings(std::uint64_t n) { pings_.fetch_add(n, std::memory_order_relaxed); }
    std::uint64_t Pings() const { return pings_.load(std::memory_order_relaxed); }
    // Multi-ping statistics grow with each side-scan ping.
    void NoteMultiPingStatistics();

  private:
    void HandleSubsystem(SimSubsystem& s, const SonarMessage& m,
                         std::vector<SonarMessage>& replies);
    void HandleDevice(const SonarMessage& m, std::vector<SonarMessage>& replies);
    SonarMessage StatusReply(const MessageHeader& q) const;
    SonarMessage StorageStatusReply(const MessageHeader& q) const;
    SonarMessage PulseListReply(const SimSubsystem& s, const MessageHeader& q) const;

    SimConfig config_;
    SimDeviceClock& clock_;
    std::int64_t startMs_ = 0;
    mutable std::mutex mutex_;
    std::vector<SimSubsystem> subsystems_;
    SimDevice device_;
    std::atomic<std::uint64_t> pings_{0};
};

// A reply block: header with direction 2 and the query's subsystem and channel.
SonarMessage SimReply(const MessageHeader& query, std::int32_t size);
// A text field of a payload: up to the first zero or the end, at most `limit` characters.
std::string SimText(std::span<const std::uint8_t> bytes, std::size_t limit);

}  // namespace halvo

#pragma once
// Completes every trace header on the data bus's processing stage. Sensor and navigation
// messages arrive on their own schedules; this observer keeps the newest of each and, when a
// trace (type 80) passes, writes those values, scaled, into its header in place. Later observers
// (displays, storage, status) see the stamped header in the same message. It also owns the
// sentence parser, the navigation snapshot and the steering of the program clock by sentences.
//
// Threads: ProcessMessage runs on the data bus thread and everything but the navigation state
// is touched there only. The navigation state (and the fix the parser writes) are shared with
// the pages under NavigationState's lock; settings arrive as copies through their change counts.

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include "app/GeneralValues.h"
#include "core/MessageObserver.h"
#include "nav/NavigationConfig.h"
#include "nav/NavigationFix.h"
#include "nav/NavigationState.h"
#include "nav/SentenceHistory.h"
#include "nav/SentenceParser.h"
#include "stamping/ClockSteering.h"
#include "stamping/LatchedPayload.h"

namespace halvo {

class GeneralSettings;
class Notifier;
class ProgramClock;
class TraceHeaderView;

// One sonar subsystem as the absolute channel needs it: its number on the wire and its first
// display channel (SubSystem and SubsystemChannelOffset of the sonar settings).
struct SonarChannelBase {
    std::int32_t subsystem = 0;
    std::int32_t firstChannel = 0;
    friend bool operator==(const SonarChannelBase&, const SonarChannelBase&) = default;
};

class SegyDataProcessor final : public MessageObserver {
  public:
    static constexpr int kChannels = 63;
    static constexpr std::uint32_t kFreshMs = 5000;

    SegyDataProcessor(ProgramClock& clock, GeneralSettings& general,
                      NavigationConfigStore& navigation, Notifier& notifier);

    void ProcessMessage(SonarMessage* message, int source, std::uint32_t extra) override;

    // Raised by a change of navigation settings: the copy is refreshed on the next message.
    // A change seen through the store's change count raises it as well.
    void RefreshNavigationConfig() { refresh_.store(true, std::memory_order_release); }

    // The sonars searched for the absolute channel; every match applies, the last one wins.
    // Until set: the defaults of the sonar settings (0, 20, 21, 3 at channels 0, 2, 4, 6).
    void SetSonarChannels(std::vector<SonarChannelBase> sonars);
    static std::vector<SonarChannelBase> DefaultSonarChannels();

    // The navigation snapshot's guarded pair (Acquire / Release) and status.
    NavigationState& Navigation() { return navigation_; }
    int getNavStatus();

    // Copies for other threads, taken under the navigation lock.
    NavigationFix CopyFix();
    SentenceHistory CopyHistory();

    // Bus thread only (and tests).
    const ClockSteering& Steering() const { return steering_; }
    const GeneralValues& General() const { return general_; }
    const NavigationConfig& NavigationSettings() const { return navConfig_; }

  private:
    void RefreshSettings();
    void ParseMessage(const SonarMessage& m, int source);
    void PlaybackAttitude(const SonarMessage& m);
    void LatchSensor(const SonarMessage& m, std::uint32_t now);
    void StampTrace(SonarMessage& m, int source, std::uint32_t now);
    void AbsoluteChannel(const SonarMessage& m, TraceHeaderView& th);

    ProgramClock& clock_;
    GeneralSettings& generalStore_;
    NavigationConfigStore& navStore_;

    GeneralValues general_;
    int generalCount_ = -1;
    NavigationConfig navConfig_;
    int navCount_ = -1;
    std::atomic<bool> refresh_{true};

    std::mutex sonarMutex_;
    std::vector<SonarChannelBase> sonars_;

    SentenceParser parser_;
    NavigationState navigation_;
    ClockSteering steering_;

    // Newest payloads, from payload offset 12 on.
    LatchedPayload<32> attitude_;    // 2020
    LatchedPayload<32> altitude_;    // 2070
    LatchedPayload<64> pressure_;    // 2060 with flag bit 0
    LatchedPayload<64> soundSpeed_;  // 2060 with flag bit 4
    LatchedPayload<24> analog_;      // 2040

    std::array<std::int32_t, kChannels> marks_{};
    std::array<float, kChannels> depthFilter_{};
};

}  // namespace halvo

#pragma once
// The shape of the installation as the options dialog edits it, and where each value lives:
// sonar names, display splits and the attitude chart in OverallConfig, the summed channels in
// section General, and the per-sonar numbers in the sonar parameters. The sonar side comes in
// through SonarAccess from the owner of the sonar parameters; without it those fields are not
// offered.

#include <array>
#include <cstdint>
#include <functional>
#include <string>

namespace halvo {

class GeneralSettings;
class OverallConfig;

struct MainOptions {
    static constexpr int kSonars = 4;
    static constexpr int kDisplays = 10;
    static constexpr int kSummedChannels = 32;  // one per bit of the mask

    struct Sonar {
        std::string name;                // OverallConfig SonarName%d
        std::int32_t subsystem = 0;      // SubSystem
        std::int32_t channelOffset = 0;  // SubsystemChannelOffset
        std::int32_t transducers = 1;    // Transducers (transmit channels)
        std::int32_t inputChannels = 1;  // InputChannels (receive channels)
        std::int32_t enableControl = 0;  // bit value 4 of Flags
    };

    std::int32_t numSonars = 0;  // NumSonars
    std::array<Sonar, kSonars> sonars{};
    std::int32_t inBottleStorage = 0;       // SonarStorage MasterEnable
    std::array<std::uint32_t, 2> summed{};  // SummedChannel0, SummedChannel1
    std::int32_t waterfallDisplays = 1;     // displays with NumSplits of 1 or more
    std::int32_t pitchRollAbove = 0;        // HasPlot0
};

class MainOptionsStore {
  public:
    // The sonar parameters' side: read fills numSonars, the sonars' numbers (not their names)
    // and inBottleStorage; write stores them.
    struct SonarAccess {
        std::function<void(MainOptions&)> read;
        std::function<void(const MainOptions&)> write;
    };

    MainOptionsStore(OverallConfig& overall, GeneralSettings& general)
        : overall_(overall), general_(general) {}

    void SetSonarAccess(SonarAccess access) { sonar_ = std::move(access); }
    bool HasSonarAccess() const { return sonar_.read && sonar_.write; }

    MainOptions Read() const;
    // Stores everything; layout changes take effect at the next start.
    void Write(const MainOptions& options);

  private:
    OverallConfig& overall_;
    GeneralSettings& general_;
    SonarAccess sonar_;
};

}  // namespace halvo

#include "halvo-hsf/LinePlayer.h"

#include <utility>
#include <vector>

#include "stamping/SonarChannelSettings.h"

namespace halvo::hsf {

LinePlayer::LinePlayer(const std::string& settings)
    : general_(coordinator_),
      set_(coordinator_, general_),
      output_(set_.Queue(), [] { return true; }, coordinator_.Running(), {}),
      displays_(set_, general_, output_, &sonars_),
      stamping_(settings, {&displays_}) {
    coordinator_.SetActiveProfile(settings);
    coordinator_.Running().Raise();
    general_.Load();
    set_.Start();
    for (int i = 0; i < DisplayProcessingSet::kDisplays; ++i) set_.UseDisplay();
    std::vector<FixedSonarChannelMap::Sonar> map;
    for (const SonarChannelBase& s : LoadSonarChannels(coordinator_)) {
        map.push_back({s.subsystem, s.firstChannel});
    }
    sonars_ = FixedSonarChannelMap(std::move(map));
}

}  // namespace halvo::hsf

#pragma once
// The two keys of the sonar settings that the absolute channel needs, read for tools and tests
// that run without the sonar model: SubSystem and SubsystemChannelOffset of SBSonar0 to SBSonar3.

#include <vector>

#include "stamping/SegyDataProcessor.h"

namespace halvo {

class SystemCoordinator;

// From the active settings file; a missing key gives the sonar model's default (subsystems 0,
// 20, 21, 3 at first channels 0, 2, 4, 6).
std::vector<SonarChannelBase> LoadSonarChannels(const SystemCoordinator& coordinator);

}  // namespace halvo

#include "stamping/SonarChannelSettings.h"

#include <string>

#include "app/IniFile.h"

namespace halvo {

std::vector<SonarChannelBase> LoadSonarChannels(const SystemCoordinator& coordinator) {
    std::vector<SonarChannelBase> sonars = SegyDataProcessor::DefaultSonarChannels();
    IniFile ini(coordinator);
    for (std::size_t d = 0; d < sonars.size(); ++d) {
        ini.Open("SBSonar" + std::to_string(d));
        sonars[d].subsystem = ini.ReadInt("SubSystem", sonars[d].subsystem);
        sonars[d].firstChannel = ini.ReadInt("SubsystemChannelOffset", sonars[d].firstChannel);
    }
    return sonars;
}

}  // namespace halvo

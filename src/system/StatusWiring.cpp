#include "system/StatusWiring.h"

#include "app/GeneralSettings.h"
#include "nav/NavigationText.h"
#include "sonar/SonarIF.h"
#include "stamping/SegyDataProcessor.h"
#include "storage/StorageControl.h"
#include "system/DisplayStateReader.h"

namespace halvo {

StatusSources MakeStatusSources(const StatusWiring& parts) {
    StatusSources sources;
    PlugStorage(sources, parts.storage);
    SegyDataProcessor& stamping = parts.stamping;
    GeneralSettings& general = parts.general;
    const DisplayStateReader& displays = parts.displays;
    const SonarIF* const& sonar = parts.sonar;
    sources.navStatus = [&stamping] { return stamping.getNavStatus(); };
    sources.positionText = [&general](const ConstTraceHeaderView& th) {
        return PositionText(th, general.Snapshot().GPSFlags);
    };
    sources.timeText = [](const ConstTraceHeaderView& th) { return TimeText(th); };
    sources.speedText = [](const ConstTraceHeaderView& th) { return SpeedCourseText(th); };
    sources.attitudeText = [&general](const ConstTraceHeaderView& th) {
        return AttitudeText(th, general.Snapshot().WaterSoundSpeed);
    };
    sources.sonar = [&sonar](int index) {
        SonarChannels out;
        if (sonar == nullptr || index < 0 || index >= sonar->GetNumSonars()) return out;
        const SonarConfig s = sonar->GetSonar(index);
        out.firstChannel = s.channelOffset;
        out.channels = s.ChannelCount();
        return out;
    };
    sources.display = [&displays](int display) { return displays.State(display); };
    // Zeros before the first whole reply are not readings: the item waits for one.
    sources.systemStatus = [&sonar]() -> std::optional<SystemStatusWords> {
        if (sonar == nullptr || !sonar->HasStatus()) return std::nullopt;
        return sonar->GetStatus();
    };
    return sources;
}

}  // namespace halvo

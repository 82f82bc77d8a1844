#include "gui/dialogs/MainOptions.h"

#include <algorithm>

#include "app/GeneralSettings.h"
#include "app/OverallConfig.h"

namespace halvo {

MainOptions MainOptionsStore::Read() const {
    MainOptions o;
    const OverallConfig::Values v = overall_.Snapshot();
    for (int i = 0; i < MainOptions::kSonars; ++i) {
        o.sonars[static_cast<std::size_t>(i)].name = v.sonarNames[static_cast<std::size_t>(i)];
    }
    // Displays count from the first one on, up to the first without a split.
    o.waterfallDisplays = 0;
    while (o.waterfallDisplays < MainOptions::kDisplays &&
           v.numSplits[static_cast<std::size_t>(o.waterfallDisplays)] >= 1) {
        ++o.waterfallDisplays;
    }
    o.pitchRollAbove = v.hasPlot[0] != 0 ? 1 : 0;
    const GeneralValues g = general_.Snapshot();
    o.summed = {static_cast<std::uint32_t>(g.SummedChannel0),
                static_cast<std::uint32_t>(g.SummedChannel1)};
    if (sonar_.read) sonar_.read(o);
    return o;
}

void MainOptionsStore::Write(const MainOptions& o) {
    OverallConfig::Values v = overall_.Snapshot();
    for (std::size_t i = 0; i < MainOptions::kSonars; ++i) {
        std::string name = o.sonars[i].name;
        if (name.size() > OverallConfig::kSonarNameChars)
            name.resize(OverallConfig::kSonarNameChars);
        v.sonarNames[i] = std::move(name);
    }
    // A display that comes into use gets one split; the ones past the count get none. Displays
    // that keep their place keep their splits.
    const int count = std::clamp(o.waterfallDisplays, 0, MainOptions::kDisplays);
    for (int n = 0; n < MainOptions::kDisplays; ++n) {
        int& splits = v.numSplits[static_cast<std::size_t>(n)];
        if (n < count) {
            splits = std::max(splits, 1);
        } else {
            splits = 0;
        }
    }
    v.hasPlot[0] = o.pitchRollAbove != 0 ? 1 : 0;
    overall_.Update(v);
    general_.Modify([&](GeneralValues& g) {
        g.SummedChannel0 = static_cast<std::int32_t>(o.summed[0]);
        g.SummedChannel1 = static_cast<std::int32_t>(o.summed[1]);
    });
    if (sonar_.write) sonar_.write(o);
}

}  // namespace halvo

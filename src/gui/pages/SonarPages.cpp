#include "gui/pages/SonarPages.h"

#include <algorithm>

#include "app/OverallConfig.h"
#include "gui/pages/CfgSonar.h"
#include "gui/pages/CfgSonarR90.h"
#include "gui/pages/CfgSonarRC900.h"
#include "gui/pages/SetupQC.h"
#include "gui/pages/SonarLists.h"
#include "gui/sheets/CfgSheet.h"
#include "sonar/SonarIF.h"
#include "system/System.h"

namespace halvo {

QString SonarPageCaption(const std::string& name, const SonarConfig& record, int index) {
    if (!name.empty()) return QString::fromStdString(name);
    if (const char* text = sonarlists::TextOf(sonarlists::kSubsystems, record.subsystem)) {
        return QString(text);
    }
    return QString("Sonar %1").arg(index);
}

void AddSonarPages(CfgSheet& sheet, System& system, SheetContext& context) {
    if (!system.HasSonar()) return;
    SonarIF& sonar = system.Sonar();
    const OverallConfig::Values overall = system.Overall().Snapshot();
    const int type = sonar.ConfigType();
    auto caption = [overall, &sonar](int i) {
        const int k = SonarController::ClampIndex(i);
        return SonarPageCaption(overall.sonarNames[static_cast<std::size_t>(k)], sonar.GetSonar(k),
                                k);
    };
    if (type == OverallConfig::kConfigR90) {
        sheet.AddPage(new CfgSonarR90(context, caption(0), sonar, 0), CfgSheet::CfgSonarR90);
    } else {
        const int n = std::clamp(sonar.GetNumSonars(), 0, SonarIF::kSonars);
        for (int i = 0; i < n; ++i) {
            sheet.AddPage(new CfgSonar(context, caption(i), sonar, i), CfgSheet::CfgSonar);
        }
    }
    if (type == OverallConfig::kConfigSBRC900 || overall.rc900DisplayEnable != 0) {
        sheet.AddPage(new CfgSonarRC900(context, sonar), CfgSheet::CfgSonarRC900);
    }
    sheet.AddPage(new SetupQC(context, system.Hub(), sonar, caption), CfgSheet::SetupQC);
}

MainOptionsStore::SonarAccess SonarOptionsAccess(SonarIF& sonar) {
    MainOptionsStore::SonarAccess access;
    access.read = [&sonar](MainOptions& o) {
        o.numSonars = sonar.GetNumSonars();
        for (int i = 0; i < MainOptions::kSonars; ++i) {
            const SonarConfig c = sonar.GetSonar(i);
            MainOptions::Sonar& s = o.sonars[static_cast<std::size_t>(i)];
            s.subsystem = c.subsystem;
            s.channelOffset = c.channelOffset;
            s.transducers = c.transducers;
            s.inputChannels = c.inputChannels;
            s.enableControl = c.InUse() ? 1 : 0;
        }
        o.inBottleStorage = sonar.GetRecorder().masterEnable;
    };
    access.write = [&sonar](const MainOptions& o) {
        if (o.numSonars != sonar.GetNumSonars()) sonar.SetNumSonars(o.numSonars);
        for (int i = 0; i < MainOptions::kSonars; ++i) {
            SonarConfig c = sonar.GetSonar(i);
            const MainOptions::Sonar& s = o.sonars[static_cast<std::size_t>(i)];
            SonarConfig n = c;
            n.subsystem = s.subsystem;
            n.channelOffset = s.channelOffset;
            n.transducers = std::clamp(s.transducers, 0, SonarConfig::kMaxChannels);
            n.inputChannels = std::clamp(s.inputChannels, 0, SonarConfig::kMaxChannels);
            n.flags = s.enableControl != 0 ? (c.flags | SonarConfig::kFlagInUse)
                                           : (c.flags & ~SonarConfig::kFlagInUse);
            if (!(n == c)) sonar.SetSonar(n, i);
        }
        RecorderConfig r = sonar.GetRecorder();
        if (r.masterEnable != o.inBottleStorage) {
            r.masterEnable = o.inBottleStorage;
            sonar.SetRecorder(r);
        }
    };
    return access;
}

}  // namespace halvo

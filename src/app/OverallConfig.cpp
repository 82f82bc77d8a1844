#include "app/OverallConfig.h"

#include <vector>

#include "app/IniFile.h"
#include "app/MainWindowHost.h"
#include "app/SystemCoordinator.h"

namespace halvo {

namespace {

constexpr std::string_view kSection = "OverallConfig";

std::string Indexed(std::string_view key, int n) {
    return std::string(key) + std::to_string(n);
}

}  // namespace

int OverallConfig::ConfigTypeFromText(std::string_view text) {
    if (text == "SBSS") return kConfigSBSS;
    if (text == "MPX") return kConfigMPX;
    if (text == "R90") return kConfigR90;
    if (text == "SB") return kConfigSB;
    if (text == "SBRC900") return kConfigSBRC900;
    return kConfigUnknown;
}

OverallConfig::Installation OverallConfig::ReadInstallation(IniFile& ini) {
    ini.Open("HalvoConfig", ini.File());
    Installation inst;
    inst.configType = ConfigTypeFromText(ini.ReadString("Config", "Unknown"));
    inst.multiPing = ini.ReadInt("MultiPing", inst.configType == kConfigMPX ? 1 : 0);
    inst.sedimentClassification = ini.ReadInt("SedimentClassification", 0);
    inst.topsideForEngineering = ini.ReadInt("TopsideForEngineering", 0);
    return inst;
}

void OverallConfig::Start() {
    lifecycle_.Start([this] { Load(); });
}

void OverallConfig::LoadOnce(IniFile& ini, Values& v) {
    v.promptForDefaultsFile = ini.ReadInt("PromptForDefaultsFile", 1);
    for (int i = 0; i < kSonars; ++i) {
        v.sonarNames[i] = ini.ReadString(Indexed("SonarName", i), "").substr(0, kSonarNameChars);
    }

    // The displays share one budget of channels. Counting stops at the first display left with
    // no split; the ones after it keep what the file says, so a save writes them back unchanged.
    v.displayCount = 0;
    int assigned = 0;
    bool counting = true;
    for (int n = 0; n < kDisplays; ++n) {
        int splits = ini.ReadInt(Indexed("NumSplits", n), n == 0 ? 4 : 0);
        const int plot = ini.ReadInt(Indexed("HasPlot", n), n == 0 ? 1 : 0);
        if (splits < 0) splits = 0;
        if (counting) {
            if (splits > kMaxChannels - assigned) splits = kMaxChannels - assigned;
            if (splits < 1) {
                counting = false;
            } else {
                // A plot row takes one pane and no channel.
                assigned += plot != 0 ? splits - 1 : splits;
                ++v.displayCount;
            }
        }
        v.numSplits[n] = splits;
        v.hasPlot[n] = plot;
    }

    ini.ReadInt("RC900DisplayEnable", 0);  // read for form's sake: the feature stays off
    v.rc900DisplayEnable = 0;
}

void OverallConfig::Load() {
    IniFile ini(coordinator_);
    ini.Open(kSection);
    Values v = Snapshot();
    const bool first = lifecycle_.MarkLoaded();
    if (first) LoadOnce(ini, v);

    if (host_ != nullptr && host_->HasMainWindow()) {
        const auto placement = WindowPlacement::Decode(ini.ReadString("MainWindowPos", ""));
        if (placement) {
            host_->ShowPlacement(*placement);
        } else {
            host_->ShowMaximised();
        }
    }
    for (int n = 0; n < kDisplays; ++n) {
        v.pixelsRows[n] = ini.ReadInt(Indexed("PixelsRows", n), -1);
        v.pixelsColumns[n] = ini.ReadInt(Indexed("PixelsColumns", n), -1);
    }
    {
        std::lock_guard lock(mutex_);
        values_ = v;
        if (first) ++changes_;
    }
    if (host_ != nullptr) host_->ApplySplitSizes(v.pixelsRows, v.pixelsColumns);
}

void OverallConfig::Save() {
    if (!lifecycle_.MaySave()) return;
    Values v = Snapshot();
    IniFile ini(coordinator_);
    ini.Open(kSection);
    ini.WriteInt("PromptForDefaultsFile", v.promptForDefaultsFile);
    for (int i = 0; i < kSonars; ++i) ini.WriteString(Indexed("SonarName", i), v.sonarNames[i]);
    for (int n = 0; n < kDisplays; ++n) {
        ini.WriteInt(Indexed("NumSplits", n), v.numSplits[n]);
        ini.WriteInt(Indexed("HasPlot", n), v.hasPlot[n]);
    }

    if (host_ != nullptr) {
        // Panes of the open documents fill the lists in order; the rest keep their stored sizes.
        std::vector<int> rows;
        std::vector<int> columns;
        host_->CollectSplitSizes(rows, columns);
        for (std::size_t i = 0; i < rows.size() && i < v.pixelsRows.size(); ++i) {
            v.pixelsRows[i] = rows[i];
        }
        for (std::size_t i = 0; i < columns.size() && i < v.pixelsColumns.size(); ++i) {
            v.pixelsColumns[i] = columns[i];
        }
        std::lock_guard lock(mutex_);
        values_.pixelsRows = v.pixelsRows;
        values_.pixelsColumns = v.pixelsColumns;
    }
    for (int n = 0; n < kDisplays; ++n) {
        ini.WriteInt(Indexed("PixelsRows", n), v.pixelsRows[n]);
        ini.WriteInt(Indexed("PixelsColumns", n), v.pixelsColumns[n]);
    }
    ini.WriteInt("RC900DisplayEnable", v.rc900DisplayEnable);
    if (host_ != nullptr && host_->HasMainWindow()) {
        ini.WriteString("MainWindowPos", host_->CurrentPlacement().Encode());
    }
}

OverallConfig::Values OverallConfig::Snapshot() const {
    std::lock_guard lock(mutex_);
    return values_;
}

void OverallConfig::Update(const Values& values) {
    std::lock_guard lock(mutex_);
    values_ = values;
    ++changes_;
}

int OverallConfig::ChangeCount() const {
    std::lock_guard lock(mutex_);
    return changes_;
}

void OverallConfig::SetInstallation(int configType, bool engineering) {
    std::lock_guard lock(mutex_);
    values_.configType = configType;
    values_.engineering = engineering;
}

int OverallConfig::DisplayCount() const {
    std::lock_guard lock(mutex_);
    return values_.displayCount;
}

int OverallConfig::RC900DisplayEnable() const {
    std::lock_guard lock(mutex_);
    return values_.rc900DisplayEnable;
}

}  // namespace halvo

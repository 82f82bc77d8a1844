#include "dsp/graph/GraphSettings.h"

#include "app/IniFile.h"

namespace halvo {

void GraphSettings::Load() {
    IniFile ini(coordinator_);
    ini.Open(kSection);
    std::lock_guard g(lock_);
    GraphValues v = values_;
    const GraphValues d;
    v.PlotTime = ini.ReadString("PlotTime", v.PlotTime);
    v.PlotFreq = ini.ReadString("PlotFreq", v.PlotFreq);
    v.ScaleFreqByFFTSize = ini.ReadInt("ScaleFreqByFFTSize", d.ScaleFreqByFFTSize);
    v.Channel = ini.ReadInt("Channel", d.Channel);
    v.Channel2 = ini.ReadInt("Channel2", d.Channel2);
    v.RemoveMean = ini.ReadInt("RemoveMean", d.RemoveMean);
    v.TimePlotType = ini.ReadInt("TimePlotType", d.TimePlotType);
    v.Window = ini.ReadInt("Window", d.Window);
    v.SaveFile = ini.ReadString("SaveFile", "").substr(0, GraphValues::kMaxSaveFile);
    v.Pause = ini.ReadInt("Pause", d.Pause);
    values_ = v;
    loaded_ = true;
    ++changes_;
}

void GraphSettings::Save() {
    GraphValues v;
    {
        std::lock_guard g(lock_);
        if (!loaded_) return;
        v = values_;
    }
    IniFile ini(coordinator_);
    ini.Open(kSection);
    ini.WriteString("PlotTime", v.PlotTime);
    ini.WriteString("PlotFreq", v.PlotFreq);
    ini.WriteInt("ScaleFreqByFFTSize", v.ScaleFreqByFFTSize);
    ini.WriteInt("Channel", v.Channel);
    ini.WriteInt("Channel2", v.Channel2);
    ini.WriteInt("RemoveMean", v.RemoveMean);
    ini.WriteInt("TimePlotType", v.TimePlotType);
    ini.WriteInt("Window", v.Window);
    ini.WriteString("SaveFile", v.SaveFile);
    ini.WriteInt("Pause", v.Pause);
}

GraphValues GraphSettings::Snapshot() const {
    std::lock_guard g(lock_);
    return values_;
}

void GraphSettings::Set(const GraphValues& values) {
    std::lock_guard g(lock_);
    GraphValues v = values;
    if (v.SaveFile.size() > GraphValues::kMaxSaveFile) v.SaveFile.resize(GraphValues::kMaxSaveFile);
    if (v == values_) return;
    values_ = v;
    ++changes_;
}

int GraphSettings::ChangeCount() const {
    std::lock_guard g(lock_);
    return changes_;
}

}  // namespace halvo

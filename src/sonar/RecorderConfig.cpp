#include "sonar/RecorderConfig.h"

#include "app/IniFile.h"

namespace halvo {

RecorderConfig RecorderConfig::Load(IniFile& ini) {
    const RecorderConfig def;
    RecorderConfig r;
    ini.Open("SonarStorage");
    r.masterEnable = ini.ReadInt("MasterEnable", def.masterEnable);
    r.playbackEnable = ini.ReadInt("PlaybackEnable", def.playbackEnable);
    r.flags = ini.ReadInt("Flags", def.flags);
    r.recordFile = ini.ReadString("RecordFile", "");
    if (r.recordFile.size() > kRecordFileChars) r.recordFile.resize(kRecordFileChars);
    return r;
}

void RecorderConfig::Save(IniFile& ini) const {
    ini.Open("SonarStorage");
    ini.WriteInt("MasterEnable", masterEnable);
    ini.WriteInt("PlaybackEnable", playbackEnable);
    ini.WriteInt("Flags", flags);
    ini.WriteString("RecordFile", recordFile);
}

}  // namespace halvo

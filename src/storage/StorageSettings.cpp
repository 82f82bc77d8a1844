#include "storage/StorageSettings.h"

#include <string_view>
#include <variant>

#include "app/IniFile.h"

namespace halvo {

namespace {

using Field = std::variant<std::int32_t StorageSettings::*, std::string StorageSettings::*>;

struct Key {
    std::string_view name;
    Field field;
};

// In record order; read at load and written at save in this order.
constexpr Key kKeys[] = {
    {"Mode", &StorageSettings::mode},
    {"SegyOnly", &StorageSettings::recordForm},
    {"RecordDir", &StorageSettings::recordDir},
    {"PlaybackDir", &StorageSettings::playbackDir},
    {"RecordFile", &StorageSettings::recordFile},
    {"SaveBathyData", &StorageSettings::saveBathy},
    {"MaxRecordSize", &StorageSettings::maxRecordSize},
    {"PlaybackFile", &StorageSettings::playbackFile},
    {"PlaybackRate", &StorageSettings::playbackRate},
    {"Diagnostics", &StorageSettings::diagnostics},
    {"Flags", &StorageSettings::flags},
    {"MarkFileStart", &StorageSettings::markFileStart},
    {"AcquireMode", &StorageSettings::acquireMode},
    {"PlaybackRangeType", &StorageSettings::playbackRangeType},
    {"PlaybackRange0", &StorageSettings::playbackRange0},
    {"PlaybackRange1", &StorageSettings::playbackRange1},
};

}  // namespace

std::string StorageSettings::PlaybackPath() const {
    if (playbackDir.empty()) return playbackFile;
    return playbackDir + "/" + playbackFile;
}

StorageSettings StorageSettings::Load(IniFile& ini) {
    const StorageSettings defaults;
    StorageSettings s;
    for (const Key& key : kKeys) {
        if (auto p = std::get_if<std::int32_t StorageSettings::*>(&key.field)) {
            s.*(*p) = ini.ReadInt(key.name, defaults.*(*p));
        } else {
            auto q = std::get<std::string StorageSettings::*>(key.field);
            s.*q = ini.ReadString(key.name, defaults.*q);
        }
    }
    // Whatever the file says, the system comes up stopped.
    s.mode = ModeStop;
    if (s.playbackRate < 1) s.playbackRate = 1;
    return s;
}

void StorageSettings::Save(IniFile& ini) const {
    for (const Key& key : kKeys) {
        if (auto p = std::get_if<std::int32_t StorageSettings::*>(&key.field)) {
            ini.WriteInt(key.name, this->*(*p));
        } else {
            ini.WriteString(key.name, this->*std::get<std::string StorageSettings::*>(key.field));
        }
    }
}

}  // namespace halvo

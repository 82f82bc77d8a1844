#pragma once
// Every key of section Storage in one record, copied by value between threads.

#include <cstdint>
#include <string>

namespace halvo {

class IniFile;

enum StorageMode : std::int32_t {
    ModeRecord = 0,
    ModePlayback = 1,
    ModeStop = 2,
    ModePause = 3,
};

struct StorageSettings {
    std::int32_t mode = ModeStop;            // Mode
    std::int32_t recordForm = 1;             // SegyOnly: 0 raw, 1 decompressed, 2 traces only
    std::string recordDir = "C:";            // RecordDir
    std::string playbackDir = "C:";          // PlaybackDir
    std::string recordFile = "SonarData";    // RecordFile
    std::int32_t saveBathy = 0;              // SaveBathyData
    std::int32_t maxRecordSize = 0;          // MaxRecordSize, millions of bytes
    std::string playbackFile = "SonarData";  // PlaybackFile
    std::int32_t playbackRate = 50;          // PlaybackRate, records per second
    std::int32_t diagnostics = 0;            // Diagnostics
    std::int32_t flags = 1;                  // Flags; bit 0 "Reparse Data"
    std::int32_t markFileStart = 0;          // MarkFileStart
    std::int32_t acquireMode = 0;            // AcquireMode: 0 "Acquire", 1 "Playback"
    std::int32_t playbackRangeType = 0;      // PlaybackRangeType
    std::int32_t playbackRange0 = 0;         // PlaybackRange0, inclusive
    std::int32_t playbackRange1 = 0;         // PlaybackRange1, inclusive

    static constexpr std::int32_t kReparseData = 1;
    static constexpr std::int32_t kMaxPlaybackRate = 10000;

    bool ReparseData() const { return (flags & kReparseData) != 0; }

    // The played file: PlaybackDir, '/', PlaybackFile, or PlaybackFile alone when the
    // directory is empty.
    std::string PlaybackPath() const;

    // Reads the section through ini, already opened on it. Mode is read and thrown away: the
    // record always comes up stopped. A rate below 1 loads as 1.
    static StorageSettings Load(IniFile& ini);
    // Writes every key, the current mode included.
    void Save(IniFile& ini) const;

    friend bool operator==(const StorageSettings&, const StorageSettings&) = default;
};

}  // namespace halvo

#pragma once
// Settings of the recorder inside the sonar (section SonarStorage), passed by value.

#include <cstddef>
#include <cstdint>
#include <string>

namespace halvo {

class IniFile;

struct RecorderConfig {
    static constexpr std::size_t kRecordFileChars = 59;  // a field of 60 with its terminator
    // Bit 1: send everything at the first connection even without a change of link count.
    static constexpr std::int32_t kFlagFirstConnection = 1;
    // Bit 2: the sonar has a recorder; only then are its commands sent.
    static constexpr std::int32_t kFlagRecorderOn = 2;

    std::string recordFile;           // RecordFile
    std::int32_t masterEnable = 0;    // MasterEnable
    std::int32_t playbackEnable = 0;  // PlaybackEnable
    std::int32_t flags = 1;           // Flags

    static RecorderConfig Load(IniFile& ini);
    void Save(IniFile& ini) const;

    friend bool operator==(const RecorderConfig&, const RecorderConfig&) = default;
};

}  // namespace halvo

#pragma once
// The states of the storage processor and the words the storage page shows for them.

#include <cstdint>
#include <string>
#include <string_view>

namespace halvo {

enum StorageState : std::int32_t {
    StateRecord = 0,
    StatePlayback = 1,
    StateEndOfFile = 2,
    StateError = 3,
    StateIdleRecord = 4,
    StateIdlePlayback = 5,
    // Shown when set, but nothing sets it: a paused file shows "PLAYBACK".
    StatePause = 6,
};

// "RECORD", "PLAYBACK", "END OF FILE", "ERROR", "IDLE_R", "IDLE_PB", "PAUSE", else "??????".
std::string_view StorageStateWord(std::int32_t state);

// The main window's file pane: "R:%03d", "Playback", "File:IDLE", "EOF" or "Record:OFF".
std::string StoragePaneText(std::int32_t state, std::int32_t fileNumber);

}  // namespace halvo

#include "storage/StorageState.h"

#include <cstdio>

namespace halvo {

std::string_view StorageStateWord(std::int32_t state) {
    switch (state) {
        case StateRecord:
            return "RECORD";
        case StatePlayback:
            return "PLAYBACK";
        case StateEndOfFile:
            return "END OF FILE";
        case StateError:
            return "ERROR";
        case StateIdleRecord:
            return "IDLE_R";
        case StateIdlePlayback:
            return "IDLE_PB";
        case StatePause:
            return "PAUSE";
        default:
            return "??????";
    }
}

std::string StoragePaneText(std::int32_t state, std::int32_t fileNumber) {
    switch (state) {
        case StateRecord: {
            char text[24];
            std::snprintf(text, sizeof text, "R:%03d", fileNumber);
            return text;
        }
        case StatePlayback:
            return "Playback";
        case StateIdlePlayback:
            return "File:IDLE";
        case StateEndOfFile:
            return "EOF";
        default:
            return "Record:OFF";
    }
}

}  // namespace halvo

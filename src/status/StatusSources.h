#pragma once
// What status and alerts learn from other parts of the program, plugged in by the application
// as plain functions so that this library depends on none of them. An empty function stands
// for a part that is not there: its text is empty, its number the "nothing known" value given
// beside it.

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "core/TraceHeader.h"
#include "storage/StorageControl.h"
#include "storage/StorageStatus.h"

namespace halvo {

// Where one sonar's channels sit among the absolute channels.
struct SonarChannels {
    int firstChannel = -1;  // -1: no such sonar
    int channels = 0;
};

// The latest state of one display's processing chain.
struct DisplayState {
    int channel = -1;            // absolute channel the display shows; -1 none
    int bottomSample = 0;        // tracked bottom, samples from the start of the trace
    double trackedAltitude = 0;  // metres, with its sign
    float reflection = 0;        // reflection coefficient of the newest line
};

// The words of the sonar's last system status reply (message 40).
using SystemStatusWords = std::array<std::int32_t, 25>;

struct StatusSources {
    using HeaderText = std::function<std::string(const ConstTraceHeaderView&)>;

    // The navigation formatters: position, time, speed and course, attitude.
    HeaderText positionText;
    HeaderText timeText;
    HeaderText speedText;
    HeaderText attitudeText;

    // Sonar 0 is the sub-bottom ("SB"), 1 the low side-scan ("SL"), 2 the high ("SH").
    std::function<SonarChannels(int sonar)> sonar;
    // Displays 0 to 9.
    std::function<DisplayState(int display)> display;
    // Nothing until a reply has come.
    std::function<std::optional<SystemStatusWords>()> systemStatus;
    // 2 good, 1 data without a position, 0 nothing; empty counts as 0.
    std::function<int()> navStatus;
    // Empty counts as live.
    std::function<bool()> isPlaybackMode;
    // Empty counts as a recorder without a folder (freeMB -1).
    std::function<StorageStatus()> storageStatus;
};

// Plugs the recorder in: playback mode and free space both come from it.
inline void PlugStorage(StatusSources& sources, StorageControl& storage) {
    sources.isPlaybackMode = [&storage] { return storage.isPlaybackMode(); };
    sources.storageStatus = [&storage] { return storage.getStatus(); };
}

// What the ping text needs of one stored display line.
struct PingView {
    std::span<const std::uint8_t> header;  // the trace header, 240 bytes
    int bottomSample = 0;
    float reflection = 0;
};

}  // namespace halvo

#pragma once
// Alert limits and enables, kept in section Status beside the status items. A plain record,
// copied whole by the bus thread and the beep thread when its change counter moves.

#include <cstdint>
#include <span>
#include <string_view>

namespace halvo {

class IniFile;

// One bit number serves as the enable bit in `AlertFlags` and as the alert bit in the alert
// word. AlertBeep is only an enable: it never appears in the word.
enum AlertBit : std::uint32_t {
    AlertRoll = 0x1,
    AlertPitch = 0x2,
    AlertAltitude = 0x4,
    AlertHot = 0x8,
    AlertLeak = 0x10,
    AlertDisk = 0x20,
    AlertNav = 0x40,
    AlertAdcClip = 0x80,
    AlertBeep = 0x100,
    AlertOverflow = 0x200,
    AlertNoPitchRoll = 0x10000,
    AlertNoSvs = 0x20000,
    AlertNoPressure = 0x40000,
};

// The three sensor watches, tested per window rather than per trace.
inline constexpr std::uint32_t kSensorAlertBits = AlertNoPitchRoll | AlertNoSvs | AlertNoPressure;

struct AlertBitInfo {
    std::uint32_t bit;
    std::string_view word;   // in the alert text, leading blank included; empty for the beep
    std::string_view label;  // the page's check box
};
// Every bit in bit order.
std::span<const AlertBitInfo> AlertBitTable();

struct AlertSettings {
    std::int32_t alertFlags = 0;
    std::int32_t altitudeDisplay = 0;  // -1 the trace's altimeter, 0 to 9 a display's tracking
    float altitudeWarning = 10.0f;     // metres
    float rollMin = 0;
    float rollMax = 0;
    float pitchMin = 0;
    float pitchMax = 0;
    float temperatureMax = 0;
    std::int32_t minDiskFree = 10;  // MB
    std::int32_t miscMin = 0;
    std::int32_t miscMax = 32767;
    std::int32_t miscChan = 4;
    std::int32_t beepInterval = 0;  // ms
    std::int32_t beepTone = 2000;   // Hz
    std::int32_t beepDuration = 1000;

    static AlertSettings Load(IniFile& ini);
    void Save(IniFile& ini) const;

    friend bool operator==(const AlertSettings&, const AlertSettings&) = default;
};

}  // namespace halvo

#pragma once
// The operator's choice of status items and the eight custom fields, section Status. A plain
// record: it crosses threads as a whole copy taken from StatusControl.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace halvo {

class IniFile;

// Bits of `Flags`: which items the status line and the ping text show.
enum StatusItem : std::uint32_t {
    ItemPressure = 0x1,
    ItemPitchRoll = 0x2,
    ItemLatLong = 0x4,
    ItemSBGain = 0x10,
    ItemCourseSpeed = 0x20,
    ItemMark = 0x40,
    ItemTime = 0x200,
    ItemOverflowCheck = 0x400,
    ItemWaterTemp = 0x800,
    ItemDepthEstimate = 0x1000,
    ItemSBPing = 0x2000,
    ItemSSLPing = 0x4000,
    ItemSSHPing = 0x8000,
    ItemSBSignal = 0x10000,
    ItemSSLSignal = 0x20000,
    ItemSSHSignal = 0x40000,
    ItemSoundVelocity = 0x80000,
    ItemPulseID = 0x100000,
    ItemBottleTemp = 0x200000,
    ItemSystemStatus = 0x400000,
    ItemTotalDepth = 0x800000,
    ItemReflectionCoef = 0x1000000,
    ItemCTD = 0x2000000,
};

struct StatusItemLabel {
    std::uint32_t bit;
    std::string_view label;  // as the status page shows it
};
// Every item bit with its page label, in table order.
std::span<const StatusItemLabel> StatusItemLabels();

struct CustomField {
    // Buffer sizes of the two texts, terminator included: at most 39 and 31 characters are kept.
    static constexpr std::size_t kLabelBytes = 40;
    static constexpr std::size_t kDescriptionBytes = 32;

    std::int32_t enable = 0;
    std::int32_t field = 169;  // header byte offset; odd selects 16 bits at offset - 1
    std::int32_t channel = 0;  // -1 for any channel
    std::string label;         // "gain,offset,width,digits|text"
    std::string description;

    friend bool operator==(const CustomField&, const CustomField&) = default;
};

struct StatusSettings {
    static constexpr int kCustomCount = 8;

    StatusSettings();

    std::int32_t flags = 0;
    std::array<CustomField, kCustomCount> custom;
    std::int32_t fontSize = 22;
    std::int32_t statusLines = 1;

    // Field n as it stands before the operator touches it: channel n, a label made of
    // "1,0,1,0|" and the default description. n outside 0 to 7 gives field 0's defaults.
    static CustomField DefaultCustom(int n);

    // Every key in record order; missing keys give the defaults, texts are cut to their buffers.
    static StatusSettings Load(IniFile& ini);
    void Save(IniFile& ini) const;

    friend bool operator==(const StatusSettings&, const StatusSettings&) = default;
};

// Cuts a text to what a buffer of `bytes` bytes holds, terminator included.
std::string CutToBuffer(std::string_view text, std::size_t bytes);

}  // namespace halvo

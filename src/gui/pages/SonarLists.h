#pragma once
// The choices the sonar and QC pages offer, as value and text pairs for the list fields. The
// texts are the sonar's own and are shown exactly as written, trailing blanks included.

#include <cstdint>

#include "gui/editors/FieldEditor.h"

namespace halvo::sonarlists {

inline constexpr ListEntry kSubsystems[] = {{0, "SB"}, {20, "SSL"}, {21, "SSH"}, {22, "SSX"}};

inline constexpr ListEntry kWindowUnits[] = {{0, "Samples"}, {1, "milliseconds"}, {2, "Meters"}};

inline constexpr ListEntry kRangeOrRate[] = {{0, "Hz"}, {1, "Meters"}};

inline constexpr ListEntry kTrigger[] = {
    {0, "Internal"}, {1, "External"}, {2, "Coupled"}, {4, "Linked"}};

inline constexpr ListEntry kDataType[] = {{0, "Envelope"}, {1, "Analytic"}, {2, "Raw"}};

// Multiplexer words: one nibble per input, the same choice for all eight.
inline constexpr ListEntry kSpecialOptions[] = {
    {static_cast<std::int32_t>(0x11111111u), "MUX:Main ADCs"},
    {static_cast<std::int32_t>(0x22222222u), "MUX:Diagnostic ADCs"},
    {static_cast<std::int32_t>(0x44444444u), "Mux:3 (Unused)"},
    {static_cast<std::int32_t>(0x88888888u), "Mux:4 (Unused)"}};

// Traces kept: every one up to every eighth.
inline constexpr ListEntry kFrameDecimators[] = {{1, "1X"}, {2, "2X"}, {3, "3X"}, {4, "4X"},
                                                 {5, "5X"}, {6, "6X"}, {7, "7X"}, {8, "8X"}};

// Samples per pixel, in powers of two: a long window must still fit a display's rows.
inline constexpr ListEntry kPixelDecimators[] = {
    {1, "1X"},   {2, "2X"},     {4, "4X"},     {8, "8X"},     {16, "16X"},     {32, "32X"},
    {64, "64X"}, {128, "128X"}, {256, "256X"}, {512, "512X"}, {1024, "1024X"}, {2048, "2048X"}};

inline constexpr ListEntry kQCSource[] = {{0, "Disabled"}, {1, "Network Q"}, {2, "Disk Q"}};

inline constexpr ListEntry kQCSubsample[] = {{0, "Max Value"}, {1, "Average  "}, {2, "None     "}};

// Two names share the mask 2; the first of them is the one shown.
inline constexpr ListEntry kQCBlending[] = {
    {255, "Everything"},   {257, "MPX Fore"},   {2, "MPX Aft"},     {3, "MPX Blended"},
    {513, "SAS Fore (0)"}, {2, "SAS 1"},        {4, "SAS 2"},       {8, "SAS 3"},
    {16, "SAS 4"},         {32, "SAS Aft (5)"}, {63, "SAS Blended"}};

inline constexpr ListEntry kAcquireFilter[] = {
    {0, "All Sources"}, {1, "Acquire Only"}, {2, "Store and Forward Only"}, {4, "QC Only"}};

// The text of a value in a table, or null when the table lacks it.
inline const char* TextOf(std::span<const ListEntry> table, std::int32_t value) {
    for (const ListEntry& e : table) {
        if (e.text == nullptr || e.text[0] == '\0') break;
        if (e.value == value) return e.text;
    }
    return nullptr;
}

}  // namespace halvo::sonarlists

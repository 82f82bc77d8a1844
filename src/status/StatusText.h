#pragma once
// The operator's status line and the ping text of one stored line, made from the status
// record, the chosen items and what the rest of the program reports.

#include <cstddef>
#include <cstdint>
#include <string>

#include "app/GeneralValues.h"
#include "status/StatusRecord.h"
#include "status/StatusSettings.h"
#include "status/StatusSources.h"

namespace halvo {

inline constexpr const char* kNoSelectedStatus = "NO SELECTED STATUS";
inline constexpr const char* kNoPingData = "NO DATA";

// The value shown for a signal: `ADC Max` in thousandths of full scale, 1000 and above is "MAX".
int SignalPermille(std::uint32_t adcMax);

// The main status line, items in their fixed order; "NO SELECTED STATUS" when nothing shows.
std::string BuildStatusLine(const StatusRecord& record, const StatusSettings& settings,
                            const GeneralValues& general, const StatusSources& sources);

// The ping text of one line, to fit a buffer of `limit` bytes (terminator included): an item
// that does not fit ends the text, and no part of an item is written. "NO DATA" for no line.
std::string BuildPingText(const PingView* ping, std::size_t limit, const StatusSettings& settings,
                          const GeneralValues& general, const StatusSources& sources);

}  // namespace halvo

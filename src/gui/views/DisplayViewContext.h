#pragma once
// What the display windows need from the rest of the program, handed in by whoever assembles
// it: the display records, the general settings, the timer guard shared with the display drain,
// ticks for the redraw budget, the operator's boxes, the status formatter and the main window's
// message area. Views take references to these and make nothing of their own.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace halvo {

class DisplayProcessingSet;
class GeneralSettings;
class OperatorPrompts;
class SonarDataCacheElement;
class SystemCoordinator;
class TickSource;

struct DisplayViewContext {
    DisplayProcessingSet& displays;
    GeneralSettings& general;
    SystemCoordinator& coordinator;
    TickSource& ticks;
    OperatorPrompts& prompts;
    // The status formatter: the header fields of a line within limit characters. May be empty.
    std::function<std::string(std::size_t limit, const SonarDataCacheElement* line)> pingText;
    // The status line's `Flags`, which pick the cursor's sample and depth items.
    std::function<std::uint32_t()> statusFlags;
    // The main window's message area. May be empty.
    std::function<void(const std::string& text)> mainMessage;
};

}  // namespace halvo

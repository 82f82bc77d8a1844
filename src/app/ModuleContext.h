#pragma once
// What a module may use of the running system, and nothing more: settings through the
// coordinator, the program's clock and event log, the operator's notices, both buses, and the
// finished display lines on the window side of the display timer. Handed to a module when it is
// made, so a module never reaches for the system object itself.

#include <functional>

namespace halvo {

class DisplayDocumentIF;
class EventLog;
class MessageProcessor;
class Notifier;
class ProgramClock;
class SystemCoordinator;

struct ModuleContext {
    SystemCoordinator& coordinator;
    ProgramClock& clock;
    EventLog& log;
    Notifier& notices;
    MessageProcessor& dataBus;
    MessageProcessor& commandBus;
    // Every finished line, shared, on the display timer's thread; a sink leaves again before
    // it is destroyed.
    std::function<void(DisplayDocumentIF*)> attachLines;
    std::function<void(DisplayDocumentIF*)> detachLines;
    std::function<bool()> isPlayback;
};

}  // namespace halvo

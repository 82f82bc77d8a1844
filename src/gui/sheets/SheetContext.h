#pragma once
// What the pages of both sheets share: the application words (the Enter flag, the timer's
// re-entrancy count), the operator's message boxes and the enable table.

namespace halvo {

class EnableTable;
class OperatorPrompts;
class SystemCoordinator;

struct SheetContext {
    SystemCoordinator& coordinator;
    OperatorPrompts& prompts;
    EnableTable& enables;
};

}  // namespace halvo

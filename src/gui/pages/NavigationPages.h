#pragma once
// Puts the network, navigation and devices pages into the sheets, over the system's
// subsystems.

namespace halvo {

class CfgSheet;
class SetupSheet;
class System;
struct SheetContext;

// `setup` may be null: the devices page of the setup sheet is then left out.
void AddNavigationPages(CfgSheet& sheet, SetupSheet* setup, System& system, SheetContext& context);

}  // namespace halvo

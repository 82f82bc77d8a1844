#pragma once
// Puts the pages of storage, logs, alerts and status into the "Status And Control" sheet, each
// in its slot and wired to the system's own objects.

namespace halvo {

class CfgSheet;
class System;
struct SheetContext;

void AddRecordPages(CfgSheet& sheet, System& system, SheetContext& context);

}  // namespace halvo

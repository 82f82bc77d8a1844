#include "gui/pages/RecordPages.h"

#include "app/ProgramClock.h"
#include "core/MessageHub.h"
#include "core/MessageProcessor.h"
#include "display/DisplayProcessingSet.h"
#include "display/DisplayQueue.h"
#include "gui/pages/CfgStorage.h"
#include "gui/pages/SetupAlert.h"
#include "gui/pages/SetupLogs.h"
#include "gui/pages/SetupStatus.h"
#include "gui/sheets/CfgSheet.h"
#include "status/StatusDataProcessor.h"
#include "system/System.h"

namespace halvo {

void AddRecordPages(CfgSheet& sheet, System& system, SheetContext& context) {
    CfgStorage::Sources storage;
    storage.tick = [&system] { return system.Clock().Tick(); };
    storage.sonarQueue = [&system] { return system.Hub().DataBus().QueueDepth(); };
    storage.displayQueue = [&system] { return system.Displays().Queue().Waiting(); };
    sheet.AddPage(new CfgStorage(context, system.Storage(), std::move(storage)),
                  CfgSheet::CfgStorage);

    sheet.AddPage(new SetupAlert(context, system.StatusSettings(),
                                 [&system] { return system.Status().alertText(); }),
                  CfgSheet::SetupAlert);
    sheet.AddPage(new SetupStatus(context, system.StatusSettings()), CfgSheet::SetupStatus);
    sheet.AddPage(new SetupLogs(context, system.Logging(), system.Log()), CfgSheet::SetupLogs);
}

}  // namespace halvo

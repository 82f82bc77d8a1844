#include "gui/pages/NavigationPages.h"

#include "app/IniFile.h"
#include "app/SystemCoordinator.h"
#include "gui/pages/CfgDevices.h"
#include "gui/pages/SetupDevices.h"
#include "gui/pages/SetupNav.h"
#include "gui/pages/SetupTelemetry.h"
#include "gui/sheets/CfgSheet.h"
#include "gui/sheets/SetupSheet.h"
#include "net/NetworkSettings.h"
#include "storage/StorageControl.h"
#include "system/System.h"

namespace halvo {

namespace {

// The addresses of the interface unit and of the towed unit belong to the installation.
SetupTelemetry::Addresses InstallationAddresses(const SystemCoordinator& coordinator) {
    IniFile ini(coordinator);
    ini.Open("HalvoConfig", SystemCoordinator::kConfigFile);
    SetupTelemetry::Addresses a;
    a.interfaceUnit = ini.ReadString("InterfaceUnitAddress", "192.168.1.91");
    a.towedUnit = ini.ReadString("TowedUnitAddress", NetworkSettings::kDefaultSonarHost);
    return a;
}

}  // namespace

void AddNavigationPages(CfgSheet& sheet, SetupSheet* setup, System& system, SheetContext& context) {
    sheet.AddPage(new CfgDevices(context, system.General(), system.Status()), CfgSheet::CfgDevices);
    sheet.AddPage(new SetupTelemetry(context, system.Network(), system.Hub(), system.Clock(),
                                     InstallationAddresses(system.Coordinator())),
                  CfgSheet::SetupTelemetry);
    StorageControl& storage = system.Storage();
    sheet.AddPage(new SetupNav(context, {system.Navigation(), system.General(), system.Stamping(),
                                         system.SerialInput(),
                                         [&storage] { return storage.isPlaybackMode(); }}),
                  CfgSheet::SetupNav);
    if (setup != nullptr)
        setup->AddPage(new SetupDevices(context, system.General(), system.Status()));
}

}  // namespace halvo

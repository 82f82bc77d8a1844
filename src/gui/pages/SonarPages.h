#pragma once
// The sonar pages of the "Status And Control" sheet, made once the configuration is known: one
// page per sonar (or the side-scan unit's page), the sonar's recorder and sensors where the
// configuration has them, and the QC page. Call after the system has started up.

#include <QString>
#include <string>

#include "gui/dialogs/MainOptions.h"

namespace halvo {

class CfgSheet;
class SonarIF;
class System;
struct SheetContext;
struct SonarConfig;

void AddSonarPages(CfgSheet& sheet, System& system, SheetContext& context);

// A sonar tab bears the sonar's name; a sonar without one is called by its subsystem ("SB",
// "SSL" ...), so that the wizard finds it, and failing that "Sonar <index>".
QString SonarPageCaption(const std::string& name, const SonarConfig& record, int index);

// The options dialog's sonar side: the number of sonars, their numbering and channel counts,
// and in-bottle storage, read from and written to the sonar model.
MainOptionsStore::SonarAccess SonarOptionsAccess(SonarIF& sonar);

}  // namespace halvo

#pragma once
// What the recorder is told by the rest of the program: how played records are prepared, which
// traces make bathymetry, and the snapshots the per-file log writes (navigation, sensors, and
// each sonar's settings beside what its traces say).

#include "storage/StorageDataProcessor.h"

namespace halvo {

class DisplayStateReader;
class EventLog;
class GeneralSettings;
class LoggingControl;
class Notifier;
class ProgramClock;
class SonarIF;
class StatusDataProcessor;

struct RecorderWiring {
    GeneralSettings& general;
    const DisplayStateReader& displays;
    ProgramClock& clock;
    StatusDataProcessor& status;
    EventLog& events;
    LoggingControl& logging;
    Notifier& notifier;
    // The sonar model is made at start-up, after the recorder: the hooks follow the pointer.
    const SonarIF* const& sonar;
};

StorageDataProcessor::Hooks MakeRecorderHooks(const RecorderWiring& parts);

}  // namespace halvo

#pragma once
// What status and alerts are told by the rest of the program: the navigation texts, the sonars'
// channels, the displays' bottom, the system status reply, navigation and the recorder.

#include "status/StatusSources.h"

namespace halvo {

class DisplayStateReader;
class GeneralSettings;
class SegyDataProcessor;
class SonarIF;
class StorageControl;

struct StatusWiring {
    StorageControl& storage;
    SegyDataProcessor& stamping;
    GeneralSettings& general;
    const DisplayStateReader& displays;
    // The sonar model is made at start-up, after the wiring: the sources follow the pointer.
    const SonarIF* const& sonar;
};

StatusSources MakeStatusSources(const StatusWiring& parts);

}  // namespace halvo

#include "system/SystemSequence.h"

namespace halvo {

const char* ComponentName(Component c) {
    switch (c) {
        case Component::Extensions:
            return "extensions";
        case Component::General:
            return "general";
        case Component::Displays:
            return "displays";
        case Component::Stamping:
            return "stamping";
        case Component::Navigation:
            return "navigation";
        case Component::Sonar:
            return "sonar";
        case Component::Hub:
            return "hub";
        case Component::Storage:
            return "storage";
        case Component::Logs:
            return "logs";
        case Component::Status:
            return "status";
        case Component::Printers:
            return "printers";
        case Component::Video:
            return "video";
        case Component::Count:
            break;
    }
    return "?";
}

const std::vector<Component>& SystemSequence::ReloadOrder() {
    static const std::vector<Component> order{
        Component::Extensions, Component::General,  Component::Displays, Component::Navigation,
        Component::Sonar,      Component::Hub,      Component::Storage,  Component::Logs,
        Component::Status,     Component::Printers, Component::Video};
    return order;
}

const std::vector<Component>& SystemSequence::SaveOrder() {
    static const std::vector<Component> order{
        Component::Extensions, Component::Displays, Component::Storage,  Component::Logs,
        Component::Status,     Component::General,  Component::Printers, Component::Navigation,
        Component::Sonar,      Component::Hub,      Component::Video};
    return order;
}

// The data bus ends up with the display processor, the stamping processor, the recorder and the
// status processor in that order, because each attaches when it starts.
const std::vector<Component>& SystemSequence::StartOrder() {
    static const std::vector<Component> order{
        Component::General, Component::Displays, Component::Stamping, Component::Sonar,
        Component::Hub,     Component::Storage,  Component::Status,   Component::Printers,
        Component::Logs,    Component::Video};
    return order;
}

void SystemSequence::Run(const std::vector<Component>& order, std::function<void()> Slots::*slot,
                         const char* what) {
    for (Component c : order) {
        auto& fn = slots_[static_cast<int>(c)].*slot;
        if (!fn) continue;
        trace_.push_back(std::string(what) + " " + ComponentName(c));
        fn();
    }
}

void SystemSequence::ReloadAll() {
    Run(ReloadOrder(), &Slots::reload, "reload");
}
void SystemSequence::SaveAll() {
    Run(SaveOrder(), &Slots::save, "save");
}
void SystemSequence::StartAll() {
    Run(StartOrder(), &Slots::start, "start");
}

}  // namespace halvo

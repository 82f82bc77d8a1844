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
        case Component::Capture:
            return "capture";
        case Component::Count:
            break;
    }
    return "?";
}

const std::vector<Component>& SystemSequence::ReloadOrder() {
    static const std::vector<Component> order{
        Component::Extensions, Component::General,  Component::Displays, Component::Navigation,
        Component::Sonar,      Component::Hub,      Component::Storage,  Component::Logs,
        Component::Status,     Component::Printers, Component::Video,    Component::Capture};
    return order;
}

const std::vector<Component>& SystemSequence::SaveOrder() {
    static const std::vector<Component> order{
        Component::Extensions, Component::Displays, Component::Storage,  Component::Logs,
        Component::Status,     Component::General,  Component::Printers, Component::Navigation,
        Component::Sonar,      Component::Hub,      Component::Video,    Component::Capture};
    return order;
}

// The data bus ends up with the display processor, the stamping processor, the recorder and the
// status processor in that order, because each attaches when it starts.
const std::vector<Component>& SystemSequence::StartOrder() {
    static const std::vector<Component> order{
        Component::General, Component::Displays, Component::Stamping, Component::Sonar,
        Component::Hub,     Component::Storage,  Component::Status,   Component::Printers,
        Component::Logs,    Component::Video,    Component::Capture};
    return order;
}

void SystemSequence::Run(const std::vector<Component>& order, std::function<void()> Slots::*slot,
                         void (SystemModule::*step)(), const char* what, bool reverse) {
    auto one = [&](Component c) {
        static const std::function<void()> none;
        const auto& fn = slot != nullptr ? slots_[static_cast<int>(c)].*slot : none;
        const auto& registered = modules_[static_cast<int>(c)];
        if (!fn && registered.empty()) return;
        trace_.push_back(std::string(what) + " " + ComponentName(c));
        if (!reverse && fn) fn();
        // Copied: a module may register another while it runs.
        const std::vector<SystemModule*> modules = registered;
        if (reverse) {
            for (auto it = modules.rbegin(); it != modules.rend(); ++it) ((*it)->*step)();
        } else {
            for (SystemModule* m : modules) (m->*step)();
        }
        if (reverse && fn) fn();
    };
    if (reverse) {
        for (auto it = order.rbegin(); it != order.rend(); ++it) one(*it);
    } else {
        for (Component c : order) one(c);
    }
}

void SystemSequence::ReloadAll() {
    Run(ReloadOrder(), &Slots::reload, &SystemModule::Load, "reload");
}
void SystemSequence::SaveAll() {
    Run(SaveOrder(), &Slots::save, &SystemModule::Save, "save");
}
void SystemSequence::StartAll() {
    Run(StartOrder(), &Slots::start, &SystemModule::Start, "start");
}
void SystemSequence::StopAll() {
    Run(StartOrder(), nullptr, &SystemModule::Stop, "stop", true);
}

}  // namespace halvo

#pragma once
// The fixed orders in which the application reloads, saves, starts and stops its subsystems.
// Each component fills the slots it has (an empty slot does nothing) and may carry registered
// modules, which run after the slot in the order they were added. Keeping the orders in one table
// makes them visible and testable.

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "app/SystemModule.h"

namespace halvo {

enum class Component {
    Extensions,
    General,
    Displays,
    Stamping,
    Navigation,
    Sonar,
    Hub,
    Storage,
    Logs,
    Status,
    Printers,
    Video,
    Capture,
    Count
};

const char* ComponentName(Component c);

class SystemSequence {
  public:
    struct Slots {
        std::function<void()> reload;
        std::function<void()> save;
        std::function<void()> start;
    };

    Slots& operator[](Component c) { return slots_[static_cast<int>(c)]; }

    void ReloadAll();
    void SaveAll();
    void StartAll();
    // The reverse of the start order; modules of one component in the reverse of their adding.
    void StopAll();

    void Add(Component c, SystemModule& module) {
        modules_[static_cast<int>(c)].push_back(&module);
    }

    static const std::vector<Component>& ReloadOrder();
    static const std::vector<Component>& SaveOrder();
    static const std::vector<Component>& StartOrder();

    // Names of the steps that ran, in order, for tests and the start-up log.
    std::vector<std::string> Trace() const { return trace_; }
    void ClearTrace() { trace_.clear(); }

  private:
    void Run(const std::vector<Component>& order, std::function<void()> Slots::*slot,
             void (SystemModule::*step)(), const char* what, bool reverse = false);

    std::array<Slots, static_cast<int>(Component::Count)> slots_{};
    // Kept apart from the slots, which the wiring assigns whole.
    std::array<std::vector<SystemModule*>, static_cast<int>(Component::Count)> modules_{};
    std::vector<std::string> trace_;
};

}  // namespace halvo

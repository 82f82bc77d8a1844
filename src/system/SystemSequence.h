#pragma once
// The fixed orders in which the application reloads, saves and starts its subsystems. Each
// subsystem fills the slots it has; an empty slot is a subsystem this build does not have and
// its step does nothing. Keeping the orders in one table makes them visible and testable.

#include <array>
#include <functional>
#include <string>
#include <vector>

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

    static const std::vector<Component>& ReloadOrder();
    static const std::vector<Component>& SaveOrder();
    static const std::vector<Component>& StartOrder();

    // Names of the steps that ran, in order, for tests and the start-up log.
    std::vector<std::string> Trace() const { return trace_; }
    void ClearTrace() { trace_.clear(); }

  private:
    void Run(const std::vector<Component>& order, std::function<void()> Slots::*slot,
             const char* what);

    std::array<Slots, static_cast<int>(Component::Count)> slots_{};
    std::vector<std::string> trace_;
};

}  // namespace halvo

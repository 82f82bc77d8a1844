#pragma once
// Makes a settings file active for the length of a scope and puts the previous one back at the
// end, however the scope is left. Load and save of a named file run inside one of these.

#include <string>
#include <string_view>

#include "app/SystemCoordinator.h"

namespace halvo {

class ActiveProfileScope {
  public:
    ActiveProfileScope(SystemCoordinator& coordinator, std::string_view name)
        : coordinator_(coordinator), previous_(coordinator.ActiveProfile()) {
        coordinator_.SetActiveProfile(name);
    }
    ~ActiveProfileScope() { coordinator_.SetActiveProfile(previous_); }

    ActiveProfileScope(const ActiveProfileScope&) = delete;
    ActiveProfileScope& operator=(const ActiveProfileScope&) = delete;

    const std::string& Previous() const { return previous_; }

  private:
    SystemCoordinator& coordinator_;
    std::string previous_;
};

}  // namespace halvo

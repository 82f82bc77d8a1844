#include "app/SystemCoordinator.h"

namespace halvo {

void SystemCoordinator::SetActiveProfile(std::string_view name) {
    name = name.substr(0, kMaxProfileNameChars);
    std::lock_guard lock(mutex_);
    if (activeProfile_ != name) activeProfile_.assign(name);
}

std::string SystemCoordinator::ActiveProfile() const {
    std::lock_guard lock(mutex_);
    return activeProfile_;
}

void SystemCoordinator::SetDefaultsFile(std::string_view name) {
    std::lock_guard lock(mutex_);
    defaultsFile_.assign(name);
}

std::string SystemCoordinator::DefaultsFile() const {
    std::lock_guard lock(mutex_);
    return defaultsFile_;
}

}  // namespace halvo

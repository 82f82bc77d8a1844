#pragma once
// The few words the whole application shares: which settings file is active, which defaults file
// the operator is working with, the run flag every long-lived thread tests, the display timer's
// re-entrancy count and the enter-key flag of the settings pages. One instance lives in the
// System object, which hands out references.

#include <atomic>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

#include "core/RunFlag.h"

namespace halvo {

class SystemCoordinator {
  public:
    // Longest active settings file name kept; longer names are cut.
    static constexpr std::size_t kMaxProfileNameChars = 199;

    // The helpers' profile at program start, until start-up makes the configuration file active.
    static constexpr std::string_view kStartProfile = "./Defaults.ini";
    static constexpr std::string_view kConfigFile = "./HalvoConfig.ini";
    static constexpr std::string_view kDefaultsFile = "./HalvoDefaults.Hni";
    // Active during shut-down, so that late writes never land in the operator's defaults.
    static constexpr std::string_view kShutdownFile = "./temp.ini";

    // Every settings read or write that names no file goes to this one.
    void SetActiveProfile(std::string_view name);
    std::string ActiveProfile() const;

    // The operator's current defaults file, the one the file commands load and save.
    void SetDefaultsFile(std::string_view name);
    std::string DefaultsFile() const;

    RunFlag& Running() { return run_; }
    const RunFlag& Running() const { return run_; }

    // The display timer's guard against running inside itself. Enter returns the depth before.
    int EnterDisplayTimer() { return timerDepth_.fetch_add(1, std::memory_order_acq_rel); }
    void LeaveDisplayTimer() { timerDepth_.fetch_sub(1, std::memory_order_acq_rel); }
    int DisplayTimerDepth() const { return timerDepth_.load(std::memory_order_acquire); }

    // Set when the Enter key went down; a settings page takes it to tell Enter from focus loss.
    void SetEnterFlag() { enter_.store(1, std::memory_order_release); }
    int EnterFlag() const { return enter_.load(std::memory_order_acquire); }
    // Reads and clears in one step.
    int TakeEnterFlag() { return enter_.exchange(0, std::memory_order_acq_rel); }

  private:
    mutable std::mutex mutex_;
    std::string activeProfile_{kStartProfile};
    std::string defaultsFile_{kDefaultsFile};
    RunFlag run_;
    std::atomic<int> timerDepth_{0};
    std::atomic<int> enter_{0};
};

}  // namespace halvo

#pragma once
// The flags word every settings owner keeps: bit 1 started, bit 2 loaded. Start loads only if
// nothing has loaded yet, so a start after an explicit load does not read twice; save is allowed
// only once something was loaded, so a save after a failed start never writes defaults over the
// operator's real settings.

#include <atomic>
#include <cstdint>

namespace halvo {

class SettingsLifecycle {
  public:
    static constexpr std::uint32_t kStarted = 1;
    static constexpr std::uint32_t kLoaded = 2;

    // Does nothing if already started. Otherwise marks started and calls load() unless loaded.
    template <class Load>
    void Start(Load&& load) {
        const std::uint32_t before = flags_.fetch_or(kStarted, std::memory_order_acq_rel);
        if ((before & kStarted) != 0) return;
        if ((before & kLoaded) == 0) load();
    }

    // Called by every load. Returns true the first time, for owners that read some keys only once.
    bool MarkLoaded() {
        return (flags_.fetch_or(kLoaded, std::memory_order_acq_rel) & kLoaded) == 0;
    }

    bool IsStarted() const { return (Flags() & kStarted) != 0; }
    bool IsLoaded() const { return (Flags() & kLoaded) != 0; }
    bool MaySave() const { return IsLoaded(); }
    std::uint32_t Flags() const { return flags_.load(std::memory_order_acquire); }

  private:
    std::atomic<std::uint32_t> flags_{0};
};

}  // namespace halvo

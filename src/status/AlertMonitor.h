#pragma once
// The alert word and the little state behind it: the trace tests, the sensor silence windows
// and the overflow watch. Driven by the status processor on the data bus thread; the word is
// read from any thread.

#include <atomic>
#include <cstdint>
#include <string>

#include "app/GeneralValues.h"
#include "core/TraceHeader.h"
#include "status/AlertSettings.h"
#include "status/StatusSources.h"

namespace halvo {

class AlertMonitor {
  public:
    // A sensor counts as silent when it sent nothing for one whole window of this length.
    static constexpr std::uint32_t kWindowMs = 5000;

    std::uint32_t Word() const { return word_.load(std::memory_order_acquire); }
    std::uint32_t Silent() const { return silent_; }
    // A settings change clears the word at once.
    void Clear() { word_.store(0, std::memory_order_release); }

    // Rebuilds the word from one live trace: the enabled tests in their order, OR the sensors
    // found silent at the last window's end.
    std::uint32_t Evaluate(const AlertSettings& settings, const ConstTraceHeaderView& trace,
                           const GeneralValues& general, std::int32_t overflow,
                           const StatusSources& sources);

    // Bits 16 to 18: a sensor message arrived.
    void Seen(std::uint32_t bits) { seen_ |= bits & kSensorAlertBits; }

    // Starts the first window at this tick.
    void StartWindow(std::uint32_t tick) { lastWindow_ = tick; }
    // True once the tick has left lastWindow .. lastWindow + kWindowMs; a tick that went
    // backward counts as out.
    bool WindowDue(std::uint32_t tick) const;
    // Ends the window. After a settings change the word is cleared and every sensor counts as
    // seen, so a watch switched on mid-window gets a whole window before it can raise.
    void CloseWindow(std::uint32_t tick, const AlertSettings& settings, bool settingsChanged);

    // "ALERTS: " and the words of the set bits, or " No Alerts".
    static std::string AlertText(std::uint32_t word);

  private:
    std::atomic<std::uint32_t> word_{0};
    std::uint32_t seen_ = 0;
    std::uint32_t silent_ = 0;
    std::uint32_t lastWindow_ = 0;
    std::int32_t lastOverflow_ = 0;
};

}  // namespace halvo

#pragma once
// The one warning the sonar page gives: on the analytic-only configuration, a change of data
// format away from the page is allowed but warned about, once per run. The page asks here and
// shows the box; nothing is refused.

#include <atomic>
#include <string_view>

namespace halvo {

class DataFormatWarning {
  public:
    static constexpr std::string_view kText =
        "Warning.  Storing Data in a format other than Analytic is UNACCEPTABLE for many "
        "applications.  Change the format back when done with your diagnostic.";
    static constexpr std::string_view kTitle = "You will not be warned again";

    // True exactly once per run: the first time the operator changes the data format while the
    // configuration is the one that stores analytic data only.
    bool OnOperatorChange(int configType, int oldDataType, int newDataType);
    bool Shown() const { return shown_.load(std::memory_order_acquire); }

  private:
    std::atomic<bool> shown_{false};
};

}  // namespace halvo

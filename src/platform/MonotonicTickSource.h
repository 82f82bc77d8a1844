#pragma once
// Both the tick count and the fine counter come from the monotonic clock, which never steps
// when someone sets the system time.

#include "platform/TickSource.h"

namespace halvo {

class MonotonicTickSource final : public TickSource {
  public:
    std::uint32_t TickCount() override;
    bool PerformanceCounter(std::int64_t& count) override;
    bool PerformanceFrequency(std::int64_t& frequency) override;
};

}  // namespace halvo

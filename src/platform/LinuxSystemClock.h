#pragma once
// The real wall clock. This is the only code in the program that can set the machine's time, so
// it lives in its own library (halvo_platform_sysclock) that only the operator program links;
// tests use FakeSystemClock and cannot reach this class at all.

#include "platform/SystemClock.h"

namespace halvo {

class LinuxSystemClock final : public SystemClock {
  public:
    SystemTimeReading Read() override;

    // clock_settime(CLOCK_REALTIME). Fails (false) without CAP_SYS_TIME, which is the normal case.
    // A date that is not a real calendar date is refused before the call.
    bool Set(const UtcDateTime& utc) override;
};

}  // namespace halvo

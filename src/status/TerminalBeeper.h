#pragma once
// The alert tone on Linux without touching any device: a terminal bell on stderr when stderr
// is a terminal, then a sleep for the tone's length so the beep thread keeps its pace. The
// pitch cannot be chosen this way and is ignored. After Interrupt the waits end at once.

#include <condition_variable>
#include <mutex>

#include "status/Beeper.h"

namespace halvo {

class TerminalBeeper final : public Beeper {
  public:
    void Beep(int toneHz, int durationMs) override;
    void Interrupt() override;

  private:
    std::mutex mutex_;
    std::condition_variable wake_;
    bool interrupted_ = false;
};

}  // namespace halvo

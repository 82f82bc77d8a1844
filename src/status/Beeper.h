#pragma once
// The alert tone. One call sounds one tone and returns when it is over, so the caller's pace
// includes the tone's length.

namespace halvo {

class Beeper {
  public:
    virtual ~Beeper() = default;
    // Blocks for about durationMs.
    virtual void Beep(int toneHz, int durationMs) = 0;
    // Cuts a running tone short; called when its owner stops. Safe from any thread.
    virtual void Interrupt() {}
};

}  // namespace halvo

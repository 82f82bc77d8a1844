#pragma once
// Somewhere to play sound: mono 16-bit samples at a fixed rate. The alarm tone is made once, in
// the status layer, and goes to the sound system or, for a record of what sounded, to a file.

#include <cstdint>
#include <span>

namespace halvo {

class PcmOutput {
  public:
    static constexpr int kRate = 48000;

    virtual ~PcmOutput() = default;
    // Opens the output if need be. False when there is nowhere to play (no sound device): the
    // caller falls back to another way of being heard.
    virtual bool Open() = 0;
    // Queues the samples for playing; blocks while the output's buffer is full, so a long sound
    // written piece by piece plays at its own pace. False on a failure.
    virtual bool Write(std::span<const std::int16_t> samples) = 0;
    // Returns once everything written has been heard (cut short with `drop`).
    virtual void Finish(bool drop) = 0;
};

}  // namespace halvo

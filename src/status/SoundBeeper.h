#pragma once
// The alert tone through a sound output: a sine of the asked pitch and length with short ramps
// at both ends (no clicks), played piece by piece so that Interrupt cuts it within a few tens of
// milliseconds. With no sound output to be had, the terminal bell does instead. Either way the
// call takes the tone's length, which is the beep thread's pace.

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>

#include "status/Beeper.h"
#include "status/TerminalBeeper.h"

namespace halvo {

class PcmOutput;

class SoundBeeper final : public Beeper {
  public:
    static constexpr int kPieceMs = 50;
    static constexpr int kRampMs = 5;
    static constexpr double kLevel = 0.5;  // of full scale

    explicit SoundBeeper(std::unique_ptr<PcmOutput> output);
    ~SoundBeeper() override;

    void Beep(int toneHz, int durationMs) override;
    void Interrupt() override;

    // Samples `first` onward of a tone of `total` samples into `out`.
    static void Tone(int toneHz, std::int64_t first, std::int64_t total,
                     std::span<std::int16_t> out);

  private:
    bool Interrupted();

    std::unique_ptr<PcmOutput> output_;
    TerminalBeeper fallback_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool interrupted_ = false;
};

}  // namespace halvo

#pragma once
// Sound written to a WAV file instead of a loudspeaker: every tone is appended, and the header
// always tells the length so far, so the file can be played or measured while the program runs.
// For a record of what the operator would have heard, and for checking the alarm without a
// sound card.

#include <cstdio>
#include <string>

#include "platform/PcmOutput.h"

namespace halvo {

class WavFileOutput final : public PcmOutput {
  public:
    explicit WavFileOutput(std::string path) : path_(std::move(path)) {}
    ~WavFileOutput() override;
    WavFileOutput(const WavFileOutput&) = delete;
    WavFileOutput& operator=(const WavFileOutput&) = delete;

    bool Open() override;
    bool Write(std::span<const std::int16_t> samples) override;
    void Finish(bool drop) override;

    std::uint32_t SamplesWritten() const { return samples_; }

  private:
    bool WriteHeader();

    std::string path_;
    std::FILE* file_ = nullptr;
    std::uint32_t samples_ = 0;
};

}  // namespace halvo

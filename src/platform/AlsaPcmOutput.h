#pragma once
// The sound system's default output. A workstation started from a desktop has no terminal to
// ring, so the alarm goes here; a machine without a sound device is not an error, the open just
// fails (quietly: the library's own complaints are kept off the operator's terminal).

#include <string>

#include "platform/PcmOutput.h"

typedef struct _snd_pcm snd_pcm_t;

namespace halvo {

class AlsaPcmOutput final : public PcmOutput {
  public:
    explicit AlsaPcmOutput(std::string device = "default") : device_(std::move(device)) {}
    ~AlsaPcmOutput() override;
    AlsaPcmOutput(const AlsaPcmOutput&) = delete;
    AlsaPcmOutput& operator=(const AlsaPcmOutput&) = delete;

    bool Open() override;
    bool Write(std::span<const std::int16_t> samples) override;
    void Finish(bool drop) override;

  private:
    void Close();

    std::string device_;
    snd_pcm_t* pcm_ = nullptr;
};

}  // namespace halvo

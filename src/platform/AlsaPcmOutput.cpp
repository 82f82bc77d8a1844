#include "platform/AlsaPcmOutput.h"

#include <alsa/asoundlib.h>

namespace halvo {

namespace {

// ALSA prints its own errors to stderr by default; a missing card is an expected case here.
void QuietErrors(const char*, int, const char*, int, const char*, ...) {}

constexpr unsigned kLatencyUs = 100000;  // short enough that a cut tone stops promptly

}  // namespace

AlsaPcmOutput::~AlsaPcmOutput() {
    Close();
}

void AlsaPcmOutput::Close() {
    if (pcm_ != nullptr) {
        snd_pcm_close(pcm_);
        pcm_ = nullptr;
    }
}

bool AlsaPcmOutput::Open() {
    if (pcm_ != nullptr) return true;
    snd_lib_error_set_handler(&QuietErrors);
    if (snd_pcm_open(&pcm_, device_.c_str(), SND_PCM_STREAM_PLAYBACK, 0) < 0) {
        pcm_ = nullptr;
        return false;
    }
    if (snd_pcm_set_params(pcm_, SND_PCM_FORMAT_S16_LE, SND_PCM_ACCESS_RW_INTERLEAVED, 1, kRate, 1,
                           kLatencyUs) < 0) {
        Close();
        return false;
    }
    return true;
}

bool AlsaPcmOutput::Write(std::span<const std::int16_t> samples) {
    if (!Open()) return false;
    std::size_t done = 0;
    int recoveries = 0;
    while (done < samples.size()) {
        const snd_pcm_sframes_t n =
            snd_pcm_writei(pcm_, samples.data() + done, samples.size() - done);
        if (n > 0) {
            done += static_cast<std::size_t>(n);
            continue;
        }
        // An underrun or a suspend is recovered a few times; anything else closes the device,
        // and the next tone opens it again.
        constexpr int kMaxRecoveries = 3;
        if (n < 0 && ++recoveries <= kMaxRecoveries &&
            snd_pcm_recover(pcm_, static_cast<int>(n), 1) == 0)
            continue;
        Close();
        return false;
    }
    return true;
}

void AlsaPcmOutput::Finish(bool drop) {
    if (pcm_ == nullptr) return;
    if (drop) {
        snd_pcm_drop(pcm_);
    } else {
        snd_pcm_drain(pcm_);
    }
    // Drain and drop leave the stream stopped; the next tone needs it prepared.
    snd_pcm_prepare(pcm_);
}

}  // namespace halvo

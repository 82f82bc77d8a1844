#include "status/SoundBeeper.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numbers>
#include <vector>

#include "platform/PcmOutput.h"

namespace halvo {

SoundBeeper::SoundBeeper(std::unique_ptr<PcmOutput> output) : output_(std::move(output)) {}

SoundBeeper::~SoundBeeper() = default;

void SoundBeeper::Tone(int toneHz, std::int64_t first, std::int64_t total,
                       std::span<std::int16_t> out) {
    const double step = 2.0 * std::numbers::pi * toneHz / PcmOutput::kRate;
    const double ramp = PcmOutput::kRate * kRampMs / 1000.0;
    for (std::size_t i = 0; i < out.size(); ++i) {
        const auto n = first + static_cast<std::int64_t>(i);
        const double edge = static_cast<double>(std::min(n, total - 1 - n));
        const double gain = std::clamp(edge / ramp, 0.0, 1.0) * kLevel * 32767.0;
        out[i] = static_cast<std::int16_t>(std::lround(gain * std::sin(step * n)));
    }
}

bool SoundBeeper::Interrupted() {
    std::lock_guard lock(mutex_);
    return interrupted_;
}

void SoundBeeper::Beep(int toneHz, int durationMs) {
    if (durationMs <= 0) return;
    if (Interrupted()) return;
    if (!output_ || !output_->Open()) {
        fallback_.Beep(toneHz, durationMs);
        return;
    }
    const auto start = std::chrono::steady_clock::now();
    const std::int64_t total = static_cast<std::int64_t>(PcmOutput::kRate) * durationMs / 1000;
    std::vector<std::int16_t> piece(PcmOutput::kRate * kPieceMs / 1000);
    bool cut = false;
    for (std::int64_t at = 0; at < total; at += static_cast<std::int64_t>(piece.size())) {
        if (Interrupted()) {
            cut = true;
            break;
        }
        const auto n = static_cast<std::size_t>(
            std::min<std::int64_t>(static_cast<std::int64_t>(piece.size()), total - at));
        Tone(std::clamp(toneHz, 0, PcmOutput::kRate / 2), at, total, {piece.data(), n});
        if (!output_->Write({piece.data(), n})) break;
    }
    output_->Finish(cut);
    // An output that does not play in real time (a file) still takes the tone's length.
    std::unique_lock lock(mutex_);
    wake_.wait_until(lock, start + std::chrono::milliseconds(durationMs),
                     [this] { return interrupted_; });
}

void SoundBeeper::Interrupt() {
    {
        std::lock_guard lock(mutex_);
        interrupted_ = true;
    }
    wake_.notify_all();
    fallback_.Interrupt();
}

}  // namespace halvo

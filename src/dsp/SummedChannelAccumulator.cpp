#include "dsp/SummedChannelAccumulator.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "core/MessageTypes.h"
#include "core/TraceHeader.h"

namespace halvo {

SonarMessage* SummedChannelAccumulator::Offer(const SonarMessage& message, int c,
                                              std::uint32_t mask) {
    if (c < 0 || c > 31 || (mask & (1u << c)) == 0) return nullptr;
    if (message.type() != MsgTrace) return nullptr;
    const std::span<const std::uint8_t> payload = message.Payload();
    if (payload.size() < kTraceHeaderSize) return nullptr;
    const ConstTraceHeaderView h(payload);
    const std::int32_t ping = h.GetInt(TraceField::PingNumber);
    const std::int32_t format = h.GetInt(TraceField::DataFormat);
    const std::int32_t size = message.size();
    if (!hasPing_ || ping != ping_ || format != format_ || size != size_) {
        seen_ = 0;
        hasPing_ = true;
        ping_ = ping;
        format_ = format;
        size_ = size;
        count_ = (payload.size() - kTraceHeaderSize) / 2;
        sum_.assign(count_, 0.0f);
    }
    seen_ |= 1u << c;
    const int weighting = h.GetInt(TraceField::WeightingFactor);
    const float s = static_cast<float>(std::pow(2.0, -weighting) / std::popcount(mask));
    // Samples are read as 16-bit values whatever the format says.
    const std::uint8_t* x = payload.data() + kTraceHeaderSize;
    const std::size_t have = std::min(count_, (payload.size() - kTraceHeaderSize) / 2);
    for (std::size_t j = 0; j < have; ++j) sum_[j] += s * LoadLE<std::int16_t>(x + 2 * j);
    if ((seen_ & mask) != mask) return nullptr;

    float peak = 0.0f;
    for (float v : sum_) peak = std::max(peak, std::fabs(v));
    int w2 = 0;
    if (peak != 0.0f && std::isfinite(peak)) {
        const double e = std::floor(std::log10(32760.0 / peak) / std::log10(2.0));
        w2 = static_cast<int>(std::clamp(e, -32768.0, 32767.0));
    }
    const std::size_t outPayload = kTraceHeaderSize + 2 * count_;
    if (!output_ || output_.BlockSize() != kMessageHeaderSize + outPayload) {
        output_ = SonarMessage::Allocate(outPayload);
        if (!output_) return nullptr;
    }
    const std::span<std::uint8_t> block = output_.Block();
    const std::span<const std::uint8_t> wire = message.Wire();
    std::memcpy(block.data(), wire.data(), kMessageHeaderSize + kTraceHeaderSize);
    output_.set_size(static_cast<std::int32_t>(outPayload));
    const std::span<std::uint8_t> out = output_.Payload();
    TraceHeaderView(out).SetInt(TraceField::WeightingFactor, w2);
    const double scale = std::pow(2.0, w2);
    std::uint8_t* dst = out.data() + kTraceHeaderSize;
    for (std::size_t j = 0; j < count_; ++j) {
        const double v = std::clamp(static_cast<double>(sum_[j]) * scale, -32767.0, 32767.0);
        StoreLE<std::int16_t>(dst + 2 * j, static_cast<std::int16_t>(v));
    }
    // The next offer starts a new sum, whatever its ping.
    hasPing_ = false;
    return &output_;
}

}  // namespace halvo

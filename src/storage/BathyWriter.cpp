#include "storage/BathyWriter.h"

#include <array>
#include <cmath>

#include "core/ByteOrder.h"
#include "core/SonarMessage.h"
#include "core/TraceHeader.h"

namespace halvo {

BathyWriter::~BathyWriter() {
    Idle(false);
}

std::int32_t BathyWriter::DepthMm(const BathyTrace& t) {
    const double mm = t.bottomSample / t.sampleRate * t.soundSpeed * 0.5 * 1000.0;
    // A zero rate or a wild bottom must not reach the conversion as infinity.
    if (!std::isfinite(mm) || mm >= 2147483648.0 || mm <= -2147483649.0) return 0;
    return static_cast<std::int32_t>(mm);
}

void BathyWriter::Trace(const SonarMessage& trace, const Source& source) {
    if (!source) return;
    const std::span<const std::uint8_t> h = trace.Payload();
    if (h.size() < kTraceHeaderSize) return;
    const std::optional<BathyTrace> shown = source(trace);
    if (!shown) return;
    if (!file_) {
        file_ = std::fopen(path_.c_str(), "wb");
        if (!file_) return;  // silent; tried again at the next trace
        std::setvbuf(file_, nullptr, _IONBF, 0);
    }
    std::array<std::uint8_t, kRecordSize> record{};
    StoreLE<std::int32_t>(record.data() + 0, kMarker);
    StoreLE<std::int32_t>(record.data() + 4, GetLE<std::int32_t>(h, 8));
    StoreLE<std::int32_t>(record.data() + 8, GetLE<std::int32_t>(h, 84));
    StoreLE<std::int32_t>(record.data() + 12, GetLE<std::int32_t>(h, 80));
    StoreLE<std::int32_t>(record.data() + 16, DepthMm(*shown));
    StoreLE<std::int32_t>(record.data() + 20, GetLE<std::int32_t>(h, 136));
    std::fwrite(record.data(), 1, record.size(), file_);
}

void BathyWriter::Idle(bool saveBathy) {
    if (saveBathy || !file_) return;
    std::fclose(file_);
    file_ = nullptr;
}

}  // namespace halvo

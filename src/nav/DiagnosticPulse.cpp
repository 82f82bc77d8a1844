#include "nav/DiagnosticPulse.h"

#include "platform/ParallelPort.h"

namespace halvo {

void DiagnosticPulse::Run(std::int32_t enable, std::int32_t address) {
    if (enable == 0 || address <= 0 || address > 0xFFFD) return;
    const auto base = static_cast<std::uint16_t>(address);
    // One lock, so the three port threads never interleave their halves of a pulse.
    std::lock_guard lock(mutex_);
    if (preparedAddress_ != address) {
        port_.Write(static_cast<std::uint16_t>(base + 2), 0x00);
        preparedAddress_ = address;
    }
    port_.Write(base, 0x0F);
    port_.Write(base, 0xF0);
}

}  // namespace halvo

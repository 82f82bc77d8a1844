#include "core/AcquireFilter.h"

#include "core/MessageTypes.h"

namespace halvo {

namespace {
std::uint64_t Pack(std::int32_t count, std::uint32_t value) {
    return (static_cast<std::uint64_t>(static_cast<std::uint32_t>(count)) << 32) | value;
}
}  // namespace

AcquireFilter::AcquireFilter() : packed_(Pack(-1, 0)) {}

void AcquireFilter::Set(std::uint32_t value) {
    std::uint64_t old = packed_.load();
    while (!packed_.compare_exchange_weak(
        old, Pack(static_cast<std::int32_t>(static_cast<std::uint32_t>(old >> 32) + 1u), value))) {
    }
}

std::uint32_t AcquireFilter::Value() const {
    return static_cast<std::uint32_t>(packed_.load());
}

std::int32_t AcquireFilter::ChangeCount() const {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(packed_.load() >> 32));
}

bool AcquireFilter::Refresh(FilterSnapshot& snapshot) const {
    const std::uint64_t p = packed_.load(std::memory_order_acquire);
    const auto count = static_cast<std::int32_t>(static_cast<std::uint32_t>(p >> 32));
    if (count == snapshot.count) return false;
    snapshot.count = count;
    snapshot.value = static_cast<std::uint32_t>(p);
    return true;
}

bool AcquireFilter::Passes(std::uint32_t F, std::uint8_t direction, std::uint16_t type) {
    const std::uint32_t cls = AcquireClass(direction);
    if (F == 0) return true;
    if ((cls & F) != 0) return true;
    if (cls != 1) return false;
    if (type == MsgTrace) return false;
    // "QC Only" keeps ordinary non-trace messages such as sensors; the others shed them.
    return (F & FilterQCOnly) != 0;
}

}  // namespace halvo

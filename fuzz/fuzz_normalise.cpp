// Feeds arbitrary bytes as one message (header and payload) through normalisation, and the
// packed-sample decoder over every code, checking that nothing reads or writes out of bounds.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/Normalise.h"
#include "core/PackedSamples.h"
#include "core/TraceHeader.h"

namespace {
std::int64_t Utc() {
    return 1700000000;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace halvo;
    if (size > 4 * 1024 * 1024) return 0;
    SonarMessage m = SonarMessage::FromBytes({data, size});
    if (!m) return 0;
    SonarMessage n = Normalise(m, Utc);
    const SonarMessage& out = n ? n : m;
    // Whatever came out must describe itself within its own block.
    if (out.Payload().size() > out.BlockSize()) __builtin_trap();
    ConstTraceHeaderView(out.Payload()).GetInt(TraceField::Samples);

    if (size >= 3) {
        const int code = data[0] % 16;
        const std::size_t count = (static_cast<std::size_t>(data[1]) << 4) | (data[2] & 0x0F);
        std::vector<std::uint8_t> target(data[2] & 0x10 ? count * 4 : count);
        Unpack(target, {data + 3, size - 3}, count, code);
    }
    return 0;
}

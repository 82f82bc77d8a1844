// The first two bytes pick the message type, the rest is the payload. Every reader must stay
// inside the payload and refuse what is too short.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "core/SensorPayloads.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    // A small table of the types worth reaching; any other value falls through to all readers.
    static constexpr std::uint16_t kTypes[] = {2000, 2002, 2020, 2040, 2060, 2070, 2080, 2090, 2091,
                                               2100, 2101, 2111, 3001, 3002, 3003, 3004, 8060};
    const std::uint16_t raw = static_cast<std::uint16_t>(data[0] | (data[1] << 8));
    const std::uint16_t type = kTypes[raw % (sizeof kTypes / sizeof kTypes[0])];
    const halvo::Payload p(data + 2, size - 2);

    halvo::ContainerTime container;
    container.AfterMessage(type, p);
    switch (type) {
        case 2000:
            (void)halvo::ReadSerial(p);
            break;
        case 2002:
            if (auto r = halvo::ReadNmea(p); r && r->text.size() > p.size()) std::abort();
            break;
        case 2020:
            (void)halvo::ReadPitchRoll(p);
            break;
        case 2040:
            (void)halvo::ReadAnalog(p);
            break;
        case 2060:
            (void)halvo::ReadPressure(p);
            break;
        case 2070:
            (void)halvo::ReadAltitude(p);
            break;
        case 2080:
            (void)halvo::ReadDvl(p);
            break;
        case 2090:
            if (auto r = halvo::ReadSituation(p); r && r->course.valid &&
                                                  std::isfinite(r->course.value) &&
                                                  (r->course.value < 0 || r->course.value >= 360))
                std::abort();
            break;
        case 2091:
            (void)halvo::ReadCompactSituation(p);
            break;
        case 2111:
            if (container.Pending().has_value() != (p.size() == 12)) std::abort();
            break;
        case 3001:
            (void)halvo::ReadAttitude(p);
            break;
        case 3002:
            (void)halvo::ReadEnvironment(p);
            break;
        case 3003:
            (void)halvo::ReadRange(p);
            break;
        case 3004:
            (void)halvo::ReadPosition(p);
            break;
        default:
            (void)halvo::ReadAuxiliary(type, p);
            break;
    }
    return 0;
}

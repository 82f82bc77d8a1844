#include "display/DisplayUnits.h"

#include "app/GeneralValues.h"

namespace halvo {

std::int32_t ToSamples(double x, float rate, const GeneralValues& general) {
    switch (general.UserUnits) {
        case 1:
            return TruncCount(rate * x / 1000.0);
        case 2:
            return TruncCount(x);
        default:
            return TruncCount(rate * x * 2.0 / general.WaterSoundSpeed);
    }
}

double FromSamples(double n, float rate, const GeneralValues& general) {
    switch (general.UserUnits) {
        case 1:
            return n * 1000.0 / rate;
        case 2:
            return n;
        default:
            return n * general.WaterSoundSpeed / (2.0 * rate);
    }
}

}  // namespace halvo

#include "stamping/SeawaterDepth.h"

#include <algorithm>
#include <cmath>

namespace halvo {

// Coefficients of the UNESCO 1980 equation of state of seawater, as published with it.

double SeawaterDepth::DensityAtSurface(double s, double t) {
    // Standard mean ocean water.
    const double rhoW =
        999.842594 +
        t * (6.793952e-2 +
             t * (-9.095290e-3 + t * (1.001685e-4 + t * (-1.120083e-6 + t * 6.536332e-9))));
    const double a =
        8.24493e-1 + t * (-4.0899e-3 + t * (7.6438e-5 + t * (-8.2467e-7 + t * 5.3875e-9)));
    const double b = -5.72466e-3 + t * (1.0227e-4 + t * -1.6546e-6);
    const double c = 4.8314e-4;
    const double s15 = s * std::sqrt(s);
    return rhoW + a * s + b * s15 + c * s * s;
}

double SeawaterDepth::SecantBulkModulus(double s, double t, double p) {
    const double s15 = s * std::sqrt(s);
    // Pure water terms.
    const double kW =
        19652.21 + t * (148.4206 + t * (-2.327105 + t * (1.360477e-2 + t * -5.155288e-5)));
    const double aW = 3.239908 + t * (1.43713e-3 + t * (1.16092e-4 + t * -5.77905e-7));
    const double bW = 8.50935e-5 + t * (-6.12293e-6 + t * 5.2787e-8);
    // Salinity terms.
    const double k0 = kW + s * (54.6746 + t * (-0.603459 + t * (1.09987e-2 + t * -6.1670e-5))) +
                      s15 * (7.944e-2 + t * (1.6483e-2 + t * -5.3009e-4));
    const double a = aW + s * (2.2838e-3 + t * (-1.0981e-5 + t * -1.6078e-6)) + s15 * 1.91075e-4;
    const double b = bW + s * (-9.9348e-7 + t * (2.0816e-8 + t * 9.1697e-10));
    return k0 + p * (a + p * b);
}

double SeawaterDepth::Density(double s, double t, double p) {
    return DensityAtSurface(s, t) / (1.0 - p / SecantBulkModulus(s, t, p));
}

std::int32_t SeawaterDepth::DepthMillimetres(std::int32_t pressurePsiTimes1000, double temperatureC,
                                             double mountingOffsetMetres) {
    const double psi = pressurePsiTimes1000 / 1000.0;
    if (psi <= 0.0) return 0;
    const double t = std::clamp(temperatureC, 0.0, 50.0);
    const double bars = (psi - kAtmospherePsi) / kPsiPerBar;
    const double rho = Density(kSalinity, t, bars);
    double d = 0.0;
    // A pressure far outside the sea's range can drive the polynomial to nonsense; only a
    // positive finite density gives a depth.
    if (std::isfinite(rho) && rho > 0.0) {
        d = ((psi - kAtmospherePsi) * 100000.0 / kAtmospherePsi) / 9.8 / rho;
    }
    d += mountingOffsetMetres;
    if (std::isnan(d)) d = 0.0;  // a NaN offset from a hand-edited file
    d = std::clamp(d, -kLimitMetres, kLimitMetres);
    return static_cast<std::int32_t>(std::trunc(d * 1000.0));
}

}  // namespace halvo

#pragma once
// Depth of the towed body from its pressure sensor. The density of the water column comes from
// the UNESCO 1980 equation of state of seawater at a fixed salinity of 35; the sensor gives
// gauge-plus-atmosphere pressure in PSI.

#include <cstdint>

namespace halvo {

class SeawaterDepth {
  public:
    static constexpr double kSalinity = 35.0;
    static constexpr double kAtmospherePsi = 14.7;
    static constexpr double kPsiPerBar = 14.5;
    static constexpr double kLimitMetres = 10000.0;

    // Density at one atmosphere, kg/m^3. s in practical salinity units, t in degrees C.
    static double DensityAtSurface(double s, double t);
    // Secant bulk modulus K(s, t, p), bars; p is the pressure above one atmosphere in bars.
    static double SecantBulkModulus(double s, double t, double p);
    // In-situ density, kg/m^3: rho0 / (1 - p / K).
    static double Density(double s, double t, double p);

    // `Depth mM` for a stamped `Pressure PSI * 1000` value and a temperature in degrees C.
    // Non-positive pressure gives 0 whatever the mounting offset; otherwise the depth plus the
    // mounting offset is held to +-10000 m before it is turned into millimetres.
    static std::int32_t DepthMillimetres(std::int32_t pressurePsiTimes1000, double temperatureC,
                                         double mountingOffsetMetres);
};

}  // namespace halvo

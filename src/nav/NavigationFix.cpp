#include "nav/NavigationFix.h"

#include <cmath>

namespace halvo {

std::int32_t WholeDegrees(double ddmm) {
    const double d = std::trunc(ddmm / 100.0);
    if (!std::isfinite(d) || std::fabs(d) > 1e6) return 0;
    return static_cast<std::int32_t>(d);
}

std::string_view EventRecord::Field(std::size_t i) const {
    if (i >= kFields) return {};
    std::string_view f(text.data() + i * kFieldSize, kFieldSize);
    const std::size_t end = f.find('\0');
    return end == std::string_view::npos ? f : f.substr(0, end);
}

}  // namespace halvo

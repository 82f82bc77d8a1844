#include "nav/NavigationFix.h"

namespace halvo {

std::string_view EventRecord::Field(std::size_t i) const {
    if (i >= kFields) return {};
    std::string_view f(text.data() + i * kFieldSize, kFieldSize);
    const std::size_t end = f.find('\0');
    return end == std::string_view::npos ? f : f.substr(0, end);
}

}  // namespace halvo

#pragma once
// Free bytes for this user on the file system that holds a directory; -1 when it cannot be told.

#include <cstdint>
#include <string>

namespace halvo {

std::int64_t FreeBytesAt(const std::string& directory);

}  // namespace halvo

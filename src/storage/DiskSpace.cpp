#include "storage/DiskSpace.h"

#include <sys/statvfs.h>

namespace halvo {

std::int64_t FreeBytesAt(const std::string& directory) {
    struct statvfs st {};
    if (directory.empty() || ::statvfs(directory.c_str(), &st) != 0) return -1;
    return static_cast<std::int64_t>(st.f_bavail) * static_cast<std::int64_t>(st.f_frsize);
}

}  // namespace halvo

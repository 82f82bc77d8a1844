#include "storage/HsfSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace halvo {

FileSource::~FileSource() {
    if (fd_ >= 0) ::close(fd_);
}

std::unique_ptr<FileSource> FileSource::Open(const std::string& path, std::string& error) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        error = std::strerror(errno);
        return nullptr;
    }
    struct stat st {};
    if (::fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
        error = S_ISDIR(st.st_mode) ? "is a directory" : std::strerror(errno);
        ::close(fd);
        return nullptr;
    }
    // The file is read once from start to end.
    ::posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
    return std::unique_ptr<FileSource>(new FileSource(fd));
}

long FileSource::Read(std::span<std::uint8_t> target) {
    for (;;) {
        const ssize_t n = ::read(fd_, target.data(), target.size());
        if (n >= 0) return static_cast<long>(n);
        if (errno != EINTR) return -1;
    }
}

std::int64_t FileSource::Size() const {
    struct stat st {};
    if (::fstat(fd_, &st) != 0) return -1;
    return static_cast<std::int64_t>(st.st_size);
}

long MemorySource::Read(std::span<std::uint8_t> target) {
    const std::size_t n = std::min(target.size(), bytes_.size() - pos_);
    if (n > 0) std::memcpy(target.data(), bytes_.data() + pos_, n);
    pos_ += n;
    return static_cast<long>(n);
}

}  // namespace halvo

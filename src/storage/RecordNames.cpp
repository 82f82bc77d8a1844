#include "storage/RecordNames.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace halvo {

std::string RecordNames::Base(const StorageSettings& settings) {
    if (settings.recordDir.empty()) return settings.recordFile;
    return settings.recordDir + "/" + settings.recordFile;
}

std::string RecordNames::Compose(const std::string& base, int number) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%03d", number);
    return base + digits + ".hsf";
}

RecordNames::Created RecordNames::CreateFirstFree(const std::string& base) {
    Created out;
    for (int number = 0; number <= kLastNumber; ++number) {
        std::string name = Compose(base, number);
        if (name.size() > kMaxNameChars) break;  // every higher number is as long or longer
        const int fd = CreateNew(name);
        if (fd < 0) continue;
        out.fd = fd;
        out.number = number;
        out.name = std::move(name);
        break;
    }
    return out;
}

int RecordNames::CreateNew(const std::string& name) {
    int fd;
    do {
        fd = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    } while (fd < 0 && errno == EINTR);
    return fd;
}

}  // namespace halvo

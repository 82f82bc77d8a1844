#include "app/Profile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "app/ProfileDocument.h"

namespace halvo {

namespace {

enum class Loaded { Ok, Missing, Failed };

Loaded LoadFile(const std::string& path, std::string& bytes) {
    bytes.clear();
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return (errno == ENOENT || errno == ENOTDIR) ? Loaded::Missing : Loaded::Failed;
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) ||
        static_cast<std::size_t>(st.st_size) > Profile::kMaxFileBytes) {
        ::close(fd);
        return Loaded::Failed;
    }
    char buffer[16384];
    for (;;) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 || bytes.size() + static_cast<std::size_t>(n) > Profile::kMaxFileBytes) {
            ::close(fd);
            return Loaded::Failed;
        }
        if (n == 0) break;
        bytes.append(buffer, static_cast<std::size_t>(n));
    }
    ::close(fd);
    return Loaded::Ok;
}

bool WriteAll(int fd, const std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
}

bool WriteInPlace(const std::string& path, const std::string& bytes) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return false;
    const bool ok = WriteAll(fd, bytes);
    return ::close(fd) == 0 && ok;
}

// Write next to the file and rename over it, so that a crash or a reader in between never meets a
// half-written settings file. A symbolic link, or a folder we may not create files in, is written
// in place instead.
bool StoreFile(const std::string& path, const std::string& bytes) {
    struct stat st {};
    const bool exists = ::lstat(path.c_str(), &st) == 0;
    if (exists && !S_ISREG(st.st_mode)) return WriteInPlace(path, bytes);

    std::string temp = path + ".XXXXXX";
    const int fd = ::mkstemp(temp.data());
    if (fd < 0) return WriteInPlace(path, bytes);
    const mode_t mode = exists ? (st.st_mode & 07777) : 0644;
    bool ok = ::fchmod(fd, mode) == 0 && WriteAll(fd, bytes);
    ok = (::close(fd) == 0) && ok;
    if (ok && ::rename(temp.c_str(), path.c_str()) == 0) return true;
    ::unlink(temp.c_str());
    return false;
}

// A name with a NUL in it would reach the system as a different, shorter name.
bool IsUsableName(const std::string& path) {
    return !path.empty() && path.find('\0') == std::string::npos;
}

template <class Edit>
bool EditFile(std::string_view file, Edit&& edit) {
    const std::string path = Profile::NativeName(file);
    if (!IsUsableName(path)) return false;
    std::string bytes;
    if (LoadFile(path, bytes) == Loaded::Failed) return false;
    ProfileDocument doc = ProfileDocument::Parse(bytes);
    if (!edit(doc)) return false;
    return StoreFile(path, doc.Serialise());
}

}  // namespace

std::string Profile::NativeName(std::string_view file) {
    std::string name(file);
    for (char& c : name) {
        if (c == '\\') c = '/';
    }
    return name;
}

std::string Profile::ReadString(std::string_view file, std::string_view section,
                                std::string_view key, std::string_view def, std::size_t maxChars) {
    while (!def.empty() && (def.back() == ' ' || def.back() == '\t')) def.remove_suffix(1);
    std::string result(def.substr(0, maxChars));
    const std::string path = NativeName(file);
    if (!IsUsableName(path)) return result;
    std::string bytes;
    if (LoadFile(path, bytes) != Loaded::Ok) return result;
    const auto value = ProfileDocument::Parse(bytes).Find(section, key);
    if (!value) return result;
    return value->substr(0, maxChars);
}

std::vector<std::string> Profile::SectionNames(std::string_view file) {
    const std::string path = NativeName(file);
    std::string bytes;
    if (!IsUsableName(path) || LoadFile(path, bytes) != Loaded::Ok) return {};
    return ProfileDocument::Parse(bytes).SectionNames();
}

bool Profile::WriteString(std::string_view file, std::string_view section, std::string_view key,
                          std::string_view value) {
    return EditFile(file, [&](ProfileDocument& doc) { return doc.Set(section, key, value); });
}

bool Profile::DeleteKey(std::string_view file, std::string_view section, std::string_view key) {
    return EditFile(file, [&](ProfileDocument& doc) { return doc.RemoveKey(section, key); });
}

bool Profile::DeleteSection(std::string_view file, std::string_view section) {
    return EditFile(file, [&](ProfileDocument& doc) { return doc.RemoveSection(section); });
}

}  // namespace halvo

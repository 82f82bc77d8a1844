#pragma once
// Shared pieces of the storage and display tests: a private temporary directory and a program
// run for its standard output and exit status.

#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace halvo::test {

class TempDir {
  public:
    TempDir() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "halvo-storage-XXXXXX").string();
        if (::mkdtemp(pattern.data())) path_ = pattern;
    }
    ~TempDir() {
        std::error_code ec;
        if (!path_.empty()) std::filesystem::remove_all(path_, ec);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::string& path() const { return path_; }
    std::string File(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

// Standard output of `command` (its standard error dropped); `status` is the exit code, -1 when
// it did not exit.
inline std::string Run(const std::string& command, int* status = nullptr) {
    std::string out;
    FILE* p = ::popen((command + " 2>/dev/null").c_str(), "r");
    if (!p) return out;
    char buf[65536];
    for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, p)) > 0;) out.append(buf, n);
    const int raw = ::pclose(p);
    if (status) *status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    return out;
}

}  // namespace halvo::test

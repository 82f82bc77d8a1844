#pragma once
// Progress on stderr while a large file is read, so that an operator sees the tool is working.
// Files up to 100 MB are quiet; stdout is never touched.

#include <chrono>
#include <cstdint>
#include <string>

namespace halvo::hsf {

class Progress {
  public:
    static constexpr std::int64_t kQuietBytes = 100LL * 1000 * 1000;

    Progress(std::string name, std::int64_t totalBytes);
    ~Progress();
    // Cheap to call for every record; prints at most a few times a second.
    void Update(std::int64_t position) {
        if (active_ && ++calls_ % 256 == 0) Show(position);
    }
    void Done();

  private:
    void Show(std::int64_t position);

    std::string name_;
    std::int64_t total_;
    bool active_;
    bool shown_ = false;
    std::uint32_t calls_ = 0;
    std::chrono::steady_clock::time_point last_;
};

}  // namespace halvo::hsf

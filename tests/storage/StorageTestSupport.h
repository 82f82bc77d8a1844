#pragma once
// Shared pieces of the storage tests: a private temporary directory and a bus whose thread
// does not run, so posted records stay in its queue and can be counted.

#include <unistd.h>

#include <filesystem>
#include <string>

#include "core/AcquireFilter.h"
#include "core/MessageProcessor.h"
#include "core/RunFlag.h"

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

// The bus thread ends at once (the run flag is clear), so nothing is dispatched and the queue
// depth counts every record that playback posted.
class HeldBus {
  public:
    explicit HeldBus(std::size_t capacity)
        : bus_("test-data", run_, filter_, [] { return std::int64_t{1'700'000'000}; }) {
        bus_.Start(capacity);
    }
    MessageProcessor& bus() { return bus_; }
    std::uint32_t Depth() const { return bus_.QueueDepth(); }

  private:
    RunFlag run_;
    AcquireFilter filter_;
    MessageProcessor bus_;
};

}  // namespace halvo::test

#pragma once
// Where the reader's bytes come from: an open file, or a block of memory (tests and fuzzing).

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace halvo {

class HsfSource {
  public:
    virtual ~HsfSource() = default;
    // Up to target.size() bytes; 0 at the end, -1 on an error of the medium.
    virtual long Read(std::span<std::uint8_t> target) = 0;
    // Total size when known, else -1.
    virtual std::int64_t Size() const = 0;
};

// A file opened read-only. Open fails for a missing file, a directory or no permission.
class FileSource final : public HsfSource {
  public:
    ~FileSource() override;
    static std::unique_ptr<FileSource> Open(const std::string& path, std::string& error);
    long Read(std::span<std::uint8_t> target) override;
    std::int64_t Size() const override;

  private:
    explicit FileSource(int fd) : fd_(fd) {}
    int fd_ = -1;
};

// A copy of some bytes, read as if they were a file.
class MemorySource final : public HsfSource {
  public:
    explicit MemorySource(std::span<const std::uint8_t> bytes)
        : bytes_(bytes.begin(), bytes.end()) {}
    long Read(std::span<std::uint8_t> target) override;
    std::int64_t Size() const override { return static_cast<std::int64_t>(bytes_.size()); }

  private:
    std::vector<std::uint8_t> bytes_;
    std::size_t pos_ = 0;
};

}  // namespace halvo

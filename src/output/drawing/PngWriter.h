#pragma once
// A PNG of 8-bit red, green and blue written row by row through libpng, so that a long waterfall
// or printed roll never needs its whole picture in memory. A picture left unfinished (an error,
// or the writer dropped before Finish) is removed: a reader would take it for a whole one.

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

namespace halvo {

class PngWriter {
  public:
    // PNG allows up to 2^31 - 1 each way; nothing here draws that much.
    static constexpr std::uint32_t kMaxSide = 1u << 30;

    PngWriter() = default;
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;
    ~PngWriter();

    // Creates the file and writes the header. False with Error() set on failure.
    bool Open(const std::string& path, std::uint32_t width, std::uint32_t height);
    // One row of width * 3 bytes, top row first.
    bool WriteRow(std::span<const std::uint8_t> rgb);
    // Ends the picture after the last row; false if rows are missing or a write failed.
    bool Finish();

    const std::string& Error() const { return error_; }

  private:
    bool Fail(std::string text);
    void Abandon();

    std::FILE* file_ = nullptr;
    void* png_ = nullptr;   // png_structp, kept out of this header
    void* info_ = nullptr;  // png_infop
    char libraryError_[128] = {};
    std::uint32_t width_ = 0;
    std::uint32_t height_ = 0;
    std::uint32_t rows_ = 0;
    std::string path_;
    std::string error_;
};

}  // namespace halvo

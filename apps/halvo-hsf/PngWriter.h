#pragma once
// A PNG of 8-bit red, green and blue written row by row, so that a long waterfall never needs
// its whole compressed picture in memory. Signature, IHDR, IDAT chunks from one deflate stream,
// IEND; CRCs from zlib.

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <vector>

namespace halvo::hsf {

class PngWriter {
  public:
    // PNG allows up to 2^31 - 1 each way; this tool draws far less.
    static constexpr std::uint32_t kMaxSide = 1u << 30;

    PngWriter() = default;
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;
    ~PngWriter();

    // Creates the file and writes the header. False with Error() set on failure.
    bool Open(const std::string& path, std::uint32_t width, std::uint32_t height);
    // One row of width * 3 bytes, top row first.
    bool WriteRow(std::span<const std::uint8_t> rgb);
    // Ends the stream after the last row; false if rows are missing or a write failed.
    bool Finish();

    const std::string& Error() const { return error_; }

  private:
    bool Chunk(const char type[4], std::span<const std::uint8_t> data);
    bool Deflate(std::span<const std::uint8_t> bytes, bool last);
    bool Fail(std::string text);

    std::FILE* file_ = nullptr;
    void* stream_ = nullptr;  // z_stream, kept out of this header
    std::uint32_t width_ = 0;
    std::uint32_t height_ = 0;
    std::uint32_t rows_ = 0;
    std::vector<std::uint8_t> out_;
    std::string path_;
    std::string error_;
};

}  // namespace halvo::hsf

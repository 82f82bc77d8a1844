#include "halvo-hsf/PngWriter.h"

#include <zlib.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace halvo::hsf {

namespace {

constexpr std::size_t kIdatBytes = 64 * 1024;

void PutBE32(std::uint8_t* p, std::uint32_t v) {
    p[0] = static_cast<std::uint8_t>(v >> 24);
    p[1] = static_cast<std::uint8_t>(v >> 16);
    p[2] = static_cast<std::uint8_t>(v >> 8);
    p[3] = static_cast<std::uint8_t>(v);
}

}  // namespace

PngWriter::~PngWriter() {
    if (stream_) {
        deflateEnd(static_cast<z_stream*>(stream_));
        delete static_cast<z_stream*>(stream_);
    }
    if (file_) {
        // An unfinished picture is worse than none: a reader would take it for a whole one.
        std::fclose(file_);
        std::remove(path_.c_str());
    }
}

bool PngWriter::Fail(std::string text) {
    error_ = std::move(text);
    return false;
}

bool PngWriter::Open(const std::string& path, std::uint32_t width, std::uint32_t height) {
    if (file_) return Fail("already open");
    if (width == 0 || height == 0 || width > kMaxSide || height > kMaxSide) {
        return Fail("picture size out of range");
    }
    if (std::uint64_t{width} * 3 + 1 > 0xFFFFFFFFu) return Fail("picture too wide");
    file_ = std::fopen(path.c_str(), "wb");
    if (!file_) return Fail("cannot create " + path + ": " + std::strerror(errno));
    path_ = path;
    width_ = width;
    height_ = height;
    auto* z = new z_stream{};
    stream_ = z;
    if (deflateInit(z, Z_DEFAULT_COMPRESSION) != Z_OK) return Fail("zlib did not start");
    static constexpr std::uint8_t kSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    if (std::fwrite(kSignature, 1, sizeof kSignature, file_) != sizeof kSignature) {
        return Fail("write failed");
    }
    std::array<std::uint8_t, 13> ihdr{};
    PutBE32(ihdr.data(), width);
    PutBE32(ihdr.data() + 4, height);
    ihdr[8] = 8;  // bits per channel
    ihdr[9] = 2;  // colour type: red, green, blue
    return Chunk("IHDR", ihdr);
}

bool PngWriter::Chunk(const char type[4], std::span<const std::uint8_t> data) {
    std::uint8_t head[8];
    PutBE32(head, static_cast<std::uint32_t>(data.size()));
    std::memcpy(head + 4, type, 4);
    uLong crc = crc32(0L, head + 4, 4);
    if (!data.empty()) crc = crc32(crc, data.data(), static_cast<uInt>(data.size()));
    std::uint8_t tail[4];
    PutBE32(tail, static_cast<std::uint32_t>(crc));
    // An empty chunk (IEND) has no data pointer to hand to fwrite.
    const bool ok =
        std::fwrite(head, 1, 8, file_) == 8 &&
        (data.empty() || std::fwrite(data.data(), 1, data.size(), file_) == data.size()) &&
        std::fwrite(tail, 1, 4, file_) == 4;
    return ok ? true : Fail("write failed: " + path_);
}

bool PngWriter::Deflate(std::span<const std::uint8_t> bytes, bool last) {
    auto* z = static_cast<z_stream*>(stream_);
    // zlib takes a non-const pointer but does not write through it.
    z->next_in = const_cast<Bytef*>(bytes.data());
    z->avail_in = static_cast<uInt>(bytes.size());
    out_.resize(kIdatBytes);
    for (;;) {
        z->next_out = out_.data();
        z->avail_out = static_cast<uInt>(out_.size());
        const int rc = deflate(z, last ? Z_FINISH : Z_NO_FLUSH);
        if (rc == Z_STREAM_ERROR) return Fail("zlib failed");
        const std::size_t produced = out_.size() - z->avail_out;
        if (produced > 0 && !Chunk("IDAT", std::span(out_.data(), produced))) return false;
        if (last ? rc == Z_STREAM_END : (z->avail_in == 0 && z->avail_out != 0)) return true;
    }
}

bool PngWriter::WriteRow(std::span<const std::uint8_t> rgb) {
    if (!file_ || !stream_) return Fail("not open");
    if (rgb.size() != std::size_t{width_} * 3) return Fail("row of the wrong length");
    if (rows_ >= height_) return Fail("more rows than the picture holds");
    static constexpr std::uint8_t kNoFilter[1] = {0};
    if (!Deflate(kNoFilter, false) || !Deflate(rgb, false)) return false;
    ++rows_;
    return true;
}

bool PngWriter::Finish() {
    if (!file_ || !stream_) return Fail("not open");
    if (rows_ != height_) return Fail("picture incomplete");
    if (!Deflate({}, true) || !Chunk("IEND", {})) return false;
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (!closed) {
        std::remove(path_.c_str());
        return Fail("write failed: " + path_);
    }
    return true;
}

}  // namespace halvo::hsf

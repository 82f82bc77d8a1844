#include "output/drawing/PngWriter.h"

#include <png.h>

#include <cerrno>
#include <csetjmp>
#include <cstring>

namespace halvo {

// libpng reports errors by a long jump. Every call into it happens in one of the plain functions
// below, each with its own jump target and nothing in its frame that has a destructor, so a jump
// only ever crosses plain data.
namespace {

void OnError(png_structp png, png_const_charp message) {
    if (auto* text = static_cast<char*>(png_get_error_ptr(png))) {
        std::snprintf(text, 128, "%s", message);
    }
    png_longjmp(png, 1);
}

void OnWarning(png_structp, png_const_charp) {}

bool Start(png_structp png, png_infop info, std::FILE* file, std::uint32_t width,
           std::uint32_t height) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_init_io(png, file);
    png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    return true;
}

bool Row(png_structp png, const std::uint8_t* row) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_write_row(png, row);
    return true;
}

bool End(png_structp png, png_infop info) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_write_end(png, info);
    return true;
}

}  // namespace

PngWriter::~PngWriter() {
    Abandon();
}

void PngWriter::Abandon() {
    if (png_ != nullptr) {
        auto* png = static_cast<png_structp>(png_);
        auto* info = static_cast<png_infop>(info_);
        png_destroy_write_struct(&png, info != nullptr ? &info : nullptr);
        png_ = nullptr;
        info_ = nullptr;
    }
    if (file_ != nullptr) {
        std::fclose(file_);
        file_ = nullptr;
        std::remove(path_.c_str());
    }
}

bool PngWriter::Fail(std::string text) {
    error_ = std::move(text);
    if (libraryError_[0] != '\0') error_ += std::string(": ") + libraryError_;
    return false;
}

bool PngWriter::Open(const std::string& path, std::uint32_t width, std::uint32_t height) {
    if (file_ != nullptr) return Fail("already open");
    if (width == 0 || height == 0 || width > kMaxSide || height > kMaxSide) {
        return Fail("picture size out of range");
    }
    if (std::uint64_t{width} * 3 + 1 > 0xFFFFFFFFu) return Fail("picture too wide");
    file_ = std::fopen(path.c_str(), "wb");
    if (file_ == nullptr) return Fail("cannot create " + path + ": " + std::strerror(errno));
    path_ = path;
    width_ = width;
    height_ = height;
    png_structp png =
        png_create_write_struct(PNG_LIBPNG_VER_STRING, libraryError_, &OnError, &OnWarning);
    if (png == nullptr) return Fail("libpng did not start");
    png_ = png;
    png_infop info = png_create_info_struct(png);
    if (info == nullptr) return Fail("libpng did not start");
    info_ = info;
    if (!Start(png, info, file_, width, height)) return Fail("write failed: " + path_);
    return true;
}

bool PngWriter::WriteRow(std::span<const std::uint8_t> rgb) {
    if (png_ == nullptr || file_ == nullptr) return Fail("not open");
    if (rgb.size() != std::size_t{width_} * 3) return Fail("row of the wrong length");
    if (rows_ >= height_) return Fail("more rows than the picture holds");
    if (!Row(static_cast<png_structp>(png_), rgb.data())) return Fail("write failed: " + path_);
    ++rows_;
    return true;
}

bool PngWriter::Finish() {
    if (png_ == nullptr || file_ == nullptr) return Fail("not open");
    if (rows_ != height_) return Fail("picture incomplete");
    if (!End(static_cast<png_structp>(png_), static_cast<png_infop>(info_))) {
        return Fail("write failed: " + path_);
    }
    auto* png = static_cast<png_structp>(png_);
    auto* info = static_cast<png_infop>(info_);
    png_destroy_write_struct(&png, &info);
    png_ = nullptr;
    info_ = nullptr;
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (!closed) {
        std::remove(path_.c_str());
        return Fail("write failed: " + path_);
    }
    return true;
}

}  // namespace halvo

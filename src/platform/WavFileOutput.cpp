#include "platform/WavFileOutput.h"

#include <algorithm>
#include <array>
#include <vector>

namespace halvo {

namespace {

constexpr std::size_t kHeaderBytes = 44;
// The format's sizes are 32-bit; a file stops growing well before that.
constexpr std::uint32_t kMaxSamples = 0x7FFFFFFFu / 2 - kHeaderBytes;

void Put32(std::uint8_t* p, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) p[i] = static_cast<std::uint8_t>(v >> (8 * i));
}

void Put16(std::uint8_t* p, std::uint16_t v) {
    p[0] = static_cast<std::uint8_t>(v);
    p[1] = static_cast<std::uint8_t>(v >> 8);
}

}  // namespace

WavFileOutput::~WavFileOutput() {
    if (file_ != nullptr) std::fclose(file_);
}

bool WavFileOutput::Open() {
    if (file_ != nullptr) return true;
    file_ = std::fopen(path_.c_str(), "wb");
    if (file_ == nullptr) return false;
    samples_ = 0;
    return WriteHeader();
}

bool WavFileOutput::WriteHeader() {
    std::array<std::uint8_t, kHeaderBytes> h{};
    const std::uint32_t data = samples_ * 2;
    std::copy_n("RIFF", 4, h.begin());
    Put32(&h[4], 36 + data);
    std::copy_n("WAVEfmt ", 8, h.begin() + 8);
    Put32(&h[16], 16);
    Put16(&h[20], 1);  // integer samples
    Put16(&h[22], 1);  // one channel
    Put32(&h[24], kRate);
    Put32(&h[28], kRate * 2);
    Put16(&h[32], 2);
    Put16(&h[34], 16);
    std::copy_n("data", 4, h.begin() + 36);
    Put32(&h[40], data);
    if (std::fseek(file_, 0, SEEK_SET) != 0) return false;
    if (std::fwrite(h.data(), 1, h.size(), file_) != h.size()) return false;
    if (std::fseek(file_, 0, SEEK_END) != 0) return false;
    return std::fflush(file_) == 0;
}

bool WavFileOutput::Write(std::span<const std::int16_t> samples) {
    if (!Open()) return false;
    if (samples.size() > kMaxSamples - samples_) return false;
    std::vector<std::uint8_t> bytes(samples.size() * 2);
    for (std::size_t i = 0; i < samples.size(); ++i)
        Put16(&bytes[2 * i], static_cast<std::uint16_t>(samples[i]));
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size()) return false;
    samples_ += static_cast<std::uint32_t>(samples.size());
    return true;
}

void WavFileOutput::Finish(bool) {
    if (file_ != nullptr) WriteHeader();
}

}  // namespace halvo

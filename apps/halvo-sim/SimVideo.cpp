#include "halvo-sim/SimVideo.h"

#include <turbojpeg.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/ByteOrder.h"
#include "core/MessageTypes.h"

namespace halvo {

SimVideo::SimVideo(int width, int height) : width_(width), height_(height) {}

SimVideo::~SimVideo() {
    if (encoder_) tjDestroy(static_cast<tjhandle>(encoder_));
}

std::vector<std::uint8_t> SimVideo::Picture(std::int32_t n, bool colour) const {
    const std::size_t channels = colour ? 3 : 1;
    std::vector<std::uint8_t> px(static_cast<std::size_t>(width_) * height_ * channels);
    // Sand ripples drifting down the picture, a lamp's fall-off, and a stone passing through.
    const double drift = n * 3.0;
    const double cx = width_ * (0.2 + 0.6 * std::fmod(n * 0.01, 1.0));
    const double cy = height_ * 0.5 + height_ * 0.2 * std::sin(n * 0.05);
    const double radius = std::max(4.0, height_ * 0.08);
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            const double dx = (x - width_ / 2.0) / width_, dy = (y - height_ / 2.0) / height_;
            const double lamp = 1.0 - 1.2 * (dx * dx + dy * dy);
            double v = 110.0 + 40.0 * std::sin((y + drift) * 0.25 + 0.3 * std::sin(x * 0.05));
            const double sx = x - cx, sy = y - cy;
            if (sx * sx + sy * sy < radius * radius) v = 200.0;
            v = std::clamp(v * lamp, 0.0, 255.0);
            const std::size_t at = (static_cast<std::size_t>(y) * width_ + x) * channels;
            if (colour) {
                px[at] = static_cast<std::uint8_t>(v * 0.55);
                px[at + 1] = static_cast<std::uint8_t>(v * 0.85);
                px[at + 2] = static_cast<std::uint8_t>(v);
            } else {
                px[at] = static_cast<std::uint8_t>(v);
            }
        }
    }
    return px;
}

std::vector<SonarMessage> SimVideo::Frame(std::int32_t n, std::int32_t flags, int quality,
                                          std::size_t fragmentBytes) {
    const bool colour = (flags & SimVideoColour) != 0;
    const bool jpeg = (flags & SimVideoNoJpeg) == 0;
    std::vector<std::uint8_t> pixels = Picture(n, colour);
    std::vector<std::uint8_t> bytes;
    if (jpeg) {
        if (!encoder_) encoder_ = tjInitCompress();
        if (!encoder_) return {};
        unsigned char* out = nullptr;
        unsigned long outSize = 0;
        const int rc = tjCompress2(static_cast<tjhandle>(encoder_), pixels.data(), width_, 0,
                                   height_, colour ? TJPF_RGB : TJPF_GRAY, &out, &outSize,
                                   colour ? TJSAMP_420 : TJSAMP_GRAY, std::clamp(quality, 1, 100),
                                   TJFLAG_FASTDCT);
        if (rc != 0 || !out) {
            if (out) tjFree(out);
            return {};
        }
        bytes.assign(out, out + outSize);
        tjFree(out);
    } else {
        bytes = std::move(pixels);
    }
    const std::uint8_t type = static_cast<std::uint8_t>((jpeg ? 0 : 2) + (colour ? 0 : 1));
    fragmentBytes = std::max<std::size_t>(1, fragmentBytes);
    const std::size_t count = (bytes.size() + fragmentBytes - 1) / fragmentBytes;
    std::vector<SonarMessage> out;
    out.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t from = i * fragmentBytes;
        const std::size_t chunk = std::min(fragmentBytes, bytes.size() - from);
        SonarMessage m =
            SonarMessage::Build(MsgVideoFrame, DirReply, SubVideo, 0,
                                static_cast<std::int32_t>(kSimVideoHeaderSize + chunk));
        auto p = m.Payload();
        PutLE<std::int32_t>(p, 8, static_cast<std::int32_t>(bytes.size()));
        PutLE<std::int16_t>(p, 16, static_cast<std::int16_t>(width_));
        PutLE<std::int16_t>(p, 18, static_cast<std::int16_t>(height_));
        PutLE<std::uint8_t>(p, 20, type);
        PutLE<std::int32_t>(p, 24, n);
        PutLE<std::int16_t>(p, 28, static_cast<std::int16_t>(i));
        PutLE<std::int16_t>(p, 30, static_cast<std::int16_t>(count));
        std::memcpy(p.data() + kSimVideoHeaderSize, bytes.data() + from, chunk);
        out.push_back(std::move(m));
    }
    return out;
}

}  // namespace halvo

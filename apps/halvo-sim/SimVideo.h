#pragma once
// The towed camera: a small synthetic picture of the sea floor passing below, sent as JPEG or
// raw pixels in video frame messages, split into fragments behind a 48-byte frame header.

#include <cstdint>
#include <vector>

#include "core/SonarMessage.h"

namespace halvo {

constexpr std::size_t kSimVideoHeaderSize = 48;
constexpr std::size_t kSimVideoFragmentBytes = 16384;

// Flags of the video control message.
enum SimVideoFlags : std::int32_t {
    SimVideoEnable = 1,
    SimVideoColour = 2,
    SimVideoNoJpeg = 4,
};

class SimVideo {
  public:
    SimVideo(int width, int height);
    ~SimVideo();
    SimVideo(const SimVideo&) = delete;
    SimVideo& operator=(const SimVideo&) = delete;

    // Pixels of frame `n`: RGB when colour, else one grey byte each; rows top to bottom.
    std::vector<std::uint8_t> Picture(std::int32_t n, bool colour) const;

    // The messages of one frame. `flags` and `quality` are those of the control message.
    // Empty when the picture could not be encoded.
    std::vector<SonarMessage> Frame(std::int32_t n, std::int32_t flags, int quality,
                                    std::size_t fragmentBytes = kSimVideoFragmentBytes);

    int width() const { return width_; }
    int height() const { return height_; }

  private:
    int width_;
    int height_;
    void* encoder_ = nullptr;
};

}  // namespace halvo

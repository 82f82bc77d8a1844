#pragma once
// Bathy.dat: one 24-byte record for every trace of the channel the first display shows, in every
// mode, playback included. The display side says which traces count and where their bottom is.

#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>

namespace halvo {

class SonarMessage;

// What the first display processor knows about one trace of its channel.
struct BathyTrace {
    double bottomSample = 0;  // the tracked bottom as a sample number
    double sampleRate = 0;    // samples per second
    double soundSpeed = 0;    // metres per second
};

class BathyWriter {
  public:
    static constexpr std::int32_t kMarker = 123456;
    static constexpr std::size_t kRecordSize = 24;

    // Empty when the trace is not of the first display's channel.
    using Source = std::function<std::optional<BathyTrace>(const SonarMessage&)>;

    explicit BathyWriter(std::string path = "Bathy.dat") : path_(std::move(path)) {}
    ~BathyWriter();
    BathyWriter(const BathyWriter&) = delete;
    BathyWriter& operator=(const BathyWriter&) = delete;

    // For a type 80 message while SaveBathyData is set. The file is created (truncating any
    // earlier one) at the first such trace; a failed creation is tried again at the next.
    void Trace(const SonarMessage& trace, const Source& source);
    // On an idle tick: closes the file as soon as SaveBathyData is clear.
    void Idle(bool saveBathy);
    bool IsOpen() const { return file_ != nullptr; }

    // bottom / rate * sound speed * 0.5 * 1000, truncated; 0 when that is not a number in range.
    static std::int32_t DepthMm(const BathyTrace& t);

  private:
    std::string path_;
    std::FILE* file_ = nullptr;
};

}  // namespace halvo

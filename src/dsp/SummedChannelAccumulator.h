#pragma once
// Sums the same ping of several channels into one synthetic trace. Each channel is weighted by
// its own `Weighting Factor` and by the number of channels summed; the result is rescaled so its
// peak fills 16 bits, with the exponent in the output's `Weighting Factor`.

#include <cstdint>
#include <vector>

#include "core/SonarMessage.h"

namespace halvo {

class SummedChannelAccumulator {
  public:
    // Offers channel c of a trace. Returns the summed trace once every channel of the mask has
    // been offered for the same ping, else null. The returned message is owned here and lives
    // until the next offer.
    SonarMessage* Offer(const SonarMessage& message, int c, std::uint32_t mask);

    std::uint32_t Seen() const { return seen_; }

  private:
    std::uint32_t seen_ = 0;
    bool hasPing_ = false;
    std::int32_t size_ = 0;
    std::int32_t format_ = 0;
    std::int32_t ping_ = 0;
    std::size_t count_ = 0;
    std::vector<float> sum_;
    SonarMessage output_;
};

}  // namespace halvo

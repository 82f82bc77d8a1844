#include "display/SonarDataCacheElement.h"

namespace halvo {

SonarDataCacheElement::SonarDataCacheElement(int size) : size(size) {
    if (size > 0) {
        pixels.assign(static_cast<std::size_t>(size), 0);
        rawPixels.assign(static_cast<std::size_t>(size), 0);
    }
    made_.fetch_add(1, std::memory_order_relaxed);
}

SonarDataCacheElement::SonarDataCacheElement(const SonarDataCacheElement& other)
    : header(other.header),
      size(other.size),
      displayIndex(other.displayIndex),
      startDepth(other.startDepth),
      dualChannel(other.dualChannel),
      bottomSample(other.bottomSample),
      heaveSamples(other.heaveSamples),
      reflection(other.reflection),
      gain(other.gain),
      pixels(other.pixels),
      rawPixels(other.rawPixels),
      reserved(other.reserved) {
    made_.fetch_add(1, std::memory_order_relaxed);
}

SonarDataCacheElement::~SonarDataCacheElement() {
    destroyed_.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace halvo

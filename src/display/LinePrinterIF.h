#pragma once
// The printers' side of a finished line. The chain offers every completed element before it
// queues it; a printer copies what it needs within the call and keeps nothing.

namespace halvo {

class SonarDataCacheElement;

class LinePrinterIF {
  public:
    virtual ~LinePrinterIF() = default;
    virtual void OfferLine(const SonarDataCacheElement& element) = 0;
};

}  // namespace halvo

#pragma once
// What the display timer talks to: an open waterfall document. The notice carries either one
// element to store (first argument 0) or the word that a burst is complete (first argument 1).

#include "display/SonarDataCacheElement.h"

namespace halvo {

class DisplayDocumentIF {
  public:
    static constexpr int kNewLinesNotice = 0x40A;
    static constexpr int kStoreElement = 0;
    static constexpr int kUpdateViews = 1;

    virtual ~DisplayDocumentIF() = default;
    // The line, shared: a document that keeps it keeps the pointer. Null with kUpdateViews.
    virtual void OnDisplayNotice(int argument, const SharedLine& line) = 0;
};

}  // namespace halvo

#pragma once
// Lines and settings for the waterfall tests: a cache filled with lines whose values name them.

#include <cstdint>
#include <vector>

#include "app/GeneralValues.h"
#include "display/DisplayProcessingConfig.h"
#include "display/SonarDataCacheElement.h"

namespace halvo::test {

inline SonarDataCacheElement MakeLine(std::vector<std::uint8_t> values, int depthMM = 0,
                                      int mark = 0) {
    SonarDataCacheElement e(static_cast<int>(values.size()));
    e.pixels = values;
    e.rawPixels = values;
    TraceHeaderView h(e.header);
    h.SetInt(TraceField::DepthMM, depthMM);
    h.SetInt(TraceField::MarkNumber, mark);
    return e;
}

inline SonarDataCacheElement FlatLine(int size, std::uint8_t value) {
    return MakeLine(std::vector<std::uint8_t>(static_cast<std::size_t>(size), value));
}

// Grey levels that differ, so that a test sees which one a rule chose.
inline GeneralValues TestGeneral() {
    GeneralValues g;
    g.NoDataGreyLevel = 201;
    g.NoDataGreyLevel2 = 202;
    return g;
}

}  // namespace halvo::test

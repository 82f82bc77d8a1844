#pragma once
// The status lines of the navigation page, built from the stamps and the fix.

#include <string>
#include <vector>

#include "nav/NavigationFix.h"

namespace halvo {

// Lines in order: the six stamps, "LATLON: ...", "TIME: ...", then "EVT: ...", "ZDA: ..." and
// "VTG: ..." each only when that record has been seen. Position and time come from the record
// the navigation settings select (LatLonSource 0 RMC, 1 GLL, 2 GGA; TimeSource 0 ZDA, 1 GLL,
// 2 RMC, 3 GGA); an unknown value falls back on GLL.
std::vector<std::string> NavigationStatusLines(const NavigationFix& fix, int latLonSource = 1,
                                               int timeSource = 0);

}  // namespace halvo

#include "extensions/InstalledExtensions.h"

namespace halvo {

void InstalledExtensions::SwitchOn(int multiPing, int sedimentClassification) {
    if (multiPing == 2) {
        list_.RegisterExtension(&dynamicFocus_);
    } else if (multiPing != 0) {
        list_.RegisterExtension(&multiPing_);
    }
    if (sedimentClassification != 0) list_.RegisterExtension(&sediment_);
}

}  // namespace halvo

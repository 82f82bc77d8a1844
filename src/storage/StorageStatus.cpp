#include "storage/StorageStatus.h"

namespace halvo {

RecorderIndicator StorageStatus::Indicator() const {
    RecorderIndicator r;
    switch (state) {
        case StateRecord:
            r.row = RecorderIndicator::Record;
            break;
        case StatePlayback:
            r.row = RecorderIndicator::Playback;
            break;
        case StateIdlePlayback:
            r.row = RecorderIndicator::IdlePlayback;
            break;
        case StateEndOfFile:
            r.row = RecorderIndicator::EndOfFile;
            break;
        default:
            r.row = RecorderIndicator::Other;
            break;
    }
    r.fileNumber = fileNumber;
    return r;
}

}  // namespace halvo

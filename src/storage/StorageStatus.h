#pragma once
// What the storage processor publishes for pages, status and alerts. A plain record, read as a
// whole copy.

#include <cstdint>
#include <string>

#include "app/Housekeeping.h"
#include "storage/StorageState.h"

namespace halvo {

struct StorageStatus {
    static constexpr const char* kNoFile = "----------";

    std::string file = kNoFile;  // full name of the current file
    std::int32_t sizeMB = 0;     // file size in units of 1,048,576 bytes
    std::int32_t state = StateIdleRecord;
    std::int32_t freeMB = -1;  // free bytes at RecordDir / 1,000,000; -1 when RecordDir is empty
    std::int32_t fileNumber = 0;

    // The row and file number the status bar's recorder pane shows for this state.
    RecorderIndicator Indicator() const;

    friend bool operator==(const StorageStatus&, const StorageStatus&) = default;
};

}  // namespace halvo

#pragma once
// Names of recorded files: the base from RecordDir and RecordFile, and the search for the first
// free number. Creation fails when the file exists, so a file from an earlier run is never
// overwritten, and a gap left by a deleted file is filled before higher numbers are used.

#include <string>

#include "storage/StorageSettings.h"

namespace halvo {

class RecordNames {
  public:
    static constexpr int kLastNumber = 999;
    // Room of a composed name; a longer one cannot be made.
    static constexpr std::size_t kMaxNameChars = 199;

    // RecordDir, '/', RecordFile; RecordFile alone when RecordDir is empty.
    static std::string Base(const StorageSettings& settings);
    // "%s%03d.hsf"
    static std::string Compose(const std::string& base, int number);

    struct Created {
        int fd = -1;  // open for writing; -1 when every number failed
        int number = -1;
        std::string name;
    };
    // Tries 000 upward with create-new and keeps the first that succeeds.
    static Created CreateFirstFree(const std::string& base);
    // Create-new of one name for writing; -1 when it exists or cannot be made.
    static int CreateNew(const std::string& name);
};

}  // namespace halvo

#pragma once
// The read loop the playing subcommands share: every record of an open file to `play`, in order,
// until the end (true) or a read that fails, which is reported on stderr under the command's name
// with the offset of the failing record (false).

#include <cstdio>
#include <string>
#include <utility>

#include "storage/HsfReader.h"

namespace halvo::hsf {

template <typename Play>
bool ForEachRecord(HsfReader& reader, const char* command, Play&& play) {
    for (;;) {
        SonarMessage m;
        const ReadStatus status = reader.Next(m);
        if (status == ReadStatus::Deferred) continue;
        if (status == ReadStatus::EndOfFile) return true;
        if (status != ReadStatus::Record) {
            std::fprintf(stderr, "halvo-hsf %s: %s at offset %lld: %s\n", command,
                         std::string(StateWord(status)).c_str(),
                         static_cast<long long>(reader.RecordOffset()), reader.Error().c_str());
            return false;
        }
        play(std::move(m));
    }
}

}  // namespace halvo::hsf

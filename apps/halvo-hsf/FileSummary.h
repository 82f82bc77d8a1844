#pragma once
// One pass over a data file, gathering what info reports: records by type and direction,
// channels, pings, time span, sample formats, packed forms and how reading ended. Works on the
// reader's views, so a file is read at close to the speed of the disk.

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <utility>

#include "storage/HsfReader.h"

namespace halvo::hsf {

struct Range {
    bool seen = false;
    std::int64_t min = 0;
    std::int64_t max = 0;
    void Add(std::int64_t v) {
        if (!seen || v < min) min = v;
        if (!seen || v > max) max = v;
        seen = true;
    }
};

struct ChannelSummary {
    std::uint64_t records = 0;
    std::uint64_t traces = 0;
    Range pings;
};

struct FormatSummary {
    std::uint64_t traces = 0;
    Range samples;  // per trace; compact traces carry no count and are left out
    std::uint64_t totalSamples = 0;
};

struct FileSummary {
    std::string file;
    bool opened = false;
    std::string openError;
    std::int64_t size = -1;
    HsfLayout layout = HsfLayout::Unknown;
    std::uint64_t records = 0;
    std::uint64_t recordBytes = 0;
    std::map<std::pair<std::uint16_t, std::uint8_t>, std::uint64_t> byTypeDirection;
    std::map<std::pair<std::uint8_t, std::uint8_t>, ChannelSummary> channels;  // subsystem, channel
    Range pings;
    Range seconds;  // trace time, seconds since 1970
    std::map<int, FormatSummary> formats;
    std::map<std::pair<std::uint16_t, int>, std::uint64_t> packed;  // type, packing code
    std::uint64_t skipped = 0;  // legacy records given up with the file left open
    std::int64_t firstSkipOffset = -1;
    ReadStatus end = ReadStatus::Closed;
    std::string endText;
    std::int64_t endOffset = 0;

    void Add(std::span<const std::uint8_t> record);
};

// Reads the whole file; progress goes to stderr for large files.
FileSummary Summarise(const std::string& file);

}  // namespace halvo::hsf

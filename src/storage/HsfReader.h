#pragma once
// Reads a data file record by record: an HSF file (a plain run of messages) or the older legacy
// layout of bare trace headers, told apart once at the first two bytes. Every outcome of the
// failure table is reported and the file is closed where the table says so.
//
// The reader keeps its own buffer, large enough for the biggest record the bound allows, so a
// record is always one contiguous run of bytes: NextView hands it out without a copy (the file
// tool), Next hands it out as a message block of its own (playback).

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/SonarMessage.h"
#include "storage/HsfSource.h"

namespace halvo {

enum class HsfLayout : std::uint8_t { Unknown, Hsf, Legacy };

enum class ReadStatus : std::uint8_t {
    Record,     // a record was read
    EndOfFile,  // clean end, or the file ends inside a header: closed
    Error,      // cut payload, bad marker, size over the bound, empty legacy record: closed
    Deferred,   // a legacy record too big for memory, or no memory: nothing changes, still open
    Closed,     // no file is open
};

class HsfReader {
  public:
    HsfReader();

    // Opens a file for reading; false (with Error() set) when it cannot be opened.
    bool Open(const std::string& path);
    // Reads from any source (tests, fuzzing). Detection starts afresh.
    void Attach(std::unique_ptr<HsfSource> source);
    void Close();
    bool IsOpen() const { return source_ != nullptr; }

    // The next record as a message block of its own.
    ReadStatus Next(SonarMessage& out);
    // The next record, header and payload, as a view valid until the next call.
    ReadStatus NextView(std::span<const std::uint8_t>& record);

    HsfLayout Layout() const { return layout_; }
    // Byte offset in the file of the record last returned, or of the read that failed.
    std::int64_t RecordOffset() const { return recordOffset_; }
    // Byte offset of the next byte to be read.
    std::int64_t Position() const { return base_ + static_cast<std::int64_t>(head_); }
    // Total size of the open file, or -1.
    std::int64_t FileSize() const { return fileSize_; }
    // Why the last read did not give a record ("" after a record).
    const std::string& Error() const { return error_; }

  private:
    struct Extent {
        std::size_t bytes = 0;        // bytes consumed from the file by this record
        std::size_t sampleBytes = 0;  // legacy only
        bool oldStyle = false;        // legacy only: interval in microseconds
    };
    ReadStatus Locate(Extent& extent);
    ReadStatus LocateHsf(Extent& extent);
    ReadStatus LocateLegacy(Extent& extent);
    void BuildLegacy(const Extent& extent, std::span<std::uint8_t> block);
    void Grow(std::size_t needed);
    std::size_t Fill(std::size_t wanted);
    ReadStatus Finish(ReadStatus status, std::string text);

    std::unique_ptr<HsfSource> source_;
    std::vector<std::uint8_t> buffer_;
    std::vector<std::uint8_t> scratch_;  // legacy records, built for NextView
    std::size_t head_ = 0;               // first unread byte in buffer_
    std::size_t tail_ = 0;               // end of the valid bytes in buffer_
    std::int64_t base_ = 0;              // file offset of buffer_[0]
    std::int64_t fileSize_ = -1;
    std::int64_t recordOffset_ = 0;
    bool sourceFailed_ = false;
    bool sourceAtEnd_ = false;
    HsfLayout layout_ = HsfLayout::Unknown;
    bool firstRecord_ = true;
    std::uint8_t detection_[2] = {0, 0};
    std::string error_;
};

}  // namespace halvo

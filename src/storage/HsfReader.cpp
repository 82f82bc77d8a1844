#include "storage/HsfReader.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

#include "core/ByteOrder.h"
#include "core/MessageTypes.h"
#include "storage/HsfFormat.h"

namespace halvo {

namespace {

// The buffer starts, at the first read, at a good read size and grows by doubling to room for the
// largest record of either layout plus a read's worth behind it. A small file gets a buffer its
// own size (rounded to a page): opening many short files should not cost megabytes each.
constexpr std::size_t kInitialBufferSize = 256u * 1024u;
constexpr std::size_t kBufferSize = 2u * 1024u * 1024u;

std::string Describe(const char* what, std::size_t got, std::size_t wanted) {
    return std::string(what) + ": " + std::to_string(got) + " of " + std::to_string(wanted) +
           " bytes";
}

}  // namespace

HsfReader::HsfReader() = default;

bool HsfReader::Open(const std::string& path) {
    Close();
    std::string why;
    auto file = FileSource::Open(path, why);
    if (!file) {
        error_ = "cannot open " + path + ": " + why;
        return false;
    }
    Attach(std::move(file));
    return true;
}

void HsfReader::Attach(std::unique_ptr<HsfSource> source) {
    Close();
    source_ = std::move(source);
    fileSize_ = source_ ? source_->Size() : -1;
    head_ = tail_ = 0;
    base_ = 0;
    recordOffset_ = 0;
    sourceFailed_ = sourceAtEnd_ = false;
    layout_ = HsfLayout::Unknown;
    firstRecord_ = true;
    error_.clear();
}

void HsfReader::Close() {
    source_.reset();
}

std::size_t HsfReader::Fill(std::size_t wanted) {
    std::size_t have = tail_ - head_;
    if (have >= wanted || !source_) return have;
    if (head_ + wanted > buffer_.size() && head_ > 0) {
        // Move the unread rest to the front so the whole record fits behind it.
        if (have > 0) std::memmove(buffer_.data(), buffer_.data() + head_, have);
        base_ += static_cast<std::int64_t>(head_);
        head_ = 0;
        tail_ = have;
    }
    while (have < wanted && !sourceAtEnd_ && !sourceFailed_) {
        // The buffer grows only when bytes have filled it, so a damaged length announcing a huge
        // record costs no more memory than the file really holds.
        if (tail_ == buffer_.size()) Grow(head_ + wanted);
        const long n = source_->Read(std::span(buffer_).subspan(tail_));
        if (n < 0) {
            sourceFailed_ = true;
        } else if (n == 0) {
            sourceAtEnd_ = true;
        } else {
            tail_ += static_cast<std::size_t>(n);
            have += static_cast<std::size_t>(n);
        }
    }
    return have;
}

void HsfReader::Grow(std::size_t needed) {
    std::size_t size = kInitialBufferSize;
    if (buffer_.empty()) {
        // Only the first size trusts the file's size: a file still being written grows.
        if (fileSize_ >= 0 && static_cast<std::uint64_t>(fileSize_) < size) {
            size = (static_cast<std::size_t>(fileSize_) + 4095u) & ~std::size_t{4095};
            size = std::max<std::size_t>(size, 4096u);
        }
    } else {
        size = std::min(buffer_.size() * 2, std::max(kBufferSize, needed));
        size = std::max(size, buffer_.size() + 4096u);
    }
    buffer_.resize(size);
}

ReadStatus HsfReader::Finish(ReadStatus status, std::string text) {
    error_ = std::move(text);
    if (status == ReadStatus::EndOfFile || status == ReadStatus::Error) Close();
    return status;
}

ReadStatus HsfReader::Locate(Extent& extent) {
    if (!source_) return ReadStatus::Closed;
    recordOffset_ = Position();
    error_.clear();
    if (layout_ == HsfLayout::Unknown) {
        // The two bytes that decide the layout belong to the first record either way.
        const std::size_t got = Fill(2);
        if (got < 2) {
            return Finish(ReadStatus::EndOfFile, got == 0 && !sourceFailed_
                                                     ? "end of file"
                                                     : Describe("short first record", got, 2));
        }
        detection_[0] = buffer_[head_];
        detection_[1] = buffer_[head_ + 1];
        layout_ = LoadLE<std::uint16_t>(detection_) == kMessageMarker ? HsfLayout::Hsf
                                                                      : HsfLayout::Legacy;
    }
    return layout_ == HsfLayout::Hsf ? LocateHsf(extent) : LocateLegacy(extent);
}

ReadStatus HsfReader::LocateHsf(Extent& extent) {
    const std::size_t got = Fill(kMessageHeaderSize);
    if (got < kMessageHeaderSize) {
        if (sourceFailed_) return Finish(ReadStatus::Error, "read failed in a header");
        return Finish(ReadStatus::EndOfFile,
                      got == 0 ? "end of file" : Describe("short header", got, kMessageHeaderSize));
    }
    const std::uint8_t* h = buffer_.data() + head_;
    const std::uint16_t marker = LoadLE<std::uint16_t>(h);
    const std::uint32_t size = LoadLE<std::uint32_t>(h + 12);
    if (marker != kMessageMarker) {
        char text[48];
        std::snprintf(text, sizeof text, "bad marker 0x%04X", marker);
        return Finish(ReadStatus::Error, text);
    }
    if (size > kMaxFilePayload) {
        return Finish(ReadStatus::Error, "payload size " + std::to_string(size) + " over " +
                                             std::to_string(kMaxFilePayload));
    }
    const std::size_t total = kMessageHeaderSize + size;
    const std::size_t have = Fill(total);
    if (have < total) {
        return Finish(ReadStatus::Error,
                      Describe("short payload", have - kMessageHeaderSize, size));
    }
    extent.bytes = total;
    return ReadStatus::Record;
}

ReadStatus HsfReader::LocateLegacy(Extent& extent) {
    const std::size_t got = Fill(kLegacyHeaderSize);
    if (got < kLegacyHeaderSize) {
        if (sourceFailed_) return Finish(ReadStatus::Error, "read failed in a trace header");
        return Finish(
            ReadStatus::EndOfFile,
            got == 0 ? "end of file" : Describe("short trace header", got, kLegacyHeaderSize));
    }
    const std::uint8_t* t = buffer_.data() + head_;
    const std::uint16_t count = LoadLE<std::uint16_t>(t + 114);
    const std::int16_t format = LoadLE<std::int16_t>(t + 34);
    std::size_t sampleBytes = 2u * count;
    bool oldStyle = false;
    if (format == 1 || format == 9) {
        // Complex data: an interval below 1000 marks the old header, whose count was doubled
        // and whose interval is in microseconds.
        if (LoadLE<std::int32_t>(t + 116) < kLegacyOldStyleInterval) {
            oldStyle = true;
        } else {
            sampleBytes *= 2;
        }
    }
    if (sampleBytes == 0) return Finish(ReadStatus::Error, "legacy record without samples");
    if (sampleBytes + kLegacyBufferExtra >= kMaxFilePayload) {
        // Given up with the file left open, just behind this trace header.
        head_ += kLegacyHeaderSize;
        return Finish(ReadStatus::Deferred, "legacy record of " + std::to_string(sampleBytes) +
                                                " sample bytes too large");
    }
    const std::size_t total = kLegacyHeaderSize + sampleBytes;
    const std::size_t have = Fill(total);
    if (have < total) {
        return Finish(ReadStatus::Error,
                      Describe("short samples", have - kLegacyHeaderSize, sampleBytes));
    }
    extent.bytes = total;
    extent.sampleBytes = sampleBytes;
    extent.oldStyle = oldStyle;
    return ReadStatus::Record;
}

void HsfReader::BuildLegacy(const Extent& extent, std::span<std::uint8_t> block) {
    const std::uint8_t* t = buffer_.data() + head_;
    std::memset(block.data(), 0, kMessageHeaderSize);
    if (firstRecord_) {
        // Only the very first record keeps the detection bytes where the marker goes.
        block[0] = detection_[0];
        block[1] = detection_[1];
    }
    StoreLE<std::uint16_t>(block.data() + 4, MsgTrace);
    block[7] = 0;
    block[8] = t[12];
    StoreLE<std::int32_t>(block.data() + 12,
                          static_cast<std::int32_t>(extent.sampleBytes + kLegacyHeaderSize));
    std::memcpy(block.data() + kMessageHeaderSize, t, extent.bytes);
    if (extent.oldStyle) {
        std::uint8_t* th = block.data() + kMessageHeaderSize;
        StoreLE<std::uint16_t>(th + 114,
                               static_cast<std::uint16_t>(LoadLE<std::uint16_t>(t + 114) / 2));
        const std::uint32_t interval = LoadLE<std::uint32_t>(t + 116);
        StoreLE<std::uint32_t>(th + 116, interval * 1000u);
    }
    firstRecord_ = false;
}

ReadStatus HsfReader::Next(SonarMessage& out) {
    Extent extent;
    const ReadStatus status = Locate(extent);
    if (status != ReadStatus::Record) return status;
    const std::size_t payload = extent.bytes - (layout_ == HsfLayout::Hsf ? kMessageHeaderSize : 0);
    SonarMessage block = layout_ == HsfLayout::Hsf ? SonarMessage::AllocateUninitialised(payload)
                                                   : SonarMessage::Allocate(payload);
    if (!block) {
        if (layout_ == HsfLayout::Legacy) head_ += kLegacyHeaderSize;
        // An HSF record stays unread, so a later read takes it whole.
        return Finish(ReadStatus::Deferred, "out of memory");
    }
    if (layout_ == HsfLayout::Hsf) {
        std::memcpy(block.Block().data(), buffer_.data() + head_, extent.bytes);
    } else {
        BuildLegacy(extent, block.Block());
    }
    head_ += extent.bytes;
    out = std::move(block);
    return ReadStatus::Record;
}

ReadStatus HsfReader::NextView(std::span<const std::uint8_t>& record) {
    Extent extent;
    const ReadStatus status = Locate(extent);
    if (status != ReadStatus::Record) return status;
    if (layout_ == HsfLayout::Hsf) {
        record = std::span<const std::uint8_t>(buffer_.data() + head_, extent.bytes);
    } else {
        scratch_.resize(kMessageHeaderSize + extent.bytes);
        BuildLegacy(extent, scratch_);
        record = scratch_;
    }
    head_ += extent.bytes;
    return ReadStatus::Record;
}

}  // namespace halvo

#include "storage/HsfRecorder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "core/ByteOrder.h"
#include "core/SonarMessage.h"
#include "core/TraceHeader.h"
#include "storage/RecordNames.h"

namespace halvo {

HsfRecorder::~HsfRecorder() {
    Close();
}

void HsfRecorder::CloseFd(int& fd) {
    if (fd >= 0) ::close(fd);
    fd = -1;
}

bool HsfRecorder::Open(const std::string& base, bool sideFile) {
    Close();
    RecordNames::Created created = RecordNames::CreateFirstFree(base);
    if (created.fd < 0) return false;
    recording_ = true;
    dataFd_ = created.fd;
    number_ = created.number;
    name_ = std::move(created.name);
    bytesWritten_ = 0;
    bytesAtReopen_ = 0;
    dataEnd_ = 0;
    sideLineYet_ = false;
    lastSideTick_ = 0;
    if (sideFile) sideFd_ = RecordNames::CreateNew(name_ + ".alt");
    return true;
}

void HsfRecorder::Close() {
    CloseFd(dataFd_);
    CloseFd(sideFd_);
    recording_ = false;
}

std::int64_t HsfRecorder::FileSize() const {
    struct stat st {};
    if (dataFd_ < 0 || ::fstat(dataFd_, &st) != 0) return -1;
    return static_cast<std::int64_t>(st.st_size);
}

bool HsfRecorder::RollDue(std::uint64_t bytesWritten, std::int32_t maxMillions) {
    const std::uint64_t millions = bytesWritten / 1'000'000;
    if (maxMillions > 0 && millions >= static_cast<std::uint64_t>(maxMillions)) return true;
    return millions > kCeilingMillions;
}

void HsfRecorder::ReopenIfDue() {
    if (!recording_ || bytesWritten_ - bytesAtReopen_ <= kReopenBytes) return;
    bytesAtReopen_ = bytesWritten_;
    CloseFd(dataFd_);
    int fd;
    do {
        fd = ::open(name_.c_str(), O_WRONLY | O_CLOEXEC);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) return;  // left silent: writes are skipped while the state shows recording
    const off_t end = ::lseek(fd, 0, SEEK_END);
    if (end < 0) {
        ::close(fd);
        return;
    }
    dataFd_ = fd;
    dataEnd_ = end;
}

HsfRecorder::WriteResult HsfRecorder::Write(std::span<const std::uint8_t> bytes, Target target) {
    int& fd = target == Target::Data ? dataFd_ : sideFd_;
    if (bytes.empty() || fd < 0) return WriteResult::Skipped;
    ssize_t n;
    do {
        n = ::write(fd, bytes.data(), bytes.size());
    } while (n < 0 && errno == EINTR);
    bytesWritten_ += bytes.size();
    const bool whole = n >= 0 && static_cast<std::size_t>(n) == bytes.size();
    if (target == Target::Side) {
        if (!whole) CloseFd(sideFd_);
        return whole ? WriteResult::Written : WriteResult::Failed;
    }
    if (whole) {
        dataEnd_ += n;
        return WriteResult::Written;
    }
    // Half a message would end playback of this file in an error; cut it off so that the file
    // ends cleanly on the last whole message. Shrinking works even on a full disk.
    if (n > 0 && ::ftruncate(fd, dataEnd_) != 0) {
        // Nothing more to do: the reader stops at the half message with ERROR.
    }
    return WriteResult::Failed;
}

std::optional<std::string> HsfRecorder::SideLine(const SonarMessage& trace) {
    const std::span<const std::uint8_t> h = trace.Payload();
    if (h.size() < kTraceHeaderSize) return std::nullopt;
    const auto i32 = [&](std::size_t off) { return static_cast<int>(GetLE<std::int32_t>(h, off)); };
    const auto i16 = [&](std::size_t off) { return static_cast<int>(GetLE<std::int16_t>(h, off)); };
    char line[160];
    const int len = std::snprintf(line, sizeof line, "%d %d %d %d %d %d %d %d %d %d\n", i32(8),
                                  i32(80), i32(84), i16(192), i16(194), i16(186), i16(188),
                                  i16(190), i16(196), i16(198));
    if (len <= 0) return std::nullopt;
    return std::string(line, static_cast<std::size_t>(len));
}

bool HsfRecorder::SideLineDue(std::uint32_t tick) const {
    if (sideFd_ < 0) return false;
    if (!sideLineYet_) return true;
    // Unsigned difference: a tick that went backward counts as long past.
    return tick - lastSideTick_ > kSideLinePeriodMs;
}

void HsfRecorder::SideLineWritten(std::uint32_t tick) {
    sideLineYet_ = true;
    lastSideTick_ = tick;
}

}  // namespace halvo

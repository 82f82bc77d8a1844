#include "nav/SerialInput.h"

#include <algorithm>

#include "nav/NavigationConfig.h"

namespace halvo {

bool SerialInput::IsListedBaud(int baud) {
    static constexpr int kListed[] = {600, 1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200};
    return std::find(std::begin(kListed), std::end(kListed), baud) != std::end(kListed);
}

bool SerialInput::open() {
    close();
    bytesReceived_.store(0, std::memory_order_relaxed);
    overflowCount_.store(0, std::memory_order_relaxed);
    readCursor_ = 0;
    bytesInBuffer_ = 0;
    // A half line from before the reopen belongs to nothing that follows.
    lineLength_ = 0;
    firstUseDone_ = true;
    // The replacement is kept, so a bad setting gives 2400 for the rest of the run.
    if (!IsListedBaud(baud_)) baud_ = kFallbackBaud;
    if (port_ < 1 || port_ > 255) {
        path_.clear();
        error_ = "no port";
        return false;
    }
    NavigationPortConfig where;
    where.port = port_;
    where.device = device_;
    path_ = where.DevicePath();
    handle_.SetReadTimeouts(IntervalTimeoutMs(baud_), kTotalReadTimeoutMs);
    if (!handle_.Open(path_, baud_, error_)) return false;
    opened_.store(true, std::memory_order_release);
    return true;
}

bool SerialInput::setPort(int number, std::string device) {
    port_ = number;
    device_ = std::move(device);
    return open();
}

void SerialInput::setBaud(int baud) {
    if (baud == baud_) return;
    baud_ = baud;
    open();
}

void SerialInput::close() {
    opened_.store(false, std::memory_order_release);
    handle_.Close();
}

std::optional<std::string_view> SerialInput::readLine(int& count) {
    if (!firstUseDone_) open();
    if (readCursor_ >= bytesInBuffer_) {
        readCursor_ = 0;
        bytesInBuffer_ = 0;
        if (!isOpen()) return std::nullopt;
        const SerialPort::ReadResult r = handle_.Read(readBuffer_);
        if (r.status == SerialPort::ReadStatus::Vanished) {
            // The adapter was pulled or the far end closed: drop the line so that the reader
            // thread's retry picks the device up again when it comes back.
            close();
            error_ = "device gone";
            return std::nullopt;
        }
        // Any other read error counts as an empty read.
        const std::size_t got = r.status == SerialPort::ReadStatus::Ok ? r.count : 0;
        bytesReceived_.fetch_add(static_cast<int>(got), std::memory_order_relaxed);
        if (got == kReadBufferSize) {
            // A full buffer means the reader fell behind; what is queued is stale, whole lines
            // included, so it all goes.
            overflowCount_.fetch_add(1, std::memory_order_relaxed);
            handle_.Purge();
            lineLength_ = 0;
            return std::nullopt;
        }
        bytesInBuffer_ = got;
    }
    while (readCursor_ < bytesInBuffer_) {
        char c = static_cast<char>(readBuffer_[readCursor_++]);
        const bool end = c == '\n' || c == '\r';
        if (end) c = '\n';
        if (lineLength_ < kMaxLineLength) {
            line_[lineLength_++] = c;
        } else {
            line_[kMaxLineLength - 1] = c;
        }
        if (!end) continue;
        const std::size_t length = lineLength_;
        line_[length] = '\0';
        lineLength_ = 0;
        // "\r\n" leaves a lone "\n", and "A\n" is too short to be a sentence: both go.
        if (length > 2) {
            ++count;
            return std::string_view(line_.data(), length);
        }
    }
    return std::nullopt;
}

}  // namespace halvo

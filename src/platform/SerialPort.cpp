#include "platform/SerialPort.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace halvo {

namespace {

bool SpeedOf(int baud, speed_t& speed) {
    struct Entry {
        int baud;
        speed_t speed;
    };
    static constexpr Entry kSpeeds[] = {
        {50, B50},           {75, B75},           {110, B110},         {134, B134},
        {150, B150},         {200, B200},         {300, B300},         {600, B600},
        {1200, B1200},       {1800, B1800},       {2400, B2400},       {4800, B4800},
        {9600, B9600},       {19200, B19200},     {38400, B38400},     {57600, B57600},
        {115200, B115200},   {230400, B230400},   {460800, B460800},   {500000, B500000},
        {576000, B576000},   {921600, B921600},   {1000000, B1000000}, {1152000, B1152000},
        {1500000, B1500000}, {2000000, B2000000}, {2500000, B2500000}, {3000000, B3000000},
        {3500000, B3500000}, {4000000, B4000000},
    };
    for (const Entry& e : kSpeeds) {
        if (e.baud == baud) {
            speed = e.speed;
            return true;
        }
    }
    return false;
}

std::string Reason(const char* what) {
    return std::string(what) + ": " + std::strerror(errno);
}

// Errors that mean the device itself is gone rather than one read going wrong.
bool DeviceGone(int err) {
    return err == EIO || err == ENXIO || err == ENODEV || err == EBADF;
}

}  // namespace

SerialPort::~SerialPort() {
    Close();
}

bool SerialPort::SupportsBaud(int baud) {
    speed_t unused;
    return SpeedOf(baud, unused);
}

bool SerialPort::Open(const std::string& path, int baud, std::string& error) {
    Close();
    modemLinesSet_ = false;
    speed_t speed;
    if (!SpeedOf(baud, speed)) {
        error = "unsupported speed " + std::to_string(baud);
        return false;
    }
    // Non-blocking, so neither a missing carrier nor a quiet line can hang the reader; the
    // timeouts are kept by poll instead.
    const int fd = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        error = Reason(path.c_str());
        return false;
    }
    auto fail = [&](const char* what) {
        error = Reason(what);
        ::close(fd);
        return false;
    };
    // Exclusive: the advisory lock catches a second reader that already holds the line, and
    // TIOCEXCL keeps any later open out while we hold it.
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) return fail("port in use");
    termios t{};
    if (::tcgetattr(fd, &t) != 0) return fail("not a serial line");
    if (::ioctl(fd, TIOCEXCL) != 0) return fail("exclusive open");

    ::cfmakeraw(&t);
    t.c_cflag &= ~(CSIZE | PARENB | CSTOPB | CRTSCTS);
    t.c_cflag |= CS8 | CREAD | CLOCAL;
    t.c_iflag &= ~(IXON | IXOFF | IXANY);
    t.c_cc[VMIN] = 0;
    t.c_cc[VTIME] = 0;
    if (::cfsetispeed(&t, speed) != 0 || ::cfsetospeed(&t, speed) != 0 ||
        ::tcsetattr(fd, TCSANOW, &t) != 0) {
        ::ioctl(fd, TIOCNXCL);
        return fail("line settings");
    }
    // Some receivers are powered from these lines. A pseudo-terminal has none, which is fine.
    int lines = TIOCM_DTR | TIOCM_RTS;
    modemLinesSet_ = ::ioctl(fd, TIOCMBIS, &lines) == 0;

    fd_ = fd;
    Purge();
    error.clear();
    return true;
}

void SerialPort::Close() {
    if (fd_ < 0) return;
    // Release exclusivity first: a pty's line outlives our descriptor while its master is open,
    // and a flag left behind would refuse our own reopen.
    ::ioctl(fd_, TIOCNXCL);
    ::close(fd_);
    fd_ = -1;
}

void SerialPort::SetReadTimeouts(int intervalMs, int totalMs) {
    intervalMs_ = std::max(0, intervalMs);
    totalMs_ = std::max(0, totalMs);
}

SerialPort::ReadResult SerialPort::Read(std::span<std::uint8_t> buffer) {
    using Clock = std::chrono::steady_clock;
    if (fd_ < 0) return {ReadStatus::NotOpen, 0};
    const auto deadline = Clock::now() + std::chrono::milliseconds(totalMs_);
    std::size_t got = 0;
    while (got < buffer.size()) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        long long wait = std::max<long long>(0, left);
        // The gap rule starts with the first byte, as the old interval timeout did.
        if (got > 0 && intervalMs_ > 0) wait = std::min<long long>(wait, intervalMs_);
        pollfd p{fd_, POLLIN, 0};
        const int r = ::poll(&p, 1, static_cast<int>(wait));
        if (r < 0) {
            if (errno == EINTR) continue;
            return got > 0 ? ReadResult{ReadStatus::Ok, got} : ReadResult{ReadStatus::Error, 0};
        }
        if (r == 0) break;
        if ((p.revents & POLLIN) == 0) {
            // Hang-up or error with nothing left to read: the device went away.
            if (got > 0) break;
            return {(p.revents & (POLLHUP | POLLNVAL)) ? ReadStatus::Vanished : ReadStatus::Error,
                    0};
        }
        const ssize_t n = ::read(fd_, buffer.data() + got, buffer.size() - got);
        if (n > 0) {
            got += static_cast<std::size_t>(n);
            continue;
        }
        if (n < 0 && (errno == EAGAIN || errno == EINTR)) continue;
        if (got > 0) break;
        if (n == 0 || DeviceGone(errno)) return {ReadStatus::Vanished, 0};
        return {ReadStatus::Error, 0};
    }
    return {ReadStatus::Ok, got};
}

void SerialPort::Purge() {
    if (fd_ >= 0) ::tcflush(fd_, TCIOFLUSH);
}

}  // namespace halvo

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>

#include "platform/LinuxParallelPort.h"
#include "platform/PtyPair.h"
#include "platform/SerialPort.h"

namespace halvo {
namespace {

using test::PtyPair;
using Clock = std::chrono::steady_clock;

long long MsSince(Clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

TEST(SerialPort, OpensRawEightNoneOneWithoutFlowControl) {
    PtyPair pty;
    ASSERT_TRUE(pty.ok());
    SerialPort port;
    std::string error;
    ASSERT_TRUE(port.Open(pty.path(), 9600, error)) << error;
    EXPECT_TRUE(port.IsOpen());
    // A pseudo-terminal has no modem lines; opening must not depend on them.
    EXPECT_FALSE(port.ModemLinesSet());

    const termios t = pty.Settings();
    EXPECT_EQ(t.c_cflag & CSIZE, static_cast<tcflag_t>(CS8));
    EXPECT_EQ(t.c_cflag & (PARENB | CSTOPB | CRTSCTS), 0u);
    EXPECT_EQ(t.c_iflag & (IXON | IXOFF | IXANY | ICRNL | INLCR), 0u);
    EXPECT_EQ(t.c_lflag & (ICANON | ECHO | ISIG), 0u);
    EXPECT_EQ(cfgetispeed(&t), static_cast<speed_t>(B9600));
}

TEST(SerialPort, RefusesWhatIsNotAUsableLine) {
    PtyPair pty;
    ASSERT_TRUE(pty.ok());
    char file[] = "/tmp/halvo-serial-XXXXXX";
    const int fd = ::mkstemp(file);
    ASSERT_GE(fd, 0);
    ::close(fd);

    struct Case {
        const char* what;
        std::string path;
        int baud;
    };
    const Case cases[] = {
        {"missing device", "/tmp/halvo-no-such-serial-device", 4800},
        {"plain file", file, 4800},
        {"speed the line cannot take", pty.path(), 4000},
    };
    std::array<std::uint8_t, 16> buffer{};
    for (const Case& c : cases) {
        SerialPort port;
        std::string error;
        EXPECT_FALSE(port.Open(c.path, c.baud, error)) << c.what;
        EXPECT_FALSE(port.IsOpen()) << c.what;
        EXPECT_FALSE(error.empty()) << c.what;
        EXPECT_EQ(port.Read(buffer).status, SerialPort::ReadStatus::NotOpen) << c.what;
    }
    std::remove(file);
}

TEST(SerialPort, OpenIsExclusiveAndReleasedOnClose) {
    PtyPair pty;
    ASSERT_TRUE(pty.ok());
    SerialPort first;
    SerialPort second;
    std::string error;
    ASSERT_TRUE(first.Open(pty.path(), 4800, error)) << error;
    EXPECT_FALSE(second.Open(pty.path(), 4800, error));
    first.Close();
    EXPECT_TRUE(second.Open(pty.path(), 4800, error)) << error;
    // Reopening the same object closes its own handle first.
    EXPECT_TRUE(second.Open(pty.path(), 4800, error)) << error;
}

TEST(SerialPort, ReadEndsOnTotalTimeoutGapOrFullBuffer) {
    PtyPair pty;
    ASSERT_TRUE(pty.ok());
    SerialPort port;
    std::string error;
    ASSERT_TRUE(port.Open(pty.path(), 4800, error)) << error;
    std::array<std::uint8_t, 64> buffer{};

    // Quiet line: the total timeout ends the read with nothing.
    port.SetReadTimeouts(10, 100);
    auto start = Clock::now();
    SerialPort::ReadResult r = port.Read(buffer);
    EXPECT_EQ(r.status, SerialPort::ReadStatus::Ok);
    EXPECT_EQ(r.count, 0u);
    EXPECT_GE(MsSince(start), 90);

    // Bytes then silence: the gap rule ends the read long before the total timeout.
    port.SetReadTimeouts(10, 5000);
    ASSERT_TRUE(pty.Write("abc"));
    start = Clock::now();
    r = port.Read(buffer);
    EXPECT_EQ(r.count, 3u);
    EXPECT_LT(MsSince(start), 2500);

    // More waiting than room: the read stops when the buffer is full and leaves the rest.
    ASSERT_TRUE(pty.Write(std::string(100, 'x')));
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    r = port.Read(buffer);
    EXPECT_EQ(r.count, buffer.size());
    r = port.Read(buffer);
    EXPECT_EQ(r.count, 100 - buffer.size());
}

TEST(ParallelPortSeam, LinuxPortReportsEveryWriteAsNotDelivered) {
    LinuxParallelPort linuxPort;
    EXPECT_FALSE(linuxPort.Available());
    EXPECT_FALSE(linuxPort.Write(0x378, 0x0F));
}

}  // namespace
}  // namespace halvo

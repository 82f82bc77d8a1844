#include "halvo-sim/SimNmeaPty.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>

#include "halvo-sim/SimNmea.h"

namespace halvo {

namespace {
speed_t SpeedOf(int baud) {
    switch (baud) {
        case 1200:
            return B1200;
        case 2400:
            return B2400;
        case 9600:
            return B9600;
        case 19200:
            return B19200;
        case 38400:
            return B38400;
        case 57600:
            return B57600;
        case 115200:
            return B115200;
        default:
            return B4800;
    }
}
}  // namespace

SimNmeaPty::~SimNmeaPty() {
    Stop();
}

bool SimNmeaPty::Start(std::string& error) {
    master_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0) {
        error = std::string("pseudo-terminal: ") + std::strerror(errno);
        if (master_ >= 0) ::close(master_);
        master_ = -1;
        return false;
    }
    char name[128] = {};
    if (::ptsname_r(master_, name, sizeof name) != 0) {
        error = std::string("ptsname: ") + std::strerror(errno);
        ::close(master_);
        master_ = -1;
        return false;
    }
    slavePath_ = name;
    // Raw, so sentences arrive byte for byte; the speed is what a reader will find set.
    termios t{};
    if (::tcgetattr(master_, &t) == 0) {
        ::cfmakeraw(&t);
        ::cfsetispeed(&t, SpeedOf(baud_));
        ::cfsetospeed(&t, SpeedOf(baud_));
        ::tcsetattr(master_, TCSANOW, &t);
    }
    ::fcntl(master_, F_SETFL, ::fcntl(master_, F_GETFL) | O_NONBLOCK);
    thread_ = std::thread([this] { Run(); });
    return true;
}

void SimNmeaPty::Stop() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
    if (master_ >= 0) ::close(master_);
    master_ = -1;
}

void SimNmeaPty::Run() {
    using Clock = std::chrono::steady_clock;
    const SimSurveyLine line;
    const auto start = Clock::now();
    auto next = start;
    const double bytesPerSecond = baud_ / 10.0;  // 8N1
    while (!stop_) {
        const double t = std::chrono::duration<double>(next - start).count();
        auto at = next;
        for (const std::string& s : SimNmeaSecond(now_(), line.At(t))) {
            while (!stop_ && Clock::now() < at)
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            if (stop_) return;
            // A full buffer (nobody reading) drops the sentence, as a real line would.
            if (::write(master_, s.data(), s.size()) == static_cast<ssize_t>(s.size()))
                ++sentences_;
            at += std::chrono::microseconds(static_cast<long>(s.size() / bytesPerSecond * 1e6));
        }
        next += std::chrono::seconds(1);
        if (next < at) next = at;
        while (!stop_ && Clock::now() < next)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

}  // namespace halvo

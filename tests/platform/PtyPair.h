#pragma once
// A pseudo-terminal for serial tests: the test writes to the master side, the code under test
// opens the other end by its path like a serial device. The test keeps its own descriptor of
// that end, opened before any exclusive open, to inspect the line settings.

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <string_view>
#include <thread>

namespace halvo::test {

class PtyPair {
  public:
    PtyPair() {
        char name[128] = {};
        if (::openpty(&master_, &slave_, name, nullptr, nullptr) != 0) {
            master_ = slave_ = -1;
            return;
        }
        path_ = name;
        // Raw from the start, so nothing written before the reader opens is echoed or edited.
        termios t{};
        if (::tcgetattr(slave_, &t) == 0) {
            ::cfmakeraw(&t);
            ::tcsetattr(slave_, TCSANOW, &t);
        }
    }
    ~PtyPair() {
        CloseMaster();
        if (slave_ >= 0) ::close(slave_);
    }
    PtyPair(const PtyPair&) = delete;
    PtyPair& operator=(const PtyPair&) = delete;

    bool ok() const { return master_ >= 0; }
    const std::string& path() const { return path_; }
    int slaveFd() const { return slave_; }

    // Writes everything, waiting at most about a second for room.
    bool Write(std::string_view bytes) {
        std::size_t done = 0;
        for (int attempt = 0; attempt < 200 && done < bytes.size() && master_ >= 0; ++attempt) {
            const ssize_t n = ::write(master_, bytes.data() + done, bytes.size() - done);
            if (n > 0) {
                done += static_cast<std::size_t>(n);
            } else {
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
        }
        return done == bytes.size();
    }

    // The far end goes away, as when an adapter is pulled.
    void CloseMaster() {
        if (master_ >= 0) ::close(master_);
        master_ = -1;
    }

    speed_t InputSpeed() const {
        termios t{};
        ::tcgetattr(slave_, &t);
        return ::cfgetispeed(&t);
    }
    termios Settings() const {
        termios t{};
        ::tcgetattr(slave_, &t);
        return t;
    }

  private:
    int master_ = -1;
    int slave_ = -1;
    std::string path_;
};

// Polls `done` every 5 ms for at most `limit`; true once it holds.
template <class Pred>
bool WaitFor(Pred done, std::chrono::milliseconds limit = std::chrono::milliseconds(3000)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (std::chrono::steady_clock::now() < end) {
        if (done()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return done();
}

}  // namespace halvo::test

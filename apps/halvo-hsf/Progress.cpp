#include "halvo-hsf/Progress.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace halvo::hsf {

Progress::Progress(std::string name, std::int64_t totalBytes)
    : name_(std::move(name)),
      total_(totalBytes),
      // A carriage-return counter only makes sense on a terminal; in a log it is noise.
      active_(totalBytes > kQuietBytes && ::isatty(STDERR_FILENO) == 1),
      last_(std::chrono::steady_clock::now()) {}

Progress::~Progress() {
    Done();
}

void Progress::Show(std::int64_t position) {
    const auto now = std::chrono::steady_clock::now();
    if (now - last_ < std::chrono::milliseconds(250)) return;
    last_ = now;
    const double percent = total_ > 0 ? 100.0 * static_cast<double>(position) / total_ : 0.0;
    std::fprintf(stderr, "\r%s: %5.1f%% (%lld MB)", name_.c_str(), percent,
                 static_cast<long long>(position / 1000000));
    std::fflush(stderr);
    shown_ = true;
}

void Progress::Done() {
    if (shown_) std::fprintf(stderr, "\r%s: done%*s\n", name_.c_str(), 24, "");
    shown_ = false;
    active_ = false;
}

}  // namespace halvo::hsf
